// The idiomatic face: range-for over the rows of every cursor kind on real drivers, and a transaction
// guard whose rollback fails on the fault driver (its normal use is pinned with the connect tests).

#include "odbc_cursor_fixture.h"
#include "quorda/core/odbc_connect.h"
#include "quorda/core/odbc_transaction.h"
#include "quorda/rtl/application.h"

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
