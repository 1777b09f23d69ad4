// The fault-injection ODBC driver from the test side: a script that says what to fail or return, and
// the log of every call the driver received. The script language is described in docs/testing.md.
//
//   quorda_test::FaultDriver fault("fail:SQLDisconnect|diag:SQLDisconnect:08S01/7/link down");
//   db.SetConnectStr(fault.ConnectionString());   ... connect, close ...
//   EXPECT_TRUE(fault.Received("SQLSetConnectOption 108 8"));
#pragma once

#include "quorda_test/environment.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace quorda_test {

class FaultDriver {
public:
    // The data source name registered for the driver (connect-by-name, see ApplyToDsn).
    static constexpr const char* kDsn = "QuordaTestFault";

    explicit FaultDriver(std::string script = {});
    FaultDriver(const FaultDriver&) = delete;
    FaultDriver& operator=(const FaultDriver&) = delete;
    ~FaultDriver();

    // "Driver=QuordaFault;Log=<file>;Script=<script>", or ScriptFile=<file> for a long script; short
    // enough for a 250-byte connection buffer.
    const std::string& ConnectionString() const { return FConnectionString; }

    // Every call the driver received on connections made with this object, one line each:
    // "<ODBC 2 function> <arguments>", in order (the format is in docs/testing.md).
    std::vector<std::string> Calls() const;
    // The lines of any of the functions ({"SQLSetConnectOption"}, ...), in order. A name may include
    // leading arguments: "SQLSetStmtOption 0".
    std::vector<std::string> Calls(std::initializer_list<std::string_view> functions) const;
    // Whether the exact line was logged, and how often.
    bool Received(std::string_view line) const;
    int Count(std::string_view line) const;
    void ClearLog() const;

    // Makes connections by data source name (kDsn) use this script and log, through the driver's
    // QUORDA_FAULT_SCRIPT and QUORDA_FAULT_LOG variables; the destructor clears them again.
    void ApplyToDsn();

private:
    std::string FScript;
    TempFile FLog;
    TempFile FScriptFile;
    std::string FConnectionString;
    bool FAppliedToDsn = false;
};

} // namespace quorda_test
