// The tools: query helpers over a database and over the pool, batches, and the text file export and
// import.
#include "core/odbc_dataset_p.h"
#include "quorda/core/odbc_database.h"
#include "quorda/db/field.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/application.h"
#include "quorda/rtl/exception.h"
#include "quorda/rtl/in_out_error.h"
#include "quorda/rtl/numbers.h"
#include "quorda/tools/query_helpers.h"
#include "quorda/tools/text_transfer.h"
#include "quorda_test/environment.h"
#include "quorda_test/profiles.h"
#include "quorda_test/raw_odbc.h"
#include "rtl_test_support.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace quorda::testing {

// A test over one data source: DataBase is open on it, Raw checks independently, the screen cursor's
// changes are recorded and everything is put back afterwards.
class ToolsTest : public quorda_test::ProfileTest {
protected:
    void SetUp() override {
        FDatabase = std::make_unique<TODBCDatabase>(nullptr);
        FDatabase->SetDriverConnectOption(dcoDriverNoPrompt);
        FDatabase->SetConnectStr(Profile.ConnectionString);
        FDatabase->Open();
        DataBase = FDatabase.get();
        ExecCursor = crSQLWait;
        FOldHook = Screen::SetCursorHook([this](TCursor cursor) { Cursors.push_back(cursor); });
    }
    void TearDown() override {
        Screen::SetCursorHook(FOldHook);
        Screen::SetCursor(crDefault);
        ExecCursor = crDefault;
        DataBase = nullptr;
        for (const auto& table : FTables) {
            Raw.Exec("drop table " + table);
        }
    }
    // A unique table created with the column list Columns; dropped after the test.
    std::string Table(const std::string& Columns) {
        FTables.push_back(quorda_test::UniqueTableName("tools"));
        Raw.Exec("create table " + FTables.back() + " (" + Columns + ")");
        return FTables.back();
    }
    std::filesystem::path TempPath(const std::string& Extension = "txt") {
        FFiles.push_back(
            std::make_unique<quorda_test::TempFile>(quorda_test::UniquePath("tools", Extension)));
        return FFiles.back()->Path();
    }

    quorda_test::RawOdbc Raw{Profile.ConnectionString};
    std::vector<TCursor> Cursors;

private:
    std::unique_ptr<TODBCDatabase> FDatabase;
    TCursorHook FOldHook;
    std::vector<std::string> FTables;
    std::vector<std::unique_ptr<quorda_test::TempFile>> FFiles;
};

