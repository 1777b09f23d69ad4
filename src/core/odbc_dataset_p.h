#pragma once

// The engine behind TODBCDataSet: binding records, record layout and statement state. Private to
// the library: its own modules (and in-tree tests) include it as "core/odbc_dataset_p.h".
#include "core/driver_quirks_p.h"
#include "odbc/odbc_api_p.h"
#include "quorda/core/odbc_dataset.h"
#include "quorda/odbc/odbc_handle.h"
#include "quorda/rtl/datetime.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorda {

// One bound parameter, built by BindAllParam and kept alive while the statement may still ask for
// its data (data at execution). Items are heap-allocated so the address of ParamIndex, which is the
// token SQLParamData hands back, stays valid and unique per parameter.
struct TParamValueItem {
    // The converted value (owned).
    std::vector<std::byte> Data;
    // The length/indicator passed to SQLBindParameter.
    SQLLEN LengthIndicator = 0;
    SQLSMALLINT CType = 0;
    SQLSMALLINT SqlType = 0;
    std::int32_t ParamIndex = 0;
    // What SQLBindParameter was last given for this item. A later execution whose value converts to
    // the same types, column size and buffer keeps the binding and rewrites only the value bytes
    // and the length/indicator.
    bool Bound = false;
    bool BoundAtExecution = false;
    SQLSMALLINT BoundCType = 0;
    SQLSMALLINT BoundSqlType = 0;
    SQLULEN BoundColumnSize = 0;
    const std::byte* BoundData = nullptr;
};

// Item as a parameter of the C and SQL types given, holding a fixed-width Value, a date-time as an
// ODBC time stamp, or text with its terminating zero: the layouts single parameters and batches send
// alike. Each returns the value's length.
template <typename T>
SQLLEN StoreValue(TParamValueItem& Item, SQLSMALLINT CType, SQLSMALLINT SqlType, const T& Value) {
    Item.CType = CType;
    Item.SqlType = SqlType;
    Item.Data.resize(sizeof(T));
    std::memcpy(Item.Data.data(), &Value, sizeof(T));
    return sizeof(T);
}
SQLLEN StoreTimestamp(TParamValueItem& Item, TDateTime Value);
SQLLEN StoreText(TParamValueItem& Item, SQLSMALLINT SqlType, std::string_view Text);

// Whether a parameter bound as CType may keep its binding across executions, only its value bytes
// and length rewritten. SQLite ODBC 0.9998 reads the length of a binary parameter when it is bound,
// not when the statement executes: binary parameters are bound again for every execution.
constexpr bool KeepsBinding(SQLSMALLINT CType) {
    return CType != SQL_C_BINARY;
}

// One result column bound with SQLBindCol. In single-row mode Data holds one slot of Length bytes
// and Length doubles as the length/indicator cell after each fetch; in block mode Data holds
// RowSetSize slots and Indicators one SQLLEN cell per row.
struct TFieldValueItem {
    std::vector<std::byte> Data;
    SQLLEN Length = 0;
    // Carried along when a block-mode row is copied.
    std::int32_t Value1 = 0;
    std::int32_t Value2 = 0;
    std::vector<SQLLEN> Indicators;
    // The indicator cells bound for the column: &Length in single-row mode, Indicators in block mode.
    const SQLLEN* IndicatorCells = nullptr;

    // Precomputed once at bind time so the per-row copy does not walk the definitions.
    SQLSMALLINT CType = 0;
    // Bytes between rows of this column in block mode (the bound buffer length for character and
    // binary data, the size of the C type for fixed-size types).
    std::size_t RowStride = 0;
    // Offset of the column's null indicator byte in a record buffer (its data slot follows).
    std::size_t RecordOffset = 0;
    // The definition's data size (GetDefDataSize).
    std::size_t DataSize = 0;
    // The definition's field type: selects the conversion of the per-row copy.
    TFieldType FieldType = ftUnknown;
    // The field bound to this column at open, and how a read of it copies the slot: ReadCount value
    // bytes, then ReadClear zero bytes up to the field's data size. Any other field reading the
    // column works the sizes out per read.
    const TField* ReadField = nullptr;
    std::size_t ReadCount = 0;
    std::size_t ReadClear = 0;
};

// The 8-byte bookmark: the numbering origin in force when it was taken and the row number.
struct TODBCBookmark {
    std::int32_t Origin;
    std::int32_t RowNumber;
};
static_assert(sizeof(TODBCBookmark) == 8);

// Layout of an engine record buffer: row number, bookmark flag, then per field definition one null
// indicator byte ('1' when the column has a value) followed by its data slot.
inline constexpr std::size_t kRecordRowNumberOffset = 0;
inline constexpr std::size_t kRecordFlagOffset = 4;
inline constexpr std::size_t kRecordHeaderSize = 5;
// The row number of a row that has not been numbered yet.
inline constexpr std::int32_t kRowNotNumbered = 4095;

// The C type a result column of SQLType is bound as (SQL_C_DEFAULT for the unmapped types).
QUORDA_API SQLSMALLINT BindCTypeFor(int SQLType);

// The statement handle of a dataset and the row-status cells its fetches fill.
struct TODBCDataSetEngine {
    TODBCStatementHandle Stmt;
    std::vector<SQLUSMALLINT> RowStatus;
    SQLUSMALLINT SingleRowStatus = 0;
    // Held while the statement handle is set or freed, and by Cancel, so that a cancel from another
    // thread never reaches a freed handle.
    std::mutex StmtLock;
    // Probed at the first batch; tests set it to force a path.
    std::optional<TDriverQuirks> Quirks;
    // The memo and blob values read from the row a forward-only cursor stands on. The driver hands a
    // column's data over once per row (SQLGetData), while a field may be read any number of times.
    // Row says which numbered row they belong to; numbering anew forgets them.
    struct TRowBlobs {
        std::int32_t Row = -1;
        std::map<SQLUSMALLINT, std::string> Values;
    } CurrentRowBlobs;
};

// The engine of a dataset, for the engine's own sources and in-tree tests.
QUORDA_API TODBCDataSetEngine& EngineOf(TODBCDataSet& DataSet);

} // namespace quorda
