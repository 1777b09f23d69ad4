// Environment and connection entry points of the fault-injection driver.
#include "fault_handles.h"

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

// What SQLGetInfo answers unless the script says otherwise. Anything else is "out of range" rather
// than a guessed width that could overrun the caller's buffer.
constexpr InfoDefault kInfoDefaults[] = {
    {SQL_ACTIVE_CONNECTIONS, InfoKind::Short, nullptr, 0},
    {SQL_ACTIVE_STATEMENTS, InfoKind::Short, nullptr, 0},
    {SQL_DATA_SOURCE_NAME, InfoKind::Text, "", 0},
    {SQL_DRIVER_NAME, InfoKind::Text, "libquorda_fault_odbc.so", 0},
    {SQL_DRIVER_VER, InfoKind::Text, "01.00.0000", 0},
    {SQL_FETCH_DIRECTION, InfoKind::Integer, nullptr, 0x3F},
    {SQL_ODBC_API_CONFORMANCE, InfoKind::Short, nullptr, 2},
    {SQL_ROW_UPDATES, InfoKind::Text, "N", 0},
    {SQL_ODBC_SAG_CLI_CONFORMANCE, InfoKind::Short, nullptr, 1},
    {SQL_SERVER_NAME, InfoKind::Text, "fault", 0},
    {SQL_SEARCH_PATTERN_ESCAPE, InfoKind::Text, "\\", 0},
    {SQL_ODBC_SQL_CONFORMANCE, InfoKind::Short, nullptr, 1},
    {SQL_DATABASE_NAME, InfoKind::Text, "fault", 0},
    {SQL_DBMS_NAME, InfoKind::Text, "QuordaFault", 0},
    {SQL_DBMS_VER, InfoKind::Text, "01.00.0000", 0},
    {SQL_ACCESSIBLE_TABLES, InfoKind::Text, "Y", 0},
    {SQL_ACCESSIBLE_PROCEDURES, InfoKind::Text, "N", 0},
    {SQL_PROCEDURES, InfoKind::Text, "N", 0},
    {SQL_CONCAT_NULL_BEHAVIOR, InfoKind::Short, nullptr, 0},
    {SQL_CURSOR_COMMIT_BEHAVIOR, InfoKind::Short, nullptr, SQL_CB_PRESERVE},
    {SQL_CURSOR_ROLLBACK_BEHAVIOR, InfoKind::Short, nullptr, SQL_CB_PRESERVE},
    {SQL_DATA_SOURCE_READ_ONLY, InfoKind::Text, "N", 0},
    {SQL_DEFAULT_TXN_ISOLATION, InfoKind::Integer, nullptr, SQL_TXN_READ_COMMITTED},
    {SQL_EXPRESSIONS_IN_ORDERBY, InfoKind::Text, "Y", 0},
    {SQL_IDENTIFIER_CASE, InfoKind::Short, nullptr, SQL_IC_MIXED},
    {SQL_IDENTIFIER_QUOTE_CHAR, InfoKind::Text, "\"", 0},
    {SQL_MAX_COLUMN_NAME_LEN, InfoKind::Short, nullptr, 128},
    {SQL_MAX_CURSOR_NAME_LEN, InfoKind::Short, nullptr, 128},
    {SQL_MAX_OWNER_NAME_LEN, InfoKind::Short, nullptr, 128},
    {SQL_MAX_QUALIFIER_NAME_LEN, InfoKind::Short, nullptr, 128},
    {SQL_MAX_TABLE_NAME_LEN, InfoKind::Short, nullptr, 128},
    {SQL_MULT_RESULT_SETS, InfoKind::Text, "N", 0},
    {SQL_MULTIPLE_ACTIVE_TXN, InfoKind::Text, "Y", 0},
    {SQL_OUTER_JOINS, InfoKind::Text, "N", 0},
    {SQL_OWNER_TERM, InfoKind::Text, "owner", 0},
    {SQL_PROCEDURE_TERM, InfoKind::Text, "procedure", 0},
    {SQL_QUALIFIER_NAME_SEPARATOR, InfoKind::Text, ".", 0},
    {SQL_QUALIFIER_TERM, InfoKind::Text, "", 0},
    {SQL_SCROLL_CONCURRENCY, InfoKind::Integer, nullptr, SQL_SCCO_READ_ONLY},
    {SQL_SCROLL_OPTIONS, InfoKind::Integer, nullptr,
     SQL_SO_FORWARD_ONLY | SQL_SO_KEYSET_DRIVEN | SQL_SO_STATIC},
    {SQL_TABLE_TERM, InfoKind::Text, "table", 0},
    {SQL_TXN_CAPABLE, InfoKind::Short, nullptr, SQL_TC_ALL},
    {SQL_USER_NAME, InfoKind::Text, "", 0},
    {SQL_TXN_ISOLATION_OPTION, InfoKind::Integer, nullptr, 0x0F},
    {SQL_CORRELATION_NAME, InfoKind::Short, nullptr, SQL_CN_ANY},
    {SQL_NON_NULLABLE_COLUMNS, InfoKind::Short, nullptr, SQL_NNC_NON_NULL},
    {SQL_DRIVER_ODBC_VER, InfoKind::Text, "02.50", 0},
    {SQL_LOCK_TYPES, InfoKind::Integer, nullptr, 0},
    {SQL_POS_OPERATIONS, InfoKind::Integer, nullptr, 0},
    {SQL_POSITIONED_STATEMENTS, InfoKind::Integer, nullptr, 0},
    {SQL_GETDATA_EXTENSIONS, InfoKind::Integer, nullptr,
     SQL_GD_ANY_COLUMN | SQL_GD_ANY_ORDER | SQL_GD_BLOCK | SQL_GD_BOUND},
    {SQL_BOOKMARK_PERSISTENCE, InfoKind::Integer, nullptr, 0},
    {SQL_STATIC_SENSITIVITY, InfoKind::Integer, nullptr, 0},
    {SQL_FILE_USAGE, InfoKind::Short, nullptr, SQL_FILE_NOT_SUPPORTED},
    {SQL_NULL_COLLATION, InfoKind::Short, nullptr, SQL_NC_HIGH},
    {SQL_COLUMN_ALIAS, InfoKind::Text, "Y", 0},
    {SQL_GROUP_BY, InfoKind::Short, nullptr, SQL_GB_GROUP_BY_CONTAINS_SELECT},
    {SQL_KEYWORDS, InfoKind::Text, "", 0},
    {SQL_ORDER_BY_COLUMNS_IN_SELECT, InfoKind::Text, "N", 0},
    {SQL_QUOTED_IDENTIFIER_CASE, InfoKind::Short, nullptr, SQL_IC_SENSITIVE},
    {SQL_SPECIAL_CHARACTERS, InfoKind::Text, "", 0},
    {SQL_NEED_LONG_DATA_LEN, InfoKind::Text, "N", 0},
    {SQL_LIKE_ESCAPE_CLAUSE, InfoKind::Text, "N", 0},
};

