#pragma once

// Range-for over the records of a dataset: for (TDataSet& row : query.Rows()) { ... }

#include "quorda/db/dataset.h"

#include <cstddef>
#include <iterator>

namespace quorda {

// The records of a dataset as a single-pass range. Iterating opens a closed dataset, or goes to
// First unless it stands there already; each step is Next, and the range ends at Eof. Every element
// is the dataset itself standing on the record, so the fields read the current record:
// row.FieldByName("price"). A forward-only ODBC query cannot go back to First once it has moved:
// iterate it once per Open (Close, then iterate again to re-execute it).
class TDataSetRows {
public:
    class iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = TDataSet;
        using difference_type = std::ptrdiff_t;
        using reference = TDataSet&;

        iterator() = default;
        explicit iterator(TDataSet& DataSet) : FDataSet(&DataSet) {}

        TDataSet& operator*() const { return *FDataSet; }
        iterator& operator++() {
            FDataSet->Next();
            return *this;
        }
        void operator++(int) { ++*this; }
        friend bool operator==(const iterator& It, std::default_sentinel_t) { return It.FDataSet->Eof(); }

    private:
        TDataSet* FDataSet = nullptr;
    };

    explicit TDataSetRows(TDataSet& DataSet) : FDataSet(&DataSet) {}

    iterator begin() const {
        if (!FDataSet->Active()) {
            FDataSet->Open();
        } else if (!FDataSet->Bof()) {
            FDataSet->First();
        }
        return iterator(*FDataSet);
    }
    std::default_sentinel_t end() const { return {}; }

private:
    TDataSet* FDataSet;
};

inline TDataSetRows TDataSet::Rows() {
    return TDataSetRows(*this);
}

} // namespace quorda
