// The idiomatic face on real drivers: range-for over the rows of every cursor kind, the transaction
// guard seen from a second connection (and its failing rollback on the fault driver), parameter
// lookups through string views.

#include "odbc_cursor_fixture.h"
#include "quorda/core/odbc_connect.h"
#include "quorda/core/odbc_transaction.h"
#include "quorda/rtl/application.h"

#include <string_view>

namespace quorda::testing {
namespace {

class Face : public CursorTest {};

TEST_P(Face, RangeForVisitsEveryRowOnceOnEveryCursorKind) {
    const std::string table = NumberTable("face_rows", 7);
    struct Kind {
        const char* Name;
        bool UniDirectional;
        bool Block;
    };
    for (const Kind& kind : {Kind{"scrollable", false, false}, Kind{"forward-only", true, false},
                             Kind{"forward-only rowsets of 3", true, true}}) {
        SCOPED_TRACE(kind.Name);
        TProbeQuery& query = Query("select id from " + table + " where id > :low order by id");
        query.SetUniDirectional(kind.UniDirectional);
        query.SetBlockCursor(kind.Block);
        query.SetRowSetSize(3);
        query.ParamByName("low")->SetAsInteger(0);
        // The first pass opens the query; a scrollable one is walked again from its end.
        for (int pass = 1; pass <= (kind.UniDirectional ? 1 : 2); ++pass) {
            std::vector<int> ids;
            for (TDataSet& row : query.Rows()) {
                ids.push_back(row.FieldByName("id")->As<std::int32_t>());
            }
            EXPECT_EQ(ids, (std::vector<int>{1, 2, 3, 4, 5, 6, 7})) << "pass " << pass;
        }
        query.Close();
        query.ParamByName("low")->SetAsInteger(7);
        int visits = 0;
        for ([[maybe_unused]] TDataSet& row : query.Rows()) {
            ++visits;
        }
        EXPECT_EQ(visits, 0) << "an empty result";
    }
}

TEST_P(Face, TransactionGuardRollsBackUnlessCommitted) {
    const std::string table = MakeTable("face_tx", "id integer");
    TODBCQuery insert(Db, "insert into " + table + " values (:id)");
    const std::string_view name = "id, the parameter";
    for (int id : {1, 2}) {
        TODBCTransaction transaction(Db);
        insert.ParamByName(name.substr(0, 2))->SetAsInteger(id);
        insert.ExecSQL();
        if (id == 2) {
            transaction.Commit();
        }
    }
    EXPECT_FALSE(Db.InTransaction());
    EXPECT_EQ(Raw->QueryStrings("select id from " + table), (std::vector<quorda_test::Row>{{"2"}}));
}

TEST(FaceFault, ARollbackFailingInTheGuardsDestructorGoesToTheApplication) {
    quorda_test::FaultDriver fault("fail:SQLTransact@1|diag:SQLTransact:08S01/0/link lost");
    auto db = ODBCConnect(fault.ConnectionString());
    std::vector<std::string> shown;
    const TExceptionHandler previous =
        Application::SetExceptionHandler([&](const std::exception& e) { shown.push_back(e.what()); });
    { TODBCTransaction transaction(*db); }
    Application::SetExceptionHandler(previous);
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_NE(shown[0].find("link lost"), std::string::npos) << shown[0];
    EXPECT_TRUE(db->InTransaction()) << "still open, for Close to roll back";
}

INSTANTIATE_TEST_SUITE_P(Drivers, Face, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda::testing
