#include "quorda/tools/text_transfer.h"

#include <gtest/gtest.h>
#include <string>

namespace quorda {
namespace {

using namespace std::string_literals;

struct EscapeCase {
    std::string Plain;
    std::string Escaped;
};

void PrintTo(const EscapeCase& Case, std::ostream* Out) {
    *Out << ::testing::PrintToString(Case.Plain) << " <-> " << ::testing::PrintToString(Case.Escaped);
}

class ConverStringPairs : public ::testing::TestWithParam<EscapeCase> {};

TEST_P(ConverStringPairs, EscapesAndUnescapesBackToTheSameBytes) {
    EXPECT_EQ(ConverString(GetParam().Plain, true), GetParam().Escaped);
    EXPECT_EQ(ConverString(GetParam().Escaped, false), GetParam().Plain);
}

INSTANTIATE_TEST_SUITE_P(
    Values, ConverStringPairs,
    ::testing::Values(EscapeCase{"O'Brien", "O''Brien"}, EscapeCase{"D:\\data", "D:\\\\data"},
                      EscapeCase{"a\r\nb", "a\\x0D\\x0Ab"}, EscapeCase{"\0z\0"s, "\\x00z\\x00"},
                      // A backslash before x stays distinguishable from an escape it resembles.
                      EscapeCase{"\\x0D", "\\\\x0D"}, EscapeCase{"''", "''''"},
                      EscapeCase{"Grüße, 東京", "Grüße, 東京"}, EscapeCase{"", ""}),
    [](const ::testing::TestParamInfo<EscapeCase>& param) { return std::to_string(param.index); });

TEST(ConverString, KeepsBackslashSequencesOutsideTheTableWhenDecoding) {
    for (const std::string text : {"\\x41", "\\x0d", "\\n", "\\", "'", "\\x0"}) {
        EXPECT_EQ(ConverString(text, false), text) << text;
    }
    EXPECT_EQ(ConverString("'''", false), "''");
}

} // namespace
} // namespace quorda
