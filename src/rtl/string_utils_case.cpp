// Unicode simple case mapping of single code points, from the generated run tables. Capital I with
// dot lowers to a plain i, as its simple mapping says.
#include "quorda/rtl/string_utils.h"
#include "unicode_case_table_p.h"

#include <algorithm>
#include <iterator>

namespace quorda {
namespace {

using unicode_case::CaseRun;
using unicode_case::kToLower;
using unicode_case::kToUpper;

template <size_t N>
char32_t MapCase(const CaseRun (&runs)[N], char32_t c) {
    auto it = std::upper_bound(std::begin(runs), std::end(runs), c,
                               [](char32_t value, const CaseRun& run) { return value < run.First; });
    if (it == std::begin(runs)) {
        return c;
    }
    const CaseRun& run = *std::prev(it);
    if (c > run.Last || (c - run.First) % static_cast<char32_t>(run.Stride) != 0) {
        return c;
    }
    return static_cast<char32_t>(static_cast<int>(c) + run.Delta);
}

} // namespace

char32_t UnicodeToUpper(char32_t C) {
    if (C < 0x80) {
        return (C >= 'a' && C <= 'z') ? C - 32 : C;
    }
    return MapCase(kToUpper, C);
}

char32_t UnicodeToLower(char32_t C) {
    if (C < 0x80) {
        return (C >= 'A' && C <= 'Z') ? C + 32 : C;
    }
    return MapCase(kToLower, C);
}

} // namespace quorda
