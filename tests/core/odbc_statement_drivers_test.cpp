// Statements with parameters of every supported type on the real drivers: written through ExecSQL,
// read back over a separate plain ODBC connection.
#include "odbc_cursor_fixture.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/datetime.h"
#include "quorda/rtl/messages.h"
#include "quorda/rtl/string_utils.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <quorda_test/profiles.h>
#include <quorda_test/raw_odbc.h>

namespace quorda {
namespace {

using quorda_test::Row;
using testing::OpenDatabase;

class StatementOnDrivers : public testing::CursorTest {
protected:
    void SetUp() override {
        CursorTest::SetUp();
        Table =
            MakeTable("stmt", "id integer, s varchar(200), i integer, f double precision, c " +
                                  std::string(testing::IsSqlite(Profile) ? "varchar(40)" : "numeric(14,4)") +
                                  ", d date, t time, ts " + Profile.Sql.TimestampType + ", b integer, m " +
                                  Profile.Sql.LongTextType + ", bl " + Profile.Sql.BlobType);
    }

    // An insert of the given columns ("a,b"), each from its namesake parameter.
    TODBCQuery& Insert(const std::string& Columns) {
        std::string values = ":" + Columns;
        for (std::size_t comma = values.find(','); comma != std::string::npos;
             comma = values.find(',', comma + 2)) {
            values.replace(comma, 1, ", :");
        }
        return Query("insert into " + Table + " (" + Columns + ") values (" + values + ")");
    }
    std::vector<Row> Read(const std::string& Columns, int Id) {
        return Raw->QueryStrings("select " + Columns + " from " + Table +
                                 " where id = " + std::to_string(Id));
    }

    std::string Table;
};

TEST_P(StatementOnDrivers, EveryParameterTypeArrivesAsNullAndAsWritten) {
    TODBCQuery& insert = Insert("id,s,i,f,c,d,t,ts,b,m,bl");
    insert.ParamByName("id")->SetAsInteger(3);
    const std::pair<const char*, TFieldType> types[] = {
        {"s", ftString}, {"i", ftInteger},   {"f", ftFloat},   {"c", ftCurrency}, {"d", ftDate},
        {"t", ftTime},   {"ts", ftDateTime}, {"b", ftBoolean}, {"m", ftMemo},     {"bl", ftBlob}};
    for (const auto& [name, type] : types) {
        insert.ParamByName(name)->SetDataType(type);
        insert.ParamByName(name)->Clear();
    }
    insert.ExecSQL();
    EXPECT_EQ(Read("s, i, f, c, d, t, ts, b, m, bl", 3), std::vector<Row>{Row(10, std::nullopt)});

    // The same statement with values, then with other values: parameters are bound afresh.
    insert.ParamByName("id")->SetAsInteger(1);
    insert.ParamByName("s")->SetAsString("O'Brien said \"\xC3\xA9t\xC3\xA9\"; a:b");
    insert.ParamByName("i")->SetAsInteger(-2147483647);
    insert.ParamByName("f")->SetAsFloat(2.5);
    insert.ParamByName("c")->SetAsCurrency(12.34);
    insert.ParamByName("d")->SetAsDate(EncodeDate(2024, 2, 29));
    insert.ParamByName("t")->SetAsTime(EncodeTime(13, 45, 10, 0));
    insert.ParamByName("ts")->SetAsDateTime(EncodeDateTime(2024, 2, 29, 13, 45, 10, 7));
    insert.ParamByName("b")->SetAsBoolean(true);
    insert.ParamByName("m")->SetAsMemo("line 1\nline 2");
    const std::string blob("\x00\x01\xFF\x7F", 4);
    insert.ParamByName("bl")->SetBlobData(blob.data(), blob.size());
    insert.ExecSQL();
    EXPECT_EQ(insert.RowsAffected(), 1);

    const std::vector<Row> rows = Read("s, i, f, c, d, t, b, m, " + Profile.Sql.Hex("bl"), 1);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0], (Row{"O'Brien said \"\xC3\xA9t\xC3\xA9\"; a:b", "-2147483647", "2.5",
                            testing::IsSqlite(Profile) ? "12.34" : "12.3400", "2024-02-29", "13:45:10", "-1",
                            "line 1\nline 2", "0001ff7f"}));
    // 7 ms arrive as 7 ms, not as 7 microseconds or 700 ms.
    const std::string ms = Profile.Sql.Milliseconds("ts");
    EXPECT_EQ(Read(ms, 1)[0][0], "2024-02-29 13:45:10.007");

    insert.ParamByName("id")->SetAsInteger(2);
    insert.ParamByName("ts")->SetAsDateTime(EncodeDateTime(1999, 12, 31, 23, 59, 59, 999));
    insert.ExecSQL();
    EXPECT_EQ(Read(ms, 2)[0][0], "1999-12-31 23:59:59.999");
}

TEST_P(StatementOnDrivers, MegabyteValuesAreSentAtExecutionTime) {
    const std::string memo = testing::LargeText();
    const std::string blob = testing::LargeBinary();
    TODBCQuery& insert = Insert("id,m,bl,s");
    insert.ParamByName("id")->SetAsInteger(4);
    // A string, not a memo: beyond the threshold it is bound as long text, twice its length in size.
    insert.ParamByName("m")->SetAsString(memo);
    insert.ParamByName("bl")->SetBlobData(blob.data(), blob.size());
    insert.ParamByName("s")->SetAsString("short");
    insert.ExecSQL();

    const std::vector<Row> rows = Read("m, " + Profile.Sql.Hex("bl") + ", s", 4);
    ASSERT_EQ(rows.size(), 1u);
    ASSERT_TRUE(rows[0][0] && rows[0][1]);
    EXPECT_EQ(rows[0][0]->size(), memo.size());
    EXPECT_TRUE(*rows[0][0] == memo);
    EXPECT_EQ(rows[0][1]->size(), 2 * blob.size());
    EXPECT_TRUE(*rows[0][1] == testing::Hex(blob));
    EXPECT_EQ(rows[0][2], "short");
}

