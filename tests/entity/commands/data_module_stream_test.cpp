// A data module with a database, two queries and a user entity, saved and loaded on real data sources:
// the loaded set connects and opens by itself, and saves to the same bytes.
#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_query.h"
#include "quorda/db/field.h"
#include "quorda/entity/user_entity.h"
#include "quorda/rtl/data_module.h"
#include "quorda/rtl/object_text.h"

#include <gtest/gtest.h>
#include <quorda_test/environment.h>
#include <quorda_test/profiles.h>
#include <quorda_test/raw_odbc.h>
#include <string>
#include <vector>

namespace quorda {
namespace {

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
} // namespace quorda
