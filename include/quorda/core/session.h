#pragma once

#include "quorda/odbc/odbc_types.h"
#include "quorda/rtl/component.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace quorda {

class TODBCDatabase;
class TStrings;

// The process-wide ODBC environment, allocated with SQLAllocEnv (ODBC 2 behaviour) on first use and
// never released: the process ends with it. A failed allocation is not reported here; the first
// connection allocation on the null environment reports it.
QUORDA_API SQLHENV odbcEnv();

// The single session that knows every TODBCDatabase of the process, whatever its owner. Databases
// may be created, named, opened and freed on any thread: the list is guarded by a lock of its own.
class QUORDA_API TODBCSession : public TComponent {
public:
    explicit TODBCSession(TComponent* AOwner);
    // Frees every database still registered, last first (each one leaves the list as it goes).
    ~TODBCSession() override;

    std::string ClassName() const override { return "TODBCSession"; }

    SQLHENV GetEnv() const { return odbcEnv(); }
    int GetDatabaseCount() const;
    // Raises "List index (%d) out of bounds" for an index outside the list.
    TODBCDatabase* GetDatabase(int Index) const;

    // The first registered database whose DatabaseName equals Name exactly (case-sensitive); null
    // when none does. An empty Name finds a database without a name.
    TODBCDatabase* FindDatabase(const std::string& Name) const;

    // Data sources known to the driver manager, descriptions aligned by index. Either list may be
    // null; a given list is cleared first.
    void GetDSNNames(TStrings* Names, TStrings* Descriptions);
    // The first installed driver only, with the first keyword=value pair of its attributes; empty
    // lists when no driver is installed.
    void GetDriverNames(TStrings* Names, TStrings* Attributes);

    // Runs Visit(list of databases) while no database can join or leave the list or change its name;
    // a database being freed meanwhile waits until Visit returns. Visit may call the session again.
    template <typename TVisit>
    decltype(auto) WithDatabases(TVisit&& Visit) const {
        std::lock_guard<std::recursive_mutex> guard(FLock);
        return std::forward<TVisit>(Visit)(std::as_const(FDatabases));
    }

private:
    friend class TODBCDatabase;
    void AddDatabase(TODBCDatabase* Database);
    void RemoveDatabase(TODBCDatabase* Database);

    std::vector<TODBCDatabase*> FDatabases;
    mutable std::recursive_mutex FLock;
};

// The session of the process, created (without owner) on first use and freed at exit.
QUORDA_API TODBCSession* ODBCSession();

// Frees every item of a list of owned objects and empties the list; a null list is left alone.
template <typename T>
void ClearLst(std::vector<T*>* List) {
    if (List == nullptr) {
        return;
    }
    for (auto& item : *List) {
        if (item != nullptr) {
            delete item;
            item = nullptr;
        }
    }
    List->clear();
}

} // namespace quorda
