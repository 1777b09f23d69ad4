// Environment and connection entry points of the fault-injection driver.
#include "fault_handles.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

#define FAULT_EXPORT extern "C" __attribute__((visibility("default")))

namespace quorda_fault {
namespace {

enum class InfoKind { Text, Short, Integer };

struct InfoDefault {
    SQLUSMALLINT Id;
    InfoKind Kind;
    const char* Text;
    SQLUINTEGER Number;
};

// What SQLGetInfo answers: what the driver manager and the library ask. Anything else is "out of range"
// rather than a guessed width that could overrun the caller's buffer.
constexpr InfoDefault kInfoDefaults[] = {
    {SQL_DRIVER_NAME, InfoKind::Text, "libquorda_fault_odbc.so", 0},
    {SQL_FETCH_DIRECTION, InfoKind::Integer, nullptr, 0x3F},
    {SQL_CURSOR_COMMIT_BEHAVIOR, InfoKind::Short, nullptr, SQL_CB_PRESERVE},
    {SQL_CURSOR_ROLLBACK_BEHAVIOR, InfoKind::Short, nullptr, SQL_CB_PRESERVE},
};

// keyword=value pairs of a connection string; FaultDriver keeps ';' out of the values.
std::map<std::string, std::string> ParseConnectionString(const std::string& text) {
    std::map<std::string, std::string> pairs;
    for (auto pair : Split(text, ';')) {
        if (auto equals = pair.find('='); equals != std::string_view::npos) {
            std::string key(pair.substr(0, equals));
            std::transform(key.begin(), key.end(), key.begin(),
                           [](unsigned char c) { return std::toupper(c); });
            pairs[key] = std::string(pair.substr(equals + 1));
        }
    }
    return pairs;
}

std::string EnvText(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw std::invalid_argument("cannot read script file " + path);
    }
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

SQLRETURN WriteInfo(Conn& conn, SQLUSMALLINT id, SQLPOINTER value, SQLSMALLINT bufferLength,
                    SQLSMALLINT* length) {
    const auto* known = std::find_if(std::begin(kInfoDefaults), std::end(kInfoDefaults),
                                     [id](const InfoDefault& entry) { return entry.Id == id; });
    if (known == std::end(kInfoDefaults)) {
        return conn.Error("S1096", "Information type out of range");
    }
    if (known->Kind == InfoKind::Text) {
        return CopyOut(conn, known->Text, static_cast<SQLCHAR*>(value), bufferLength, length);
    }
    if (value != nullptr) {
        if (known->Kind == InfoKind::Short) {
            auto small = static_cast<SQLUSMALLINT>(known->Number);
            std::memcpy(value, &small, sizeof small);
        } else {
            std::memcpy(value, &known->Number, sizeof known->Number);
        }
    }
    if (length != nullptr) {
        *length = known->Kind == InfoKind::Short ? 2 : 4;
    }
    return SQL_SUCCESS;
}

// Script and log of a new connection: the connection string's Script and ScriptFile (in that order,
// joined), else QUORDA_FAULT_SCRIPT; the Log keyword, else QUORDA_FAULT_LOG.
SQLRETURN ConfigureConnection(Conn& conn, const std::map<std::string, std::string>& pairs) {
    try {
        std::string script;
        if (auto found = pairs.find("SCRIPT"); found != pairs.end()) {
            script = found->second;
        }
        if (auto found = pairs.find("SCRIPTFILE"); found != pairs.end()) {
            script += (script.empty() ? "" : "|") + ReadFile(found->second);
        }
        if (pairs.count("SCRIPT") == 0 && pairs.count("SCRIPTFILE") == 0) {
            script = EnvText("QUORDA_FAULT_SCRIPT");
        }
        std::string log = pairs.count("LOG") != 0 ? pairs.at("LOG") : "";
        conn.Configure(script, log);
        return SQL_SUCCESS;
    } catch (const std::exception& error) {
        return conn.Error("HY000", error.what());
    }
}

Conn* AsConn(SQLHDBC handle) {
    return static_cast<Conn*>(handle);
}

// Both ways in: the connection takes its script and log from the keywords of input (a connection
// string; empty for a data source name), then the call is dispatched. The completed string goes to
// out when the caller gives a buffer.
SQLRETURN Connect(SQLHDBC dbc, const char* call, const std::string& input, const std::string& arguments,
                  SQLCHAR* out, SQLSMALLINT outMax, SQLSMALLINT* outLength) {
    if (dbc == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    std::lock_guard lock(DriverLock());
    Conn& conn = *AsConn(dbc);
    conn.Diags.clear(); // the driver manager refuses a second connect on a connected handle (08002)
    if (SQLRETURN rc = ConfigureConnection(conn, ParseConnectionString(input)); rc != SQL_SUCCESS) {
        return rc;
    }
    return Dispatch(conn, &conn, call, arguments, [&](const CallOutcome&) -> SQLRETURN {
        if (out == nullptr && outLength == nullptr) {
            return SQL_SUCCESS;
        }
        return CopyOut(conn, conn.Rules.ConnectionOut().value_or(input), out, outMax, outLength);
    });
}

} // namespace

std::mutex& DriverLock() {
    static std::mutex lock;
    return lock;
}

Conn::~Conn() {
    if (LogFile != nullptr) {
        std::fclose(LogFile);
    }
}

void Conn::Log(const std::string& line) {
    if (LogFile != nullptr) {
        std::fprintf(LogFile, "%s\n", line.c_str());
        std::fflush(LogFile);
    }
}

void Conn::Configure(const std::string& script, const std::string& logPath) {
    Rules = Script::Parse(script);
    std::string path = !logPath.empty() ? logPath : EnvText("QUORDA_FAULT_LOG");
    if (LogFile != nullptr) {
        std::fclose(LogFile);
        LogFile = nullptr;
    }
    if (!path.empty()) {
        LogFile = std::fopen(path.c_str(), "a");
        if (LogFile == nullptr) {
            throw std::invalid_argument("cannot open log file " + path);
        }
    }
}

} // namespace quorda_fault

using namespace quorda_fault;

FAULT_EXPORT SQLRETURN SQL_API SQLAllocEnv(SQLHENV* env) {
    if (env == nullptr) {
        return SQL_ERROR;
    }
    *env = new Env;
    return SQL_SUCCESS;
}

FAULT_EXPORT SQLRETURN SQL_API SQLFreeEnv(SQLHENV env) {
    delete static_cast<Env*>(env);
    return SQL_SUCCESS;
}

FAULT_EXPORT SQLRETURN SQL_API SQLAllocConnect(SQLHENV env, SQLHDBC* dbc) {
    if (env == nullptr || dbc == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    std::lock_guard lock(DriverLock());
    auto* conn = new Conn;
    *dbc = conn;
    return SQL_SUCCESS;
}

FAULT_EXPORT SQLRETURN SQL_API SQLFreeConnect(SQLHDBC dbc) {
    if (dbc == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    std::lock_guard lock(DriverLock());
    Conn* conn = AsConn(dbc);
    conn->Log("SQLFreeConnect");
    for (Stmt* stmt : conn->Statements) {
        delete stmt;
    }
    delete conn;
    return SQL_SUCCESS;
}

FAULT_EXPORT SQLRETURN SQL_API SQLDriverConnect(SQLHDBC dbc, SQLHWND window, SQLCHAR* in,
                                                SQLSMALLINT inLength, SQLCHAR* out, SQLSMALLINT outMax,
                                                SQLSMALLINT* outLength, SQLUSMALLINT completion) {
    std::string input = ArgText(in, inLength);
    return Connect(dbc, "SQLDriverConnect", input, std::to_string(completion) + " " + input, out, outMax,
                   outLength);
}

FAULT_EXPORT SQLRETURN SQL_API SQLConnect(SQLHDBC dbc, SQLCHAR* dsn, SQLSMALLINT dsnLength, SQLCHAR* user,
                                          SQLSMALLINT userLength, SQLCHAR* password,
                                          SQLSMALLINT passwordLength) {
    return Connect(dbc, "SQLConnect", {},
                   ArgText(dsn, dsnLength) + " " + ArgText(user, userLength) + " " +
                       ArgText(password, passwordLength),
                   nullptr, 0, nullptr);
}

FAULT_EXPORT SQLRETURN SQL_API SQLDisconnect(SQLHDBC dbc) {
    return ConnCall(dbc, "SQLDisconnect", {}, [](Conn& conn) -> SQLRETURN {
        for (Stmt* stmt : conn.Statements) {
            delete stmt;
        }
        conn.Statements.clear();
        return SQL_SUCCESS;
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLSetConnectOption(SQLHDBC dbc, SQLUSMALLINT option, SQLULEN value) {
    bool text = option == SQL_CURRENT_QUALIFIER || option == SQL_OPT_TRACEFILE || option == SQL_TRANSLATE_DLL;
    std::string shown = text ? ArgText(reinterpret_cast<SQLCHAR*>(value), SQL_NTS) : std::to_string(value);
    return ConnCall(dbc, "SQLSetConnectOption", std::to_string(option) + " " + shown,
                    [](Conn&) -> SQLRETURN { return SQL_SUCCESS; });
}

FAULT_EXPORT SQLRETURN SQL_API SQLGetInfo(SQLHDBC dbc, SQLUSMALLINT id, SQLPOINTER value,
                                          SQLSMALLINT bufferLength, SQLSMALLINT* length) {
    return ConnCall(dbc, "SQLGetInfo", std::to_string(id),
                    [&](Conn& conn) { return WriteInfo(conn, id, value, bufferLength, length); });
}

FAULT_EXPORT SQLRETURN SQL_API SQLTransact(SQLHENV, SQLHDBC dbc, SQLUSMALLINT type) {
    return ConnCall(dbc, "SQLTransact", std::to_string(type), [](Conn&) -> SQLRETURN { return SQL_SUCCESS; });
}

FAULT_EXPORT SQLRETURN SQL_API SQLError(SQLHENV env, SQLHDBC dbc, SQLHSTMT stmt, SQLCHAR* state,
                                        SQLINTEGER* native, SQLCHAR* message, SQLSMALLINT messageMax,
                                        SQLSMALLINT* messageLength) {
    std::lock_guard lock(DriverLock());
    Handle* handle = stmt != nullptr  ? static_cast<Handle*>(static_cast<Stmt*>(stmt))
                     : dbc != nullptr ? static_cast<Handle*>(AsConn(dbc))
                                      : static_cast<Handle*>(static_cast<Env*>(env));
    if (handle == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    Conn* conn = stmt != nullptr ? static_cast<Stmt*>(stmt)->Owner : AsConn(dbc);
    if (conn != nullptr) {
        conn->Log("SQLError");
    }
    if (handle->Diags.empty()) {
        return SQL_NO_DATA;
    }
    DiagRecord record = handle->Diags.front();
    handle->Diags.pop_front();
    if (state != nullptr) {
        std::string five = record.State.substr(0, 5);
        std::memcpy(state, five.c_str(), five.size() + 1);
    }
    if (native != nullptr) {
        *native = static_cast<SQLINTEGER>(record.Native);
    }
    Handle scratch;
    return CopyOut(scratch, record.Message, message, messageMax, messageLength);
}
