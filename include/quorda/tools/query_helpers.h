// One-call query functions over the application's default connection.
#pragma once

#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_query.h"
#include "quorda/ext/odbc_ext_dataset.h"
#include "quorda/multidb/multi_databases.h"
#include "quorda/multidb/multi_odbc_database.h"
#include "quorda/multidb/odbc_multi_query.h"
#include "quorda/rtl/application.h"
#include "quorda/rtl/variant.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quorda {

class TDataSet;

// The connection of every query CreateQuery makes, and whose transaction ImportDataSet uses. Not
// owned: the application creates, assigns and frees it.
extern QUORDA_API TODBCDatabase* DataBase;
// The screen cursor shown while a helper executes or opens a statement.
extern QUORDA_API TCursor ExecCursor;
// The pool of shared connections the M helpers take their connections from. Not owned.
extern QUORDA_API TMultiDataBases* MultiDataBases;

// A query without owner on DataBase, BlobBufferSize 250, MaxBlobBuffer 1000. The caller owns it.
QUORDA_API std::unique_ptr<TODBCQuery> CreateQuery();

// As CreateQuery, but the editable query, BlobBufferSize 255, MaxBlobBuffer 1000.
QUORDA_API std::unique_ptr<TODBCExtQuery> CreateQueryExt();

// ExecSQL under the wait cursor; the cursor is restored also when ExecSQL raises.
QUORDA_API void ExecQry(TODBCDataSet* Query);
// Open under the wait cursor, with the dataset's controls disabled meanwhile.
QUORDA_API void OpenQry(TODBCDataSet* Query);
// Prepare, so that the parameter list is parsed.
QUORDA_API void PrepareQry(TODBCDataSet* Query);

// Executes SQL on a query of its own and returns RowsAffected; the query is freed in all cases.
QUORDA_API std::int32_t ExecuteQuery(const std::string& SQL);
// Opens SQL; the caller owns the open query. On an error the query is freed and the error passes on.
QUORDA_API std::unique_ptr<TODBCQuery> OpenQuery(const std::string& SQL);

// Executes SQL with parameter i set to Values[i] (a Null value gives a null typed as a string), then
// clears the parameters whose indexes ClearIndexes lists, unless its first element is -1. Returns
// RowsAffected; the query is freed in all cases.
QUORDA_API std::int32_t ExecQueryLong(const std::string& SQL, const std::vector<Variant>& Values,
                                      const std::vector<std::int32_t>& ClearIndexes = {-1});
// Executes SQL once per row of Rows (value i of a row to parameter i) in one call, through
// TODBCDataSet::ExecSQLBatch under the wait cursor. Returns the rows affected in total; a failing row
// raises EODBCBatchError naming it. The query is freed in all cases.
QUORDA_API std::int64_t ExecQueryBatch(const std::string& SQL, const std::vector<std::vector<Variant>>& Rows);
// Opens SQL with parameter i set to Values[i]; the caller owns the open query.
QUORDA_API std::unique_ptr<TODBCQuery> OpenQueryLong(const std::string& SQL,
                                                     const std::vector<Variant>& Values);
// As OpenQueryLong on a forward-only cursor.
QUORDA_API std::unique_ptr<TODBCQuery> OpenQueryLongUni(const std::string& SQL,
                                                        const std::vector<Variant>& Values);

// The same helpers over the shared connections. CreateMQuery2 binds the new query (BlobBufferSize
// 255, MaxBlobBuffer 1000) to Connection under MultiDataBases' lock; CreateMQuery to the connection
// MultiDataBases picks, under its lock, which is released also when picking or binding raises.
QUORDA_API std::unique_ptr<TODBCMultiQuery> CreateMQuery2(TMultiODBCDataBase* Connection);
QUORDA_API std::unique_ptr<TODBCMultiQuery> CreateMQuery();
QUORDA_API std::int32_t ExecuteMQuery(const std::string& SQL);
QUORDA_API std::unique_ptr<TODBCMultiQuery> OpenMQuery(const std::string& SQL);
QUORDA_API std::int32_t ExecMQueryLong(const std::string& SQL, const std::vector<Variant>& Values,
                                       const std::vector<std::int32_t>& ClearIndexes = {-1});
QUORDA_API std::unique_ptr<TODBCMultiQuery> OpenMQueryLong(const std::string& SQL,
                                                           const std::vector<Variant>& Values);
QUORDA_API std::unique_ptr<TODBCMultiQuery> OpenMQueryLongUni(const std::string& SQL,
                                                              const std::vector<Variant>& Values);

// Moves to the next record after the current one in which some non-blob field starts with Text
// (upper-cased on both sides unless CaseSensitive). Without a match the dataset returns to where it
// stood. Returns whether it stands on a match.
QUORDA_API bool FindAnyRecord(TDataSet* DataSet, bool CaseSensitive, const std::string& Text);

} // namespace quorda
