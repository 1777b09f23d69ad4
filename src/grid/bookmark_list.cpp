#include "quorda/grid/bookmark_list.h"

#include "quorda/db/dataset.h"
#include "quorda/grid/db_grid.h"

#include <algorithm>

namespace quorda {

TDataSet* TBookmarkList::DataSet() const {
    return FGrid->DataSet();
}

int TBookmarkList::Compare(const TBookmarkStr& A, const TBookmarkStr& B) const {
    // The dataset knows when two bookmarks stand for one record (their bytes may differ).
    TDataSet* dataSet = DataSet();
    return dataSet ? dataSet->CompareBookmarks(TBookmark(A), TBookmark(B)) : A.compare(B);
}

bool TBookmarkList::Find(const TBookmarkStr& Item, int& Index) const {
    auto place =
        std::lower_bound(FList.begin(), FList.end(), Item,
                         [this](const TBookmarkStr& A, const TBookmarkStr& B) { return Compare(A, B) < 0; });
    Index = static_cast<int>(place - FList.begin());
    return place != FList.end() && Compare(*place, Item) == 0;
}

int TBookmarkList::IndexOf(const TBookmarkStr& Item) const {
    int index = -1;
    return Find(Item, index) ? index : -1;
}

bool TBookmarkList::CurrentRowSelected() const {
    TDataSet* dataSet = DataSet();
    if (!dataSet || !dataSet->Active() || FList.empty()) {
        return false;
    }
    int index = 0;
    return Find(dataSet->Bookmark(), index);
}

void TBookmarkList::SetCurrentRowSelected(bool Value) {
    TDataSet* dataSet = DataSet();
    if (!dataSet || !dataSet->Active() || dataSet->IsEmpty()) {
        return;
    }
    const TBookmarkStr current = dataSet->Bookmark();
    if (current.empty()) {
        return;
    }
    int index = 0;
    const bool found = Find(current, index);
    if (found == Value) {
        return;
    }
    if (Value) {
        FList.insert(FList.begin() + index, current);
    } else {
        FList.erase(FList.begin() + index);
    }
    Changed();
}

void TBookmarkList::Clear() {
    if (!FList.empty()) {
        FList.clear();
        Changed();
    }
}

void TBookmarkList::Delete() {
    TDataSet* dataSet = DataSet();
    if (!dataSet) {
        return;
    }
    dataSet->DisableControls();
    try {
        while (!FList.empty()) {
            dataSet->GotoBookmark(TBookmark(FList.back()));
            dataSet->Delete();
            FList.pop_back();
        }
    } catch (...) {
        dataSet->EnableControls();
        Changed();
        throw;
    }
    dataSet->EnableControls();
    Changed();
}

bool TBookmarkList::Refresh() {
    TDataSet* dataSet = DataSet();
    if (!dataSet) {
        return false;
    }
    const auto gone = std::remove_if(FList.begin(), FList.end(), [dataSet](const TBookmarkStr& Item) {
        return !dataSet->BookmarkValid(TBookmark(Item));
    });
    const bool result = gone != FList.end();
    FList.erase(gone, FList.end());
    if (result) {
        Changed();
    }
    return result;
}

void TBookmarkList::Changed() {
    FGrid->viewport()->update();
}

} // namespace quorda
