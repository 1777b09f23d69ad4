#pragma once

#include "quorda/core/odbc_dataset.h"

namespace quorda {

class TMultiODBCDataBase;
class TCriticalSection;

namespace multidb_detail {
// Leaves a critical section when destroyed. As a base listed before the dataset, it outlives the
// dataset's own destructor.
struct QUORDA_API TSectionExit {
    TCriticalSection* FEntered = nullptr;
    ~TSectionExit();
};
} // namespace multidb_detail

// A query for several threads: on first use it attaches itself to the least busy pooled connection
// of the session and holds that connection's lock around each of its cursor operations, so queries
// on different threads that share a connection never use it at the same time. One query still
// belongs to one thread at a time.
class QUORDA_API TODBCMultiQuery : private multidb_detail::TSectionExit, public TODBCDataSet {
public:
    explicit TODBCMultiQuery(TComponent* AOwner) : TODBCDataSet(AOwner) {}
    // Detaches while holding the connection's critical section (entered directly, uncounted).
    ~TODBCMultiQuery() override;

    std::string ClassName() const override { return "TODBCMultiQuery"; }

    // The attached connection; when none is, the least busy pooled connection of the session is
    // attached first (none when the session holds no pooled connection).
    TMultiODBCDataBase* FindDB();
    TMultiODBCDataBase* GetMultiODBCDataBase() const { return FMultiDataBase; }
    void SetMultiODBCDataBase(TMultiODBCDataBase* Value);
    // Leaves the old connection and joins the new one, each under that connection's lock.
    void SetODBCDatabase(TODBCDatabase* Value) override;

    bool RetCodeIsSuccessful(SQLRETURN RetCode) override;
    void QueryChanged(TObject* Sender) override;
    void InternalFreeStmt(SQLUSMALLINT Option) override;
    void InternalExecSQL() override;
    void PrepareSQL(const std::string& Text) override;
    int GetRecordCountExt() override;
    std::unique_ptr<TStream> CreateBlobStream(TField* Field, TBlobStreamMode Mode) override;

protected:
    void Notification(TComponent* AComponent, TOperation Operation) override;
    void OpenCursor(bool InfoQuery) override;
    void InternalInitFieldDefs() override;
    void InternalOpen() override;
    void InternalClose() override;
    void InternalFirst() override;
    void InternalLast() override;
    int GetRecordCount() override;
    TGetResult GetRecord(TRecordBuffer Buffer, TGetMode GetMode, bool DoCheck) override;
    void InternalGotoBookmark(const void* ABookmark) override;
    void InternalSetToRecord(TRecordBuffer Buffer) override;
    void InternalRefresh() override;

private:
    // The pooled connection behind ODBCDatabase (null for none or for a plain database).
    void UpdateMultiLink();

    TMultiODBCDataBase* FMultiDataBase = nullptr;
};

} // namespace quorda