std::string Upper(std::string text) {
    for (auto& c : text) {
        if (c >= 'a' && c <= 'z') {
            c = static_cast<char>(c - 'a' + 'A');
        }
    }
    return text;
}

// keyword=value pairs of a connection string; values may be wrapped in braces.
std::map<std::string, std::string> ParseConnectionString(const std::string& text) {
    std::map<std::string, std::string> pairs;
    size_t i = 0;
    while (i < text.size()) {
        auto equals = text.find('=', i);
        if (equals == std::string::npos) {
            break;
        }
        std::string key = Upper(text.substr(i, equals - i));
        std::string value;
        i = equals + 1;
        if (i < text.size() && text[i] == '{') {
            auto close = text.find('}', i);
            value = text.substr(i + 1, close == std::string::npos ? std::string::npos : close - i - 1);
            i = close == std::string::npos ? text.size() : close + 1;
            auto semicolon = text.find(';', i);
            i = semicolon == std::string::npos ? text.size() : semicolon + 1;
        } else {
            auto semicolon = text.find(';', i);
            value = text.substr(i, semicolon == std::string::npos ? std::string::npos : semicolon - i);
            i = semicolon == std::string::npos ? text.size() : semicolon + 1;
        }
        while (!key.empty() && key.front() == ' ') {
            key.erase(0, 1);
        }
        pairs[key] = value;
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
    const InfoDefault* known = nullptr;
    for (const auto& entry : kInfoDefaults) {
        if (entry.Id == id) {
            known = &entry;
        }
    }
    InfoKind kind = known != nullptr ? known->Kind : InfoKind::Integer;
    std::string text = known != nullptr && known->Text != nullptr ? known->Text : "";
    SQLUINTEGER number = known != nullptr ? known->Number : 0;

    if (id == SQL_SCROLL_OPTIONS || id == SQL_FETCH_DIRECTION) {
        int cursor = conn.Rules.MaxCursorType();
        if (cursor == SQL_CURSOR_FORWARD_ONLY) {
            number = id == SQL_SCROLL_OPTIONS ? SQL_SO_FORWARD_ONLY : SQL_FD_FETCH_NEXT;
        } else if (cursor == SQL_CURSOR_STATIC && id == SQL_SCROLL_OPTIONS) {
            number = SQL_SO_FORWARD_ONLY | SQL_SO_STATIC;
        }
    }
    bool answered = known != nullptr;
    auto scripted = conn.Rules.InfoAnswers().find(id);
    if (scripted != conn.Rules.InfoAnswers().end()) {
        answered = true;
        const std::string& answer = scripted->second;
        bool digits = !answer.empty() && answer.find_first_not_of("0123456789") == std::string::npos;
        if (known == nullptr) {
            kind = digits ? InfoKind::Integer : InfoKind::Text;
        }
        if (kind == InfoKind::Text) {
            text = answer;
        } else {
            number = static_cast<SQLUINTEGER>(std::strtoul(answer.c_str(), nullptr, 10));
        }
    }
    if (!answered) {
        return conn.Error("S1096", "Information type out of range");
    }
    if (kind == InfoKind::Text) {
        return CopyOut(conn, text, static_cast<SQLCHAR*>(value), bufferLength, length);
    }
    if (value != nullptr) {
        if (kind == InfoKind::Short) {
            auto small = static_cast<SQLUSMALLINT>(number);
            std::memcpy(value, &small, sizeof small);
        } else {
            std::memcpy(value, &number, sizeof number);
        }
    }
    if (length != nullptr) {
        *length = kind == InfoKind::Short ? 2 : 4;
    }
    return SQL_SUCCESS;
}

// Script and log of a new connection: the connection string's Script and ScriptFile (in that order,
// joined), else QUORDA_FAULT_SCRIPT; the Log keyword, else a log: rule, else QUORDA_FAULT_LOG.
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
    if (Calls.size() < 100000) {
        Calls.push_back(line);
    }
    if (LogFile != nullptr) {
        std::fprintf(LogFile, "%s\n", line.c_str());
        std::fflush(LogFile);
    }
}

