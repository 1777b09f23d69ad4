#pragma once

#include "quorda/db/bookmark.h"

#include <vector>

namespace quorda {

class TCustomDBGrid;
class TDataSet;

// The rows selected in a grid, kept as bookmarks in the dataset's bookmark order. The dataset's
// CompareBookmarks decides which bookmarks are the same record, so a dataset that cannot compare its
// bookmarks cannot hold a selection of several rows.
class QUORDA_API TBookmarkList {
public:
    explicit TBookmarkList(TCustomDBGrid* Grid) : FGrid(Grid) {}

    int Count() const { return static_cast<int>(FList.size()); }
    const TBookmarkStr& Items(int Index) const { return FList.at(static_cast<std::size_t>(Index)); }
    const TBookmarkStr& operator[](int Index) const { return Items(Index); }
    auto begin() const { return FList.begin(); }
    auto end() const { return FList.end(); }

    // Whether the grid's current record is in the list; setting adds or removes it.
    bool CurrentRowSelected() const;
    void SetCurrentRowSelected(bool Value);
    // Whether Item is in the list; Index is its place, or where it would go.
    bool Find(const TBookmarkStr& Item, int& Index) const;
    int IndexOf(const TBookmarkStr& Item) const;
    void Clear();
    // Deletes the listed records from the dataset, the last first, then empties the list.
    void Delete();
    // Drops bookmarks whose records are gone; returns whether any were.
    bool Refresh();

private:
    TDataSet* DataSet() const;
    int Compare(const TBookmarkStr& A, const TBookmarkStr& B) const;
    void Changed();

    TCustomDBGrid* FGrid;
    std::vector<TBookmarkStr> FList;
};

} // namespace quorda
