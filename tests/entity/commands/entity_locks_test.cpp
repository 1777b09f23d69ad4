#include "entity_commands_support.h"
#include "quorda/db/field.h"
#include "quorda_test/fault_driver.h"

namespace quorda::entitytest {
namespace {

// Two real connections: Raw holds a row lock in an open transaction, the entity locks through
// DataBase with a short lock wait.
class EntityLocks : public CommandsTest {
protected:
    void SetUp() override {
        CommandsTest::SetUp();
        Raw.Exec("insert into " + T + " values (1, 10, 'one', null)");
        Raw.Exec("insert into " + T + " values (2, 20, 'two', null)");
        if (Profile.Sql.ShortLockWait.empty()) {
            // The busy timeout is SQLite's lock wait.
            std::string Short = Profile.ConnectionString;
            Short.replace(Short.find("Timeout=5000"), 12, "Timeout=200");
            Connect(Short);
        } else {
            ExecuteQuery(Profile.Sql.ShortLockWait);
        }
    }
};

TEST_P(EntityLocks, LockedDeletedAndSelectedRowsOfOtherConnections) {
    TNotesEntity Notes(T, "");
    Raw.SetAutoCommit(false);
    Raw.Exec("update " + T + " set note = note where id = 1");
    Notes.SetFieldValue("id", 1);
    // Inside a transaction of its own, as a lock is meant to be taken: the failed lock leaves the
    // transaction usable for the re-read.
    DataBase->StartTransaction();
    EXPECT_EQ(Notes.Lock(), lrLocked);
    EXPECT_EQ(Errors.Shown.size(), 1u);
    ASSERT_TRUE(Notes.LockQuery()->Active());
    EXPECT_EQ(Notes.LockQuery()->FieldByName("note")->AsString(), "one");
    DataBase->Rollback();
    Raw.Rollback();
    Raw.SetAutoCommit(true);
    EXPECT_EQ(Notes.Lock(), lrOk);
    EXPECT_EQ(Errors.Shown.size(), 1u);
    // A row deleted by another connection is not re-read, and nothing more is shown.
    Notes.SetFieldValue("id", 2);
    ASSERT_EQ(Notes.LockForArray(cdtArray, {2}), lrOk);
    Raw.Exec("delete from " + T + " where id = 1");
    EXPECT_EQ(Notes.LockForArray(cdtArray, {1}), lrDeleted);
    EXPECT_EQ(Errors.Shown.size(), 1u);
    // Still the row of the last lock that found one.
    EXPECT_EQ(Notes.LockQuery()->FieldByName("id")->AsInteger(), 2);
    // LockForQry takes the key from the open selection.
    Notes.DataQuery()->SQL().SetText("select id from " + T + " where id = 2");
    OpenQry(Notes.DataQuery());
    EXPECT_EQ(Notes.LockForQry(), lrOk);
    EXPECT_EQ(Notes.LockQuery()->FieldByName("note")->AsString(), "two");
    EXPECT_EQ(Notes.DeleteForQry().AsInteger(), 1);
    EXPECT_TRUE(Rows().empty());
}

INSTANTIATE_TEST_SUITE_P(Drivers, EntityLocks, ::testing::Values("sqlite", "pgsql", "mariadb"),
                         quorda_test::ProfileTestName);

// A lock procedure says that the row is gone with native error -746; any other error means the row
// is locked. Only a lock that did not find the row gone re-reads it.
TEST(EntityLockProcedure, NativeErrorMinus746MeansDeleted) {
    const struct {
        TExecType Command;
        int Native;
        TLockResult Expected;
        bool ReRead;
    } Cases[] = {
        {fetLock, -746, lrDeleted, false},
        {fetLock, 7, lrLocked, true},
        {fetCLock, -746, lrDeleted, false},
        {fetCLock, 7, lrLocked, false},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(std::to_string(C.Command) + " " + std::to_string(C.Native));
        quorda_test::FaultDriver Fault("fail:SQLExecute@1|diag:SQLExecute:HY000/" + std::to_string(C.Native) +
                                       "/row|result:id/4|row:1");
        TODBCDatabase Database(nullptr);
        Database.SetDriverConnectOption(dcoDriverNoPrompt);
        Database.SetConnectStr(Fault.ConnectionString());
        Database.Open();
        DataBase = &Database;
        TShownErrors Errors;
        {
            TTestEntity Entity;
            Entity.SetFactTable("orders");
            Entity.CreateField("id", "Id", "", 6, true, true, true, false, ftInteger, cnstETPK);
            Entity.SetSP(C.Command, "lock_orders");
            Entity.SetFieldValue("id", 1);
            EXPECT_EQ(Entity.LockCascade(), C.Expected);
            EXPECT_EQ(Entity.LockQuery()->Active(), C.ReRead);
        }
        DataBase = nullptr;
        EXPECT_EQ(Errors.Shown.size(), 1u);
        EXPECT_TRUE(Fault.Received("SQLPrepare EXECUTE PROCEDURE lock_orders(?)"));
    }
}

} // namespace
} // namespace quorda::entitytest
