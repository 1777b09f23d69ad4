#pragma once

#include "core/odbc_dataset_p.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_query.h"
#include "quorda/rtl/exception.h"

#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quorda::testing {

// An open database on a driver connection string (no prompt).
inline std::unique_ptr<TODBCDatabase> OpenDatabase(const std::string& ConnectionString) {
    auto db = std::make_unique<TODBCDatabase>(nullptr);
    db->SetDriverConnectOption(dcoDriverNoPrompt);
    db->SetConnectStr(ConnectionString);
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

// The exception of type E that Action raises; a failure and no value when it raises none.
template <typename E, typename Action>
std::optional<E> Raised(Action&& action) {
    try {
        std::forward<Action>(action)();
    } catch (const E& e) {
        return e;
    }
    ADD_FAILURE() << "the expected exception was not raised";
    return std::nullopt;
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

} // namespace quorda::testing
