#include "quorda/rtl/string_utils.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace quorda {
namespace {

// SameText folds accented, Greek (final sigma too) and Cyrillic letters, and the long s; CompareText
// orders by upper case and code point, CompareStr by bytes. Invalid UTF-8 compares consistently and
// never equals a valid letter.
TEST(StringUtils, ComparingCaseMappingTrimQuoteReplaceNumbersAndFieldNames) {
    EXPECT_EQ((std::vector<bool>{SameText("ÉCOLE ÀÇÑÖ", "école àçñö"), SameText("ŁÓDŹ ŐŰ Ǆ", "łódź őű ǆ"),
                                 SameText("ПРИВЕТ ЁЖ Ї", "привет ёж ї"), SameText("ΣΟΦΊΑ", "σοφία"),
                                 SameText("ΟΔΟΣ", "οδος"), SameText("Straße", "STRAßE"), SameText("ſ", "S"),
                                 SameText("e", "é"), SameText("abc", "abcd"), SameText("", "")}),
              (std::vector<bool>{true, true, true, true, true, true, true, false, false, true}));
    const auto sign = [](int order) { return (order > 0) - (order < 0); };
    EXPECT_EQ((std::vector<int>{sign(CompareText("a", "_")), sign(CompareStr("a", "_")),
                                sign(CompareText("abc", "ABCD")), sign(CompareText("b", "A")),
                                sign(CompareText("Äpfel", "äPFEL")), sign(CompareText("z", "é")),
                                sign(CompareText("Я", "я1")), sign(CompareStr("B", "a")),
                                sign(CompareText("x\xFFy", "X\xFFY"))}),
              (std::vector<int>{-1, 1, -1, 1, 0, -1, -1, -1, 0}));
    EXPECT_NE(CompareText("\xC3", "\xC3\xA9"), 0);
    // Prefixes and suffixes ignore case; a cut UTF-8 sequence counts byte by byte.
    EXPECT_EQ((std::vector<bool>{StartsText("SEL", "select *"), StartsText("при", "ПРИВЕТ"),
                                 StartsText("selects", "select"), StartsText("", "x"),
                                 EndsText("ВЕТ", "привет"), EndsText("x", "")}),
              (std::vector<bool>{true, true, false, true, true, false}));
    EXPECT_EQ(Utf8Length("aé€😀"), 4u);
    EXPECT_EQ(Utf8Length("\xE2\x82"), 2u);
    EXPECT_EQ(AnsiUpperCase("straße ñandú москва ωμέγα"), "STRAßE ÑANDÚ МОСКВА ΩΜΈΓΑ");
    EXPECT_EQ(AnsiLowerCase("ÀÉÎ ĞİŞ МОСКВА"), "àéî ğiş москва");
    EXPECT_EQ(UpperCase("abc-é"), "ABC-é");
    EXPECT_EQ(LowerCase("ABC-É"), "abc-É");
    EXPECT_EQ(AnsiUpperCase("a\xFF\xC3z"), "A\xFF\xC3Z"); // invalid bytes pass through
    EXPECT_EQ(UnicodeToUpper(U'ÿ'), U'Ÿ');
    EXPECT_EQ(UnicodeToLower(U'Ω'), U'ω');
    // Greek with ypogegrammeni upper-cases to the prosgegrammeni form (simple mapping), which the
    // hand-written table once missed: the first and last of a run and the three loners.
    for (auto [lower, upper] :
         {std::pair{U'\u1F80', U'\u1F88'}, std::pair{U'\u1FA7', U'\u1FAF'}, std::pair{U'\u1FB3', U'\u1FBC'},
          std::pair{U'\u1FC3', U'\u1FCC'}, std::pair{U'\u1FF3', U'\u1FFC'}}) {
        EXPECT_EQ(UnicodeToUpper(lower), upper);
        EXPECT_EQ(UnicodeToLower(upper), lower);
    }
    EXPECT_TRUE(SameText("\u1F80", "\u1F88"));
    EXPECT_EQ(Trim("\t\r\n  a b \x01 "), "a b");
    EXPECT_EQ(TrimLeft("  a "), "a ");
    EXPECT_EQ(TrimRight("  a \n"), "  a");
    EXPECT_EQ(Trim(" \t "), "");
    EXPECT_EQ(Trim("é"), "é"); // bytes above 0x7F are text
    // Quoting doubles the quote and dequoting undoes it; replacing never rescans its output.
    EXPECT_EQ(QuotedStr("it's"), "'it''s'");
    EXPECT_EQ(QuotedStr(""), "''");
    EXPECT_EQ(AnsiQuotedStr("say \"x\"", '"'), "\"say \"\"x\"\"\"");
    EXPECT_EQ(AnsiDequotedStr("'it''s' tail", '\''), "it's");
    EXPECT_EQ(AnsiDequotedStr("plain", '\''), "plain");
    EXPECT_EQ(StringReplace("a-b-c", "-", "+", 0), "a+b-c");
    EXPECT_EQ(StringReplace("a-b-c", "-", "+", rfReplaceAll), "a+b+c");
    EXPECT_EQ(StringReplace("Äpfel und äpfel", "ÄPFEL", "Birnen", rfReplaceAll | rfIgnoreCase),
              "Birnen und Birnen");
    EXPECT_EQ(StringReplace("Select select", "SELECT", "x", rfIgnoreCase), "x select");
    EXPECT_EQ(StringReplace("aaa", "aa", "a", rfReplaceAll), "aa");
    EXPECT_EQ(StringReplace("abc", "", "x", rfReplaceAll), "abc");
    EXPECT_EQ(IntToStr(-9223372036854775807LL - 1), "-9223372036854775808");
    EXPECT_EQ(IntToHex(255, 4), "00FF");
    EXPECT_EQ(IntToHex(0x1234ABCD, 2), "1234ABCD");
    EXPECT_EQ(IntToHex(-1, 4), "FFFFFFFFFFFFFFFF");
    EXPECT_EQ(IntToHex(0, 0), "0");
    const std::string fields = " ID ; Name;;Last ";
    std::size_t pos = 0;
    std::vector<std::string> names;
    while (pos < fields.size()) {
        names.push_back(ExtractFieldName(fields, pos));
    }
    EXPECT_EQ(names, (std::vector<std::string>{"ID", "Name", "", "Last"}));
    EXPECT_EQ(pos, fields.size());
    EXPECT_EQ(ExtractFieldName(fields, pos), "");
    const std::string trailing = "A;";
    pos = 0;
    EXPECT_EQ(ExtractFieldName(trailing, pos), "A");
    EXPECT_EQ(pos, 2u);
}

} // namespace
} // namespace quorda
