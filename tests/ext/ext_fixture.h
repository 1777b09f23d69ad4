// Shared ground of the editable-dataset tests: a database on one driver profile, a table of order
// lines, an editable query over it and a parameterised writer for the update events.
#pragma once

#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_query.h"
#include "quorda/ext/odbc_ext_dataset.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <quorda_test/environment.h>
#include <quorda_test/error_of.h>
#include <quorda_test/profiles.h>
#include <quorda_test/raw_odbc.h>
#include <string>
#include <vector>

namespace quorda::testing {

class ExtTest : public quorda_test::ProfileTest {
protected:
    void SetUp() override {
        Db.SetDriverConnectOption(dcoDriverNoPrompt);
        Db.SetConnectStr(Profile.ConnectionString);
        Db.Open();
        Raw = std::make_unique<quorda_test::RawOdbc>(Profile.ConnectionString);
        Table = quorda_test::UniqueTableName("ext_lines");
        Raw->Exec("create table " + Table + " (id integer primary key, item varchar(20), qty integer, note " +
                  Profile.Sql.LongTextType + ", data " + Profile.Sql.BlobType + ")");
        Raw->Exec("insert into " + Table +
                  " (id, item, qty) values (1, 'bolt', 10), (2, 'nut', 20), (3, 'gear', 30)");
        Query.SetODBCDatabase(&Db);
        Query.SQL().SetText("select id, item, qty, note, data from " + Table + " order by id");
    }
    void TearDown() override {
        Query.Close();
        Writers.clear();
    }

    // A statement on Db with :name parameters, run by the update handlers.
    TODBCQuery& Writer(const std::string& Sql) {
        Writers.push_back(std::make_unique<TODBCQuery>(nullptr));
        Writers.back()->SetODBCDatabase(&Db);
        Writers.back()->SQL().SetText(Sql);
        return *Writers.back();
    }

    // Update handlers that write item and qty (and count their calls).
    void WriteItemsOnUpdate() {
        TODBCQuery& update = Writer("update " + Table + " set item = :item, qty = :qty where id = :id");
        Query.OnUpdateRec = [this, &update](TDataSet* DataSet, TUpdateKind Kind, TUpdateAction& Action) {
            ++Calls;
            update.ParamByName("item")->SetAsString(DataSet->FieldByName("item")->AsString());
            update.ParamByName("qty")->SetAsInteger(DataSet->FieldByName("qty")->AsInteger());
            update.ParamByName("id")->SetAsInteger(DataSet->FieldByName("id")->OldValue().AsInteger());
            update.ExecSQL();
        };
    }

    // "id:item:qty" of every row of the table, read on a connection of its own.
    std::string TableRows() {
        std::string text;
        for (const auto& row : Raw->QueryStrings("select id, item, qty from " + Table + " order by id")) {
            text += (text.empty() ? "" : " ") + row[0].value_or("NULL") + ":" + row[1].value_or("NULL") +
                    ":" + row[2].value_or("NULL");
        }
        return text;
    }
    // The same, as the query shows it.
    std::string QueryRows() {
        std::string text;
        for (Query.First(); !Query.Eof(); Query.Next()) {
            text += (text.empty() ? "" : " ") + Query.FieldByName("id")->AsString() + ":" +
                    Query.FieldByName("item")->AsString() + ":" + Query.FieldByName("qty")->AsString();
        }
        Query.First();
        return text;
    }

    TODBCDatabase Db{nullptr};
    std::unique_ptr<quorda_test::RawOdbc> Raw;
    std::string Table;
    TODBCExtQuery Query{nullptr};
    std::vector<std::unique_ptr<TODBCQuery>> Writers;
    int Calls = 0;
};

} // namespace quorda::testing
