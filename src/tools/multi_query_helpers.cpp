// The query helpers over the pool of shared connections: the same bodies as the helpers over
// DataBase, on a query bound to a pooled connection.
#include "query_bodies_p.h"
#include "quorda/tools/query_helpers.h"

namespace quorda {

TMultiDataBases* MultiDataBases = nullptr;

namespace {

// Holds the pool's lock for a scope; no pool, no lock.
class TPoolLock {
public:
    explicit TPoolLock(TMultiDataBases* Pool) : FPool(Pool) {
        if (FPool != nullptr) {
            FPool->Lock();
        }
    }
    ~TPoolLock() {
        if (FPool != nullptr) {
            FPool->UnLock();
        }
    }
    TPoolLock(const TPoolLock&) = delete;
    TPoolLock& operator=(const TPoolLock&) = delete;

private:
    TMultiDataBases* FPool;
};

std::unique_ptr<TODBCMultiQuery> NewMultiQuery(TMultiODBCDataBase* Connection) {
    auto query = std::make_unique<TODBCMultiQuery>(nullptr);
    query->SetODBCDatabase(Connection);
    query->SetBlobBufferSize(255);
    query->SetMaxBlobBuffer(1000);
    return query;
}

} // namespace

std::unique_ptr<TODBCMultiQuery> CreateMQuery2(TMultiODBCDataBase* Connection) {
    const TPoolLock lock(MultiDataBases);
    return NewMultiQuery(Connection);
}

std::unique_ptr<TODBCMultiQuery> CreateMQuery() {
    const TPoolLock lock(MultiDataBases);
    return NewMultiQuery(MultiDataBases != nullptr ? MultiDataBases->FindDataBase() : nullptr);
}

std::int32_t ExecuteMQuery(const std::string& SQL) {
    const auto query = CreateMQuery();
    return ExecuteQueryOn(*query, SQL);
}

std::unique_ptr<TODBCMultiQuery> OpenMQuery(const std::string& SQL) {
    auto query = CreateMQuery();
    OpenQueryOn(*query, SQL);
    return query;
}

std::int32_t ExecMQueryLong(const std::string& SQL, const std::vector<Variant>& Values,
                            const std::vector<std::int32_t>& ClearIndexes) {
    const auto query = CreateMQuery();
    return ExecQueryLongOn(*query, SQL, Values, ClearIndexes);
}

std::unique_ptr<TODBCMultiQuery> OpenMQueryLong(const std::string& SQL, const std::vector<Variant>& Values) {
    auto query = CreateMQuery();
    OpenQueryLongOn(*query, SQL, Values, false);
    return query;
}

std::unique_ptr<TODBCMultiQuery> OpenMQueryLongUni(const std::string& SQL,
                                                   const std::vector<Variant>& Values) {
    auto query = CreateMQuery();
    OpenQueryLongOn(*query, SQL, Values, true);
    return query;
}

} // namespace quorda
