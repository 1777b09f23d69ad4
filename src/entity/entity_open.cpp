// Opening an entity's selection in DataQuery, re-opening it after other entities wrote, and how its
// columns are shown.
#include "quorda/db/controls_disabled.h"
#include "quorda/db/field.h"
#include "quorda/db/numeric_fields.h"
#include "quorda/entity/entity.h"
#include "quorda/rtl/numbers.h"
#include "quorda/rtl/string_utils.h"
#include "quorda/tools/query_helpers.h"

namespace quorda {

namespace {

// Goes back to a row remembered before the dataset was closed or moved. A row that is gone leaves the
// dataset on its last row.
void ReturnTo(TDataSet& DataSet, TBookmark& Bookmark) {
    if (Bookmark && DataSet.Active()) {
        DataSet.GotoBookmark(Bookmark);
    }
    DataSet.FreeBookmark(Bookmark);
}

} // namespace

void TEntity::EntityOpen() {
    if (HasProcedure(fetSelect)) {
        // The procedure prepares what the selection shows.
        RunCommand(fetSelect, cdtField, nullptr, FieldPlaceholder());
    }
    EntityOpenOnly();
}

void TEntity::EntityOpenOnly() {
    TEntityQuery& Query = *FDataQuery;
    const TControlsDisabled Disabled(Query);
    TBookmark Current;
    if (Query.Active()) {
        Current = Query.GetBookmark();
    }
    Query.Close();
    GenerateSQLSelection(Query.SQL());
    SetParam(Query, cdtField, nullptr, FieldPlaceholder());
    Query.AfterOpen = [this](TDataSet* DataSet) { OpenTableProc(DataSet); };
    OpenQry(&Query);
    SetFlgReread(false);
    FirstNumber(FViewEntity, this);
    ReturnTo(Query, Current);
}

void TEntity::ReOpenSql() {
    TEntityQuery& Query = *FDataQuery;
    if (!Query.Active()) {
        return;
    }
    const TControlsDisabled Disabled(Query);
    StartRereadAllUpdate();
    if (!HasProcedure(fetSelect) || !FFlgReread) {
        SetRereadEntity();
        Query.Refresh();
    } else {
        TBookmark Current = Query.GetBookmark();
        Query.Close();
        RunCommand(fetSelect, cdtField, nullptr, FieldPlaceholder());
        OpenQry(&Query);
        ReturnTo(Query, Current);
    }
    FirstNumber(FViewEntity, this);
    SetFlgReread(false);
}

void TEntity::OpenTableProc(TDataSet* DataSet) {
    for (int I = 0; I < DataSet->FieldCount(); ++I) {
        TField* Field = DataSet->Fields()[I];
        if (!Field->OnGetText) {
            Field->OnGetText = [this](TField* Sender, std::string& Text, bool DisplayText) {
                SetFieldAsText(Sender, Text, DisplayText);
            };
        }
    }
    for (int I = 0; I < FieldCount(); ++I) {
        const TFieldItem& Item = *GetFields(I);
        if (!Item.flgView()) {
            continue;
        }
        if (TField* Field = DataSet->FindField(Item.FactName())) {
            Field->SetVisible(Item.flgVisible());
            Field->SetDisplayLabel(Item.DisplayName());
            Field->SetDisplayWidth(Item.dspWidth());
        }
    }
}

void TEntity::SetFieldAsText(TField* Field, std::string& Text, bool DisplayText) {
    // The edit text stays plain: grouped digits would not read back into the field. A null shows
    // as nothing, not as a zero.
    if (!DisplayText || Field->IsNull()) {
        Text = Field->AsString();
        return;
    }
    if (dynamic_cast<const TFloatField*>(Field) != nullptr) {
        Text = FloatToStrF(Field->AsFloat(), ffNumber, FPrecision, FDigits);
    } else if (dynamic_cast<const TIntegerField*>(Field) != nullptr) {
        Text = Trim(FloatToStrF(Field->AsInteger(), ffNumber, 12, 0));
    } else if (Field->IsBlob()) {
        const TDataSet* DataSet = Field->DataSet();
        Text = DataSet->Bof() && DataSet->Eof() ? std::string() : "(Blob)";
    } else {
        Text = Field->AsString();
    }
}

} // namespace quorda
