#include "core_test_support.h"
#include "quorda/core/odbc_connect.h"
#include "quorda/core/odbc_transaction.h"
#include "quorda/core/session.h"
#include "quorda/odbc/odbc_error.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <quorda_test/fault_driver.h>

namespace quorda {
namespace {

using quorda_test::FaultDriver;
using testing::ClosedDatabase;
using testing::EventLog;
using testing::Raised;
using Lines = std::vector<std::string>;

// The calls of the log that the database itself decides (the driver manager adds info queries).
Lines ConnectionCalls(const FaultDriver& fault) {
    Lines lines = fault.Calls(
        {"SQLDriverConnect", "SQLConnect", "SQLSetConnectOption", "SQLTransact", "SQLDisconnect"});
    for (auto& line : lines) {
        line = line.substr(0, line.find(" Driver="));
    }
    return lines;
}

// A failed connect, then a cancelled dialog: both leave the database closed after the before event only.
TEST(FaultConnect, AFailedConnectAndACancelledDialogLeaveTheDatabaseClosedWithoutTheAfterEvent) {
    // The driver manager hands records out by state, highest first, and writes 00000 into the state
    // buffer at the end of the queue while leaving the last message in place.
    FaultDriver fault("fail:SQLDriverConnect|diag:SQLDriverConnect:08S01/0/link lost"
                      "|diag:SQLDriverConnect:08001/0/server gone");
    auto db = ClosedDatabase(fault.ConnectionString());
    EventLog events;
    events.Attach(*db);
    const auto e = Raised<EODBCError>([&] { db->Open(); });
    ASSERT_TRUE(e);
    EXPECT_EQ(e->Message(), "link lost server gone ODBC State = 08S01 server gone ODBC State = 08S01;08001");
    EXPECT_EQ(e->SQLState(), "08S01;08001;00000");
    EXPECT_EQ(e->NativeError(), 0);
    EXPECT_EQ(e->NativeMessage(), "link lost");
    EXPECT_EQ(e->Hdbc(), db->GetDBC());
    EXPECT_EQ(e->Henv(), odbcEnv());
    EXPECT_EQ(e->Hstmt(), nullptr);
    EXPECT_FALSE(db->Connected());

    FaultDriver cancel("nodata:SQLDriverConnect");
    db->SetConnectStr(cancel.ConnectionString());
    db->SetDriverConnectOption(dcoDriverCompleteRequired);
    const std::string input = db->ConnectStr();
    EXPECT_NO_THROW(db->Open());
    EXPECT_FALSE(db->Connected());
    EXPECT_EQ(events.Lines, (Lines{"before", "before"}));
    // The prompt option reaches the driver; the cursor-library option stays in the driver manager.
    EXPECT_EQ(ConnectionCalls(cancel), Lines{"SQLDriverConnect 3"});
    EXPECT_EQ(db->ConnectStr(), input);
    SQLHDBC kept = db->GetDBC(); // the handle stays allocated for the next attempt
    EXPECT_NO_THROW(db->Close());
    EXPECT_EQ(db->GetDBC(), kept);
}

// Autocommit switched off for the bracket and back on after it is pinned on the real drivers
// (CommitAndRollbackDecideWhatASecondConnectionSees); here what the autocommit option changes.
TEST(FaultConnect, WithAutocommitChosenStartTransactionDoesNothingAndCommitStillReachesTheDriver) {
    FaultDriver fault;
    auto db = ClosedDatabase(fault.ConnectionString());
    db->Open();
    fault.ClearLog();
    db->SetAutoCommitOption(acoAutoCommit);
    db->StartTransaction();
    EXPECT_FALSE(db->InTransaction());
    db->Commit();
    db->SetAutoCommitOption(acoDontCare);
    db->Rollback();
    EXPECT_EQ(ConnectionCalls(fault), (Lines{"SQLTransact 0", "SQLTransact 1"}));
}

TEST(FaultConnect, AFailingCommitKeepsTheTransactionAFailingRollbackStillDisconnects) {
    FaultDriver fault("fail:SQLTransact@1|diag:SQLTransact:40001/0/serialization failure"
                      "|fail:SQLTransact@2|diag:SQLTransact:08S01/5/link down");
    auto db = ClosedDatabase(fault.ConnectionString());
    db->Open();
    db->StartTransaction();
    fault.ClearLog();
    EXPECT_THROW(db->Commit(), EODBCError);
    EXPECT_TRUE(db->InTransaction());
    EXPECT_EQ(ConnectionCalls(fault), Lines{"SQLTransact 0"}); // autocommit not switched back
    // Close rolls back, and disconnects even when that fails; then it raises.
    const auto e = Raised<EODBCError>([&] { db->Close(); });
    ASSERT_TRUE(e);
    EXPECT_EQ(e->NativeMessage(), "link down");
    EXPECT_FALSE(db->Connected());
    EXPECT_FALSE(db->InTransaction());
    EXPECT_TRUE(fault.Received("SQLDisconnect"));
    EXPECT_TRUE(fault.Received("SQLFreeConnect"));
    db->Open();
    EXPECT_TRUE(db->Connected());
}

TEST(FaultConnect, FailingConnectionOptionsRaiseWhereTheyHappen) {
    FaultDriver fault("fail:SQLSetConnectOption");
    auto db = ClosedDatabase(fault.ConnectionString());
    db->SetIsolationLevel(ilRepeatableRead);
    EventLog events;
    events.Attach(*db);
    // The isolation level fails after the connection was made: it stays open.
    EXPECT_THROW(db->Open(), EODBCError);
    EXPECT_TRUE(db->Connected());
    EXPECT_EQ(events.Lines, (Lines{"before", "after"}));

    EXPECT_THROW(db->SetIsolationLevel(ilSerializable), EODBCError);
    EXPECT_EQ(db->IsolationLevel(), ilRepeatableRead);
    EXPECT_THROW(db->StartTransaction(), EODBCError);
    EXPECT_FALSE(db->InTransaction());
    db->Close();
}

// The guard's normal use is pinned on the real drivers (CommitAndRollbackDecideWhatASecondConnectionSees).
TEST(FaultConnect, ARollbackFailingInTheGuardsDestructorGoesToTheApplication) {
    FaultDriver fault("fail:SQLTransact@1|diag:SQLTransact:08S01/0/link lost");
    auto db = ODBCConnect(fault.ConnectionString());
    testing_support::TShownErrors errors;
    { TODBCTransaction transaction(*db); }
    ASSERT_EQ(errors.Shown.size(), 1u);
    EXPECT_NE(errors.Shown[0].find("link lost"), std::string::npos) << errors.Shown[0];
    EXPECT_TRUE(db->InTransaction()) << "still open, for Close to roll back";
}

TEST(FaultConnect, AFailingDisconnectKeepsTheConnectionAndItsHandleAndLetsTheDestructorGoQuietly) {
    FaultDriver fault("fail:SQLDisconnect@1|diag:SQLDisconnect:08S01/9/link down|fail:SQLDisconnect@3+"
                      "|fail:SQLTransact");
    auto db = ClosedDatabase(fault.ConnectionString());
    db->Open();
    SQLHDBC handle = db->GetDBC();
    const auto e = Raised<EODBCError>([&] { db->Close(); });
    ASSERT_TRUE(e);
    EXPECT_EQ(e->Hdbc(), handle);
    EXPECT_EQ(e->NativeError(), 9);
    EXPECT_EQ(e->NativeMessage(), "link down");
    EXPECT_TRUE(db->Connected());
    EXPECT_EQ(db->GetDBC(), handle);
    db->Close();
    EXPECT_FALSE(db->Connected());
    // Neither the rollback nor the disconnect works now.
    db->Open();
    db->StartTransaction();
    EXPECT_NO_THROW(db.reset());
}

TEST(FaultConnect, TheCompletedStringArrivesWholeOrTheInputIsKept) {
    const std::string longOut = "Driver=QuordaFault;Completed=" + std::string(600, 'c');
    // A completed string that names neither a driver nor a data source would reopen elsewhere; one
    // longer than any length ODBC can report arrives cut. Both leave the input in place.
    for (const auto& [completed, kept] : {std::pair<std::string, bool>{longOut, false},
                                          {"DSN=%3BDatabase=elsewhere.db", true},
                                          {"DSN=%3BDriver=QuordaFault", true},
                                          {"Driver=QuordaFault;X=" + std::string(40000, 'x'), true}}) {
        FaultDriver fault("connout:" + completed);
        auto db = ClosedDatabase(fault.ConnectionString());
        db->Open();
        EXPECT_EQ(db->ConnectStr(), kept ? fault.ConnectionString() : completed) << completed.substr(0, 40);
    }
}

TEST(FaultConnect, LongInputsArePassedWholeAndBadOnesFailCleanly) {
    FaultDriver fault;
    {
        auto db = ClosedDatabase(fault.ConnectionString() + ";Padding=" + std::string(100 * 1024, 'p'));
        try {
            db->Open();
            const auto calls = fault.Calls({"SQLDriverConnect"});
            ASSERT_FALSE(calls.empty());
            EXPECT_NE(calls.back().find(std::string(1000, 'p')), std::string::npos);
        } catch (const EODBCError&) {
            // the driver manager may refuse a string this long; it must not crash or cut it
        }
    }
    // An empty connection string names no data source; nor do names of 100 KB.
    for (const std::string& name : {std::string(), std::string(100 * 1024, 'd')}) {
        auto db = ClosedDatabase("");
        if (!name.empty()) {
            db->SetConnectStyle(csConnect);
            db->SetDSNName(name);
            db->SetUserID(std::string(100 * 1024, 'u'));
            db->SetPassword(std::string(100 * 1024, 'w'));
        }
        EXPECT_THROW(db->Open(), EODBCError);
        EXPECT_FALSE(db->Connected());
    }
    // Connecting by name passes user and password whole.
    fault.ApplyToDsn();
    auto byName = ClosedDatabase("");
    byName->SetConnectStyle(csConnect);
    byName->SetDSNName(FaultDriver::kDsn);
    const std::string user(300, 'u');
    byName->SetUserID(user);
    byName->SetPassword("secret");
    byName->Open();
    EXPECT_TRUE(fault.Received(std::string("SQLConnect ") + FaultDriver::kDsn + " " + user + " secret"));
}

} // namespace
} // namespace quorda
