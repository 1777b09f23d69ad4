#include "core_test_support.h"
#include "quorda/core/odbc_transaction.h"
#include "quorda/core/session.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/messages.h"

#include <cctype>
#include <gtest/gtest.h>
#include <quorda_test/profiles.h>
#include <quorda_test/raw_odbc.h>

namespace quorda {
namespace {

using quorda_test::RawOdbc;
using testing::DatabaseErrorOf;
using testing::EventLog;
using testing::ExecOn;
using testing::Raised;
using testing::ScalarOn;

class DatabaseConnect : public quorda_test::ProfileTest {};

TEST_P(DatabaseConnect, DriverStringConnectsAndTheCompletedStringReopens) {
    TODBCDatabase db(nullptr);
    EventLog events;
    events.Attach(db);
    db.SetDriverConnectOption(dcoDriverNoPrompt);
    db.SetConnectStr(Profile.ConnectionString);
    // Every driver takes the timeouts (an option it refused would fail the open); what they limit is
    // pinned in statement_interrupts_test.cpp.
    db.SetLoginTimeout(5);
    db.SetConnectionTimeout(5);
    db.Open();
    ASSERT_TRUE(db.Connected());
    EXPECT_EQ(events.Lines, (std::vector<std::string>{"before", "after"}));
    EXPECT_EQ(ScalarOn(db, "select 1"), "1");
    // Options that need a closed database are refused while it is open; autocommit is stored any time.
    const std::string openMessage = "ODBC This operation is not allowed on open database";
    EXPECT_EQ(DatabaseErrorOf([&] { db.SetSQLCursorOption(db.SQLCursorOption()); }), openMessage);
    EXPECT_EQ(DatabaseErrorOf([&] { db.SetDriverConnectOption(dcoDriverNoPrompt); }), openMessage);
    const auto renamed = Raised<EODBCDatabaseError>([&] { db.SetDatabaseName("ConnectOptions"); });
    EXPECT_EQ(renamed ? renamed->Message() : std::string(), "Database open");
    db.SetAutoCommitOption(acoAutoCommit);

    // The driver's completed string replaces the input and must be usable as it stands.
    const std::string completed = db.ConnectStr();
    if (Profile.Name.rfind("pgsql", 0) != 0) {
        // SQLite ODBC completes without its driver ("DSN=;..."): the input is kept. MariaDB's
        // connector hands the input back unchanged.
        EXPECT_EQ(completed, Profile.ConnectionString);
    } else {
        EXPECT_GT(completed.size(), 250u) << completed; // psqlODBC completes far beyond 250 bytes
        EXPECT_NE(completed, Profile.ConnectionString);
    }
    db.Close();
    EXPECT_FALSE(db.Connected());
    db.SetConnected(true);
    EXPECT_EQ(ScalarOn(db, "select 2"), "2");
    db.Open(); // already open: nothing happens, no events
    EXPECT_EQ(events.Lines.size(), 4u);
    db.SetConnected(false);
    db.Close();
    EXPECT_FALSE(db.Connected());
    db.SetSQLCursorOption(curUseDriver);
    db.SetDatabaseName("ConnectOptions");
}

TEST_P(DatabaseConnect, CommitAndRollbackDecideWhatASecondConnectionSees) {
    const std::string table = quorda_test::UniqueTableName("tx");
    RawOdbc other(Profile.ConnectionString);
    other.Exec("create table " + table + " (id integer)");
    const std::string count = "select count(*) from " + table;

    const auto db = testing::OpenDatabase(Profile.ConnectionString);
    db->StartTransaction();
    EXPECT_TRUE(db->InTransaction());
    ExecOn(*db, "insert into " + table + " values (1)");
    EXPECT_EQ(ScalarOn(*db, count), "1");
    EXPECT_EQ(other.Scalar(count), "0");
    db->Commit();
    EXPECT_FALSE(db->InTransaction());
    EXPECT_EQ(other.Scalar(count), "1");

    // A transaction guard rolls back unless it was committed.
    for (bool commit : {false, true}) {
        TODBCTransaction transaction(*db);
        ExecOn(*db, "insert into " + table + " values (2)");
        if (commit) {
            transaction.Commit();
        }
    }
    EXPECT_FALSE(db->InTransaction());
    EXPECT_EQ(other.Scalar(count), "2");

    // Outside a transaction the connection is back in autocommit mode.
    ExecOn(*db, "insert into " + table + " values (3)");
    EXPECT_EQ(other.Scalar(count), "3");

    // Closing with an open transaction rolls it back.
    db->StartTransaction();
    ExecOn(*db, "insert into " + table + " values (4)");
    db->Close();
    EXPECT_FALSE(db->InTransaction());
    EXPECT_EQ(other.Scalar(count), "3");

    other.Exec("drop table " + table);
}

INSTANTIATE_TEST_SUITE_P(Drivers, DatabaseConnect, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

// Isolation is the server's business: the servers report the level of the session.
class DatabaseIsolation : public quorda_test::ProfileTest {
protected:
    // The session's level as "read committed", "repeatable read", ...
    std::string SessionLevel(TODBCDatabase& db) {
        const bool mariadb = Profile.Name == "mariadb";
        std::string level = *ScalarOn(db, mariadb ? "select @@tx_isolation" : "show transaction_isolation");
        for (char& c : level) {
            c = c == '-' ? ' ' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
        return level;
    }
};

TEST_P(DatabaseIsolation, AppliedAtOnceWhenOpenAndAtTheNextOpenWhenClosed) {
    TODBCDatabase db(nullptr);
    db.SetConnectStr(Profile.ConnectionString);
    db.SetDriverConnectOption(dcoDriverNoPrompt);
    db.SetIsolationLevel(ilSerializable);
    std::string seenByAfterConnect;
    db.OnAfterConnect = [&](TObject*) { seenByAfterConnect = SessionLevel(db); };
    db.Open();
    // The level is set after the event, which sees the server's default.
    EXPECT_EQ(seenByAfterConnect, Profile.Name == "mariadb" ? "repeatable read" : "read committed");
    EXPECT_EQ(SessionLevel(db), "serializable");

    db.SetIsolationLevel(ilRepeatableRead);
    EXPECT_EQ(SessionLevel(db), "repeatable read");
    db.SetIsolationLevel(ilDontCare); // stored, the connection keeps its level
    EXPECT_EQ(SessionLevel(db), "repeatable read");
    db.Close();
}

INSTANTIATE_TEST_SUITE_P(Servers, DatabaseIsolation, ::testing::Values("pgsql", "pgsql-unicode", "mariadb"),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda
