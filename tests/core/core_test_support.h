// Shared ground of the core tests: databases and queries made in one line, the errors actions raise,
// statements run on a database's own connection, and the log of its connect events.
#pragma once

#include "core/odbc_dataset_p.h"
#include "odbc/odbc_api_p.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_query.h"
#include "quorda/odbc.h"
#include "quorda/rtl/exception.h"
#include "rtl_test_support.h"

#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <quorda_test/error_of.h>
#include <string>
#include <utility>
#include <vector>

namespace quorda::testing {

using testing_support::Raised;

// A database on a driver connection string (no prompt), not yet open.
inline std::unique_ptr<TODBCDatabase> ClosedDatabase(const std::string& ConnectionString) {
    auto db = std::make_unique<TODBCDatabase>(nullptr);
    db->SetDriverConnectOption(dcoDriverNoPrompt);
    db->SetConnectStr(ConnectionString);
    return db;
}

inline std::unique_ptr<TODBCDatabase> OpenDatabase(const std::string& ConnectionString) {
    auto db = ClosedDatabase(ConnectionString);
    db->Open();
    return db;
}

// A query on the database with the given text.
template <typename Query = TODBCQuery>
std::unique_ptr<Query> MakeQuery(TODBCDatabase* Database, const std::string& Text) {
    auto query = std::make_unique<Query>(nullptr);
    query->SetODBCDatabase(Database);
    query->SQL().SetText(Text);
    return query;
}

// A query "<Head>(:p0,:p1,...)" with Count integer parameters, each set to its number.
inline std::unique_ptr<TODBCQuery> QueryWithParams(TODBCDatabase* Database, const std::string& Head,
                                                   int Count) {
    std::string text = Head + "(:p0";
    for (int i = 1; i < Count; ++i) {
        text += ",:p" + std::to_string(i);
    }
    auto query = MakeQuery(Database, text + ")");
    for (int i = 0; i < Count; ++i) {
        query->Params().Items(i)->SetAsInteger(i);
    }
    return query;
}

// The message of the EDatabaseError (or descendant) that Action raises; a failure when it raises none.
template <typename Action>
std::string DatabaseErrorOf(Action&& action) {
    const auto e = Raised<EDatabaseError>(std::forward<Action>(action));
    return e ? e->Message() : std::string();
}

// Exposes the framework's protected operations of a query to the tests, and records data events.
class TestQuery : public TODBCQuery {
public:
    using TODBCDataSet::GetRecordSize;
    using TODBCDataSet::InternalAddRecord;
    using TODBCDataSet::InternalDelete;
    using TODBCDataSet::InternalInitRecord;
    using TODBCDataSet::InternalPost;
    using TODBCDataSet::SetBookmarkData;
    using TODBCDataSet::SetBookmarkFlag;
    using TODBCQuery::TODBCQuery;

    void DataEvent(TDataEvent Event, std::intptr_t Info) override {
        Events.emplace_back(Event, Info);
        TODBCQuery::DataEvent(Event, Info);
    }

    std::vector<std::pair<TDataEvent, std::intptr_t>> Events;
};

// Runs a statement on the database's own connection (there is no dataset to do it yet), so that the
// test sees exactly the transaction state the database set. The statement is handed back for reading.
inline TODBCStatementHandle ExecOn(TODBCDatabase& db, const std::string& sql) {
    SQLHDBC dbc = db.GetDBC();
    TODBCStatementHandle stmt;
    CheckODBC(SQLAllocStmt(dbc, stmt.Receive()), nullptr, dbc, nullptr, "SQLAllocStmt");
    std::string text = sql;
    CheckODBC(SQLExecDirect(stmt.Get(), reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS), nullptr, dbc,
              stmt.Get(), "SQLExecDirect");
    return stmt;
}

// The first column of the first row as text, read on the database's own connection.
inline std::optional<std::string> ScalarOn(TODBCDatabase& db, const std::string& sql) {
    const TODBCStatementHandle stmt = ExecOn(db, sql);
    if (CheckODBC(SQLFetch(stmt.Get()), nullptr, db.GetDBC(), stmt.Get(), "SQLFetch") == SQL_NO_DATA_FOUND) {
        ADD_FAILURE() << "no row for " << sql;
        return std::nullopt;
    }
    char value[1024] = {};
    SQLLEN indicator = 0;
    CheckODBC(SQLGetData(stmt.Get(), 1, SQL_C_CHAR, value, sizeof value, &indicator), nullptr, db.GetDBC(),
              stmt.Get(), "SQLGetData");
    return indicator == SQL_NULL_DATA ? std::nullopt : std::optional<std::string>(value);
}

// Records the connect events in order.
struct EventLog {
    std::vector<std::string> Lines;
    void Attach(TODBCDatabase& db) {
        db.OnBeforeConnect = [this, &db](TObject* sender) {
            Lines.push_back(sender == &db ? "before" : "before(wrong sender)");
        };
        db.OnAfterConnect = [this, &db](TObject* sender) {
            Lines.push_back(sender == &db ? "after" : "after(wrong sender)");
        };
    }
};

} // namespace quorda::testing
