#include "quorda/grid/field_save.h"

#include "quorda/db/field.h"
#include "quorda/grid/ext_db_grid.h"

namespace quorda {

TFieldSave::TFieldSave() = default;

TFieldSave::~TFieldSave() {
    Clear();
}

TFieldSaveItem* TFieldSave::FieldByName(const std::string& Name) const {
    const int index = FList.IndexOf(Name);
    return index < 0 ? nullptr : GetFields(index);
}

TFieldSaveItem* TFieldSave::GetFields(int Index) const {
    return static_cast<TFieldSaveItem*>(FList.Objects(Index));
}

void TFieldSave::Clear() {
    FList.Clear();
}

TFieldSaveItem* TFieldSave::Add(const std::string& FieldName, const std::string& Caption, std::int32_t Index,
                                std::int32_t Width) {
    if (TFieldSaveItem* item = FieldByName(FieldName)) {
        item->FieldName = FieldName;
        item->Caption = Caption;
        item->Index = Index;
        item->Width = Width;
        return item;
    }
    auto* item = new TFieldSaveItem(FieldName, Caption, Index, Width);
    FList.AddObject(FieldName, item);
    return item;
}

void TFieldSave::GetInfoGrid(TExtCustomDBGrid& Grid) {
    TDBGridColumns& columns = Grid.Columns();
    for (int c = 0; c < columns.Count(); ++c) {
        TColumn* column = columns[c];
        Add(column->FieldName(), column->Title().Caption(), column->Index(), column->Width());
        // Bring the entry up behind the entries of the grid's earlier columns.
        int p = FList.IndexOf(column->FieldName());
        for (int j = c - 1; j >= 0; --j) {
            const int q = FList.IndexOf(columns[j]->FieldName());
            if (p > q) {
                break;
            }
            FList.Exchange(q, p);
            p = q;
        }
    }
}

void TFieldSave::SetInfoGrid(TExtCustomDBGrid& Grid) {
    TDBGridColumns& columns = Grid.Columns();
    // The saved position of a column's field; -1 for unbound columns and columns without an entry.
    auto savedPlace = [this](TColumn* Column) {
        TField* field = Column->Field();
        return field ? FList.IndexOf(field->FieldName()) : -1;
    };
    for (int c = 0; c < columns.Count(); ++c) {
        TColumn* column = columns[c];
        TField* field = column->Field();
        TFieldSaveItem* item = field ? FieldByName(field->FieldName()) : nullptr;
        if (!item) {
            continue;
        }
        column->SetFieldName(item->FieldName);
        column->SetWidth(item->Width);
        const int p = FList.IndexOf(item->FieldName);
        int moving = c;
        for (int j = c - 1; j >= 0; --j) {
            const int q = savedPlace(columns[j]);
            if (q >= 0 && q < p) {
                break;
            }
            columns.Move(moving, j);
            moving = j;
        }
    }
}

} // namespace quorda
