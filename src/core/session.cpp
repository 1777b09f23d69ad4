#include "quorda/core/session.h"

#include "quorda/core/odbc_database.h"
#include "quorda/odbc/odbc_check.h"
#include "quorda/rtl/strings.h"

#include <algorithm>
#include <cstring>

namespace quorda {
namespace {

// The session lives until the end of the process. Every database constructor reaches it first, so
// static databases are destroyed before it; it frees only those nobody else freed.
struct SessionHolder {
    TODBCSession* Session = new TODBCSession(nullptr);
    ~SessionHolder() { delete Session; }
};

constexpr SQLSMALLINT kNameBufferSize = 256;

std::string BufferText(const SQLCHAR* buffer, size_t size) {
    const char* text = reinterpret_cast<const char*>(buffer);
    return {text, strnlen(text, size)};
}

} // namespace

SQLHENV odbcEnv() {
    static const SQLHENV env = [] {
        SQLHENV handle = nullptr;
        TraceODBC(SQLAllocEnv(&handle), "SQLAllocEnv");
        return handle;
    }();
    return env;
}

TODBCSession* ODBCSession() {
    static SessionHolder holder;
    return holder.Session;
}

TODBCSession::TODBCSession(TComponent* AOwner) : TComponent(AOwner) {}

TODBCSession::~TODBCSession() {
    // Each database leaves the list (taking the lock) as it is freed, so the lock is not held here.
    for (int i = GetDatabaseCount() - 1; i >= 0; --i) {
        TODBCDatabase* database = nullptr;
        {
            std::lock_guard<std::recursive_mutex> guard(FLock);
            if (i < static_cast<int>(FDatabases.size())) {
                database = FDatabases[static_cast<size_t>(i)];
            }
        }
        delete database;
    }
}

int TODBCSession::GetDatabaseCount() const {
    std::lock_guard<std::recursive_mutex> guard(FLock);
    return static_cast<int>(FDatabases.size());
}

TODBCDatabase* TODBCSession::GetDatabase(int Index) const {
    std::lock_guard<std::recursive_mutex> guard(FLock);
    if (Index < 0 || Index >= static_cast<int>(FDatabases.size())) {
        throw Exception(FormatMessage(SListIndexError, Index));
    }
    return FDatabases[static_cast<size_t>(Index)];
}

TODBCDatabase* TODBCSession::FindDatabase(const std::string& Name) const {
    std::lock_guard<std::recursive_mutex> guard(FLock);
    for (TODBCDatabase* database : FDatabases) {
        if (database->DatabaseName() == Name) {
            return database;
        }
    }
    return nullptr;
}

void TODBCSession::GetDSNNames(TStrings* Names, TStrings* Descriptions) {
    if (Names != nullptr) {
        Names->Clear();
    }
    if (Descriptions != nullptr) {
        Descriptions->Clear();
    }
    SQLHENV env = odbcEnv();
    SQLUSMALLINT direction = SQL_FETCH_FIRST;
    for (;;) {
        SQLCHAR name[kNameBufferSize] = {};
        SQLCHAR description[kNameBufferSize] = {};
        SQLSMALLINT nameLength = 0;
        SQLSMALLINT descriptionLength = 0;
        const SQLRETURN ret = CheckODBC(SQLDataSources(env, direction, name, kNameBufferSize, &nameLength,
                                                       description, kNameBufferSize, &descriptionLength),
                                        env, nullptr, nullptr, "SQLDataSources");
        if (ret == SQL_NO_DATA_FOUND) {
            break;
        }
        if (Names != nullptr) {
            Names->Add(BufferText(name, sizeof name));
        }
        if (Descriptions != nullptr) {
            Descriptions->Add(BufferText(description, sizeof description));
        }
        direction = SQL_FETCH_NEXT;
    }
}

void TODBCSession::GetDriverNames(TStrings* Names, TStrings* Attributes) {
    if (Names != nullptr) {
        Names->Clear();
    }
    if (Attributes != nullptr) {
        Attributes->Clear();
    }
    // Only the first driver is read. Without any driver the driver manager answers "no data" and
    // the lists stay empty (asking again would only ever repeat that answer).
    SQLHENV env = odbcEnv();
    SQLCHAR description[kNameBufferSize] = {};
    SQLCHAR attributes[kNameBufferSize] = {};
    SQLSMALLINT descriptionLength = 0;
    SQLSMALLINT attributesLength = 0;
    const SQLRETURN ret =
        CheckODBC(SQLDrivers(env, SQL_FETCH_FIRST, description, kNameBufferSize, &descriptionLength,
                             attributes, kNameBufferSize, &attributesLength),
                  env, nullptr, nullptr, "SQLDrivers");
    if (ret == SQL_NO_DATA_FOUND) {
        return;
    }
    if (Names != nullptr) {
        Names->Add(BufferText(description, sizeof description));
    }
    if (Attributes != nullptr) {
        // The attributes are keyword=value pairs separated by zero bytes: the first pair is taken.
        Attributes->Add(BufferText(attributes, sizeof attributes));
    }
}

void TODBCSession::AddDatabase(TODBCDatabase* Database) {
    std::lock_guard<std::recursive_mutex> guard(FLock);
    FDatabases.push_back(Database);
}

void TODBCSession::RemoveDatabase(TODBCDatabase* Database) {
    std::lock_guard<std::recursive_mutex> guard(FLock);
    auto it = std::find(FDatabases.begin(), FDatabases.end(), Database);
    if (it != FDatabases.end()) {
        FDatabases.erase(it);
    }
}

} // namespace quorda
