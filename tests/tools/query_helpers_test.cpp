#include "quorda/db/field.h"
#include "quorda/rtl/exception.h"
#include "quorda/tools/query_helpers.h"
#include "tools_test_support.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quorda::testing {
namespace {

using quorda_test::Row;

class QueryHelpers : public ToolsTest {
protected:
    void SetUp() override {
        ToolsTest::SetUp();
        T = Table("id integer primary key, a varchar(20), b integer, c varchar(20)");
        Raw.Exec("insert into " + T + " values (1, 'Alpha', 10, 'x')");
        Raw.Exec("insert into " + T + " values (2, 'beta', 20, 'y')");
        Raw.Exec("insert into " + T + " values (3, 'Gamma alpha', 30, 'z')");
    }
    std::vector<Row> Rows() { return Raw.QueryStrings("select id, a, b, c from " + T + " order by id"); }

    std::string T;
};

TEST_P(QueryHelpers, ExecQueryLongSetsValuesNullsAndClearsListedIndexes) {
    // No parameters, no values: executes as it stands.
    EXPECT_EQ(ExecQueryLong("insert into " + T + " values (4, 'd', 40, 'w')", {}, {-1}), 1);
    // Null becomes a null parameter; indexes 2 and 0 are cleared after the values were set.
    EXPECT_EQ(ExecQueryLong("insert into " + T + " (id, a, b, c) values (:id, :a, :b, :c)",
                            {5, Variant::Null(), 50, "v"}, {}),
              1);
    EXPECT_EQ(
        ExecQueryLong("update " + T + " set c = :c, a = :a, b = :b where id = :id", {"p", "q", 7, 4}, {2, 0}),
        1);
    const std::vector<Row> rows = Rows();
    ASSERT_EQ(rows.size(), 5u);
    EXPECT_EQ(rows[3], (Row{"4", "q", std::nullopt, std::nullopt}));
    EXPECT_EQ(rows[4], (Row{"5", std::nullopt, "50", "v"}));
}

TEST_P(QueryHelpers, ExecuteQueryReturnsTheRowsAffected) {
    EXPECT_EQ(ExecuteQuery("update " + T + " set b = b + 1 where id >= 2"), 2);
    EXPECT_EQ(ExecuteQuery("update " + T + " set b = 0 where id > 99"), 0);
}

TEST_P(QueryHelpers, OpenQueryLongBindsValuesAndOnlyTheUniFormIsForwardOnly) {
    const auto scrollable = OpenQueryLong("select a from " + T + " where id = :id", {2});
    EXPECT_FALSE(scrollable->UniDirectional());
    EXPECT_EQ(scrollable->Fields()[0]->AsString(), "beta");
    const auto forward = OpenQueryLongUni("select a from " + T + " where b > :b order by id", {15});
    EXPECT_TRUE(forward->UniDirectional());
    EXPECT_EQ(forward->Fields()[0]->AsString(), "beta");
    EXPECT_TRUE(OpenQuery("select * from " + T)->Active());
}

TEST_P(QueryHelpers, TooFewValuesIsAnErrorNotAReadPastTheArray) {
    EXPECT_THROW(ExecQueryLong("update " + T + " set a = :a where id = :id", {"x"}), EDatabaseError);
    EXPECT_THROW(OpenQueryLong("select * from " + T + " where id = :id", {}), EDatabaseError);
    EXPECT_EQ(Rows()[0][1], "Alpha");
}

TEST_P(QueryHelpers, FindAnyRecordMatchesAPrefixOfAnyFieldFromTheNextRecord) {
    const auto query = OpenQuery("select id, a, c from " + T + " order by id");
    EXPECT_FALSE(FindAnyRecord(query.get(), true, "BE"));
    EXPECT_EQ(query->Fields()[0]->AsInteger(), 1);
    EXPECT_TRUE(FindAnyRecord(query.get(), false, "BE"));
    EXPECT_EQ(query->Fields()[0]->AsInteger(), 2);
    // "alpha" is inside record 3's value, not at its start.
    EXPECT_FALSE(FindAnyRecord(query.get(), false, "alpha"));
    EXPECT_EQ(query->Fields()[0]->AsInteger(), 2);
    EXPECT_TRUE(FindAnyRecord(query.get(), false, ""));
    EXPECT_EQ(query->Fields()[0]->AsInteger(), 3);
    EXPECT_FALSE(FindAnyRecord(query.get(), false, ""));
    EXPECT_EQ(query->Fields()[0]->AsInteger(), 3);
    EXPECT_FALSE(query->ControlsDisabled());
}

TEST_P(QueryHelpers, WaitCursorIsShownAndRestoredAfterEveryFailingHelper) {
    const std::string bad = "select nothing from no_such_table_here";
    // psqlODBC leaks a little when the server refuses a forward-only statement before running it
    // (docs/odbc-quirks.md): there the forward-only form fails while running instead.
    const std::string badUni = IsSqlite() ? bad : "select 1 / (b - b) from " + T;
    const std::vector<std::pair<std::string, std::function<void()>>> helpers{
        {"ExecuteQuery", [&] { ExecuteQuery(bad); }},
        {"OpenQuery", [&] { OpenQuery(bad); }},
        {"ExecQueryLong", [&] { ExecQueryLong(bad, {}); }},
        {"OpenQueryLong", [&] { OpenQueryLong(bad + " where 1 = :x", {1}); }},
        {"OpenQueryLongUni", [&] { OpenQueryLongUni(badUni, {}); }},
        {"ExecQry",
         [&] {
             auto query = CreateQuery();
             query->SQL().SetText(bad);
             ExecQry(query.get());
         }},
        {"OpenQry",
         [&] {
             auto query = CreateQuery();
             query->SQL().SetText(bad);
             OpenQry(query.get());
             ADD_FAILURE() << "opened";
         }},
    };
    for (const auto& [name, helper] : helpers) {
        Cursors.clear();
        EXPECT_ANY_THROW(helper()) << name;
        EXPECT_EQ(Screen::Cursor(), crDefault) << name;
        // Preparing a bad statement may fail before the cursor goes up; if it went up it came down.
        if (!Cursors.empty()) {
            EXPECT_EQ(Cursors, (std::vector<TCursor>{crSQLWait, crDefault})) << name;
        }
    }
    Cursors.clear();
    ExecuteQuery("update " + T + " set b = 1 where id = 1");
    EXPECT_EQ(Cursors, (std::vector<TCursor>{crSQLWait, crDefault}));
}

TEST_P(QueryHelpers, WaitCursorAlreadyUpIsNotRememberedAsTheOneToComeBackTo) {
    ExecuteQuery("update " + T + " set b = 1 where id = 1"); // remembers crDefault
    Screen::SetCursor(crSQLWait);
    Cursors.clear();
    ExecuteQuery("update " + T + " set b = 2 where id = 1");
    // Nothing was remembered, so the cursor goes back to the one saved by the first call.
    EXPECT_EQ(Cursors, (std::vector<TCursor>{crDefault}));
}

INSTANTIATE_TEST_SUITE_P(Drivers, QueryHelpers, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda::testing
