#include "quorda/grid/dataset_model.h"

#include "quorda/db/data_link.h"
#include "quorda/db/data_source.h"
#include "quorda/db/dataset.h"
#include "quorda/db/field.h"

#include <utility>

namespace quorda {

class TDataSetModelLink : public TDataLink {
public:
    explicit TDataSetModelLink(TDataSetModel* Model) : FModel(Model) {}

protected:
    void ActiveChanged() override {
        TDataLink::ActiveChanged();
        FModel->DataSetEvent();
    }
    void DataSetChanged() override { FModel->DataSetEvent(); }
    void DataSetScrolled(int Distance) override {}
    void LayoutChanged() override { FModel->DataSetEvent(); }
    void RecordChanged(TField* Field) override {
        // A posted or cancelled edit shows as a dataset change; single field changes wait for it.
    }

private:
    TDataSetModel* FModel;
};

namespace {

// Moves the dataset for the model's own purposes and puts it back, with the links kept quiet.
class TModelCursorGuard {
public:
    TModelCursorGuard(TDataSet& DataSet, bool& Busy) : FDataSet(DataSet), FBusy(Busy) {
        FBusy = true;
        FDataSet.DisableControls();
        FSaved = FDataSet.GetBookmark();
    }
    ~TModelCursorGuard() {
        try {
            if (!FSaved.IsNil() && FDataSet.Active()) {
                FDataSet.GotoBookmark(FSaved);
            }
        } catch (...) {
        }
        try {
            FDataSet.EnableControls();
        } catch (...) {
        }
        FBusy = false;
    }
    TModelCursorGuard(const TModelCursorGuard&) = delete;
    TModelCursorGuard& operator=(const TModelCursorGuard&) = delete;

private:
    TDataSet& FDataSet;
    bool& FBusy;
    TBookmark FSaved;
};

} // namespace

TDataSetModel::TDataSetModel(QObject* Parent)
    : QAbstractTableModel(Parent), FLink(std::make_unique<TDataSetModelLink>(this)) {}

TDataSetModel::~TDataSetModel() {
    FLink.reset();
}

TDataSource* TDataSetModel::DataSource() const {
    return FLink->DataSource();
}

void TDataSetModel::SetDataSource(TDataSource* Value) {
    beginResetModel();
    FBusy = true;
    FLink->SetDataSource(Value);
    FBusy = false;
    FRows.clear();
    FAtEnd = false;
    EndReset();
}

TDataSet* TDataSetModel::DataSet() const {
    return FLink->Active() ? FLink->DataSet() : nullptr;
}

void TDataSetModel::Reset() {
    beginResetModel();
    FRows.clear();
    FAtEnd = false;
    EndReset();
}

void TDataSetModel::EndReset() {
    // Views answer the reset by asking for rows; they get them once the reset is announced.
    FAnnouncing = true;
    endResetModel();
    FAnnouncing = false;
}

void TDataSetModel::DataSetEvent() {
    if (!FBusy) {
        Reset();
    }
}

int TDataSetModel::rowCount(const QModelIndex& Parent) const {
    return Parent.isValid() ? 0 : static_cast<int>(FRows.size());
}

int TDataSetModel::columnCount(const QModelIndex& Parent) const {
    TDataSet* dataSet = DataSet();
    return Parent.isValid() || !dataSet ? 0 : dataSet->FieldCount();
}

TDataSetModel::TRow TDataSetModel::ReadRow() const {
    TDataSet& dataSet = *DataSet();
    TRow row;
    row.Bookmark = dataSet.Bookmark();
    for (TField* field : dataSet.Fields()) {
        row.Display.push_back(QString::fromStdString(field->DisplayText()));
        row.Edit.push_back(QString::fromStdString(field->Text()));
    }
    return row;
}

QVariant TDataSetModel::data(const QModelIndex& Index, int Role) const {
    if (!checkIndex(Index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) {
        return {};
    }
    const TRow& row = FRows[static_cast<std::size_t>(Index.row())];
    const auto column = static_cast<std::size_t>(Index.column());
    if (column >= row.Display.size()) {
        return {};
    }
    switch (Role) {
    case Qt::DisplayRole:
        return row.Display[column];
    case Qt::EditRole:
        return row.Edit[column];
    case Qt::TextAlignmentRole: {
        const TAlignment alignment = DataSet()->Fields()[Index.column()]->Alignment();
        const Qt::Alignment horizontal = alignment == taRightJustify
                                             ? Qt::AlignRight
                                             : (alignment == taCenter ? Qt::AlignHCenter : Qt::AlignLeft);
        return static_cast<int>(horizontal | Qt::AlignVCenter);
    }
    default:
        return {};
    }
}

bool TDataSetModel::setData(const QModelIndex& Index, const QVariant& Value, int Role) {
    if (Role != Qt::EditRole || !(flags(Index) & Qt::ItemIsEditable)) {
        return false;
    }
    TDataSet& dataSet = *DataSet();
    TRow& row = FRows[static_cast<std::size_t>(Index.row())];
    {
        TModelCursorGuard guard(dataSet, FBusy);
        dataSet.GotoBookmark(TBookmark(row.Bookmark));
        dataSet.Edit();
        try {
            dataSet.Fields()[Index.column()]->SetText(Value.toString().toStdString());
            dataSet.Post();
        } catch (...) {
            dataSet.Cancel();
            throw;
        }
        row = ReadRow();
    }
    emit dataChanged(index(Index.row(), 0), index(Index.row(), columnCount() - 1),
                     {Qt::DisplayRole, Qt::EditRole});
    return true;
}

QVariant TDataSetModel::headerData(int Section, Qt::Orientation Orientation, int Role) const {
    if (Role != Qt::DisplayRole) {
        return {};
    }
    if (Orientation == Qt::Vertical) {
        return Section + 1;
    }
    TDataSet* dataSet = DataSet();
    if (!dataSet || Section < 0 || Section >= dataSet->FieldCount()) {
        return {};
    }
    return QString::fromStdString(dataSet->Fields()[Section]->DisplayLabel());
}

Qt::ItemFlags TDataSetModel::flags(const QModelIndex& Index) const {
    if (!Index.isValid() || Index.model() != this || Index.row() >= rowCount() ||
        Index.column() >= columnCount()) {
        return Qt::NoItemFlags;
    }
    Qt::ItemFlags result = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    TDataSet* dataSet = DataSet();
    TField* field = dataSet->Fields()[Index.column()];
    if (dataSet->CanModify() && field->CanModify() && !IsBlobType(field->DataType())) {
        result |= Qt::ItemIsEditable;
    }
    return result;
}

bool TDataSetModel::canFetchMore(const QModelIndex& Parent) const {
    return !Parent.isValid() && DataSet() && !FAtEnd && !FAnnouncing;
}

void TDataSetModel::fetchMore(const QModelIndex& Parent) {
    if (!canFetchMore(Parent)) {
        return;
    }
    TDataSet& dataSet = *DataSet();
    std::vector<TRow> chunk;
    {
        TModelCursorGuard guard(dataSet, FBusy);
        if (FRows.empty()) {
            dataSet.First();
        } else {
            dataSet.GotoBookmark(TBookmark(FRows.back().Bookmark));
            dataSet.Next();
        }
        while (!dataSet.Eof() && static_cast<int>(chunk.size()) < FChunkSize) {
            chunk.push_back(ReadRow());
            dataSet.Next();
        }
        FAtEnd = dataSet.Eof();
    }
    if (chunk.empty()) {
        return;
    }
    const int first = static_cast<int>(FRows.size());
    FAnnouncing = true;
    beginInsertRows(QModelIndex(), first, first + static_cast<int>(chunk.size()) - 1);
    for (TRow& row : chunk) {
        FRows.push_back(std::move(row));
    }
    endInsertRows();
    FAnnouncing = false;
}

} // namespace quorda