using testing_support::Raised;
using testing_support::ReadFile;
using testing_support::WriteFile;

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
TEST_P(QueryHelpers, EachFamilyExecutesOpensCreatesFindsAndRestoresTheCursor) {
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
    // "alpha" is inside record 3's value, not at its start.
    const auto query = OpenQuery("select id, a, c from " + T + " where id <= 3 order by id");
    const std::tuple<bool, const char*, bool, int> finds[] = {{true, "BE", false, 1},
                                                              {false, "BE", true, 2},
                                                              {false, "alpha", false, 2},
                                                              {false, "", true, 3},
                                                              {false, "", false, 3}};
    for (const auto& [fromFirst, text, found, id] : finds) {
        EXPECT_EQ(FindAnyRecord(query.get(), fromFirst, text), found) << text;
        EXPECT_EQ(query->Fields()[0]->AsInteger(), id) << text;
    }
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
    const std::string bad = "select nothing from no_such_table_here";
    // psqlODBC leaks a little when the server refuses a forward-only statement before running it
    // (docs/odbc-quirks.md): there the forward-only form fails while running instead.
    const std::string badUni = Profile.Name.starts_with("pgsql") ? "select 1 / (b - b) from " + T : bad;
    const auto prepared = [&] {
        auto failing = CreateQuery();
        failing->SQL().SetText(bad);
        return failing;
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

// A statement executed again keeps the bindings its new values fit and binds again where they do
// not: each execution must still send exactly its own values.
TEST_P(Batch, FailingRowsShortRowsAndRepeatedExecutes) {
    const std::string t = Table("id integer, t varchar(300), b " + Profile.Sql.BlobType);
    const auto repeated = Query("insert into " + t + " values (:id, :t, :b)", std::nullopt);
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
        repeated->Params()[0]->SetAsInteger(static_cast<std::int32_t>(i));
        repeated->Params()[1]->SetAsVariant(text);
        if (VarIsNull(text)) {
            repeated->Params()[1]->SetAsString("");
            repeated->Params()[1]->Clear();
        }
        repeated->Params()[2]->SetBlobData(bytes.data(), bytes.size());
        if (bytes.empty()) {
            repeated->Params()[2]->Clear();
        }
        repeated->ExecSQL();
        expected.push_back({std::to_string(i),
                            VarIsNull(text) ? std::nullopt : std::optional(text.AsString()),
                            bytes.empty() ? std::nullopt : std::optional(std::to_string(bytes.size()))});
    }
    EXPECT_EQ(Raw.QueryStrings("select id, t, length(b) from " + t + " order by id"), expected);
    struct Case {
        std::string Name;
        std::size_t Row;
        Variant Bad;
    };
    // A duplicate key in the second chunk, a value the column's type cannot take.
    const std::vector<Case> cases{{"duplicate key", 1700, Variant(5)}, {"conversion", 3, Variant("x1")}};
    for (const auto& [path, quirks] : kPaths) {
        for (const Case& c : cases) {
            const std::string keyed = Table("id integer primary key, name varchar(20)");
            Raw.Exec("insert into " + keyed + " values (5, 'kept')");
            std::vector<std::vector<Variant>> rows;
            for (int i = 0; i < 2500; ++i) {
                rows.push_back({i + 10, "row"});
            }
            rows[c.Row][0] = c.Bad;
            const auto failing = Query("insert into " + keyed + " values (:id, :name)", quirks);
            DataBase->StartTransaction();
            if (const auto e = Raised<EODBCBatchError>([&] { failing->ExecSQLBatch(rows); })) {
                EXPECT_EQ(e->RowIndex(), c.Row) << path << ", " << c.Name;
                EXPECT_NE(e->Message().find("Row " + std::to_string(c.Row) + " of the batch failed: "),
                          std::string::npos)
                    << e->Message();
            }
            DataBase->Rollback();
            EXPECT_EQ(Raw.QueryStrings("select id, name from " + keyed),
                      (std::vector<quorda_test::Row>{{"5", "kept"}}))
                << path << ", " << c.Name;
        }
    }
    // A row with too few values is refused before anything runs.
    const std::string shortRows = Table("id integer, name varchar(20)");
    const auto shortRow = Raised<EODBCBatchError>([&] {
        ExecQueryBatch("insert into " + shortRows + " values (:id, :name)", {{1, "a"}, {2}});
    });
    EXPECT_EQ(shortRow ? shortRow->RowIndex() : 0u, 1u);
    EXPECT_EQ(Raw.Scalar("select count(*) from " + shortRows), "0");
}

INSTANTIATE_TEST_SUITE_P(Drivers, Batch, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

class TextTransfer : public ToolsTest {
protected:
    // Every column type the file format distinguishes.
    std::string AllTypes() const {
        return "id bigint primary key, i integer, s smallint, f double precision, t varchar(200), m text, "
               "b " +
               Profile.Sql.BlobType + ", d date, ts timestamp, n numeric(12,2)";
    }
    std::vector<quorda_test::Row> Contents(const std::string& Table) {
        return Raw.QueryStrings("select * from " + Table + " order by 1");
    }
    void Export(const std::string& Table, const std::filesystem::path& File) {
        const auto query = OpenQuery("select * from " + Table + " order by 1");
        ExportDataSet(query.get(), File.string());
    }
};

TEST_P(TextTransfer, ExportImportAndRoundTripKeepEveryValueAndABadLineOrFileChangesNothing) {
    const std::string t = Table("id integer, name varchar(40), amount double precision, note varchar(40)");
    Raw.Exec("insert into " + t + " values (1, 'O''Brien', 2.5, 'a,b')");
    Raw.Exec("insert into " + t + " values (2, " + Profile.Sql.Text("D:\\data") + ", -0.125, " +
             Profile.Sql.Text("x\r\n") + ")");
    Raw.Exec("insert into " + t + " values (3, NULL, NULL, '')");
    Raw.Exec("insert into " + t + " values (4, 'four', 4, 'Grüße')");
    const auto file = TempPath();
    Export(t, file);
    EXPECT_EQ(ReadFile(file), "id,name,amount,note\r\n"
                              "1,'O''Brien',2.5,'a,b'\r\n"
                              "2,'D:\\\\data',-0.125,'x\\x0D\\x0A'\r\n"
                              "3,'',,''\r\n"
                              "4,'four',4,'Grüße'\r\n");
    // From the current record on; SaveQryToFile appends lead text and fields by position.
    const auto query = OpenQuery("select id, name, note from " + t + " order by id");
    query->MoveBy(2);
    ExportDataSet(query.get(), file.string());
    EXPECT_EQ(ReadFile(file), "id,name,note\r\n3,'',''\r\n4,'four','Grüße'\r\n");
    query->First();
    query->MoveBy(3);
    SaveQryToFile(file.string(), "X", query.get(), {"ignored", "names"});
    EXPECT_EQ(ReadFile(file), "id,name,note\r\n3,'',''\r\n4,'four','Grüße'\r\nX,4,'four'\r\n");
    SaveQryToFile(file.string(), "X", query.get(), {"at the end"}); // nothing left: untouched
    EXPECT_EQ(ReadFile(file), "id,name,note\r\n3,'',''\r\n4,'four','Grüße'\r\nX,4,'four'\r\n");
    EXPECT_THROW(ImportDataSet("/nonexistent/quorda/in.txt", t, "", itIgnoreExists), EInOutError);
    EXPECT_EQ(testing_support::MessageOf<EInOutError>(
                  [&] { ExportDataSet(query.get(), "/nonexistent/quorda/out.txt"); }),
              "Cannot write file \"/nonexistent/quorda/out.txt\": No such file or directory");
    query->First();
    EXPECT_THROW(SaveQryToFile("/nonexistent/quorda/out.txt", "", query.get(), {"id"}), EInOutError);
    // Every type and awkward value round trips.
    const std::string source = Table(AllTypes());
    const std::string target = Table(AllTypes());
    // A value with every escaped character, a comma after an odd number of quotes and UTF-8.
    const std::string text = "it's, a \\ \"test\"\r\n\tΩ";
    // Values go in through the library's own parameters, so NUL bytes reach the blob.
    // 64-bit keys as literals: a variant parameter is a 32-bit integer.
    ExecQueryLong("insert into " + source +
                      " values (9007199254740993, :i, :s, :f, :t, :m, :b, "
                      "'2024-02-29', '1999-12-31 23:59:58', :n)",
                  {-2147483647 - 1, -32768, 1.25, text, text + "\n2nd line", "x", "12345.67"});
    const auto blob = CreateQuery();
    blob->SQL().SetText("update " + source + " set b = :b where id = 9007199254740993");
    const std::string bytes = "\0\x01'\\,\r\n\xff"s;
    blob->Prepare();
    blob->Params()[0]->SetBlobData(bytes.data(), bytes.size());
    ExecQry(blob.get());
    ExecuteQuery("insert into " + source + " (id) values (-9223372036854775807)");
    Export(source, file);
    ImportDataSet(file.string(), target, "where id = :id", itIgnoreExists);
    EXPECT_EQ(Contents(target), Contents(source));
    EXPECT_EQ(Contents(target).size(), 2u);
    // Appended in batches, the same values arrive.
    const std::string appended = Table(AllTypes());
    AppendDataSet(file.string(), appended);
    EXPECT_EQ(Contents(appended), Contents(source));
    const std::string bad = Table("id integer primary key, amount double precision, name varchar(20)");
    Raw.Exec("insert into " + bad + " values (1, 1.5, 'kept')");
    std::string lines = "id,amount,name\r\n";
    for (int line = 2; line < 5000; ++line) {
        lines += std::to_string(line) + "," + std::to_string(line) + ".5,'n'\r\n";
    }
    lines += "5000,12x,'bad'\r\n";
    WriteFile(file, lines);
    for (const bool append : {false, true}) {
        try {
            if (append) {
                AppendDataSet(file.string(), bad);
            } else {
                ImportDataSet(file.string(), bad, "where id = :id", itUpdateExists);
            }
            ADD_FAILURE() << "imported";
        } catch (const EConvertError& e) {
            const auto* info = dynamic_cast<const TImportLineInfo*>(&e);
            ASSERT_NE(info, nullptr);
            EXPECT_EQ(info->Line(), 5000);
            EXPECT_EQ(e.Message(), "\"12x\" is an invalid float");
        }
        EXPECT_EQ(Contents(bad), (std::vector<quorda_test::Row>{{"1", "1.5", "kept"}})) << append;
        EXPECT_FALSE(DataBase->InTransaction());
    }
    // A key already in the table stops an append at its line, in a later batch.
    WriteFile(file, lines.substr(0, lines.rfind("5000,")) + "1,2,'dup'\r\n");
    try {
        AppendDataSet(file.string(), bad);
        ADD_FAILURE() << "duplicate appended";
    } catch (const EODBCError& e) {
        EXPECT_EQ(dynamic_cast<const TImportLineInfo&>(e).Line(), 5000);
    }
    EXPECT_EQ(Contents(bad).size(), 1u);
    // An empty condition counts the whole table: every line is skipped.
    WriteFile(file, "id,amount,name\r\n7,1,'a'\r\n7,2,'b'\r\n");
    ImportDataSet(file.string(), bad, "", itIgnoreExists);
    EXPECT_EQ(Contents(bad).size(), 1u);
    // A statement error is passed on as the driver reported it, with its line.
    try {
        ImportDataSet(file.string(), bad, "where id = :id and amount = :amount", itIgnoreExists);
        FAIL() << "duplicate key imported";
    } catch (const EODBCError& e) {
        EXPECT_EQ(dynamic_cast<const TImportLineInfo&>(e).Line(), 3);
    }
    EXPECT_EQ(Contents(bad).size(), 1u);
    // Every shape of file, into a table that holds row 1: a key already there is skipped or replaced by
    // the import type; a damaged file is refused whole.
    struct Case {
        std::string Text;
        std::vector<quorda_test::Row> Rows; // after the import
        TImportType Type = itIgnoreExists;
        bool Refused = false;
    };
    const quorda_test::Row one{"1", "one"};
    const std::vector<Case> cases{
        {"", {one}},
        {"id,name\r\n", {one}},
        {"id,name\n3,'unix'\n4,''\r\n5,'no end'", {one, {"3", "unix"}, {"4", std::nullopt}, {"5", "no end"}}},
        {"id,name\r\n1,'new'\r\n3,'three'\r\n", {one, {"3", "three"}}},
        {"id,name\r\n1,'new'\r\n3,'three'\r\n", {{"1", "new"}, {"3", "three"}}, itUpdateExists},
        {"id,name\r\n6,'a',7\r\n", {one}, itIgnoreExists, true},
        {"id,name\r\n6,'a'\r\n7,'b\r\n", {one}, itIgnoreExists, true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.Text + " " + std::to_string(c.Type));
        const std::string shaped = Table("id integer primary key, name varchar(20)");
        Raw.Exec("insert into " + shaped + " values (1, 'one')");
        WriteFile(file, c.Text);
        if (c.Refused) {
            EXPECT_THROW(ImportDataSet(file.string(), shaped, "where id = :id", c.Type), Exception);
        } else {
            ImportDataSet(file.string(), shaped, "where id = :id", c.Type);
        }
        EXPECT_EQ(Contents(shaped), c.Rows);
        EXPECT_FALSE(DataBase->InTransaction());
    }
}

// Each escaped form decodes back to the same bytes; a backslash before x stays distinguishable from
// an escape it resembles, and backslash sequences outside the table are kept when decoding.
TEST(ConverString, EscapesAndUnescapesBackToTheSameBytes) {
    const std::pair<std::string, std::string> pairs[] = {
        {"O'Brien", "O''Brien"},        {"D:\\data", "D:\\\\data"},
        {"a\r\nb", "a\\x0D\\x0Ab"},     {"\0z\0"s, "\\x00z\\x00"},
        {"\\x0D", "\\\\x0D"},           {"''", "''''"},
        {"Grüße, 東京", "Grüße, 東京"}, {"", ""}};
    for (const auto& [plain, escaped] : pairs) {
        EXPECT_EQ(ConverString(plain, true), escaped) << plain;
        EXPECT_EQ(ConverString(escaped, false), plain) << escaped;
    }
    for (const std::string text : {"\\x41", "\\x0d", "\\n", "\\", "'", "\\x0"}) {
        EXPECT_EQ(ConverString(text, false), text) << text;
    }
    EXPECT_EQ(ConverString("'''", false), "''");
}

INSTANTIATE_TEST_SUITE_P(Drivers, TextTransfer, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda::testing
