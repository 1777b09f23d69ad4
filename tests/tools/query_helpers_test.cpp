#include "core/odbc_dataset_p.h"
#include "quorda/db/field.h"
#include "quorda/rtl/exception.h"
#include "quorda/tools/query_helpers.h"
#include "tools_test_support.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace quorda::testing {
namespace {

using namespace std::string_literals;
using quorda_test::Row;
using TValues = std::vector<Variant>;
using TQueryPtr = std::unique_ptr<TODBCDataSet>;

// One family of helpers: over DataBase, or over the pool of shared connections.
struct HelperFamily {
    std::string Name;
    std::function<std::int32_t(const std::string&)> Execute;
    std::function<TQueryPtr(const std::string&)> Open;
    std::function<std::int32_t(const std::string&, const TValues&, const std::vector<std::int32_t>&)>
        ExecLong;
    std::function<TQueryPtr(const std::string&, const TValues&)> OpenLong;
    std::function<TQueryPtr(const std::string&, const TValues&)> OpenLongUni;
};

const std::vector<HelperFamily>& Families() {
    static const std::vector<HelperFamily> families{
        {"DataBase", ExecuteQuery, [](const std::string& sql) -> TQueryPtr { return OpenQuery(sql); },
         ExecQueryLong,
         [](const std::string& sql, const TValues& v) -> TQueryPtr { return OpenQueryLong(sql, v); },
         [](const std::string& sql, const TValues& v) -> TQueryPtr { return OpenQueryLongUni(sql, v); }},
        {"pool", ExecuteMQuery, [](const std::string& sql) -> TQueryPtr { return OpenMQuery(sql); },
         ExecMQueryLong,
         [](const std::string& sql, const TValues& v) -> TQueryPtr { return OpenMQueryLong(sql, v); },
         [](const std::string& sql, const TValues& v) -> TQueryPtr { return OpenMQueryLongUni(sql, v); }}};
    return families;
}

class QueryHelpers : public ToolsTest {
protected:
    void SetUp() override {
        ToolsTest::SetUp();
        Pool.SetDriverConnectOption(dcoDriverNoPrompt);
        Pool.SetConnectStyle(csDriverConnect);
        Pool.SetConnectStr(Profile.ConnectionString);
        Pool.Open();
        MultiDataBases = &Pool;
        T = Table("id integer primary key, a varchar(20), b integer, c varchar(20)");
        Raw.Exec("insert into " + T + " values (1, 'Alpha', 10, 'x')");
        Raw.Exec("insert into " + T + " values (2, 'beta', 20, 'y')");
        Raw.Exec("insert into " + T + " values (3, 'Gamma alpha', 30, 'z')");
    }
    void TearDown() override {
        MultiDataBases = nullptr;
        Pool.ClearDataBase();
        ToolsTest::TearDown();
    }
    std::vector<Row> Rows() { return Raw.QueryStrings("select id, a, b, c from " + T + " order by id"); }

