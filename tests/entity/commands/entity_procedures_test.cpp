#include "entity_commands_support.h"

namespace quorda::entitytest {
namespace {

using quorda_test::Row;

// Real procedures and functions: executed ones are called with CALL, opened ones selected from.
class EntityProcedures : public CommandsTest {
protected:
    void SetUp() override {
        CommandsTest::SetUp();
        FSavedExecuteProc = strExecuteProc;
        // Each procedure takes its arguments in the order of the entity's fields.
        Raw.Exec("create procedure " + T +
                 "_add(p_id integer, p_customer integer, p_note varchar, p_memo text) "
                 "language sql as $$ insert into " +
                 T + " values (p_id, p_customer, p_note, p_memo) $$");
        Raw.Exec("create function " + T +
                 "_drop(p_customer integer, p_note varchar, p_memo text) returns integer "
                 "language sql as $$ with gone as (delete from " +
                 T + " where customer = p_customer returning 1) select count(*)::integer from gone $$");
    }
    void TearDown() override {
        strExecuteProc = FSavedExecuteProc;
        Raw.Exec("drop procedure " + T + "_add");
        Raw.Exec("drop function " + T + "_drop");
        CommandsTest::TearDown();
    }

private:
    std::string FSavedExecuteProc;
};

TEST_P(EntityProcedures, ProceduresTakeTheirArgumentsInFieldOrderAndTheSelectProcedurePreparesTheSelection) {
    {
        TNotesEntity Notes(T, "NOTES");
        TNotesEntity Other(T, "NOTES");
        Other.SetFlgReread(false);
        strExecuteProc = "CALL";
        Notes.SetSP(fetInsert, T + "_add");
        Notes.SetValues(1, 5, "by call", "text");
        EXPECT_EQ(Notes.Add().AsInteger(), -1);
        Notes.AddForArray(cdtArray, {2, 5, "by array", Variant::Null()});
        EXPECT_EQ(Rows(),
                  (std::vector<Row>{{"1", "5", "by call", "text"}, {"2", "5", "by array", std::nullopt}}));
        EXPECT_TRUE(Other.flgReread());

        strExecuteProc = "SELECT * FROM";
        Notes.SetSP(fetDelete, T + "_drop");
        Notes.SetSPOpen(fetDelete, true);
        EXPECT_EQ(Notes.Delete().AsInteger(), 2);
        EXPECT_TRUE(Rows().empty());

        // A blank name is no procedure: it cannot be made, and the command runs its generated statement.
        Notes.SetSP(fetInsert, "  ");
        EXPECT_EQ(MessageOf<EEntityException>([&] { Notes.CreateSProcedure(fetInsert); }),
                  "Can not create empty procedure");
        Notes.SetValues(3, 1, "x", "y");
        EXPECT_EQ(Notes.Add().AsInteger(), 1);
    }
    EXPECT_TRUE(Errors.Shown.empty());
    // The select procedure prepares the data before the selection opens, and again when a marked entity
    // re-reads; an unmarked one only refreshes.
    Raw.Exec("delete from " + T);
    TNotesEntity Notes(T, "NOTES");
    strExecuteProc = "CALL";
    Notes.SetSP(fetSelect, T + "_add");
    Notes.SetValues(1, 5, "first", Variant::Null());
    Notes.EntityOpen();
    EXPECT_EQ(Notes.DataQuery()->RecordCount(), 1);

    Notes.SetValues(2, 5, "second", Variant::Null());
    Notes.ReOpenSql();
    EXPECT_EQ(Notes.DataQuery()->RecordCount(), 1);
    Notes.SetFlgReread(true);
    Notes.ReOpenSql();
    EXPECT_EQ(Notes.DataQuery()->RecordCount(), 2);
    EXPECT_FALSE(Notes.flgReread());
}

INSTANTIATE_TEST_SUITE_P(Drivers, EntityProcedures, ::testing::Values("pgsql"), quorda_test::ProfileTestName);

} // namespace
} // namespace quorda::entitytest
