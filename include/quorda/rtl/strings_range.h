#pragma once

// Range-for over a TStrings: for (const std::string& line : list) and
// for (const auto& [name, value] : list.NameValues()).

#include "quorda/rtl/strings.h"

#include <cstddef>
#include <iterator>
#include <string>
#include <utility>

namespace quorda {

// Walks the lines of a TStrings by index, each line by value (TStrings hands out copies). The list
// must not change length while it is walked.
class TStringsIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = std::string;
    using difference_type = std::ptrdiff_t;

    TStringsIterator() = default;
    TStringsIterator(const TStrings& List, int Index) : FList(&List), FIndex(Index) {}

    std::string operator*() const { return FList->Get(FIndex); }
    TStringsIterator& operator++() {
        ++FIndex;
        return *this;
    }
    TStringsIterator operator++(int) {
        TStringsIterator old = *this;
        ++FIndex;
        return old;
    }
    friend bool operator==(const TStringsIterator& A, const TStringsIterator& B) {
        return A.FIndex == B.FIndex;
    }

protected:
    const TStrings* FList = nullptr;
    int FIndex = 0;
};

// The lines as name/value pairs split at the first NameValueSeparator, as Names and ValueFromIndex
// read them (a line without a separator gives two empty strings).
class TStringsNameValues {
public:
    class iterator : public TStringsIterator {
    public:
        using value_type = std::pair<std::string, std::string>;
        using TStringsIterator::TStringsIterator;

        value_type operator*() const {
            std::string line = FList->Get(FIndex);
            const auto separator = line.find(FList->NameValueSeparator());
            if (separator == std::string::npos) {
                return {};
            }
            return {line.substr(0, separator), line.substr(separator + 1)};
        }
        iterator& operator++() {
            ++FIndex;
            return *this;
        }
        iterator operator++(int) {
            iterator old = *this;
            ++FIndex;
            return old;
        }
    };

    explicit TStringsNameValues(const TStrings& List) : FList(&List) {}
    iterator begin() const { return iterator(*FList, 0); }
    iterator end() const { return iterator(*FList, FList->Count()); }

private:
    const TStrings* FList;
};

inline TStringsIterator TStrings::begin() const {
    return TStringsIterator(*this, 0);
}
inline TStringsIterator TStrings::end() const {
    return TStringsIterator(*this, Count());
}
inline TStringsNameValues TStrings::NameValues() const {
    return TStringsNameValues(*this);
}

} // namespace quorda
