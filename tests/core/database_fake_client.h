#pragma once

#include "quorda/core/odbc_database.h"

#include <string>
#include <vector>

namespace quorda::testing {

// Stands in for an attached dataset: joins a database, records what the database asks of it in a
// shared log, and leaves the list the way a dataset does.
class FakeClient : public IODBCDatabaseClient {
public:
    FakeClient(std::string name, std::vector<std::string>& log, TODBCDatabase* database = nullptr)
        : FName(std::move(name)), FLog(log) {
        Attach(database);
    }
    ~FakeClient() override { Attach(nullptr); }

    void Attach(TODBCDatabase* database) {
        if (FDatabase != nullptr) {
            FDatabase->RemoveDataSet(this);
        }
        FDatabase = database;
        if (FDatabase != nullptr) {
            FDatabase->AddDataSet(this);
        }
    }
    TODBCDatabase* Database() const { return FDatabase; }

    TODBCDataSet* ClientDataSet() override { return nullptr; }
    void CloseForDatabase() override {
        FLog.push_back(FName + ".Close");
        FStatement = FStatement && FKeepStatementOnClose;
    }
    bool HoldsStatement() const override { return FStatement; }
    void ReleaseStatement() override {
        FLog.push_back(FName + ".InternalClose");
        FStatement = false;
    }
    void DetachFromDatabase() override {
        FLog.push_back(FName + ".Detach");
        if (FLeaveOnDetach) {
            Attach(nullptr);
        }
    }

    bool FStatement = true;
    bool FKeepStatementOnClose = false;
    bool FLeaveOnDetach = true;

private:
    std::string FName;
    std::vector<std::string>& FLog;
    TODBCDatabase* FDatabase = nullptr;
};

} // namespace quorda::testing
