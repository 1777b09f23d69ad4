// TODBCDataSet, batch execution: one prepared statement run for many rows of values, through
// column-wise parameter arrays where the driver gains from them, else one execution per row over
// the same buffers.

#include "odbc_dataset_p.h"
#include "quorda/core/odbc_dataset.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/exception.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace quorda {
namespace {

// Rows converted and sent per execution: large enough that round trips stop mattering, small
// enough that the converted values of one chunk stay a few megabytes.
constexpr std::size_t kBatchChunkRows = 1000;
// "yyyy-mm-dd hh:mm:ss.fff", as for single parameters.
constexpr SQLULEN kTimestampColumnSize = 23;

// The type a column takes from a value, as a single parameter does (SetAsVariant), except that a
// 64-bit integer stays 64 bits wide instead of being cut to 32.
TFieldType FieldTypeOfValue(const Variant& Value) {
    switch (Value.VarType()) {
    case varInt64:
    case varQWord:
        return ftLargeint;
    case varSmallint:
    case varInteger:
    case varShortInt:
    case varByte:
    case varWord:
    case varLongWord:
        return ftInteger;
    case varSingle:
    case varDouble:
        return ftFloat;
    case varCurrency:
        return ftCurrency;
    case varDate:
        return ftDateTime;
    case varBoolean:
        return ftBoolean;
    case varString:
    case varOleStr:
        return ftString;
    default:
        return ftUnknown;
    }
}

// Gives Cell the value converted to Type, so that every row of a column binds alike.
void AssignTyped(TODBCParam& Cell, TFieldType Type, const Variant& Value) {
    // A value of the column's own type goes in as it is (the common case, one copy).
    if (Type != ftLargeint && Type != ftUnknown && FieldTypeOfValue(Value) == Type) {
        Cell.SetAsVariant(Value);
        return;
    }
    switch (Type) {
    case ftSmallint:
        Cell.SetAsSmallInt(Value.AsInteger());
        break;
    case ftWord:
        Cell.SetAsWord(Value.AsInteger());
        break;
    case ftInteger:
    case ftAutoInc:
        Cell.SetAsInteger(Value.AsInteger());
        break;
    case ftLargeint:
        Cell.SetAsLargeInt(Value.AsInt64());
        break;
    case ftBoolean:
        Cell.SetAsBoolean(Value.AsBoolean());
        break;
    case ftFloat:
        Cell.SetAsFloat(Value.AsDouble());
        break;
    case ftCurrency:
        Cell.SetAsCurrency(Value.AsDouble());
        break;
    case ftBCD:
        Cell.SetAsBCD(Value.AsCurrency());
        break;
    case ftDate:
        Cell.SetAsDate(Value.AsDateTime());
        break;
    case ftTime:
        Cell.SetAsTime(Value.AsDateTime());
        break;
    case ftDateTime:
        Cell.SetAsDateTime(Value.AsDateTime());
        break;
    case ftMemo:
    case ftFmtMemo:
        Cell.SetAsMemo(Value.AsString());
        break;
    case ftBlob:
    case ftGraphic: {
        const std::string bytes = Value.AsString();
        Cell.SetBlobData(bytes.data(), bytes.size());
        break;
    }
    default:
        Cell.SetAsString(Value.AsString());
        break;
    }
}

// The common pairs of value and column type stored straight into Item, with the bytes, types and
// length ConvertData gives them after AssignTyped, but without a parameter object in between; false
// where that general route is needed. Text goes this way only when it is not translated.
bool ConvertDirect(const Variant& Value, TFieldType Type, bool Text, TParamValueItem& Item, SQLLEN& Length) {
    switch (Type) {
    case ftInteger:
        switch (Value.VarType()) {
        case varInteger:
        case varSmallint:
        case varShortInt:
        case varByte:
        case varWord:
            Length = StoreValue(Item, SQL_C_LONG, SQL_INTEGER, static_cast<SQLINTEGER>(Value.AsInteger()));
            return true;
        default:
            return false;
        }
    case ftLargeint:
        if (Value.VarType() != varInt64 && Value.VarType() != varInteger) {
            return false;
        }
        Length = StoreValue(Item, SQL_C_SBIGINT, SQL_BIGINT, static_cast<SQLBIGINT>(Value.AsInt64()));
        return true;
    case ftFloat:
        if (Value.VarType() != varDouble && Value.VarType() != varSingle) {
            return false;
        }
        Length = StoreValue(Item, SQL_C_DOUBLE, SQL_DOUBLE, Value.AsDouble());
        return true;
    case ftDateTime:
        if (Value.VarType() != varDate) {
            return false;
        }
        Length = StoreTimestamp(Item, Value.AsDateTime());
        return true;
    case ftString:
        if (!Text || Value.VarType() != varString) {
            return false;
        }
        Length = StoreText(Item, SQL_CHAR, Value.AsString());
        return true;
    default:
        return false;
    }
}

// One parameter of the batch: its type, the value being converted and the bound buffer (one slot,
// or one per row of a chunk for arrays).
struct TBatchColumn {
    TFieldType Type = ftString;
    TParamValueItem Layout;  // C and SQL types (from a conversion of the empty value)
    TParamValueItem Scratch; // the value being converted, its buffer reused row after row
    SQLLEN ScratchLength = 0;
    // Arrays: the chunk's converted values and lengths.
    std::vector<std::vector<std::byte>> Cells;
    std::vector<SQLLEN> Lengths;
    std::size_t Width = 1;
    SQLULEN ColumnSize = 1;
    std::vector<std::byte> Buffer;
    std::vector<SQLLEN> Indicators;

    bool VariableLength() const { return Layout.CType == SQL_C_CHAR || Layout.CType == SQL_C_BINARY; }
};

} // namespace

EODBCBatchError::EODBCBatchError(std::size_t RowIndex, const std::string& Message, const EODBCError* Cause)
    : EODBCError("Row " + std::to_string(RowIndex) + " of the batch failed: " + Message,
                 Cause != nullptr ? Cause->Henv() : nullptr, Cause != nullptr ? Cause->Hdbc() : nullptr,
                 Cause != nullptr ? Cause->Hstmt() : nullptr, Cause != nullptr ? Cause->NativeError() : 0,
                 Cause != nullptr ? Cause->SQLState() : std::string(),
                 Cause != nullptr ? Cause->NativeMessage() : Message),
      FRowIndex(RowIndex) {}

void TODBCDataSet::ReleaseBatchStatement() noexcept {
    TraceODBC(SQLFreeStmt(FEngine->Stmt.Get(), SQL_RESET_PARAMS), "SQLFreeStmt(SQL_RESET_PARAMS)");
    FEngine->Stmt.Reset();
    FParamValues.clear();
    FEngine->Quirks.reset();
    FPrepared = false;
}

TODBCDataSetEngine& EngineOf(TODBCDataSet& DataSet) {
    return *DataSet.FEngine;
}