TEST_P(StatementOnDrivers, RowsAffectedCountsUpdatesAndDeletes) {
    TODBCQuery& insert = Insert("id,i");
    for (int id = 10; id < 13; ++id) {
        insert.ParamByName("id")->SetAsInteger(id);
        insert.ParamByName("i")->SetAsInteger(id % 2);
        insert.ExecSQL();
    }
    TODBCQuery& update = Query("update " + Table + " set f = 1 where i = :i");
    update.ParamByName("i")->SetAsInteger(0);
    update.ExecSQL();
    EXPECT_EQ(update.RowsAffected(), 2);
    // The same values again: MariaDB counts the rows it changed, the others the rows that matched.
    update.ExecSQL();
    EXPECT_EQ(update.RowsAffected(), Profile.Traits.CountsMatchedRows ? 2 : 0);
    update.ParamByName("i")->SetAsInteger(5);
    update.ExecSQL();
    EXPECT_EQ(update.RowsAffected(), 0);
    TODBCQuery& remove = Query("delete from " + Table);
    remove.ExecSQL();
    EXPECT_EQ(remove.RowsAffected(), 3);
}

// psqlODBC sent a text value cut at its first NUL byte (PostgreSQL refuses NUL in text) and SQLite ODBC
// stores it cut, inline and sent at execution alike: both are refused clearly before anything runs.
// MariaDB takes every byte, and reads them back.
TEST_P(StatementOnDrivers, TextWithANulByteArrivesWholeOrIsRefused) {
    const std::string value("abc\0def", 7);
    int id = 20;
    for (const std::string& text : {value, std::string(9000, 'x') + value}) {
        TODBCQuery& insert = Insert("id,m");
        insert.ParamByName("id")->SetAsInteger(++id);
        insert.ParamByName("m")->SetAsMemo(text);
        if (Profile.Traits.TextKeepsNul) {
            insert.ExecSQL();
            const auto rows = Read("m", id);
            ASSERT_EQ(rows.size(), 1u);
            EXPECT_EQ(rows[0][0], text);
            continue;
        }
        EXPECT_EQ(testing::ErrorOf([&] { insert.ExecSQL(); }),
                  FormatMessage(LoadStr(SODBCParamHoldsNul), std::string("m")));
        EXPECT_TRUE(Read("m", id).empty());
    }
}

// A syntax error carries the driver's own state and message (what else an error carries is pinned on
// the fault driver); where the driver's own error would mislead, the dataset checks first.
TEST_P(StatementOnDrivers, SyntaxErrorsCarryTheDriversDiagnosticsMisleadingCasesAreNamedFirst) {
    const auto e = testing::Raised<EODBCError>([&] { Query("selec 1 frm nowhere").ExecSQL(); });
    ASSERT_TRUE(e);
    EXPECT_EQ(e->SQLState().substr(0, 5), Profile.Traits.SyntaxErrorState) << e->SQLState();
    EXPECT_NE(LowerCase(e->Message()).find("syntax"), std::string::npos) << e->Message();
    for (const std::string& text : {std::string(), std::string(" \n\t")}) {
        TODBCQuery& query = Query(text);
        EXPECT_EQ(testing::ErrorOf([&] { query.Open(); }), LoadStr(SODBCEmptySQLStatement));
        EXPECT_EQ(testing::ErrorOf([&] { query.ExecSQL(); }), LoadStr(SODBCEmptySQLStatement));
        EXPECT_EQ(query.StatementHandle(), nullptr);
    }
    TODBCQuery& update = Query("update " + Table + " set i = 1 where id = -1");
    EXPECT_EQ(testing::ErrorOf([&] { update.GetCursorName(); }), LoadStr(SODBCNoStatement));
    EXPECT_EQ(testing::ErrorOf([&] { update.SetCursorName("c1"); }), LoadStr(SODBCNoStatement));
    EXPECT_EQ(testing::ErrorOf([&] { update.Open(); }), LoadStr(SODBCNoResultSet));
    EXPECT_FALSE(update.Active());
    update.SQL().SetText("select id from " + Table);
    update.Open();
    EXPECT_TRUE(update.IsEmpty());
    EXPECT_FALSE(update.GetCursorName().empty());
}

INSTANTIATE_TEST_SUITE_P(Drivers, StatementOnDrivers, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

// psqlODBC counts parameters in a signed 16-bit word and corrupted its heap beyond 32767.
TEST(StatementParameterLimit, MoreParametersThanPsqlODBCTakesAreRefusedBeforeBinding) {
    for (bool unicode : {false, true}) {
        auto db = OpenDatabase(quorda_test::PostgresProfile(unicode).ConnectionString);
        auto query = testing::QueryWithParams(db.get(), "select 1 where 1 in ", 32768);
        EXPECT_EQ(testing::ErrorOf([&] { query->Open(); }),
                  FormatMessage(LoadStr(SODBCTooManyParams), 32768, 32767));
        EXPECT_EQ(query->StatementHandle(), nullptr);
    }
}

} // namespace
} // namespace quorda
