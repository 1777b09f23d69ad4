// The bodies shared by the helpers over DataBase and the helpers over the shared connections: each
// takes a query already created (and owned) by its caller, so a helper is its create function plus
// one of these.
#pragma once

#include "quorda/core/odbc_dataset.h"
#include "quorda/rtl/variant.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quorda {

// Puts ExecCursor up for its lifetime. It remembers the cursor to come back to only when it changes
// the cursor, so a nested scope does not overwrite it; the remembered cursor is shared by all scopes.
class TExecCursorScope {
public:
    TExecCursorScope();
    ~TExecCursorScope();
    TExecCursorScope(const TExecCursorScope&) = delete;
    TExecCursorScope& operator=(const TExecCursorScope&) = delete;
};

// SQL text replaced, ExecQry, RowsAffected.
std::int32_t ExecuteQueryOn(TODBCDataSet& Query, const std::string& SQL);
// SQL text replaced, opened under the wait cursor.
void OpenQueryOn(TODBCDataSet& Query, const std::string& SQL);
// SQL text replaced, prepared, values and clearing of ExecQueryLong, ExecQry, RowsAffected.
std::int32_t ExecQueryLongOn(TODBCDataSet& Query, const std::string& SQL, const std::vector<Variant>& Values,
                             const std::vector<std::int32_t>& ClearIndexes);
// SQL text replaced, forward-only when asked, prepared, values set, OpenQry.
void OpenQueryLongOn(TODBCDataSet& Query, const std::string& SQL, const std::vector<Variant>& Values,
                     bool UniDirectional);

} // namespace quorda
