#include "core_test_support.h"
#include "quorda/core/session.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/messages.h"
#include "quorda/rtl/strings.h"

#include <gtest/gtest.h>
#include <memory>

namespace quorda {
namespace {

using testing::DatabaseErrorOf;
using Log = std::vector<std::string>;

// Stands in for an attached dataset: joins a database, records what the database asks of it in a
// shared log, and leaves the list the way a dataset does.
class FakeClient : public IODBCDatabaseClient {
public:
    FakeClient(std::string name, std::vector<std::string>& log, TODBCDatabase* database = nullptr)
        : FName(std::move(name)), FLog(log) {
        Attach(database);
    }
    ~FakeClient() override { Attach(nullptr); }

    void Attach(TODBCDatabase* database) {
        if (FDatabase != nullptr) {
            FDatabase->RemoveDataSet(this);
        }
        FDatabase = database;
        if (FDatabase != nullptr) {
            FDatabase->AddDataSet(this);
        }
    }
    TODBCDatabase* Database() const { return FDatabase; }

    TODBCDataSet* ClientDataSet() override { return nullptr; }
    void CloseForDatabase() override {
        FLog.push_back(FName + ".Close");
        FStatement = FStatement && FKeepStatementOnClose;
    }
    bool HoldsStatement() const override { return FStatement; }
    void ReleaseStatement() override {
        FLog.push_back(FName + ".InternalClose");
        FStatement = false;
    }
    void DetachFromDatabase() override {
        FLog.push_back(FName + ".Detach");
        if (FLeaveOnDetach) {
            Attach(nullptr);
        }
    }

    bool FStatement = true;
    bool FKeepStatementOnClose = false;
    bool FLeaveOnDetach = true;

private:
    std::string FName;
    std::vector<std::string>& FLog;
    TODBCDatabase* FDatabase = nullptr;
};

// Other tests of the process may leave databases registered; the session is checked relative to
// what was there before.
TEST(DatabaseName, UniqueAmongNonEmptyNamesAndFoundExactlyInTheSessionsOrder) {
    TODBCSession* session = ODBCSession();
    const int before = session->GetDatabaseCount();
    auto first = std::make_unique<TODBCDatabase>(nullptr);
    auto a = std::make_unique<TODBCDatabase>(nullptr);
    auto b = std::make_unique<TODBCDatabase>(nullptr);
    a->SetDatabaseName("RulesA");
    ASSERT_EQ(session->GetDatabaseCount(), before + 3);
    EXPECT_EQ(session->GetDatabase(before + 1), a.get());
    EXPECT_EQ(DatabaseErrorOf([&] { b->SetDatabaseName("RulesA"); }),
              "ODBC Database with name RulesA allready exists");
    EXPECT_EQ(b->DatabaseName(), "");
    a->SetDatabaseName("RulesA"); // its own name again
    b->SetDatabaseName("rulesa"); // names compare case-sensitively
    EXPECT_EQ(session->FindDatabase("RulesA"), a.get());
    EXPECT_EQ(session->FindDatabase("RulesA "), nullptr);
    a->SetDatabaseName("");
    b->SetDatabaseName(""); // any number of unnamed databases
    b->SetDatabaseName("RulesA");
    EXPECT_EQ(session->FindDatabase("RulesA"), b.get());
    // Databases left by other tests may be unnamed too; the first unnamed one comes first.
    EXPECT_NE(session->FindDatabase(""), a.get());

    first.reset();
    ASSERT_EQ(session->GetDatabaseCount(), before + 2);
    EXPECT_EQ(session->GetDatabase(before), a.get());
    EXPECT_THROW(session->GetDatabase(before + 2), Exception);
    EXPECT_EQ(session->GetEnv(), odbcEnv());
}

TEST(DatabaseWithoutConnection, ConnectionCallsRaiseTheDriverManagersError) {
    TODBCDatabase db(nullptr);
    TStringList names;
    names.Add("stale");
    EXPECT_THROW(db.GetTables(&names, nullptr, nullptr, nullptr), EODBCError);
    EXPECT_EQ(names.Count(), 1); // the lists are cleared only once the statement exists
    EXPECT_THROW(db.GetColumns("t", nullptr), EODBCError);
    const auto e = testing::Raised<EODBCError>([&] { db.Commit(); });
    ASSERT_TRUE(e);
    EXPECT_EQ(e->Hdbc(), db.GetDBC());
    EXPECT_EQ(e->Henv(), odbcEnv());
    EXPECT_EQ(e->SQLState().substr(0, 5), "08003") << e->Message();
    EXPECT_FALSE(db.InTransaction());
    // Closing what never opened is harmless, twice too; the handle survives for the next Open.
    SQLHDBC handle = db.GetDBC();
    db.Close();
    db.Close();
    EXPECT_EQ(db.GetDBC(), handle);
}

TEST(DatasetList, ClosedAndFreedLastFirstWhateverTheClientsDo) {
    Log log;
    TODBCDatabase db(nullptr);
    FakeClient a("a", log, &db);
    FakeClient b("b", log, &db);
    FakeClient c("c", log, &db);
    b.FKeepStatementOnClose = true;
    ASSERT_EQ(db.DatasetCount(), 3);
    EXPECT_EQ(db.DatasetClient(1), &b);
    EXPECT_EQ(db.Datasets(1), nullptr); // a fake is no dataset

    db.CloseDatasets();
    EXPECT_EQ(log, (Log{"c.Close", "b.Close", "b.InternalClose", "a.Close"}));
    EXPECT_EQ(db.DatasetCount(), 3);
    EXPECT_THROW(db.DatasetClient(3), Exception);

    // Freeing detaches every client, also one that does not leave the list when told to.
    log.clear();
    b.FLeaveOnDetach = false;
    db.RemoveDataSet(&a);
    db.RemoveDataSet(&a); // not in the list any more: nothing happens
    db.AddDataSet(&a);
    db.FreeDatasets();
    EXPECT_EQ(log, (Log{"a.Detach", "c.Detach", "b.Detach"}));
    EXPECT_EQ(db.DatasetCount(), 0);
    EXPECT_EQ(a.Database(), nullptr);
    b.Attach(nullptr);
}

TEST(DatasetList, ADatasetThatFailsToCloseDoesNotStopTheDestructor) {
    struct Throwing : FakeClient {
        using FakeClient::FakeClient;
        void CloseForDatabase() override { throw Exception("close failed"); }
    };
    Log log;
    Throwing bad("bad", log);
    {
        TODBCDatabase db(nullptr);
        bad.Attach(&db);
        EXPECT_THROW(db.Close(), Exception);
    }
    EXPECT_EQ(log, (Log{"bad.Detach"}));
    EXPECT_EQ(bad.Database(), nullptr);
}

} // namespace
} // namespace quorda
