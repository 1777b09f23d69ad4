#include "quorda/core/odbc_params.h"
#include "quorda/core/param_markers.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace quorda {
namespace {

struct Scanned {
    std::string text;
    std::vector<std::string> names;
};

Scanned Scan(std::string text) {
    Scanned result;
    ScanParamMarkers(text, [&result](const std::string& name) { result.names.push_back(name); });
    result.text = std::move(text);
    return result;
}

using Names = std::vector<std::string>;

TEST(ParamMarkers, DocumentedExamples) {
    auto s = Scan("select * from t where a = :a and b = :b");
    EXPECT_EQ(s.text, "select * from t where a = ? and b = ?");
    EXPECT_EQ(s.names, (Names{"a", "b"}));

    s = Scan("where a=:a+1");
    EXPECT_EQ(s.text, "where a=?");
    EXPECT_EQ(s.names, (Names{"a+1"}));

    s = Scan("where t = '12:30'");
    EXPECT_EQ(s.text, "where t = '12:30'");
    EXPECT_TRUE(s.names.empty());

    s = Scan("where x = :x::int");
    EXPECT_EQ(s.text, "where x = ?");
    EXPECT_EQ(s.names, (Names{"x::int"}));

    s = Scan("select '::', a::b");
    EXPECT_EQ(s.text, "select '::', a:b");
    EXPECT_TRUE(s.names.empty());

    s = Scan(":\"my name\"");
    EXPECT_EQ(s.text, "?");
    EXPECT_EQ(s.names, (Names{"my name"}));

    s = Scan("select :id, :id from t where k = :id");
    EXPECT_EQ(s.text, "select ?, ? from t where k = ?");
    EXPECT_EQ(s.names, (Names{"id", "id", "id"}));
}

TEST(ParamMarkers, DelimitersEndNamesOthersBelongToThem) {
    // Exactly LF, CR, blank, ")", "," and ";" end a name.
    auto s = Scan("(:a)\n:b\r\n:c,:d;:e :f");
    EXPECT_EQ(s.text, "(?)\n?\r\n?,?;? ?");
    EXPECT_EQ(s.names, (Names{"a", "b", "c", "d", "e", "f"}));

    // Tabs, "=", "(", "-", "." and "?" are part of the name.
    s = Scan("x=:p.q-r=(s?\tt u");
    EXPECT_EQ(s.text, "x=? u");
    EXPECT_EQ(s.names, (Names{"p.q-r=(s?\tt"}));
}

TEST(ParamMarkers, QuotesShareOneLiteralFlag) {
    // An apostrophe closes a literal opened by a double quote, so the colon after it is a marker.
    auto s = Scan("select \"it's :x\" , :y");
    EXPECT_EQ(s.text, "select \"it's ?");
    EXPECT_EQ(s.names, (Names{"x\" , :y"}));

    // Quotes inside a name toggle the flag too: delimiters between them belong to the name.
    s = Scan("where a = :a'b c' and b = :b");
    EXPECT_EQ(s.text, "where a = ? and b = ?");
    EXPECT_EQ(s.names, (Names{"a'b c'", "b"}));

    // Apostrophes are stripped before double quotes, one pair each.
    s = Scan(":'a b', :\"'c'\", :'\"d\"', :''e''");
    EXPECT_EQ(s.text, "?, ?, ?, ?");
    EXPECT_EQ(s.names, (Names{"a b", "'c'", "d", "'e'"}));

    // Only a quote right after the colon marks a quoted name.
    s = Scan(":x'y' :z\"\"");
    EXPECT_EQ(s.names, (Names{"x'y'", "z\"\""}));
}

TEST(ParamMarkers, UnterminatedQuotesRunToTheEnd) {
    auto s = Scan("where a = 'abc :x");
    EXPECT_EQ(s.text, "where a = 'abc :x");
    EXPECT_TRUE(s.names.empty());

    s = Scan("where a = :'abc, :d");
    EXPECT_EQ(s.text, "where a = ?");
    EXPECT_EQ(s.names, (Names{"abc, :d"}));

    s = Scan(":'");
    EXPECT_EQ(s.text, "?");
    EXPECT_EQ(s.names, (Names{""}));
}

TEST(ParamMarkers, ColonsAtTheEdges) {
    // A lone colon at the end is a marker with an empty name; nothing is read past the text.
    auto s = Scan("a = :");
    EXPECT_EQ(s.text, "a = ?");
    EXPECT_EQ(s.names, (Names{""}));

    s = Scan(":");
    EXPECT_EQ(s.text, "?");
    EXPECT_EQ(s.names, (Names{""}));

    s = Scan(": :");
    EXPECT_EQ(s.text, "? ?");
    EXPECT_EQ(s.names, (Names{"", ""}));

    // Runs of colons: each "::" collapses and the scan resumes after the remaining colon.
    s = Scan("::");
    EXPECT_EQ(s.text, ":");
    EXPECT_TRUE(s.names.empty());

    s = Scan(":::");
    EXPECT_EQ(s.text, ":?");
    EXPECT_EQ(s.names, (Names{""}));

    s = Scan("::::");
    EXPECT_EQ(s.text, "::");
    EXPECT_TRUE(s.names.empty());

    s = Scan(":::a b");
    EXPECT_EQ(s.text, ":? b");
    EXPECT_EQ(s.names, (Names{"a"}));

    s = Scan("");
    EXPECT_EQ(s.text, "");
    EXPECT_TRUE(s.names.empty());
}

TEST(ParamMarkers, BytesAreHandledOneByOne) {
    // UTF-8 sequences are ordinary name bytes; text around markers stays intact.
    auto s = Scan("select 'ä:ö' from t where n = :näme and m = :ß€\nand z = 'ü'");
    EXPECT_EQ(s.text, "select 'ä:ö' from t where n = ? and m = ?\nand z = 'ü'");
    EXPECT_EQ(s.names, (Names{"näme", "ß€"}));

    // A zero byte ends the scanned text; what follows is kept unexamined.
    std::string text = std::string("a = :a") + '\0' + ":b";
    std::vector<std::string> names;
    ScanParamMarkers(text, [&names](const std::string& name) { names.push_back(name); });
    EXPECT_EQ(text, std::string("a = ?") + '\0' + ":b");
    EXPECT_EQ(names, (Names{"a"}));
}

TEST(ParamMarkers, LongNamesAndManyMarkers) {
    const std::string longName(100000, 'n');
    auto s = Scan("where a = :" + longName + " and b = :b");
    EXPECT_EQ(s.text, "where a = ? and b = ?");
    ASSERT_EQ(s.names.size(), 2u);
    EXPECT_EQ(s.names[0], longName);

    // A generated bulk statement: the rewrite stays linear in the text's length (rewriting marker by
    // marker, moving the rest of the text each time, would take minutes here).
    std::string many;
    std::string expected;
    for (int i = 0; i < 200000; ++i) {
        many += ":p" + std::to_string(i) + ",";
        expected += "?,";
    }
    s = Scan(many);
    EXPECT_EQ(s.text, expected);
    ASSERT_EQ(s.names.size(), 200000u);
    EXPECT_EQ(s.names.back(), "p199999");
}

TEST(ParamMarkers, ThrowingHandlerLeavesTheMarkerInPlace) {
    std::string text = "a = :a and b = :b";
    int calls = 0;
    EXPECT_THROW(ScanParamMarkers(text,
                                  [&calls](const std::string& name) {
                                      if (++calls == 2) {
                                          throw std::runtime_error(name);
                                      }
                                  }),
                 std::runtime_error);
    EXPECT_EQ(text, "a = ? and b = :b");
}

TEST(ParamMarkers, CreateParamsBuildsACollection) {
    TODBCParams params;
    std::string text = "update t set a = :a, b = :B where a = :a";
    CreateParams(&params, text);
    EXPECT_EQ(text, "update t set a = ?, b = ? where a = ?");
    ASSERT_EQ(params.Count(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(params[i]->DataType(), ftUnknown);
        EXPECT_FALSE(params[i]->Bound());
    }
    EXPECT_EQ(params[1]->Name(), "B");
    EXPECT_EQ(params[2]->Name(), "a");

    // Without a collection only the text changes.
    text = "select :x";
    CreateParams(nullptr, text);
    EXPECT_EQ(text, "select ?");
}

// What a dataset does when its SQL text changes: a fresh collection inherits by exact name.
TEST(ParamMarkers, ValuesSurviveATextChangeByName) {
    TODBCParams old;
    std::string text = "select * from t where id = :id and name = :name and Flag = :Flag";
    CreateParams(&old, text);
    old.ParamByName("id")->SetAsInteger(5);
    old.ParamByName("name")->SetAsString("x");
    old.ParamByName("name")->Clear();
    auto* later = old.CreateParam(ftFloat, "id"); // a second namesake is never used
    later->SetAsFloat(9.5);

    TODBCParams fresh;
    text = "select * from t where id in (:id, :id) and flag = :flag and other = :other";
    CreateParams(&fresh, text);
    fresh.AssignValues(&old);
    ASSERT_EQ(fresh.Count(), 4);
    for (int i : {0, 1}) {
        EXPECT_EQ(fresh[i]->DataType(), ftInteger);
        EXPECT_EQ(fresh[i]->AsInteger(), 5);
        EXPECT_TRUE(fresh[i]->Bound());
    }
    // Names match case-sensitively: "flag" does not take the value of "Flag".
    EXPECT_EQ(fresh[2]->DataType(), ftUnknown);
    EXPECT_FALSE(fresh[2]->Bound());
    EXPECT_FALSE(fresh[3]->Bound());

    // Null values carry over as nulls of their type.
    TODBCParams third;
    text = "where name = :name";
    CreateParams(&third, text);
    third.AssignValues(&old);
    EXPECT_TRUE(third[0]->IsNull());
    EXPECT_TRUE(third[0]->Bound());
    EXPECT_EQ(third[0]->DataType(), ftString);
}

} // namespace
} // namespace quorda
