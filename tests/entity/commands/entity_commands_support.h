#pragma once

#include "entity_test_support.h"
#include "quorda/tools/query_helpers.h"
#include "quorda_test/profiles.h"
#include "quorda_test/raw_odbc.h"

#include <memory>
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

} // namespace quorda::entitytest
