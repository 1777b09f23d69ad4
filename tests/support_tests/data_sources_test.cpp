// The real data sources behind the driver profiles, reached through RawOdbc.
#include "quorda_test/profiles.h"
#include "quorda_test/raw_odbc.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <stdexcept>

namespace quorda_test {
namespace {

class DataSources : public ProfileTest {};

TEST_P(DataSources, AnswerByDriverStringAndByDataSourceName) {
    EXPECT_EQ(RawOdbc(Profile.ConnectionString).Scalar("select 1"), "1");
    EXPECT_EQ(RawOdbc::ConnectDsn(Profile.Dsn, Profile.User, Profile.Password).Scalar("select 1"), "1");
}

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

TEST_P(DataSources, FailuresCarryTheDriversDiagnostics) {
    RawOdbc db(Profile.ConnectionString);
    try {
        db.Exec("selec 1");
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        std::string text = error.what();
        EXPECT_EQ(text.rfind("selec 1: [", 0), 0u) << text;
        EXPECT_EQ(text.find("[42601]") != std::string::npos, Profile.Traits.ServerSqlStates) << text;
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
    if (Profile.Traits.ConcurrentWriters) {
        RawOdbc second(Profile.ConnectionString);
        second.SetAutoCommit(false);
        EXPECT_EQ(second.Exec("insert into " + table + " values (2)"), 1);
        second.Rollback();
    }
    writer.Commit();
    EXPECT_EQ(reader.Scalar("select count(*) from " + table), "1");
    writer.SetAutoCommit(true);
    writer.Exec("drop table " + table);
}

INSTANTIATE_TEST_SUITE_P(Drivers, DataSources, testing::ValuesIn(AllProfiles()), ProfileTestName);

TEST(Profiles, SqliteFilesAreFreshPerProfileAndRemovedWithIt) {
    std::filesystem::path path;
    {
        DataSourceProfile first = SqliteProfile();
        DataSourceProfile second = SqliteProfile();
        path = first.DatabaseFile->Path();
        EXPECT_NE(path, second.DatabaseFile->Path());
        RawOdbc(first.ConnectionString).Exec("create table t (id integer)");
        EXPECT_TRUE(std::filesystem::exists(path));
        DataSourceProfile copy = first;
        first = SqliteProfile();
        EXPECT_TRUE(std::filesystem::exists(path)); // the copy still holds it
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(Profiles, MissingClusterFailsWithDirections) {
    std::string saved = TestEnvDir().string();
    auto empty = UniquePath("no-cluster", "d");
    std::filesystem::create_directories(empty);
    ::setenv("QUORDA_TEST_ENV_DIR", empty.c_str(), 1);
    try {
        PostgresProfile();
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find("scripts/pg-cluster start"), std::string::npos)
            << error.what();
    }
    ::setenv("QUORDA_TEST_ENV_DIR", saved.c_str(), 1);
    std::filesystem::remove_all(empty);
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
