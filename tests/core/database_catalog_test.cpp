#include "odbc_cursor_fixture.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/strings.h"

namespace quorda {
namespace {

using quorda_test::FaultDriver;
using Lines = std::vector<std::string>;

class DatabaseCatalog : public testing::CursorTest {};

TEST_P(DatabaseCatalog, TablesAndViewsComeWithAlignedOwnerAndTypeColumnsInTableOrder) {
    const std::string table =
        MakeTable("cat_t", "id integer, customer_name varchar(40), price numeric(10,2)");
    const std::string view = quorda_test::UniqueTableName("cat_v");
    Raw->Exec("create view " + view + " as select id from " + table);

    TStringList names, owners, types, notes;
    owners.Add("left over");
    Db.GetTables(&names, &owners, &types, &notes);
    ASSERT_EQ(owners.Count(), names.Count());
    ASSERT_EQ(types.Count(), names.Count());
    ASSERT_EQ(notes.Count(), names.Count());
    const int t = names.IndexOf(table);
    const int v = names.IndexOf(view);
    ASSERT_GE(t, 0);
    ASSERT_GE(v, 0);
    EXPECT_EQ(types[t], "TABLE");
    EXPECT_EQ(types[v], "VIEW");
    // SQLite has no owners; PostgreSQL reports the schema; MariaDB has none (the database is the
    // catalog).
    EXPECT_EQ(owners[t], Profile.Name.rfind("pgsql", 0) == 0 ? "public" : "");
    EXPECT_EQ(owners[v], owners[t]);

    EXPECT_NO_THROW(Db.GetTables(nullptr, nullptr, nullptr, nullptr));
    Raw->Exec("drop view " + view);

    TStringList columns;
    columns.Add("left over");
    Db.GetColumns(table, &columns);
    EXPECT_EQ(columns.ToVector(), (Lines{"id", "customer_name", "price"}));
    Db.GetColumns(table, nullptr);
    Db.GetColumns(table + "_missing", &columns);
    EXPECT_EQ(columns.Count(), 0);
    EXPECT_NO_THROW(Db.GetColumns("", &columns)); // whatever the driver makes of an empty name
}

INSTANTIATE_TEST_SUITE_P(Drivers, DatabaseCatalog, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

TEST(FaultCatalog, NullColumnsReadEmptyAndLongNamesArriveCut) {
    const std::string longName(200, 'n');
    FaultDriver fault("table:orders/sales/TABLE/open orders|table:~/~/~/~|table:" + longName +
                      "/sales/VIEW/~|column:orders/id/4|column:orders/total/3|column:other/x/4");
    auto db = testing::OpenDatabase(fault.ConnectionString());
    TStringList names, owners, types, notes;
    db->GetTables(&names, &owners, &types, &notes);
    EXPECT_EQ(names.ToVector(), (Lines{"orders", "", std::string(126, 'n')}));
    EXPECT_EQ(owners.ToVector(), (Lines{"sales", "", "sales"}));
    EXPECT_EQ(types.ToVector(), (Lines{"TABLE", "", "VIEW"}));
    EXPECT_EQ(notes.ToVector(), (Lines{"open orders", "", ""}));
    EXPECT_TRUE(fault.Received("SQLTables null/0 null/0 null/0 null/0"));
    for (int column = 1; column <= 5; ++column) {
        EXPECT_TRUE(fault.Received("SQLBindCol " + std::to_string(column) + " 1 127")) << column;
    }

    TStringList columns;
    db->GetColumns("orders", &columns);
    EXPECT_EQ(columns.ToVector(), (Lines{"id", "total"}));
    EXPECT_TRUE(fault.Received("SQLColumns null/0 null/0 orders/6 null/0"));
    db->GetColumns("", &columns);
    EXPECT_TRUE(fault.Received("SQLColumns null/0 null/0 /0 null/0"));
    // Every catalog statement was dropped again.
    EXPECT_EQ(fault.Calls({"SQLAllocStmt"}).size(), 3u);
    EXPECT_EQ(fault.Calls({"SQLFreeStmt"}).size(), 3u);
}

TEST(FaultCatalog, AFailingFetchKeepsWhatArrivedAndReleasesTheStatement) {
    // The driver manager fetches from this driver with SQLExtendedFetch.
    FaultDriver fault("table:first/o/TABLE/~|table:second/o/TABLE/~|fail:SQLExtendedFetch@2"
                      "|diag:SQLExtendedFetch:08S01/5/connection reset");
    auto db = testing::OpenDatabase(fault.ConnectionString());
    TStringList names, types;
    const auto e = testing::Raised<EODBCError>([&] { db->GetTables(&names, nullptr, &types, nullptr); });
    ASSERT_TRUE(e);
    EXPECT_NE(e->Hstmt(), nullptr);
    EXPECT_EQ(e->Hdbc(), db->GetDBC());
    EXPECT_EQ(e->NativeMessage(), "connection reset");
    EXPECT_EQ(names.ToVector(), Lines{"first"});
    EXPECT_EQ(types.ToVector(), Lines{"TABLE"});
    EXPECT_EQ(fault.Calls({"SQLFreeStmt"}).size(), 1u);
    db->Close();
}

} // namespace
} // namespace quorda
