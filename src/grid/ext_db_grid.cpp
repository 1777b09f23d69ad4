#include "quorda/grid/ext_db_grid.h"

#include "quorda/db/dataset.h"

namespace quorda {

TExtCustomDBGrid::TExtCustomDBGrid(QWidget* Parent) : TCustomDBGrid(Parent) {
    FSelectedKeys.SetDuplicates(dupIgnore);
    FSelectedKeys.SetSorted(true);
    LayoutChanged();
}

TExtCustomDBGrid::~TExtCustomDBGrid() = default;

void TExtCustomDBGrid::SetIndicatorSize(int Value) {
    if (Value == FIndicatorSize || Value <= 0 || Value >= 50) {
        return;
    }
    FIndicatorSize = Value;
    if (HasOption(dgIndicator)) {
        SetIndicatorWidth(Value);
    }
}

void TExtCustomDBGrid::SetIndicators(TImageList* Value) {
    FIndicators = Value;
    viewport()->update();
}

void TExtCustomDBGrid::SetColumnAttributes() {
    TCustomDBGrid::SetColumnAttributes();
    if (HasOption(dgIndicator) && IndicatorWidth() != FIndicatorSize) {
        SetIndicatorWidth(FIndicatorSize);
    }
}

std::string TExtCustomDBGrid::DoAddSelect(bool Add) {
    std::string key;
    if (!OnGetDataSetKey) {
        return key;
    }
    OnGetDataSetKey(DataLink()->DataSet(), key);
    if (!key.empty() && Add) {
        FSelectedKeys.Add(key);
    }
    return key;
}

void TExtCustomDBGrid::DoSelectedChange() {
    if (OnSelectionChange) {
        OnSelectionChange(this);
    }
}

void TExtCustomDBGrid::ClearSelection() {
    if (!HasOption(dgMultiSelect)) {
        return;
    }
    SelectedRows().Clear();
    FSelecting = false;
    DoSelectedChange();
}

TBookmarkStr TExtCustomDBGrid::CurrentRow() {
    TDataSet* dataSet = DataSet();
    return dataSet ? dataSet->Bookmark() : TBookmarkStr();
}

int TExtCustomDBGrid::CompareRows(const TBookmarkStr& A, const TBookmarkStr& B) {
    const int result = DataSet()->CompareBookmarks(TBookmark(A), TBookmark(B));
    return result < 0 ? -1 : (result > 0 ? 1 : 0);
}

void TExtCustomDBGrid::SetShiftSelection(const TBookmarkStr& FromRow, const TBookmarkStr& ToRow) {
    TDataSet* dataSet = DataSet();
    if (!dataSet) {
        return;
    }
    const int order = CompareRows(FromRow, ToRow);
    if (order == 0) {
        SelectedRows().SetCurrentRowSelected(true);
        DoSelectedChange();
        return;
    }
    // The rows on screen and the current row's place among them, to come back to.
    const int k = DataLink()->ActiveRecord();
    dataSet->DisableControls();
    try {
        dataSet->MoveBy(-k);
        TBookmark top = dataSet->GetBookmark();
        const TBookmarkStr& first = order < 0 ? FromRow : ToRow;
        const TBookmarkStr& last = order < 0 ? ToRow : FromRow;
        dataSet->SetBookmark(first);
        while (CompareRows(dataSet->Bookmark(), last) != 0 && !dataSet->Eof()) {
            SelectedRows().SetCurrentRowSelected(true);
            dataSet->Next();
        }
        SelectedRows().SetCurrentRowSelected(true);
        DoSelectedChange();
        // Going to a bookmark centres it among the buffered records: a window's length down and
        // back up again brings the top row back to the top, then the current row is k rows below.
        dataSet->GotoBookmark(top);
        dataSet->FreeBookmark(top);
        const int reached = dataSet->MoveBy(DataLink()->BufferCount() - 1);
        dataSet->MoveBy(k - reached);
    } catch (...) {
        dataSet->EnableControls();
        throw;
    }
    dataSet->EnableControls();
}

void TExtCustomDBGrid::MoveRowWithSelection(int Direction, bool Select) {
    TDataSet* dataSet = DataSet();
    BeginUpdate();
    try {
        bool keep = false;
        if (HasOption(dgMultiSelect) && DataLink()->Active() && dataSet) {
            if (!Select) {
                ClearSelection();
            } else if (FSelecting) {
                const TBookmarkStr current = CurrentRow();
                // Moving back toward the anchor leaves the current row out.
                keep = CompareRows(current, FAnchor) != -Direction;
                SelectedRows().Clear();
                dataSet->DisableControls();
                try {
                    SetShiftSelection(current, FAnchor);
                } catch (...) {
                    dataSet->EnableControls();
                    throw;
                }
                dataSet->EnableControls();
                if (!keep) {
                    SelectedRows().SetCurrentRowSelected(false);
                }
            } else {
                FAnchor = CurrentRow();
                SelectedRows().SetCurrentRowSelected(true);
                FSelecting = true;
                keep = true;
            }
        }
        MoveRowBy(Direction);
        if (keep) {
            SelectedRows().SetCurrentRowSelected(true);
        }
        DoSelectedChange();
    } catch (...) {
        EndUpdate();
        throw;
    }
    EndUpdate();
}

} // namespace quorda
