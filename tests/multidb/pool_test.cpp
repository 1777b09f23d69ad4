// The pool: which connection FindDataBase hands out, the template every connection copies, closing
// and clearing with the on-add/on-remove events, the use counter, and locks released on errors.

#include "quorda/core/session.h"
#include "quorda/multidb.h"

#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <quorda_test/environment.h>
#include <quorda_test/profiles.h>
#include <string>
#include <tuple>
#include <vector>

namespace quorda {
namespace {

class PoolTest : public quorda_test::ProfileTest {
protected:
    void SetUp() override {
        Pool.SetConnectStyle(csDriverConnect);
        Pool.SetDriverConnectOption(dcoDriverNoPrompt);
        Pool.SetConnectStr(Profile.ConnectionString);
        Pool.OnAddDataBase = [this](TMultiODBCDataBase* DataBase) {
            Events.push_back("add " + Name(DataBase));
        };
        Pool.OnRemoveDataBase = [this](TMultiODBCDataBase* DataBase) {
            Events.push_back("remove " + Name(DataBase));
        };
    }
    void TearDown() override {
        Queries.clear();
        Pool.ClearDataBase();
    }
    // "#<position in the pool>" of a connection, or "gone".
    std::string Name(TMultiODBCDataBase* DataBase) {
        for (int i = 0; i < Pool.Count(); ++i) {
            if (Pool.DataBases(i) == DataBase) {
                return "#" + std::to_string(i);
            }
        }
        return "gone";
    }
    // A query attached to DataBase, as a dataset that keeps the connection busy.
    TODBCMultiQuery& Attach(TMultiODBCDataBase* DataBase) {
        Queries.push_back(std::make_unique<TODBCMultiQuery>(nullptr));
        Queries.back()->SetMultiODBCDataBase(DataBase);
        return *Queries.back();
    }

    TMultiDataBases Pool;
    std::vector<std::string> Events;
    std::vector<std::unique_ptr<TODBCMultiQuery>> Queries;
};

TEST_P(PoolTest, GrowsToItsLimitHandsOutTheLeastBusyAndCopiesTheTemplate) {
    Pool.SetMaxDataBases(3);
    std::vector<TMultiODBCDataBase*> handed;
    for (int i = 0; i < 3; ++i) {
        handed.push_back(Pool.FindDataBase());
        EXPECT_TRUE(handed.back()->Connected());
        Attach(handed.back());
    }
    EXPECT_EQ(Pool.Count(), 3);
    EXPECT_EQ(Events, (std::vector<std::string>{"add #0", "add #1", "add #2"}));
    // Every connection serves one dataset: the first of the least busy, then the next.
    EXPECT_EQ(Pool.FindDataBase(), handed[0]);
    Attach(handed[0]);
    EXPECT_EQ(Pool.FindDataBase(), handed[1]);
    Attach(handed[1]);
    Attach(handed[2]);
    Attach(handed[2]);
    EXPECT_EQ(Pool.FindDataBase(), handed[0]);
    EXPECT_EQ(Pool.Count(), 3);
    // The session's list is searched the same way, among pooled connections only, and a query
    // attaches itself that way on first use.
    TODBCDatabase plain(nullptr);
    TMultiODBCDataBase* chosen = ODBCSession()->WithDatabases(
        [](const std::vector<TODBCDatabase*>& List) { return TMultiDataBases::FindDataBase(List); });
    EXPECT_EQ(chosen, handed[0]);
    TODBCMultiQuery& query = Attach(nullptr);
    EXPECT_EQ(query.FindDB(), handed[0]);
    EXPECT_EQ(query.GetMultiODBCDataBase(), handed[0]);
    Pool.SetParamAtExecSize(100);
    Pool.SetAutoCommitOption(acoAutoCommit);
    Pool.SetIsolationLevel(ilSerializable);
    Pool.SetSQLCursorOption(curUseDriver);
    Pool.SetStringTrimRight(true);
    Pool.SetIgnoreOriginInfo(true);
    Pool.SetDSNName("dsn");
    Pool.SetUserID("user");
    Pool.SetPassword("secret");
    TMultiODBCDataBase* d = Pool.AddDataBase();
    EXPECT_FALSE(d->Connected());
    EXPECT_EQ(std::make_tuple(d->ParamAtExecSize(), d->DriverConnectOption(), d->AutoCommitOption(),
                              d->IsolationLevel(), d->SQLCursorOption(), d->ConnectStyle()),
              std::make_tuple(100, dcoDriverNoPrompt, acoAutoCommit, ilSerializable, curUseDriver,
                              csDriverConnect));
    EXPECT_TRUE(d->StringTrimRight() && d->IgnoreOriginInfo());
    EXPECT_EQ(d->DSNName() + d->UserID() + d->Password() + d->ConnectStr(),
              "dsnusersecret" + Profile.ConnectionString);
}

TEST_P(PoolTest, CloseKeepsConnectionsThatServeDatasetsAndTellsTheLastOne) {
    Pool.SetStartDataBases(3);
    Pool.Open();
    Attach(Pool.DataBases(1));
    Events.clear();
    Pool.Close();
    // The second connection stays, closed. The event of the first is told about the list's last
    // connection, which is the one that stays.
    ASSERT_EQ(Pool.Count(), 1);
    EXPECT_FALSE(Pool.DataBases(0)->Connected());
    EXPECT_EQ(Events, (std::vector<std::string>{"remove #2", "remove #1"}));
    EXPECT_FALSE(Pool.Connected());
    // Opening again fills the pool up to its start size and opens the kept connection too.
    TMultiODBCDataBase* kept = Pool.DataBases(0);
    Events.clear();
    Pool.Open();
    ASSERT_EQ(Pool.Count(), 3);
    EXPECT_EQ(Pool.DataBases(0), kept);
    EXPECT_TRUE(kept->Connected());
    Queries.clear();
    Pool.ClearDataBase();
    EXPECT_EQ(Events, (std::vector<std::string>{"add #1", "add #2", "remove #2", "remove #1", "remove #0"}));
    EXPECT_EQ(Pool.Count(), 0);
}

TEST_P(PoolTest, FailingOperationLeavesTheConnectionFreeForOtherThreads) {
    Pool.Open();
    TMultiODBCDataBase* database = Pool.DataBases(0);
    TODBCMultiQuery& query = Attach(nullptr);
    query.SQL().SetText("select id from no_such_table_here");
    const std::int32_t before = database->GetCounter();
    EXPECT_ANY_THROW(query.Open());
    EXPECT_EQ(query.GetMultiODBCDataBase(), database);
    // Another thread takes the connection at once.
    auto taken = std::async(std::launch::async, [database] {
        const bool entered = database->CriticalSection().TryEnter();
        if (entered) {
            database->CriticalSection().Leave();
        }
        return entered;
    });
    EXPECT_TRUE(taken.get());
    // Every lock was counted, none is given back by the counter.
    EXPECT_GT(database->GetCounter(), before);
    // The same query runs on it afterwards.
    query.SQL().SetText("select 7");
    query.Open();
    EXPECT_EQ(query.Fields()[0]->AsInteger(), 7);
    query.Close();
}

INSTANTIATE_TEST_SUITE_P(Drivers, PoolTest, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda
