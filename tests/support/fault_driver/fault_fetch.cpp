// Result-set entry points of the fault-injection driver: description, binding, scrolling fetches
// and piecewise SQLGetData over the scripted rows.
#include "fault_handles.h"

#include <algorithm>
#include <cstring>

#define FAULT_EXPORT extern "C" __attribute__((visibility("default")))

namespace quorda_fault {
namespace {

// The columns of the statement's open cursor, if any.
const std::vector<ScriptColumn>* Described(const Stmt& stmt) {
    return stmt.Open ? &stmt.Result.Columns : nullptr;
}

// Where the cursor lands: the first row of the new rowset, 0 for before the first row or rows + 1 for
// after the last, -1 for an orientation the driver does not offer. The library steps with NEXT and
// RELATIVE only.
long long Scroll(const Stmt& stmt, SQLUSMALLINT orientation, SQLLEN offset) {
    const long long rows = static_cast<long long>(stmt.Result.Rows.size());
    const long long pos = stmt.Position;
    long long target = -1;
    if (orientation == SQL_FETCH_NEXT) {
        target = pos < 1 ? 1 : pos + stmt.LastRowsetSize;
    } else if (orientation == SQL_FETCH_RELATIVE && pos >= 1 && pos <= rows) {
        target = std::max(pos + offset, 0LL);
    }
    return target > rows ? rows + 1 : target;
}

// Moves the cursor and fills the bound buffers of every row of the new rowset.
SQLRETURN FetchRowset(Stmt& stmt, SQLUSMALLINT orientation, SQLLEN offset, long long rowset, SQLULEN* fetched,
                      SQLUSMALLINT* status) {
    if (!stmt.Open) {
        return stmt.Error("24000", "Invalid cursor state");
    }
    if (orientation != SQL_FETCH_NEXT &&
        stmt.Option(SQL_CURSOR_TYPE, SQL_CURSOR_FORWARD_ONLY) == SQL_CURSOR_FORWARD_ONLY) {
        return stmt.Error("S1106", "Fetch type out of range");
    }
    long long target = Scroll(stmt, orientation, offset);
    if (target < 0) {
        return stmt.Error("S1106", "Fetch type out of range");
    }
    long long rows = static_cast<long long>(stmt.Result.Rows.size());
    stmt.Position = target;
    stmt.GetDataColumn = 0;
    if (target < 1 || target > rows) {
        stmt.RowsetRows = 0;
        if (fetched != nullptr) {
            *fetched = 0;
        }
        return SQL_NO_DATA;
    }
    stmt.LastRowsetSize = rowset;
    stmt.RowsetRows = std::min(rowset, rows - target + 1);
    if (fetched != nullptr) {
        *fetched = static_cast<SQLULEN>(stmt.RowsetRows);
    }
    SQLRETURN rc = SQL_SUCCESS;
    for (long long i = 0; i < rowset; ++i) {
        if (status != nullptr) {
            status[i] = i < stmt.RowsetRows ? SQL_ROW_SUCCESS : SQL_ROW_NOROW;
        }
        if (i >= stmt.RowsetRows) {
            continue;
        }
        const auto& row = stmt.Result.Rows[static_cast<size_t>(target - 1 + i)];
        for (auto& [number, binding] : stmt.Columns) {
            if (number > stmt.Result.Columns.size() || binding.Data == nullptr) {
                continue;
            }
            // Row-wise when a bind type (the row's size) is set, column-wise otherwise.
            const SQLULEN rowSize = stmt.Option(SQL_BIND_TYPE, SQL_BIND_BY_COLUMN);
            const auto step =
                static_cast<size_t>(rowSize != SQL_BIND_BY_COLUMN ? rowSize : binding.BufferLength);
            auto* data = static_cast<char*>(binding.Data) + static_cast<size_t>(i) * step;
            SQLLEN* indicator = nullptr;
            if (binding.Indicator != nullptr) {
                indicator = rowSize != SQL_BIND_BY_COLUMN
                                ? reinterpret_cast<SQLLEN*>(reinterpret_cast<char*>(binding.Indicator) +
                                                            static_cast<size_t>(i) * rowSize)
                                : binding.Indicator + i;
            }
            size_t offsetInValue = 0;
            bool done = false;
            Value value = static_cast<size_t>(number - 1) < row.size() ? row[number - 1] : std::nullopt;
            SQLRETURN one = WriteValue(stmt, value, binding.CType, data, binding.BufferLength, indicator,
                                       offsetInValue, false, done);
            if (one == SQL_ERROR) {
                return one;
            }
            if (one == SQL_SUCCESS_WITH_INFO) {
                rc = SQL_SUCCESS_WITH_INFO;
            }
        }
    }
    return rc;
}

} // namespace
} // namespace quorda_fault

using namespace quorda_fault;