std::int64_t TODBCDataSet::ExecSQLBatch(const std::vector<std::vector<Variant>>& Rows) {
    CheckDBOpenError();
    ResetRowCounters();
    const auto paramCount = static_cast<std::size_t>(GetParamsCount());
    for (std::size_t row = 0; row < Rows.size(); ++row) {
        if (Rows[row].size() != paramCount) {
            throw EODBCBatchError(row,
                                  std::to_string(Rows[row].size()) + " values given for the " +
                                      std::to_string(paramCount) + " parameters of the statement",
                                  nullptr);
        }
    }
    // A batch has no cursor. On a scrollable (keyset) statement psqlODBC runs parameter arrays one
    // row per round trip, so a statement made here is forward-only, and released afterwards so that
    // the dataset's next statement gets its own cursor type again.
    const bool ownHandle = !FEngine->Stmt && !FUniDirectional;
    if (ownHandle) {
        FUniDirectional = true;
        try {
            CreateHandle();
        } catch (...) {
            FUniDirectional = false;
            throw;
        }
        FUniDirectional = false;
    } else {
        CreateHandle();
    }
    struct TReleaseOwnHandle {
        TODBCDataSet& DataSet;
        bool Own;
        ~TReleaseOwnHandle() {
            if (Own) {
                DataSet.ReleaseBatchStatement();
            }
        }
    } release{*this, ownHandle};
    if (!FPrepared) {
        Prepare();
    }
    if (!FEngine->Quirks) {
        FEngine->Quirks = ProbeDriverQuirks(GetDBC());
    }
    const bool arrays = FEngine->Quirks->UseParamArrays();
    SQLHSTMT stmt = FEngine->Stmt.Get();

    // Column types: the parameter's own, else the first non-null value's, else text.
    std::vector<TBatchColumn> columns(paramCount);
    TODBCParam cell(nullptr);
    for (std::size_t col = 0; col < paramCount; ++col) {
        TBatchColumn& column = columns[col];
        column.Type = Params().Items(static_cast<int>(col))->DataType();
        if (column.Type == ftUnknown) {
            column.Type = ftString;
            const auto first = std::find_if(Rows.begin(), Rows.end(),
                                            [col](const auto& row) { return !VarIsNull(row[col]); });
            if (first != Rows.end() && FieldTypeOfValue((*first)[col]) != ftUnknown) {
                column.Type = FieldTypeOfValue((*first)[col]);
            }
        }
        cell.SetDataType(column.Type);
        cell.Clear();
        ConvertData(&cell, column.Layout);
    }

    // The single-row bindings of ExecSQL point into buffers this replaces.
    FParamValues.clear();
    InternalFreeStmt(SQL_RESET_PARAMS);
    std::vector<SQLUSMALLINT> status(kBatchChunkRows, SQL_PARAM_UNUSED);
    SQLULEN processed = 0;
    struct TRestoreSingleRows {
        SQLHSTMT Stmt;
        bool Arrays;
        ~TRestoreSingleRows() {
            if (Arrays) {
                TraceODBC(SQLSetStmtAttr(Stmt, SQL_ATTR_PARAM_STATUS_PTR, nullptr, 0),
                          "SQLSetStmtAttr(SQL_ATTR_PARAM_STATUS_PTR)");
                TraceODBC(SQLParamOptions(Stmt, 1, nullptr), "SQLParamOptions");
            }
            TraceODBC(SQLFreeStmt(Stmt, SQL_RESET_PARAMS), "SQLFreeStmt(SQL_RESET_PARAMS)");
        }
    } restore{stmt, arrays};
    if (arrays) {
        CheckStmtCall(SQLSetStmtAttr(stmt, SQL_ATTR_PARAM_STATUS_PTR, status.data(), 0),
                      "SQLSetStmtAttr(SQL_ATTR_PARAM_STATUS_PTR)");
    }

    std::int64_t affected = 0;
    auto addRowCount = [&] {
        SQLLEN count = 0;
        if (RetCodeIsSuccessful(TraceODBC(SQLRowCount(stmt, &count), "SQLRowCount")) && count > 0) {
            affected += count;
        }
    };
    auto failAt = [&](std::size_t Row) -> void {
        EODBCError cause = CreateODBCError(nullptr, nullptr, stmt);
        throw EODBCBatchError(Row, cause.Message(), &cause);
    };

    // Converts value Row of a column with the single-parameter rules into its Scratch item; false
    // for a null.
    auto convert = [&](TBatchColumn& Column, std::size_t Row, std::size_t Col) {
        const Variant& value = Rows[Row][Col];
        if (VarIsNull(value)) {
            return false;
        }
        try {
            if (!ConvertDirect(value, Column.Type, !FTranslate, Column.Scratch, Column.ScratchLength)) {
                AssignTyped(cell, Column.Type, value);
                Column.ScratchLength = ConvertData(&cell, Column.Scratch);
            }
        } catch (const EODBCError&) {
            throw;
        } catch (const Exception& error) {
            throw EODBCBatchError(Row, error.Message(), nullptr);
        }
        return true;
    };
    auto bind = [&](std::size_t Col) {
        TBatchColumn& column = columns[Col];
        column.ColumnSize = column.Layout.SqlType == SQL_TIMESTAMP ? kTimestampColumnSize
                            : column.VariableLength()              ? column.Width
                                                                   : column.Layout.Data.size();
        CheckStmtCall(SQLBindParameter(stmt, static_cast<SQLUSMALLINT>(Col + 1), SQL_PARAM_INPUT,
                                       column.Layout.CType, column.Layout.SqlType, column.ColumnSize, 0,
                                       column.Buffer.data(), static_cast<SQLLEN>(column.Width),
                                       column.Indicators.data()),
                      "SQLBindParameter");
    };

    if (!arrays) {
        // One slot per column, bound once and again only when a value outgrows it (or is binary).
        for (std::size_t col = 0; col < paramCount; ++col) {
            columns[col].Width = std::max<std::size_t>(columns[col].Layout.Data.size(), 1);
            columns[col].Buffer.assign(columns[col].Width, std::byte{0});
            columns[col].Indicators.assign(1, SQL_NULL_DATA);
            bind(col);
        }
        for (std::size_t row = 0; row < Rows.size(); ++row) {
            for (std::size_t col = 0; col < paramCount; ++col) {
                TBatchColumn& column = columns[col];
                if (!convert(column, row, col)) {
                    column.Indicators[0] = SQL_NULL_DATA;
                    continue;
                }
                const auto& bytes = column.Scratch.Data;
                const bool outgrown = bytes.size() > column.Width;
                if (outgrown) {
                    column.Width = std::max(bytes.size(), 2 * column.Width);
                    column.Buffer.assign(column.Width, std::byte{0});
                }
                if (!bytes.empty()) {
                    std::memcpy(column.Buffer.data(), bytes.data(), bytes.size());
                }
                column.Indicators[0] = column.ScratchLength;
                if (outgrown || !KeepsBinding(column.Layout.CType)) {
                    bind(col);
                }
            }
            if (!RetCodeIsSuccessful(TraceODBC(SQLExecute(stmt), "SQLExecute"))) {
                failAt(row);
            }
            addRowCount();
        }
        SetState(dsBrowse);
        return affected;
    }

    for (std::size_t first = 0; first < Rows.size(); first += kBatchChunkRows) {
        const std::size_t count = std::min(kBatchChunkRows, Rows.size() - first);
        // Convert the chunk, then lay it out column-wise at the widest value of each column.
        for (std::size_t col = 0; col < paramCount; ++col) {
            TBatchColumn& column = columns[col];
            column.Cells.resize(count);
            column.Lengths.resize(count);
            column.Width = std::max<std::size_t>(column.Layout.Data.size(), 1);
            for (std::size_t row = 0; row < count; ++row) {
                if (!convert(column, first + row, col)) {
                    column.Cells[row].clear();
                    column.Lengths[row] = SQL_NULL_DATA;
                    continue;
                }
                column.Cells[row].assign(column.Scratch.Data.begin(), column.Scratch.Data.end());
                column.Lengths[row] = column.ScratchLength;
                column.Width = std::max(column.Width, column.Scratch.Data.size());
            }
            column.Buffer.assign(count * column.Width, std::byte{0});
            column.Indicators.assign(count, SQL_NULL_DATA);
            for (std::size_t row = 0; row < count; ++row) {
                const auto& bytes = column.Cells[row];
                if (!bytes.empty()) {
                    std::memcpy(column.Buffer.data() + row * column.Width, bytes.data(), bytes.size());
                }
                column.Indicators[row] = column.Lengths[row];
            }
            bind(col);
        }
        std::fill(status.begin(), status.end(), SQL_PARAM_UNUSED);
        processed = 0;
        CheckStmtCall(SQLParamOptions(stmt, count, &processed), "SQLParamOptions");
        const SQLRETURN ret = TraceODBC(SQLExecute(stmt), "SQLExecute");
        const auto end = status.begin() + static_cast<std::ptrdiff_t>(count);
        const auto failed = std::find(status.begin(), end, static_cast<SQLUSMALLINT>(SQL_PARAM_ERROR));
        if (RetCodeIsSuccessful(ret) && failed == end) {
            // Drivers that count per parameter set hand out one count per result.
            addRowCount();
            while (TraceODBC(SQLMoreResults(stmt), "SQLMoreResults") == SQL_SUCCESS) {
                addRowCount();
            }
            continue;
        }
        const bool filled =
            std::any_of(status.begin(), end, [](SQLUSMALLINT s) { return s != SQL_PARAM_UNUSED; });
        if (!filled) {
            // Without a status the last row processed is the one that stopped the array.
            failAt(first + std::min<std::size_t>(processed > 0 ? processed - 1 : 0, count - 1));
        }
        if (std::count(status.begin(), end, static_cast<SQLUSMALLINT>(SQL_PARAM_ERROR)) == 1) {
            failAt(first + static_cast<std::size_t>(failed - status.begin()));
        }
        // The driver sends arrays in groups and marks a whole group that failed (psqlODBC): the rows
        // from the first one not applied run again one at a time, so that the failing one is named.
        // Where the failure aborted the transaction, the retry fails at once and the group's first
        // row is named with the original diagnostics.
        EODBCError cause = CreateODBCError(nullptr, nullptr, stmt);
        const auto applied = [](SQLUSMALLINT s) {
            return s == SQL_PARAM_SUCCESS || s == SQL_PARAM_SUCCESS_WITH_INFO;
        };
        const auto from =
            static_cast<std::size_t>(std::find_if_not(status.begin(), end, applied) - status.begin());
        CheckStmtCall(SQLParamOptions(stmt, 1, &processed), "SQLParamOptions");
        for (std::size_t row = from; row < count; ++row) {
            for (std::size_t col = 0; col < paramCount; ++col) {
                TBatchColumn& column = columns[col];
                CheckStmtCall(SQLBindParameter(stmt, static_cast<SQLUSMALLINT>(col + 1), SQL_PARAM_INPUT,
                                               column.Layout.CType, column.Layout.SqlType, column.ColumnSize,
                                               0, column.Buffer.data() + row * column.Width,
                                               static_cast<SQLLEN>(column.Width), &column.Indicators[row]),
                              "SQLBindParameter");
            }
            if (!RetCodeIsSuccessful(TraceODBC(SQLExecute(stmt), "SQLExecute"))) {
                EODBCError again = CreateODBCError(nullptr, nullptr, stmt);
                if (row == from || again.SQLState().rfind("25P02", 0) == 0) {
                    throw EODBCBatchError(first + from, cause.Message(), &cause);
                }
                throw EODBCBatchError(first + row, again.Message(), &again);
            }
        }
        throw EODBCBatchError(first + from, cause.Message(), &cause);
    }
    SetState(dsBrowse);
    return affected;
}

} // namespace quorda
