// The string list (sorting, text, change events, owned objects, name-value and delimited text) and
// the string helpers (comparing, case mapping, trimming, quoting, replacing).
#include "quorda/rtl/component.h"
#include "quorda/rtl/stream.h"
#include "quorda/rtl/string_utils.h"
#include "quorda/rtl/strings.h"
#include "rtl_test_support.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorda {
namespace {

using namespace testing_support;

// Through range-for, so that every test reading lines walks the range as well.
Strings Lines(const TStrings& List) {
    Strings lines;
    for (const std::string& line : List) {
        lines.push_back(line);
    }
    EXPECT_EQ(lines, List.ToVector());
    return lines;
}

// Counts its own destructions so tests can see what a list deleted.
class TCounted : public TObject {
public:
    explicit TCounted(int& Deleted) : FDeleted(Deleted) {}
    ~TCounted() override { ++FDeleted; }

private:
    int& FDeleted;
};

TEST(StringList, SortedListsTextLineBreaksAndChangeEvents) {
    TStringList list;
    list.SetSorted(true);
    list.SetText("pear\nApple\nbanana");
    EXPECT_EQ(Lines(list), (Strings{"Apple", "banana", "pear"}));
    // dupIgnore returns the existing (case-insensitively equal) entry and adds nothing.
    EXPECT_EQ(list.Add("APPLE"), 0);
    EXPECT_EQ(list.Count(), 3);
    list.SetDuplicates(dupAccept);
    list.Add("BANANA");
    EXPECT_EQ(list.Count(), 4);
    int index = -1;
    ASSERT_TRUE(list.Find("Banana", index));
    EXPECT_EQ(index, 1); // the first of the equal entries
    list.SetDuplicates(dupError);
    EXPECT_EQ(MessageOf<EStringListError>([&] { list.Add("Pear"); }),
              "String list does not allow duplicates");
    EXPECT_EQ(list.Count(), 4);
    EXPECT_THROW(list.Insert(0, "zzz"), EStringListError);
    EXPECT_THROW(list.Put(0, "zzz"), EStringListError);
    // Moving within a sorted list is refused before anything is lost.
    EXPECT_THROW(list.Move(0, 3), EStringListError);
    EXPECT_EQ(list.Count(), 4);
    ASSERT_FALSE(list.Find("cherry", index));
    EXPECT_EQ(index, 3); // insertion point between banana and pear
    // Duplicates are only checked while sorted.
    list.SetSorted(false);
    list.Add("Pear");
    EXPECT_EQ(list.Count(), 5);
    // IndexOf ignores case unless the list is case-sensitive.
    list.SetText("Alpha\nбета\nÉté\n");
    // A view ends at its length: "ÉTÉS" cut to "ÉTÉ".
    EXPECT_EQ(Map<std::string_view>({"ALPHA", "БЕТА", "été", "gamma", std::string_view("ÉTÉS").substr(0, 5)},
                                    [&](std::string_view text) { return list.IndexOf(text); }),
              (std::vector<int>{0, 1, 2, -1, 2}));
    list.SetCaseSensitive(true);
    EXPECT_EQ(list.IndexOf("ALPHA"), -1);
    EXPECT_EQ(list.IndexOf("Alpha"), 0);
    // A sorted list re-sorts when the case rule changes, and searches with the new rule.
    TStringList sorted;
    sorted.SetText("b\nB\na\nA\n");
    sorted.SetDuplicates(dupAccept);
    sorted.SetSorted(true);
    sorted.SetCaseSensitive(true);
    EXPECT_EQ(Lines(sorted), (Strings{"A", "B", "a", "b"}));
    EXPECT_EQ(sorted.IndexOf("a"), 2);
    EXPECT_EQ(sorted.IndexOf("c"), -1);
    EXPECT_EQ(sorted.IndexOf(std::string_view("Ab").substr(0, 1)), 0);
    TStringList text;
    const auto split = [&](const char* Text) {
        text.SetText(Text);
        return std::pair{Lines(text), text.Text()};
    };
    EXPECT_EQ(Map<const char*>({"one\r\ntwo\rthree\nfour", "a\n\n\r\nb\n", "", "\n"}, split),
              (std::vector<std::pair<Strings, std::string>>{
                  {{"one", "two", "three", "four"}, "one\ntwo\nthree\nfour\n"},
                  {{"a", "", "", "b"}, "a\n\n\nb\n"},
                  {{}, ""},
                  {{""}, "\n"}}));
    text.SetText("x\ny");
    text.SetLineBreak("\r\n");
    EXPECT_EQ(text.Text(), "x\r\ny\r\n");
    // Saved text ends every line; loading drops the byte order mark.
    text.SetText("één\ntwee\n\ndrie");
    text.SetLineBreak("\n");
    TMemoryStream stream;
    text.SaveToStream(stream);
    EXPECT_EQ(stream.DataString(), "één\ntwee\n\ndrie\n");
    TStringStream withBom("\xEF\xBB\xBFone\r\ntwo");
    text.LoadFromStream(withBom);
    EXPECT_EQ(Lines(text), (Strings{"one", "two"}));
    text.Clear();
    Strings events;
    text.OnChanging = [&](TObject* sender) {
        EXPECT_EQ(sender, &text);
        events.push_back("changing");
    };
    text.OnChange = [&](TObject*) { events.push_back("change:" + std::to_string(text.Count())); };
    text.Add("a");
    EXPECT_EQ(events, (Strings{"changing", "change:1"}));
    events.clear();
    text.BeginUpdate();
    text.BeginUpdate();
    text.Add("b");
    text.Delete(0);
    text.EndUpdate();
    EXPECT_EQ(events, (Strings{"changing"}));
    text.Add("c");
    text.EndUpdate();
    EXPECT_EQ(events, (Strings{"changing", "change:2"}));
    // Compound operations notify once.
    events.clear();
    text.SetCommaText("1,2");
    EXPECT_EQ(events, (Strings{"changing", "change:2"}));
    // Clearing an empty text changes nothing.
    text.Clear();
    events.clear();
    text.Clear();
    EXPECT_TRUE(events.empty());
}

TEST(StringList, OwnedObjectsAssignNameValuesDelimitedTextAndTheStringHelpers) {
    int deleted = 0;
    {
        TStringList list(true);
        for (const char* line : {"a", "b", "c", "d"}) {
            list.AddObject(line, new TCounted(deleted));
        }
        list.Exchange(0, 3);
        list.Move(0, 2);
        EXPECT_EQ(deleted, 0);
        EXPECT_EQ(Lines(list), (Strings{"b", "c", "d", "a"}));
        list.Delete(0);
        EXPECT_EQ(deleted, 1);
        list.Put(0, "renamed"); // keeps its object
        EXPECT_NE(list.Objects(0), nullptr);
        list.Clear();
        EXPECT_EQ(deleted, 4);
        list.AddObject("e", new TCounted(deleted));
    }
    EXPECT_EQ(deleted, 5);
    // A list that does not own its objects leaves them alone (ASan reports a delete of this one).
    TCounted kept(deleted);
    {
        TStringList list;
        list.AddObject("kept", &kept);
        list.Delete(0);
        list.AddObject("kept", &kept);
    }
    TObject marker;
    TStringList source;
    source.SetLineBreak("\r\n");
    source.AddObject("a", &marker);
    source.Add("b");
    TStringList target;
    target.Add("old");
    target.Assign(&source);
    EXPECT_EQ(Lines(target), (Strings{"a", "b"}));
    EXPECT_EQ(target.Objects(0), &marker);
    EXPECT_EQ(target.LineBreak(), "\r\n");
    EXPECT_TRUE(target.Equals(source));
    target.Assign(&target);
    EXPECT_EQ(target.Count(), 2);
    EXPECT_THROW((void)target.Get(5), EStringListError);
    EXPECT_THROW(target.Delete(-1), EStringListError);
    EXPECT_THROW(target.Insert(3, "x"), EStringListError);
    EXPECT_THROW(target.Exchange(0, 2), EStringListError);
    EXPECT_THROW(target.SetObjects(2, nullptr), EStringListError);
    EXPECT_NO_THROW(target.Insert(2, "end"));
    TComponent component(nullptr);
    EXPECT_EQ(MessageOf<EAssignError>([&] { target.Assign(&component); }),
              "Cannot assign a TComponent to a TStringList");
    EXPECT_THROW(target.Assign(nullptr), EAssignError);
    TStringList list;
    list.SetText("Host=db1\nPort=5432\nnoseparator\nEmpty=\n");
    EXPECT_EQ((Strings{list.Values("host"), list.Names(1), list.Names(2), list.ValueFromIndex(2),
                       list.Values("missing"), list.Values(std::string_view("PORTS").substr(0, 4))}),
              (Strings{"db1", "Port", "", "", "", "5432"}));
    EXPECT_EQ(list.IndexOfName("EMPTY"), 3);
    std::vector<std::pair<std::string, std::string>> pairs;
    for (const auto& [name, value] : list.NameValues()) {
        pairs.emplace_back(name, value);
    }
    EXPECT_EQ(pairs, (std::vector<std::pair<std::string, std::string>>{
                         {"Host", "db1"}, {"Port", "5432"}, {"", ""}, {"Empty", ""}}));
    list.SetValues("PORT", "6000");
    EXPECT_EQ(list[1], "PORT=6000");
    list.SetValues("User", "me");
    EXPECT_EQ(list[4], "User=me");
    list.SetValues("Host", "");
    EXPECT_EQ(list.IndexOfName("Host"), -1);
    EXPECT_EQ(list.Count(), 4);
    list.SetValueFromIndex(0, "7000");
    EXPECT_EQ(list.Values("port"), "7000");
    list.SetText("plain\ntwo words\nsay \"hi\"\na,b\n\n");
    EXPECT_EQ(list.CommaText(), "plain,\"two words\",\"say \"\"hi\"\"\",\"a,b\",");
    TStringList back;
    back.SetCommaText(list.CommaText());
    EXPECT_EQ(Lines(back), Lines(list));
    // Outside quotes blanks separate items too; empty items between delimiters are kept.
    back.SetCommaText(" a b , \"c d\",,e ");
    EXPECT_EQ(Lines(back), (Strings{"a", "b", "c d", "", "e"}));
    back.SetText("\n");
    EXPECT_EQ(back.CommaText(), "\"\"") << "a lone empty line must not read back as no line";
    // Strict delimiters and another quote character.
    TStringList fields;
    fields.SetDelimiter(';');
    fields.SetQuoteChar('\'');
    fields.SetStrictDelimiter(true);
    fields.SetDelimitedText("first name;'it''s';x y");
    EXPECT_EQ(Lines(fields), (Strings{"first name", "it's", "x y"}));
    EXPECT_EQ(fields.DelimitedText(), "first name;'it''s';x y");
    // CommaText does not disturb the list's own delimiter settings.
    EXPECT_EQ(fields.CommaText(), "\"first name\",it's,\"x y\"");
    EXPECT_EQ(fields.Delimiter(), ';');
    // SameText folds accented, Greek (final sigma too) and Cyrillic letters, and the long s; CompareText
    // orders by upper case and code point, CompareStr by bytes. Invalid UTF-8 compares consistently and
    // never equals a valid letter.
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
    // Bytes above 0x7F are text to Trim. Quoting doubles the quote and dequoting undoes it; replacing
    // never rescans its output.
    EXPECT_EQ((Strings{Trim("\t\r\n  a b \x01 "), TrimLeft("  a "), TrimRight("  a \n"), Trim(" \t "),
                       Trim("é"), QuotedStr("it's"), QuotedStr(""), AnsiQuotedStr("say \"x\"", '"'),
                       AnsiDequotedStr("'it''s' tail", '\''), AnsiDequotedStr("plain", '\'')}),
              (Strings{"a b", "a ", "  a", "", "é", "'it''s'", "''", "\"say \"\"x\"\"\"", "it's", "plain"}));
    EXPECT_EQ(
        (Strings{StringReplace("a-b-c", "-", "+", 0), StringReplace("a-b-c", "-", "+", rfReplaceAll),
                 StringReplace("Äpfel und äpfel", "ÄPFEL", "Birnen", rfReplaceAll | rfIgnoreCase),
                 StringReplace("Select select", "SELECT", "x", rfIgnoreCase),
                 StringReplace("aaa", "aa", "a", rfReplaceAll), StringReplace("abc", "", "x", rfReplaceAll)}),
        (Strings{"a+b-c", "a+b+c", "Birnen und Birnen", "x select", "aa", "abc"}));
    EXPECT_EQ((Strings{IntToStr(-9223372036854775807LL - 1), IntToHex(255, 4), IntToHex(0x1234ABCD, 2),
                       IntToHex(-1, 4), IntToHex(0, 0)}),
              (Strings{"-9223372036854775808", "00FF", "1234ABCD", "FFFFFFFFFFFFFFFF", "0"}));
    const std::string fieldList = " ID ; Name;;Last ";
    std::size_t pos = 0;
    std::vector<std::string> names;
    while (pos < fieldList.size()) {
        names.push_back(ExtractFieldName(fieldList, pos));
    }
    EXPECT_EQ(names, (std::vector<std::string>{"ID", "Name", "", "Last"}));
    EXPECT_EQ(pos, fieldList.size());
    EXPECT_EQ(ExtractFieldName(fieldList, pos), "");
    const std::string trailing = "A;";
    pos = 0;
    EXPECT_EQ(ExtractFieldName(trailing, pos), "A");
    EXPECT_EQ(pos, 2u);
}

} // namespace
} // namespace quorda