FAULT_EXPORT SQLRETURN SQL_API SQLNumResultCols(SQLHSTMT handle, SQLSMALLINT* count) {
    return StmtCall(handle, "SQLNumResultCols", {}, [&](Stmt& stmt) -> SQLRETURN {
        const auto* columns = Described(stmt);
        if (count != nullptr) {
            *count = static_cast<SQLSMALLINT>(columns != nullptr ? columns->size() : 0);
        }
        return SQL_SUCCESS;
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLDescribeCol(SQLHSTMT handle, SQLUSMALLINT number, SQLCHAR* name,
                                              SQLSMALLINT nameMax, SQLSMALLINT* nameLength, SQLSMALLINT* type,
                                              SQLULEN* size, SQLSMALLINT* digits, SQLSMALLINT* nullable) {
    return StmtCall(handle, "SQLDescribeCol", std::to_string(number), [&](Stmt& stmt) -> SQLRETURN {
        const auto* columns = Described(stmt);
        if (columns == nullptr) {
            return stmt.Error("24000", "Invalid cursor state");
        }
        if (number < 1 || number > columns->size()) {
            return stmt.Error("S1002", "Invalid column number");
        }
        const ScriptColumn& column = (*columns)[number - 1];
        if (type != nullptr) {
            *type = static_cast<SQLSMALLINT>(column.SqlType);
        }
        if (size != nullptr) {
            *size = static_cast<SQLULEN>(column.Size);
        }
        if (digits != nullptr) {
            *digits = static_cast<SQLSMALLINT>(column.Digits);
        }
        if (nullable != nullptr) {
            *nullable = SQL_NULLABLE;
        }
        return CopyOut(stmt, column.Name, name, nameMax, nameLength);
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLColAttributes(SQLHSTMT handle, SQLUSMALLINT number, SQLUSMALLINT field,
                                                SQLPOINTER text, SQLSMALLINT textMax, SQLSMALLINT* textLength,
                                                SQLLEN* numeric) {
    return StmtCall(handle, "SQLColAttributes", std::to_string(number) + " " + std::to_string(field),
                    [&](Stmt& stmt) -> SQLRETURN {
                        const auto* columns = Described(stmt);
                        if (columns == nullptr) {
                            return stmt.Error("24000", "Invalid cursor state");
                        }
                        if (number < 1 || number > columns->size()) {
                            return stmt.Error("S1002", "Invalid column number");
                        }
                        const ScriptColumn& column = (*columns)[number - 1];
                        auto setText = [&](const std::string& value) -> SQLRETURN {
                            return CopyOut(stmt, value, static_cast<SQLCHAR*>(text), textMax, textLength);
                        };
                        switch (field) {
                        case SQL_COLUMN_NAME:
                        case SQL_COLUMN_LABEL:
                            return setText(column.Name);
                        case SQL_COLUMN_UNSIGNED:
                        case SQL_COLUMN_MONEY:
                        case SQL_COLUMN_AUTO_INCREMENT:
                            if (numeric != nullptr) {
                                *numeric = 0;
                            }
                            return SQL_SUCCESS;
                        case SQL_COLUMN_TABLE_NAME:
                            return setText(column.Table);
                        default:
                            return stmt.Error("S1091", "Descriptor type out of range");
                        }
                    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLBindCol(SQLHSTMT handle, SQLUSMALLINT number, SQLSMALLINT cType,
                                          SQLPOINTER data, SQLLEN bufferLength, SQLLEN* indicator) {
    std::string arguments =
        std::to_string(number) + " " + std::to_string(cType) + " " + std::to_string(bufferLength);
    return StmtCall(handle, "SQLBindCol", arguments, [&](Stmt& stmt) -> SQLRETURN {
        if (data == nullptr && indicator == nullptr) {
            stmt.Columns.erase(number);
        } else {
            stmt.Columns[number] = {cType, data, bufferLength, indicator};
        }
        return SQL_SUCCESS;
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLFetch(SQLHSTMT handle) {
    return StmtCall(handle, "SQLFetch", {}, [&](Stmt& stmt) -> SQLRETURN {
        return FetchRowset(stmt, SQL_FETCH_NEXT, 0, 1, nullptr, nullptr);
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLExtendedFetch(SQLHSTMT handle, SQLUSMALLINT orientation, SQLLEN offset,
                                                SQLULEN* fetched, SQLUSMALLINT* status) {
    std::string arguments = std::to_string(orientation) + " " + std::to_string(offset);
    return StmtCall(handle, "SQLExtendedFetch", arguments, [&](Stmt& stmt) -> SQLRETURN {
        auto rowset = static_cast<long long>(stmt.Option(SQL_ROWSET_SIZE, 1));
        return FetchRowset(stmt, orientation, offset, rowset, fetched, status);
    });
}

FAULT_EXPORT SQLRETURN SQL_API SQLGetData(SQLHSTMT handle, SQLUSMALLINT number, SQLSMALLINT cType,
                                          SQLPOINTER data, SQLLEN bufferLength, SQLLEN* indicator) {
    std::string arguments =
        std::to_string(number) + " " + std::to_string(cType) + " " + std::to_string(bufferLength);
    return StmtCall(
        handle, "SQLGetData", arguments, [&](Stmt& stmt, const CallOutcome& outcome) -> SQLRETURN {
            long long rows = static_cast<long long>(stmt.Result.Rows.size());
            if (!stmt.Open || stmt.Position < 1 || stmt.Position > rows) {
                return stmt.Error("24000", "Invalid cursor state");
            }
            if (number < 1 || number > stmt.Result.Columns.size()) {
                return stmt.Error("S1002", "Invalid column number");
            }
            if (stmt.GetDataColumn != number) {
                stmt.GetDataColumn = number;
                stmt.GetDataOffset = 0;
                stmt.GetDataDone = false;
            }
            const auto& row = stmt.Result.Rows[static_cast<size_t>(stmt.Position - 1)];
            Value value = static_cast<size_t>(number - 1) < row.size() ? row[number - 1] : std::nullopt;
            return WriteValue(stmt, value, cType, data, bufferLength, indicator, stmt.GetDataOffset,
                              outcome.NoTotal, stmt.GetDataDone);
        });
}
