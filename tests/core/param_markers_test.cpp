#include "quorda/core/param_markers.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace quorda {
namespace {

using Names = std::vector<std::string>;

struct Case {
    std::string input;
    std::string text;
    Names names;
};

void ExpectScans(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
        std::string text = c.input;
        Names names;
        ScanParamMarkers(text, [&names](const std::string& name) { names.push_back(name); });
        EXPECT_EQ(text, c.text) << "input: " << c.input;
        EXPECT_EQ(names, c.names) << "input: " << c.input;
    }
}

TEST(ParamMarkers, NamesQuotesCommentsColonsAndEnds) {
    // A generated bulk statement: the rewrite stays linear in the text's length (rewriting marker by
    // marker, moving the rest of the text each time, would take minutes here).
    Case bulk;
    for (int i = 0; i < 200000; ++i) {
        bulk.input += ":p" + std::to_string(i) + ",";
        bulk.text += "?,";
        bulk.names.push_back("p" + std::to_string(i));
    }
    const std::string longName(100000, 'n');
    ExpectScans({
        bulk,
        {"where a = :" + longName + " and b = :b", "where a = ? and b = ?", {longName, "b"}},
        {"select * from t where a = :a and b = :b", "select * from t where a = ? and b = ?", {"a", "b"}},
        {"where a=:a+1", "where a=?", {"a+1"}},
        {"where t = '12:30'", "where t = '12:30'", {}},
        {"where x = :x::int", "where x = ?", {"x::int"}},
        {"select '::', a::b", "select '::', a:b", {}},
        {":\"my name\"", "?", {"my name"}},
        {"select :id, :id from t where k = :id", "select ?, ? from t where k = ?", {"id", "id", "id"}},
        // Exactly LF, CR, blank, ")", "," and ";" end a name; tabs, "=", "(", "-", "." and "?" do not.
        {"(:a)\n:b\r\n:c,:d;:e :f", "(?)\n?\r\n?,?;? ?", {"a", "b", "c", "d", "e", "f"}},
        {"x=:p.q-r=(s?\tt u", "x=? u", {"p.q-r=(s?\tt"}},
        // Single and double quotes share one flag: the apostrophe closes the double-quoted literal.
        {"select \"it's :x\" , :y", "select \"it's ?", {"x\" , :y"}},
        // Quotes inside a name toggle the flag too, so delimiters between them belong to the name.
        {"where a = :a'b c' and b = :b", "where a = ? and b = ?", {"a'b c'", "b"}},
        // Quoted names lose one pair of apostrophes, then one pair of double quotes; only a quote
        // right after the colon makes a quoted name.
        {":'a b', :\"'c'\", :'\"d\"', :''e''", "?, ?, ?, ?", {"a b", "'c'", "d", "'e'"}},
        {":x'y' :z\"\"", "? ?", {"x'y'", "z\"\""}},
        // Quoted column and parameter names as generated statements write them bind by the bare name.
        {"WHERE \"id\"=:\"id\" AND \"no\"=:\"no\"", "WHERE \"id\"=? AND \"no\"=?", {"id", "no"}},
        {"VALUES(:\"id\",:\"total\")\n\"total\"=:\"total\"",
         "VALUES(?,?)\n\"total\"=?",
         {"id", "total", "total"}},
        // An unterminated literal runs to the end, inside a name as well.
        {"where a = 'abc :x", "where a = 'abc :x", {}},
        {"where a = :'abc, :d", "where a = ?", {"abc, :d"}},
        {":'", "?", {""}},
        // UTF-8 sequences are ordinary bytes.
        {"select 'ä:ö' from t where n = :näme and m = :ß€\nand z = 'ü'",
         "select 'ä:ö' from t where n = ? and m = ?\nand z = 'ü'",
         {"näme", "ß€"}},
        // Comments are kept as they are and hold no markers.
        {"where /* owner = :owner and */ id = :id", "where /* owner = :owner and */ id = ?", {"id"}},
        // An apostrophe or a double colon inside a comment changes nothing after it.
        {"select a -- it's :x::y\n, :b", "select a -- it's :x::y\n, ?", {"b"}},
        {"/* it's */ :a /* \" */ :b", "/* it's */ ? /* \" */ ?", {"a", "b"}},
        // A line comment ends at its line feed, a block comment at the first "*/" (no nesting).
        {"-- :a\r\n:b", "-- :a\r\n?", {"b"}},
        {"/* /* :a */ :b */", "/* /* :a */ ? */", {"b"}},
        // Unterminated comments run to the end of the text, or to a zero byte.
        {"x /* :a", "x /* :a", {}},
        {"x -- :a", "x -- :a", {}},
        {std::string("/* :a\0*/ :b", 11), std::string("/* :a\0*/ :b", 11), {}},
        // Inside a literal the comment marks are text; a single "-" or "/" starts nothing.
        {"select '--', '/*', :a", "select '--', '/*', ?", {"a"}},
        {"a - :b / :c", "a - ? / ?", {"b", "c"}},
        // A name swallows "-" and "/" as it always did.
        {":a--b :c/*d", "? ?", {"a--b", "c/*d"}},
        // A colon at the very end is a marker with an empty name; nothing is read past the text.
        {"a = :", "a = ?", {""}},
        {": :", "? ?", {"", ""}},
        // Each "::" collapses and the scan resumes after the remaining colon.
        {"::", ":", {}},
        {":::", ":?", {""}},
        {"::::", "::", {}},
        {":::a b", ":? b", {"a"}},
        {"", "", {}},
        // A zero byte ends the text; what follows it is kept unexamined.
        {std::string("a = :a\0:b", 9), std::string("a = ?\0:b", 8), {"a"}},
    });
}

TEST(ParamMarkers, ThrowingHandlerLeavesTheMarkerInPlace) {
    std::string text = "a = :a and b = :b";
    int calls = 0;
    auto failSecond = [&calls](const std::string& name) {
        if (++calls == 2) {
            throw std::runtime_error(name);
        }
    };
    EXPECT_THROW(ScanParamMarkers(text, failSecond), std::runtime_error);
    EXPECT_EQ(text, "a = ? and b = :b");
}

} // namespace
} // namespace quorda
