// TMultiDataBases: the pool, its template of connection settings and the choice of a connection.

#include "quorda/multidb/multi_databases.h"

#include "pooled_registry_p.h"
#include "quorda/multidb/multi_odbc_database.h"
#include "quorda/rtl/exception.h"
#include "quorda/rtl/messages.h"
#include "quorda/rtl/strings.h"

namespace quorda {
namespace {

// The first idle pooled connection of List (Idle true), or else the least busy one, the earlier on
// equal counts; null when List holds no pooled connection.
template <typename TItem>
TMultiODBCDataBase* ChooseDataBase(const std::vector<TItem*>& List, bool& Idle) {
    Idle = false;
    TMultiODBCDataBase* best = nullptr;
    int bestCount = 0;
    for (TItem* item : List) {
        TMultiODBCDataBase* candidate = multidb_detail::ReadyPooled(item);
        if (candidate == nullptr) {
            continue;
        }
        const int count = candidate->GetDatasetCount();
        if (count == 0) {
            Idle = true;
            return candidate;
        }
        if (best == nullptr || count < bestCount) {
            best = candidate;
            bestCount = count;
        }
    }
    return best;
}

} // namespace

TMultiDataBases::~TMultiDataBases() {
    try {
        ClearDataBase();
    } catch (...) {
        // An on-remove handler that raises must not escape a destructor.
    }
}

TMultiODBCDataBase* TMultiDataBases::AddDataBase() {
    auto* database = new TMultiODBCDataBase(nullptr);
    try {
        database->SetParamAtExecSize(FParamAtExecSize);
        database->SetDriverConnectOption(FDriverConnectOption);
        database->SetAutoCommitOption(FAutoCommitOption);
        database->SetIsolationLevel(FIsolationLevel);
        database->SetSQLCursorOption(FSQLCursorOption);
        database->SetStringTrimRight(FStringTrimRight);
        database->SetIgnoreOriginInfo(FIgnoreOriginInfo);
        database->SetDSNName(FDSNName);
        database->SetConnectStr(FConnectStr);
        database->SetUserID(FUserID);
        database->SetPassword(FPassword);
        database->SetConnectStyle(FConnectStyle);
        FItems.push_back(database);
    } catch (...) {
        delete database;
        throw;
    }
    if (OnAddDataBase) {
        OnAddDataBase(database);
    }
    return database;
}

TMultiODBCDataBase* TMultiDataBases::FindDataBase(const std::vector<TODBCDatabase*>& List) {
    bool idle = false;
    return ChooseDataBase(List, idle);
}

TMultiODBCDataBase* TMultiDataBases::FindDataBase() {
    bool idle = false;
    TMultiODBCDataBase* chosen = ChooseDataBase(FItems, idle);
    if (idle) {
        return chosen;
    }
    if (Count() < FMaxDataBases) {
        // Threads choosing from the session's list pass over the new connection until it is open:
        // one chosen while still closed would fail its first statement.
        TMultiODBCDataBase* added = nullptr;
        {
            multidb_detail::TDeferPooledReady defer;
            added = AddDataBase();
        }
        try {
            added->Open();
        } catch (...) {
            multidb_detail::MarkPooledReady(added, true);
            throw;
        }
        multidb_detail::MarkPooledReady(added, true);
        return added;
    }
    return chosen;
}

void TMultiDataBases::ClearDataBase() {
    while (!FItems.empty()) {
        TMultiODBCDataBase* last = FItems.back();
        if (OnRemoveDataBase) {
            OnRemoveDataBase(last);
        }
        FItems.pop_back();
        delete last;
    }
}

void TMultiDataBases::CloseDataBase() {
    for (int i = Count() - 1; i >= 0; --i) {
        TMultiODBCDataBase* database = FItems[static_cast<std::size_t>(i)];
        database->Close();
        if (database->GetDatasetCount() != 0) {
            continue;
        }
        // The event is told about the list's last connection, not necessarily the one freed: that
        // is how it has always behaved, and handlers written for it expect it.
        if (OnRemoveDataBase) {
            OnRemoveDataBase(FItems.back());
        }
        FItems.erase(FItems.begin() + i);
        delete database;
    }
}

void TMultiDataBases::SetConnected(bool Value) {
    if (Value == FConnected) {
        return;
    }
    if (Value) {
        while (Count() < FStartDataBases) {
            AddDataBase();
        }
        for (TMultiODBCDataBase* database : FItems) {
            database->Open();
        }
    } else {
        CloseDataBase();
    }
    FConnected = Value;
}

TMultiODBCDataBase* TMultiDataBases::DataBases(int Index) const {
    if (Index < 0 || Index >= Count()) {
        throw Exception(FormatMessage(SListIndexError, Index));
    }
    return FItems[static_cast<std::size_t>(Index)];
}

} // namespace quorda
