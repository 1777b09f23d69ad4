#pragma once

#include "quorda/core/odbc_database.h"
#include "quorda/rtl/application.h"
#include "quorda/tools/query_helpers.h"
#include "quorda_test/environment.h"
#include "quorda_test/profiles.h"
#include "quorda_test/raw_odbc.h"
#include "rtl_test_support.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace quorda::testing {

// A test over one data source: DataBase is open on it, Raw checks independently, the screen cursor's
// changes are recorded and everything is put back afterwards.
class ToolsTest : public quorda_test::ProfileTest {
protected:
    void SetUp() override {
        FDatabase = std::make_unique<TODBCDatabase>(nullptr);
        FDatabase->SetDriverConnectOption(dcoDriverNoPrompt);
        FDatabase->SetConnectStr(Profile.ConnectionString);
        FDatabase->Open();
        DataBase = FDatabase.get();
        ExecCursor = crSQLWait;
        FOldHook = Screen::SetCursorHook([this](TCursor cursor) { Cursors.push_back(cursor); });
    }
    void TearDown() override {
        Screen::SetCursorHook(FOldHook);
        Screen::SetCursor(crDefault);
        ExecCursor = crDefault;
        DataBase = nullptr;
        for (const auto& table : FTables) {
            Raw.Exec("drop table " + table);
        }
    }

    // A unique table created with the column list Columns; dropped after the test.
    std::string Table(const std::string& Columns) {
        FTables.push_back(quorda_test::UniqueTableName("tools"));
        Raw.Exec("create table " + FTables.back() + " (" + Columns + ")");
        return FTables.back();
    }
    std::filesystem::path TempPath(const std::string& Extension = "txt") {
        FFiles.push_back(
            std::make_unique<quorda_test::TempFile>(quorda_test::UniquePath("tools", Extension)));
        return FFiles.back()->Path();
    }

    quorda_test::RawOdbc Raw{Profile.ConnectionString};
    std::vector<TCursor> Cursors;

private:
    std::unique_ptr<TODBCDatabase> FDatabase;
    TCursorHook FOldHook;
    std::vector<std::string> FTables;
    std::vector<std::unique_ptr<quorda_test::TempFile>> FFiles;
};

using testing_support::ReadFile;
using testing_support::WriteFile;

} // namespace quorda::testing
