// Entities over real data sources: commands, locks, procedures and the opened selection, and a data
// module of a database, queries and a user entity saved and loaded.
#include "entity_test_support.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_query.h"
#include "quorda/db/field.h"
#include "quorda/entity/user_entity.h"
#include "quorda/rtl/data_module.h"
#include "quorda/rtl/object_text.h"
#include "quorda/tools/query_helpers.h"
#include "quorda_test/fault_driver.h"
#include "quorda_test/profiles.h"
#include "quorda_test/raw_odbc.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <quorda_test/environment.h>
#include <string>
#include <vector>

namespace quorda::entitytest {

// An entity over one table of its own: a key, a 64-bit number, a short text and a long text.
class TNotesEntity : public TTestEntity {
public:
    TNotesEntity(const std::string& Table, const std::string& ViewEntity) : TTestEntity(ViewEntity) {
        SetFactTable(Table);
        SetViewTable(Table);
        CreateField("id", "Id", "", 6, true, true, true, true, ftInteger, cnstETPK);
        CreateField("customer", "Customer", "", 6, true, true, false, true, ftLargeint, cnstETField);
        CreateField("note", "Note", "", 20, true, true, false, true, ftString, cnstETField);
        CreateField("memo", "Memo", "", 40, true, true, false, false, ftMemo, cnstETField);
    }
    void SetValues(const Variant& Id, const Variant& Customer, const Variant& Note, const Variant& Memo) {
        SetFieldValue("id", Id);
        SetFieldValue("customer", Customer);
        SetFieldValue("note", Note);
        SetFieldValue("memo", Memo);
    }
};

// DataBase open on the profile's data source, a notes table, the exceptions the application was
// shown; everything put back afterwards.
class CommandsTest : public quorda_test::ProfileTest {
protected:
    void SetUp() override {
        Connect(Profile.ConnectionString);
        T = quorda_test::UniqueTableName("notes");
        Raw.Exec("create table " + T +
                 " (id integer primary key, customer bigint, note varchar(20), memo text)");
    }
    void TearDown() override {
        DataBase = nullptr;
        FDatabase.reset();
        Raw.Exec("drop table " + T);
    }
    // Reconnects DataBase; entities made afterwards use the new connection.
    void Connect(const std::string& ConnectionString) {
        DataBase = nullptr;
        FDatabase = std::make_unique<TODBCDatabase>(nullptr);
        FDatabase->SetDriverConnectOption(dcoDriverNoPrompt);
        FDatabase->SetConnectStr(ConnectionString);
        FDatabase->Open();
        DataBase = FDatabase.get();
    }
    std::vector<quorda_test::Row> Rows() {
        return Raw.QueryStrings("select id, customer, note, memo from " + T + " order by id");
    }