void Conn::Configure(const std::string& script, const std::string& logPath) {
    Rules = Script::Parse(script);
    std::string path = !logPath.empty()           ? logPath
                       : !Rules.LogPath().empty() ? Rules.LogPath()
                                                  : EnvText("QUORDA_FAULT_LOG");
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
    conn->Owner = static_cast<Env*>(env);
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
    if (dbc == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    std::unique_lock lock(DriverLock());
    Conn& conn = *AsConn(dbc);
    conn.Diags.clear();
    std::string input = ArgText(in, inLength);
    if (conn.Connected) {
        return conn.Error("08002", "Connection in use");
    }
    if (SQLRETURN rc = ConfigureConnection(conn, ParseConnectionString(input)); rc != SQL_SUCCESS) {
        return rc;
    }
    std::string arguments = std::to_string(completion) + " " + input;
    return Dispatch(lock, conn, &conn, "SQLDriverConnect", arguments, [&](const CallOutcome&) -> SQLRETURN {
        conn.Connected = true;
        return CopyOut(conn, conn.Rules.ConnectionOut().value_or(input), out, outMax, outLength);
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLConnect(SQLHDBC dbc, SQLCHAR* dsn, SQLSMALLINT dsnLength, SQLCHAR* user,
                                          SQLSMALLINT userLength, SQLCHAR* password,
                                          SQLSMALLINT passwordLength) {
    if (dbc == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    std::unique_lock lock(DriverLock());
    Conn& conn = *AsConn(dbc);
    conn.Diags.clear();
    if (conn.Connected) {
        return conn.Error("08002", "Connection in use");
    }
    if (SQLRETURN rc = ConfigureConnection(conn, {}); rc != SQL_SUCCESS) {
        return rc;
    }
    std::string arguments =
        ArgText(dsn, dsnLength) + " " + ArgText(user, userLength) + " " + ArgText(password, passwordLength);
    return Dispatch(lock, conn, &conn, "SQLConnect", arguments, [&](const CallOutcome&) -> SQLRETURN {
        conn.Connected = true;
        return SQL_SUCCESS;
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLDisconnect(SQLHDBC dbc) {
    if (dbc == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    std::unique_lock lock(DriverLock());
    Conn& conn = *AsConn(dbc);
    return Dispatch(lock, conn, &conn, "SQLDisconnect", {}, [&](const CallOutcome&) -> SQLRETURN {
        for (Stmt* stmt : conn.Statements) {
            delete stmt;
        }
        conn.Statements.clear();
        conn.Connected = false;
        return SQL_SUCCESS;
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLSetConnectOption(SQLHDBC dbc, SQLUSMALLINT option, SQLULEN value) {
    if (dbc == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    std::unique_lock lock(DriverLock());
    Conn& conn = *AsConn(dbc);
    bool text = option == SQL_CURRENT_QUALIFIER || option == SQL_OPT_TRACEFILE || option == SQL_TRANSLATE_DLL;
    std::string shown = text ? ArgText(reinterpret_cast<SQLCHAR*>(value), SQL_NTS) : std::to_string(value);
    return Dispatch(lock, conn, &conn, "SQLSetConnectOption", std::to_string(option) + " " + shown,
                    [&](const CallOutcome&) -> SQLRETURN {
                        conn.Options[option] = text ? 0 : value;
                        return SQL_SUCCESS;
                    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLGetConnectOption(SQLHDBC dbc, SQLUSMALLINT option, SQLPOINTER value) {
    if (dbc == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    std::unique_lock lock(DriverLock());
    Conn& conn = *AsConn(dbc);
    return Dispatch(lock, conn, &conn, "SQLGetConnectOption", std::to_string(option),
                    [&](const CallOutcome&) -> SQLRETURN {
                        SQLUINTEGER answer = option == SQL_AUTOCOMMIT      ? SQL_AUTOCOMMIT_ON
                                             : option == SQL_TXN_ISOLATION ? SQL_TXN_READ_COMMITTED
                                                                           : 0;
                        if (auto found = conn.Options.find(option); found != conn.Options.end()) {
                            answer = static_cast<SQLUINTEGER>(found->second);
                        }
                        if (value != nullptr) {
                            std::memcpy(value, &answer, sizeof answer);
                        }
                        return SQL_SUCCESS;
                    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLGetInfo(SQLHDBC dbc, SQLUSMALLINT id, SQLPOINTER value,
                                          SQLSMALLINT bufferLength, SQLSMALLINT* length) {
    if (dbc == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    std::unique_lock lock(DriverLock());
    Conn& conn = *AsConn(dbc);
    return Dispatch(
        lock, conn, &conn, "SQLGetInfo", std::to_string(id),
        [&](const CallOutcome&) -> SQLRETURN { return WriteInfo(conn, id, value, bufferLength, length); });
}

FAULT_EXPORT SQLRETURN SQL_API SQLTransact(SQLHENV env, SQLHDBC dbc, SQLUSMALLINT type) {
    if (dbc == nullptr) {
        return env != nullptr ? SQL_SUCCESS : SQL_INVALID_HANDLE;
    }
    std::unique_lock lock(DriverLock());
    Conn& conn = *AsConn(dbc);
    return Dispatch(lock, conn, &conn, "SQLTransact", std::to_string(type),
                    [&](const CallOutcome&) -> SQLRETURN { return SQL_SUCCESS; });
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
