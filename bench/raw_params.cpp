// params, baseline: the least work that turns the text into "?" markers and a list of names, with
// no parameter objects at all. It bounds what the library's scanner and refresh can cost.

#include "params_text.h"
#include "workload.h"

#include <string>
#include <vector>

namespace quorda::bench {

namespace {

bool IsNameEnd(char c) {
    return c == '\0' || c == '\n' || c == '\r' || c == ' ' || c == ')' || c == ',' || c == ';';
}

void ScanMarkers(std::string_view Text, std::string& Real, std::vector<std::string>& Names) {
    Real.clear();
    Names.clear();
    bool literal = false;
    for (std::size_t i = 0; i < Text.size(); ++i) {
        const char c = Text[i];
        if (c == ':' && !literal && i + 1 < Text.size() && Text[i + 1] == ':') {
            Real += ':';
            ++i;
        } else if (c == ':' && !literal) {
            std::size_t end = i + 1;
            while (end < Text.size() && !IsNameEnd(Text[end]))
                ++end;
            Names.emplace_back(Text.substr(i + 1, end - i - 1));
            Real += '?';
            i = end - 1;
        } else {
            if (c == '\'' || c == '"')
                literal = !literal;
            Real += c;
        }
    }
}

class TRawParams : public TBenchRun {
public:
    explicit TRawParams(const TBenchContext& Context) : FIterations(Context.Rows) {}

    std::int64_t Execute() override {
        for (std::int64_t i = 0; i < FIterations; ++i)
            ScanMarkers(kParamsSql[static_cast<std::size_t>(i % 2)], FReal, FNames);
        return FIterations;
    }

    std::uint64_t Checksum() override { return FoldParamNames(FNames); }

private:
    std::int64_t FIterations;
    std::string FReal;
    std::vector<std::string> FNames;
};

const TRegisterRun markers("params", "raw", "markers", [](const TBenchContext& Context) {
    return std::make_unique<TRawParams>(Context);
});

} // namespace

} // namespace quorda::bench