    quorda_test::RawOdbc Raw{Profile.ConnectionString};
    std::string T;
    TShownErrors Errors;

private:
    std::unique_ptr<TODBCDatabase> FDatabase;
};

namespace {

using quorda_test::Row;

class EntityCommands : public CommandsTest {};

// Bare and quoted names alike: a quoted name binds its parameter by the bare name.
TEST_P(EntityCommands, AddEditDeleteReachTheTableAndValueSourcesBindValuesNullsAndEmptyStrings) {
    if (!Profile.Sql.QuotedNames.empty()) {
        ExecuteQuery(Profile.Sql.QuotedNames);
    }
    for (const char* Quote : {"", "\""}) {
        SCOPED_TRACE(Quote);
        TNotesEntity Writer(T, "NOTES");
        TNotesEntity Reader(T, "NOTES");
        for (int I = 0; I < Writer.FieldCount(); ++I) {
            Writer.GetFields(I)->SetFactQuote(Quote);
        }
        auto Unmark = [&] {
            Writer.SetFlgReread(false);
            Reader.SetFlgReread(false);
        };

        Unmark();
        Writer.SetValues(1, 7, "first", "a long text");
        EXPECT_EQ(Writer.Add().AsInteger(), 1);
        EXPECT_EQ(Rows(), (std::vector<Row>{{"1", "7", "first", "a long text"}}));
        EXPECT_TRUE(Reader.flgReread());

        ASSERT_EQ(Writer.Lock(), lrOk);
        // Nothing differs from the locked row: nothing runs, nobody hears of it.
        Unmark();
        Raw.Exec("update " + T + " set customer = 8 where id = 1");
        EXPECT_EQ(Writer.Edit().AsInteger(), 0);
        EXPECT_FALSE(Reader.flgReread());
        EXPECT_EQ(Rows()[0][1], "8");
        // Only the changed column is written: the customer changed behind the entity's back stays.
        Writer.SetFieldValue("note", "second");
        EXPECT_EQ(Writer.Edit().AsInteger(), 1);
        EXPECT_EQ(Rows(), (std::vector<Row>{{"1", "8", "second", "a long text"}}));
        EXPECT_TRUE(Reader.flgReread());

        Unmark();
        EXPECT_EQ(Writer.Delete().AsInteger(), 1);
        EXPECT_TRUE(Rows().empty());
        EXPECT_TRUE(Reader.flgReread());
    }
    EXPECT_TRUE(Errors.Shown.empty());
    // Each value source inserts a row of values (a 64-bit number among them) and a row of nulls and
    // empty strings. An empty string is a null when it comes from an array or a field; a query's row
    // hands over what it holds.
    const std::string Source = quorda_test::UniqueTableName("source");
    Raw.Exec("create table " + Source + " (id integer, customer bigint, note varchar(20), memo text)");
    struct Case {
        const char* Name;
        std::function<void(TNotesEntity&, const std::vector<Variant>&)> Add;
        std::optional<std::string> EmptyNote;
    };
    const std::vector<Case> Cases{
        {"cdtArray", [](TNotesEntity& E, const std::vector<Variant>& V) { E.AddForArray(cdtArray, V); },
         std::nullopt},
        {"cdtField",
         [](TNotesEntity& E, const std::vector<Variant>& V) {
             E.SetValues(V[0], V[1], V[2], V[3]);
             E.AddForArray(cdtField, {});
         },
         std::nullopt},
        {"cdtQry",
         [&](TNotesEntity& E, const std::vector<Variant>& V) {
             Raw.Exec("delete from " + Source);
             Raw.Exec("insert into " + Source + " values (" + V[0].AsString() + ", " +
                      (VarIsNull(V[1]) ? "null" : V[1].AsString()) + ", '" + V[2].AsString() + "', " +
                      (VarIsNull(V[3]) ? "null" : "'" + V[3].AsString() + "'") + ")");
             E.DataQuery()->SQL().SetText("select id, customer, note, memo from " + Source);
             OpenQry(E.DataQuery());
             E.AddForArray(cdtQry, {});
             E.DataQuery()->Close();
         },
         ""}};
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        Raw.Exec("delete from " + T);
        TNotesEntity Notes(T, "");
        C.Add(Notes, {1, Variant(std::int64_t{5000000000}), "x", "long"});
        C.Add(Notes, {2, Variant::Null(), "", Variant::Null()});
        EXPECT_EQ(Rows(), (std::vector<Row>{{"1", "5000000000", "x", "long"},
                                            {"2", std::nullopt, C.EmptyNote, std::nullopt}}));
    }
    Raw.Exec("drop table " + Source);
    // A field binding needs a field for every parameter.
    TNotesEntity Notes(T, "");
    const auto Query = CreateQuery();
    Query->SQL().SetText("select * from " + T + " where id = :id and customer = :nosuch");
    EXPECT_EQ(MessageOf<EEntityException>([&] { Notes.SetParam(*Query, cdtField, nullptr, {}); }),
              "Field nosuch not found");
}

INSTANTIATE_TEST_SUITE_P(Drivers, EntityCommands, ::testing::Values("sqlite", "pgsql", "mariadb"),
                         quorda_test::ProfileTestName);

// Two real connections: Raw holds a row lock in an open transaction, the entity locks through
// DataBase with a short lock wait.
TEST_P(EntityCommands, LockedDeletedAndSelectedRowsOfOtherConnections) {
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

// A lock procedure says that the row is gone with native error -746; any other error means the row
// is locked. Only a lock that did not find the row gone re-reads it.
TEST(EntityLockProcedure, NativeErrorMinus746MeansDeleted) {
    const struct {
        TExecType Command;
        int Native;
        TLockResult Expected;
        bool ReRead;
    } Cases[] = {{fetLock, -746, lrDeleted, false},
                 {fetLock, 7, lrLocked, true},
                 {fetCLock, -746, lrDeleted, false},
                 {fetCLock, 7, lrLocked, false}};
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

// A user entity over a view of the items (table I, view V).
class EntityOpen : public CommandsTest {
protected:
    void SetUp() override {
        CommandsTest::SetUp();
        I = quorda_test::UniqueTableName("items");
        V = quorda_test::UniqueTableName("v_items");
        Raw.Exec(
            "create table " + I +
            " (id integer primary key, name varchar(20), price double precision, qty integer, made date, "
            "memo text)");
        // Row 3 fails the WherePhrase (qty > 0), row 5 the filter (price >= 3). The names are plain
        // ASCII, so every data source sorts them alike.
        Raw.Exec(
            "insert into " + I +
            " values (1, 'delta', 4.5, 3, '2024-03-05', 'long text'), (2, 'alpha', 12.25, 1, '2024-01-15', "
            "'long text'), (3, 'echo', 1234.5, 0, '2024-02-01', 'long text'), (4, 'charlie', 7, 5, "
            "'2024-03-20', 'long text'), (5, 'bravo', 2, 2, '2024-04-02', 'long text'), (6, 'foxtrot', "
            "1500.75, 2500, '2023-12-31', null)");
        Raw.Exec("create view " + V + " as select id, name, price, qty, made, memo from " + I);
        Items = std::make_unique<TUserEntity>(nullptr);
        Items->CreateField("id", "Id", "", 4, true, false, true, false, ftInteger, cnstETPK);
        Items->CreateField("name", "Name", "", 12, true, true, false, true, ftString, cnstETField);
        Items->CreateField("price", "Price", "", 9, true, true, false, true, ftFloat, cnstETField);
        Items->CreateField("qty", "Quantity", "", 5, true, true, false, true, ftInteger, cnstETField);
        Items->CreateField("made", "Made", "", 10, true, true, false, false, ftDate, cnstETField);
        Items->CreateField("memo", "Memo", "", 10, true, true, false, false, ftMemo, cnstETField);
        Items->SetFactTable(I);
        Items->SetViewTable(V);
        Items->SetWherePhrase("qty > 0");
        Items->SetFilterStr("price >= :price");
        Items->SetFieldFilter("price", 3.0);
        Items->SetPrecision(15);
        Items->SetDigits(2);
    }
    void TearDown() override {
        Items.reset();
        Raw.Exec("drop view " + V);
        Raw.Exec("drop table " + I);
        CommandsTest::TearDown();
    }
    // The ids of the selection from its first row; the current row is left on the last.
    std::vector<int> Ids() {
        std::vector<int> Result;
        TDataSet& Query = *Items->DataQuery();
        for (Query.First(); !Query.Eof(); Query.Next()) {
            Result.push_back(Query.FieldByName("id")->AsInteger());
        }
        return Result;
    }
    int CurrentId() { return Items->DataQuery()->FieldByName("id")->AsInteger(); }
    void GoTo(int Id) {
        TDataSet& Query = *Items->DataQuery();
        for (Query.First(); !Query.Eof() && CurrentId() != Id; Query.Next()) {
        }
    }

    std::string I;
    std::string V;
    std::unique_ptr<TUserEntity> Items;
};

// The selection holds the rows that pass WherePhrase and the filter, in the order of the sorting
// field. Re-opening and re-reading stay on the row the selection stood on; the entity leads its
// namesakes, unmarked. The columns show as the fields say.
TEST_P(EntityOpen, ReopeningKeepsTheRowColumnsShowAsTheFieldsSayAndFindMovesToTheNextMatch) {
    Items->SetviewEntity("ITEMS");
    TTestEntity Other("ITEMS");
    Items->SetOrdering(Items->lstFields().IndexOf("name"));
    Items->EntityOpen();
    GoTo(1);
    Items->EntityOpenOnly();
    EXPECT_EQ(CurrentId(), 1);
    EXPECT_FALSE(Items->flgReread());
    EXPECT_EQ(lstOpenEntity().IndexOfObject(Items.get()), lstOpenEntity().IndexOf("ITEMS"));

    Raw.Exec("insert into " + I + " values (7, 'golf', 8, 8, '2024-05-05', null)");
    Items->SetFlgReread(true);
    Items->ReOpenSql();
    EXPECT_EQ(CurrentId(), 1);
    EXPECT_FALSE(Items->flgReread());
    EXPECT_EQ(Ids(), (std::vector<int>{2, 4, 1, 6, 7}));

    TDataSet& Query = *Items->DataQuery();
    EXPECT_FALSE(Query.FieldByName("id")->Visible());
    EXPECT_EQ(Query.FieldByName("qty")->DisplayLabel(), "Quantity");
    EXPECT_EQ(Query.FieldByName("price")->DisplayWidth(), 9);
    GoTo(6);
    EXPECT_EQ(Query.FieldByName("price")->DisplayText(), "1,500.75");
    EXPECT_EQ(Query.FieldByName("qty")->DisplayText(), "2,500");
    EXPECT_EQ(Query.FieldByName("qty")->Text(), "2500");
    EXPECT_EQ(Query.FieldByName("memo")->DisplayText(), "");
    GoTo(4);
    EXPECT_EQ(Query.FieldByName("price")->DisplayText(), "7.00");
    EXPECT_EQ(Query.FieldByName("memo")->DisplayText(), "(Blob)");
    // Find over the selection ordered by name: alpha (2), charlie (4), delta (1), foxtrot (6).
    const struct {
        const char* Name;
        int Start;
        std::vector<std::pair<const char*, Variant>> Finds;
        bool Sensitive;
        TDirectionFind Direction;
        int Expected; // the row found, 0 for none
    } Cases[] = {
        {"text by prefix, ignoring case", 2, {{"name", "CH"}}, false, dfNext, 4},
        {"text by prefix, case sensitive", 2, {{"name", "CH"}}, true, dfNext, 0},
        {"case sensitive, same case", 2, {{"name", "ch"}}, true, dfNext, 4},
        {"never the current row", 4, {{"name", "charlie"}}, false, dfNext, 0},
        {"backwards", 6, {{"name", "a"}}, false, dfPrior, 2},
        {"backwards from the first row", 2, {{"name", "a"}}, false, dfPrior, 0},
        {"numbers match whole values only", 2, {{"qty", "250"}}, false, dfNext, 0},
        {"a whole number", 2, {{"qty", "2500"}}, false, dfNext, 6},
        {"a whole float", 2, {{"price", "4.5"}}, false, dfNext, 1},
        {"dates contain", 2, {{"made", Variant::FromDateTime(EncodeDate(2024, 3, 20))}}, false, dfNext, 4},
        {"every field must match", 2, {{"name", "c"}, {"qty", "3"}}, false, dfNext, 0},
        {"two fields matching", 2, {{"name", "d"}, {"qty", "3"}}, false, dfNext, 1},
        {"blank text and numbers take no part", 4, {{"name", "  "}, {"qty", 5}}, false, dfNext, 0}};
    Items->SetOrdering(Items->lstFields().IndexOf("name"));
    Items->EntityOpen();
    for (const auto& Case : Cases) {
        SCOPED_TRACE(Case.Name);
        Items->ClearFieldsFind();
        for (const auto& [Field, Value] : Case.Finds) {
            Items->SetFieldFind(Field, Value);
        }
        Items->SetFindSensitive(Case.Sensitive);
        Items->SetFindDown(Case.Direction);
        GoTo(Case.Start);
        EXPECT_EQ(Items->Find(), Case.Expected != 0);
        EXPECT_EQ(CurrentId(), Case.Expected != 0 ? Case.Expected : Case.Start);
    }
}

INSTANTIATE_TEST_SUITE_P(Drivers, EntityOpen, ::testing::Values("sqlite", "pgsql", "mariadb"),
                         quorda_test::ProfileTestName);

std::string Saved(TDataModule& Module, TStreamFormat Format = TStreamFormat::Binary) {
    TStringStream stream;
    Module.SaveToStream(stream, Format);
    return stream.DataString();
}

class DataModuleStream : public quorda_test::ProfileTest {
protected:
    void SetUp() override {
        Table = quorda_test::UniqueTableName("module");
        quorda_test::RawOdbc raw(Profile.ConnectionString);
        raw.Exec("create table " + Table + " (id integer, s varchar(200), f double precision, d date, m " +
                 Profile.Sql.LongTextType + ")");
        raw.Exec("insert into " + Table + " (id, s) values (1, 'one'), (2, 'two'), (3, 'three')");
    }
    void TearDown() override { quorda_test::RawOdbc(Profile.ConnectionString).Exec("drop table " + Table); }
    // The module as a designer would leave it: connected, both queries open, design-time values set.
    std::string SaveDesignedModule() {
        TDataModule module;
        module.SetName("Shop");
        auto* db = new TODBCDatabase(&module);
        db->SetName("Db");
        db->SetDatabaseName("shop_" + Table);
        db->SetDriverConnectOption(dcoDriverNoPrompt);
        db->SetConnectStr(Profile.ConnectionString);
        db->SetAutoCommitOption(acoAutoCommit);
        db->SetStringTrimRight(true);
        db->SetConnected(true);

        auto* items = new TODBCQuery(&module);
        items->SetName("Items");
        items->SetODBCDatabase(db);
        items->SQL().SetText("select id, s from " + Table + "\nwhere id >= :low and s <> :skip\norder by id");
        items->ParamByName("low")->SetAsInteger(2);
        items->ParamByName("skip")->SetAsString("it's none");
        items->SetMaxBlobBuffer(4096);
        items->Open();
        // A forward-only query opens again at load.
        auto* uni = new TODBCQuery(&module);
        uni->SetName("Uni");
        uni->SetODBCDatabase(db);
        uni->SQL().SetText("select id from " + Table + " where id < 0");
        uni->SetUniDirectional(true);
        uni->Open();

        auto* entity = new TUserEntity(&module);
        entity->SetName("Rows");
        entity->SetViewTable(Table);
        entity->SetFactTable(Table);
        entity->CreateField("id", "Id", "", 4, true, false, true, false, ftInteger, cnstETPK);
        entity->CreateField("s", "Name", "", 20, true, true, false, true, ftString, cnstETField);
        entity->CreateField("f", "Ratio", "", 8, true, true, false, true, ftFloat, cnstETField);
        entity->CreateField("d", "Day", "", 10, true, true, false, false, ftDate, cnstETField);
        entity->CreateField("m", "Memo", "", 30, false, true, false, false, ftMemo, {fetInsert, fetUpdate});
        entity->SetWherePhrase("id > 0");
        entity->SetFilterStr("id >= :id");
        entity->SetOrdering(1);
        entity->SetOrderingDesc(true);
        entity->SetFindOption(efoSubConCur);
        entity->SetFindDown(dfPrior);
        entity->SetStroredProcedures("rows_select;rows_insert;;;rows_lock;;;");
        return Saved(module);
    }

    std::string Table;
};

TEST_P(DataModuleStream, LoadedModuleConnectsOpensAndSavesTheSameBytes) {
    const std::string saved = SaveDesignedModule();

    TDataModule loaded;
    TStringStream input(saved);
    loaded.LoadFromStream(input);

    ASSERT_EQ(loaded.ComponentCount(), 4);
    auto* db = dynamic_cast<TODBCDatabase*>(loaded.FindComponent("Db"));
    auto* items = dynamic_cast<TODBCQuery*>(loaded.FindComponent("Items"));
    auto* uni = dynamic_cast<TODBCQuery*>(loaded.FindComponent("Uni"));
    ASSERT_TRUE(db && items && uni);
    EXPECT_TRUE(uni->Active() && uni->UniDirectional() && uni->IsEmpty());
    EXPECT_TRUE(db->Connected());
    EXPECT_EQ(items->ODBCDatabase(), db);
    ASSERT_TRUE(items->Active());
    std::vector<std::string> rows;
    for (items->First(); !items->Eof(); items->Next()) {
        rows.push_back(items->FieldByName("s")->AsString());
    }
    EXPECT_EQ(rows, (std::vector<std::string>{"two", "three"}));
    auto* entity = dynamic_cast<TUserEntity*>(loaded.FindComponent("Rows"));
    ASSERT_TRUE(entity);
    EXPECT_EQ(entity->FieldCount(), 5);
    EXPECT_EQ(entity->GetFields(4)->ExecSet(), (TSetExecType{fetInsert, fetUpdate}));
    EXPECT_EQ(entity->GetStroredProcedures(), "rows_select;rows_insert;;;rows_lock;;;");
    EXPECT_EQ(entity->FindDown(), dfPrior);

    EXPECT_EQ(Saved(loaded), saved);
    // The text form is readable and converts back to the very same bytes.
    const std::string text = Saved(loaded, TStreamFormat::Text);
    EXPECT_NE(text.find("  object Items: TODBCQuery\n    Active = True\n    ODBCDatabase = Db\n"),
              std::string::npos)
        << text;
    TStringStream textInput(text);
    TStringStream binary;
    ObjectTextToBinary(textInput, binary);
    EXPECT_EQ(binary.DataString(), saved);
}

INSTANTIATE_TEST_SUITE_P(Drivers, DataModuleStream, ::testing::Values("sqlite", "pgsql"),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda::entitytest
