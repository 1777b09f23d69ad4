// The real data sources behind the driver profiles, reached through RawOdbc.
#include "quorda_test/profiles.h"
#include "quorda_test/raw_odbc.h"

#include <gtest/gtest.h>
#include <map>
#include <stdexcept>

namespace quorda_test {
namespace {

class DataSources : public ProfileTest {};

TEST_P(DataSources, TextNullsAndLongValuesRoundTrip) {
    RawOdbc db(Profile.ConnectionString);
    std::string table = UniqueTableName("raw_rt");
    db.Exec("create table " + table + " (id integer, memo varchar(4000))");
    std::string longText(3000, 'q');
    longText += "end";
    EXPECT_EQ(db.Exec("insert into " + table + " values (1, '" + longText + "')"), 1);
    EXPECT_EQ(db.Exec("insert into " + table + " values (2, null)"), 1);

    auto rows = db.QueryStrings("select id, memo from " + table + " order by id");
    EXPECT_EQ(rows, (std::vector<Row>{{"1", longText}, {"2", std::nullopt}}));
    EXPECT_EQ(db.Exec("delete from " + table + " where id = 99"), 0);
    db.Exec("drop table " + table);
}

TEST_P(DataSources, SyntaxErrorStateTraitMatchesTheDriver) {
    try {
        RawOdbc(Profile.ConnectionString).Exec("selec 1");
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        // RawOdbc is an ODBC 3 application: it sees the ODBC 3 names of the states.
        const std::map<std::string, std::string> odbc3 = {{"S1000", "HY000"}, {"37000", "42000"}};
        const std::string& ours = Profile.Traits.SyntaxErrorState;
        const std::string state = odbc3.count(ours) ? odbc3.at(ours) : ours;
        EXPECT_NE(std::string(error.what()).find("[" + state + "]"), std::string::npos) << error.what();
    }
}

TEST_P(DataSources, KeysetCursorTraitMatchesTheDriver) {
    RawOdbc db(Profile.ConnectionString);
    SQLHSTMT stmt = SQL_NULL_HSTMT;
    ASSERT_EQ(SQLAllocHandle(SQL_HANDLE_STMT, db.Handle(), &stmt), SQL_SUCCESS);
    SQLRETURN rc =
        SQLSetStmtAttr(stmt, SQL_ATTR_CURSOR_TYPE, reinterpret_cast<SQLPOINTER>(SQL_CURSOR_KEYSET_DRIVEN), 0);
    SQLULEN granted = 0;
    SQLGetStmtAttr(stmt, SQL_ATTR_CURSOR_TYPE, &granted, 0, nullptr);
    SQLFreeHandle(SQL_HANDLE_STMT, stmt);
    EXPECT_EQ(rc == SQL_SUCCESS && granted == SQL_CURSOR_KEYSET_DRIVEN, Profile.Traits.KeysetCursors)
        << "rc " << rc << ", granted " << granted;
}

TEST_P(DataSources, UncommittedRowsStayInvisibleToASecondConnection) {
    RawOdbc writer(Profile.ConnectionString);
    RawOdbc reader(Profile.ConnectionString);
    std::string table = UniqueTableName("raw_tx");
    writer.Exec("create table " + table + " (id integer)");
    writer.SetAutoCommit(false);
    writer.Exec("insert into " + table + " values (1)");
    EXPECT_EQ(reader.Scalar("select count(*) from " + table), "0");
    writer.Commit();
    EXPECT_EQ(reader.Scalar("select count(*) from " + table), "1");
    writer.SetAutoCommit(true);
    writer.Exec("drop table " + table);
}

INSTANTIATE_TEST_SUITE_P(Drivers, DataSources, testing::ValuesIn(AllProfiles()), ProfileTestName);

TEST(Profiles, SqliteFilesAreFreshPerProfile) {
    EXPECT_NE(SqliteProfile().DatabaseFile->Path(), SqliteProfile().DatabaseFile->Path());
}

TEST(Profiles, UniqueTableNamesAreDistinctPlainIdentifiers) {
    std::set<std::string> names;
    for (int i = 0; i < 1000; ++i) {
        std::string name = UniqueTableName("Orders_With_A_Rather_Long_Prefix_Name");
        EXPECT_LE(name.size(), 63u) << name;
        EXPECT_EQ(name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_"), std::string::npos) << name;
        names.insert(name);
    }
    EXPECT_EQ(names.size(), 1000u);
}

} // namespace
} // namespace quorda_test