    TMultiDataBases Pool;
    std::string T;
};

// Both families: values set in order (Null a null parameter), listed indexes cleared afterwards, the
// rows affected returned, only the Uni form forward-only, and too few values an error rather than a
// read past the array.
TEST_P(QueryHelpers, EachFamilyExecutesOpensCreatesAndFinds) {
    for (const HelperFamily& family : Families()) {
        SCOPED_TRACE(family.Name);
        Raw.Exec("delete from " + T + " where id > 3");
        // No parameters, no values: executes as it stands.
        EXPECT_EQ(family.ExecLong("insert into " + T + " values (4, 'd', 40, 'w')", {}, {-1}), 1);
        EXPECT_EQ(family.ExecLong("insert into " + T + " (id, a, b, c) values (:id, :a, :b, :c)",
                                  {5, Variant::Null(), 50, "v"}, {}),
                  1);
        EXPECT_EQ(family.ExecLong("update " + T + " set c = :c, a = :a, b = :b where id = :id",
                                  {"p", "q", 7, 4}, {2, 0}),
                  1);
        const std::vector<Row> rows = Rows();
        ASSERT_EQ(rows.size(), 5u);
        EXPECT_EQ(rows[3], (Row{"4", "q", std::nullopt, std::nullopt}));
        EXPECT_EQ(rows[4], (Row{"5", std::nullopt, "50", "v"}));
        EXPECT_EQ(family.Execute("update " + T + " set b = b + 1 where id between 2 and 3"), 2);
        EXPECT_EQ(family.Execute("update " + T + " set b = 0 where id > 99"), 0);

        const auto scrollable = family.OpenLong("select a from " + T + " where id = :id", {2});
        EXPECT_FALSE(scrollable->UniDirectional());
        EXPECT_EQ(scrollable->Fields()[0]->AsString(), "beta");
        const auto forward = family.OpenLongUni("select a from " + T + " where b > :b order by id", {15});
        EXPECT_TRUE(forward->UniDirectional());
        EXPECT_EQ(forward->Fields()[0]->AsString(), "beta");
        EXPECT_TRUE(family.Open("select * from " + T)->Active());

        EXPECT_THROW(family.ExecLong("update " + T + " set a = :a where id = :id", {"x"}, {-1}),
                     EDatabaseError);
        EXPECT_THROW(family.OpenLong("select * from " + T + " where id = :id", {}), EDatabaseError);
        EXPECT_EQ(Rows()[0][1], "Alpha");
    }
    // Created queries are bound to their connection and sized.
    std::vector<std::tuple<std::string, TQueryPtr, TODBCDatabase*, std::int32_t>> cases;
    cases.emplace_back("CreateQuery", CreateQuery(), DataBase, 250);
    cases.emplace_back("CreateQueryExt", CreateQueryExt(), DataBase, 255);
    cases.emplace_back("CreateMQuery", CreateMQuery(), Pool.DataBases(0), 255);
    cases.emplace_back("CreateMQuery2", CreateMQuery2(Pool.DataBases(0)), Pool.DataBases(0), 255);
    for (const auto& [name, query, database, blobBufferSize] : cases) {
        EXPECT_EQ(query->ODBCDatabase(), database) << name;
        EXPECT_EQ(query->BlobBufferSize(), blobBufferSize) << name;
        EXPECT_EQ(query->MaxBlobBuffer(), 1000) << name;
    }
    EXPECT_NE(dynamic_cast<TODBCExtQuery*>(std::get<1>(cases[1]).get()), nullptr);
    // FindAnyRecord matches a prefix of any field, from the next record on.
    const auto query = OpenQuery("select id, a, c from " + T + " where id <= 3 order by id");
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
    // A failing CreateMQuery releases the pool's lock.
    TMultiDataBases broken;
    broken.SetDriverConnectOption(dcoDriverNoPrompt);
    broken.SetConnectStyle(csDriverConnect);
    broken.SetConnectStr("DRIVER={no such driver here}");
    MultiDataBases = &broken;
    EXPECT_ANY_THROW(CreateMQuery());
    auto other = std::async(std::launch::async, [&broken] {
        broken.Lock();
        broken.UnLock();
    });
    if (other.wait_for(std::chrono::seconds(10)) != std::future_status::ready) {
        ADD_FAILURE() << "the pool stayed locked";
        broken.UnLock();
    }
    MultiDataBases = &Pool;
}

TEST_P(QueryHelpers, WaitCursorIsShownAndRestoredAfterEveryFailingHelper) {
    const std::string bad = "select nothing from no_such_table_here";
    // psqlODBC leaks a little when the server refuses a forward-only statement before running it
    // (docs/odbc-quirks.md): there the forward-only form fails while running instead.
    const std::string badUni = Profile.Name.starts_with("pgsql") ? "select 1 / (b - b) from " + T : bad;
    const auto prepared = [&] {
        auto query = CreateQuery();
        query->SQL().SetText(bad);
        return query;
    };
    std::vector<std::pair<std::string, std::function<void()>>> helpers{
        {"ExecQry", [&] { ExecQry(prepared().get()); }}, {"OpenQry", [&] { OpenQry(prepared().get()); }}};
    for (const HelperFamily& family : Families()) {
        helpers.emplace_back(family.Name + " Execute", [&] { family.Execute(bad); });
        helpers.emplace_back(family.Name + " Open", [&] { family.Open(bad); });
        helpers.emplace_back(family.Name + " ExecLong", [&] { family.ExecLong(bad, {}, {-1}); });
        helpers.emplace_back(family.Name + " OpenLong", [&] { family.OpenLong(bad + " where 1 = :x", {1}); });
        helpers.emplace_back(family.Name + " OpenLongUni", [&] { family.OpenLongUni(badUni, {}); });
    }
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
    // A wait cursor already up is not remembered as the one to come back to: the cursor goes back to
    // the one saved by the call before.
    Screen::SetCursor(crSQLWait);
    Cursors.clear();
    ExecuteQuery("update " + T + " set b = 2 where id = 1");
    EXPECT_EQ(Cursors, (std::vector<TCursor>{crDefault}));
}

INSTANTIATE_TEST_SUITE_P(Drivers, QueryHelpers, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

// The driver's own choice (arrays on PostgreSQL, single executes on SQLite) and single executes
// forced, as on a driver without arrays.
const std::vector<std::pair<std::string, std::optional<TDriverQuirks>>> kPaths{
    {"driver's choice", std::nullopt}, {"single executes", TDriverQuirks{false, false}}};

class Batch : public ToolsTest {
protected:
    std::unique_ptr<TODBCQuery> Query(const std::string& SQL, const std::optional<TDriverQuirks>& Path) {
        auto query = CreateQuery();
        query->SQL().SetText(SQL);
        // Left to itself the batch makes its own forward-only statement; a path is forced on a
        // statement prepared beforehand.
        if (Path) {
            query->Prepare();
            EngineOf(*query).Quirks = Path;
        }
        return query;
    }
};

TEST_P(Batch, RowsNullsAndMixedTypesArriveOnEveryPath) {
    // Arrays only where they gain: PostgreSQL saves a round trip per row, SQLite ODBC does not.
    EXPECT_EQ(ProbeDriverQuirks(DataBase->GetDBC()).UseParamArrays(), Profile.Name != "sqlite");
    constexpr int kRows = 2500; // three chunks, the last one short
    std::vector<std::vector<Variant>> rows;
    std::vector<quorda_test::Row> expected;
    for (int i = 0; i < kRows; ++i) {
        const std::int64_t big = 9007199254740993LL + i;
        // Text from strings and numbers; the first value is null, so the first string sets the type.
        const Variant text = i % 3 == 0   ? Variant::Null()
                             : i % 3 == 1 ? Variant("t" + std::to_string(i))
                                          : Variant(i);
        // A floating-point column that also receives integers.
        const Variant number = i == 0 ? Variant::Null() : i % 2 == 0 ? Variant(i) : Variant(i + 0.25);
        const std::string bytes = "\0x\xff"s + std::string(static_cast<std::size_t>(i % 5), ',');
        const Variant blob = i % 7 == 0 ? Variant::Null() : Variant(bytes);
        rows.push_back({i, big, text, number, blob});
        expected.push_back({std::to_string(i), std::to_string(big),
                            i % 3 == 0 ? std::nullopt : std::optional(text.AsString()),
                            i == 0 ? std::nullopt : std::optional(std::to_string(4 * i + (i % 2))),
                            i % 7 == 0 ? std::nullopt : std::optional(std::to_string(bytes.size()))});
    }
    for (const auto& [path, quirks] : kPaths) {
        const std::string t =
            Table("id integer, n bigint, t varchar(50), f double precision, b " + Profile.Sql.BlobType);
        const auto query = Query("insert into " + t + " values (:id, :n, :t, :f, :b)", quirks);
        // A parameter's own type wins over its values'.
        query->ParamByName("b")->SetDataType(ftBlob);
        DataBase->StartTransaction();
        EXPECT_EQ(query->ExecSQLBatch(rows), kRows) << path;
        DataBase->Commit();
        EXPECT_EQ(
            Raw.QueryStrings("select id, n, t, cast(f * 4 as integer), length(b) from " + t + " order by id"),
            expected)
            << path;
        // The dataset runs single statements again afterwards.
        const std::vector<Variant> single{-1, 1, "x", 1.5, "z"};
        for (std::size_t i = 0; i < single.size(); ++i) {
            query->Params()[static_cast<int>(i)]->SetAsVariant(single[i]);
        }
        query->ExecSQL();
        EXPECT_EQ(Raw.Scalar("select count(*) from " + t), std::to_string(kRows + 1)) << path;
    }
    const std::string t = Table("id integer, d " + Profile.Sql.TimestampType);
    EXPECT_EQ(ExecQueryBatch("insert into " + t + " values (:id, :d)",
                             {{1, Variant::FromDateTime(EncodeDateTime(2024, 2, 29, 23, 59, 58, 125))},
                              {2, Variant::Null()}}),
              2);
    EXPECT_EQ(Raw.QueryStrings("select d from " + t + " order by id"),
              (std::vector<quorda_test::Row>{{"2024-02-29 23:59:58.125"}, {std::nullopt}}));
}

TEST_P(Batch, AFailingRowIsNamedAndATransactionLeavesNothing) {
    struct Case {
        std::string Name;
        std::size_t Row;
        Variant Bad;
    };
    // A duplicate key in the second chunk, a value the column's type cannot take.
    const std::vector<Case> cases{{"duplicate key", 1700, Variant(5)}, {"conversion", 3, Variant("x1")}};
    for (const auto& [path, quirks] : kPaths) {
        for (const Case& c : cases) {
            const std::string t = Table("id integer primary key, name varchar(20)");
            Raw.Exec("insert into " + t + " values (5, 'kept')");
            std::vector<std::vector<Variant>> rows;
            for (int i = 0; i < 2500; ++i) {
                rows.push_back({i + 10, "row"});
            }
            rows[c.Row][0] = c.Bad;
            const auto query = Query("insert into " + t + " values (:id, :name)", quirks);
            DataBase->StartTransaction();
            try {
                query->ExecSQLBatch(rows);
                ADD_FAILURE() << path << ", " << c.Name << ": no error";
            } catch (const EODBCBatchError& e) {
                EXPECT_EQ(e.RowIndex(), c.Row) << path << ", " << c.Name;
                EXPECT_NE(e.Message().find("Row " + std::to_string(c.Row) + " of the batch failed: "),
                          std::string::npos)
                    << e.Message();
            }
            DataBase->Rollback();
            EXPECT_EQ(Raw.QueryStrings("select id, name from " + t),
                      (std::vector<quorda_test::Row>{{"5", "kept"}}))
                << path << ", " << c.Name;
        }
    }
    // A row with too few values is refused before anything runs.
    const std::string t = Table("id integer, name varchar(20)");
    try {
        ExecQueryBatch("insert into " + t + " values (:id, :name)", {{1, "a"}, {2}});
        ADD_FAILURE() << "a short row ran";
    } catch (const EODBCBatchError& e) {
        EXPECT_EQ(e.RowIndex(), 1u);
    }
    EXPECT_EQ(Raw.Scalar("select count(*) from " + t), "0");
}

// A statement executed again keeps the bindings its new values fit and binds again where they do
// not: each execution must still send exactly its own values.
TEST_P(Batch, RepeatedExecutesSendEachExecutionsOwnValues) {
    const std::string t = Table("id integer, t varchar(300), b " + Profile.Sql.BlobType);
    const auto query = Query("insert into " + t + " values (:id, :t, :b)", std::nullopt);
    // Longer and shorter texts and blobs (empty: NULL), NULLs in between, a number into the text column.
    const std::vector<std::pair<Variant, std::string>> steps{{"abc", "\0\1"s},
                                                             {std::string(200, 'x'), "\2"s},
                                                             {"", ""},
                                                             {Variant::Null(), "\3\0\3\0"s},
                                                             {"de", std::string(100, 'y')},
                                                             {42, "z"}};
    std::vector<quorda_test::Row> expected;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const auto& [text, bytes] = steps[i];
        query->Params()[0]->SetAsInteger(static_cast<std::int32_t>(i));
        query->Params()[1]->SetAsVariant(text);
        if (VarIsNull(text)) {
            query->Params()[1]->SetAsString("");
            query->Params()[1]->Clear();
        }
        query->Params()[2]->SetBlobData(bytes.data(), bytes.size());
        if (bytes.empty()) {
            query->Params()[2]->Clear();
        }
        query->ExecSQL();
        expected.push_back({std::to_string(i),
                            VarIsNull(text) ? std::nullopt : std::optional(text.AsString()),
                            bytes.empty() ? std::nullopt : std::optional(std::to_string(bytes.size()))});
    }
    EXPECT_EQ(Raw.QueryStrings("select id, t, length(b) from " + t + " order by id"), expected);
}

INSTANTIATE_TEST_SUITE_P(Drivers, Batch, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda::testing
