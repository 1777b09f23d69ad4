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

// One result column bound with SQLBindCol, at its place in the engine's row area (see TRowArea).
struct TFieldValueItem {
    // Precomputed once at bind time so the per-row copy does not walk the definitions.
    SQLSMALLINT CType = 0;
    // The buffer length the column is bound with.
    SQLLEN BindLength = 0;
    // Offset of the SQLLEN length/indicator cell the driver writes, in a row of the row area.
    std::size_t IndicatorOffset = 0;
    // Offset of the column's null indicator byte in a record buffer and in a row of the row area (its
    // data slot follows; the driver writes the column's value there).
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

// The rows the driver fetches into: one row, or a rowset bound row-wise. A row is laid out as a
// record buffer, so the columns whose values the record holds as the driver writes them (whole
// numbers and doubles) sit together at the front and reach a record with one copy; every other
// column (text, dates, binary data) is converted into the record one by one.
struct TRowArea {
    std::vector<std::byte> Bytes;
    // Bytes per row: the row-wise bind type of a rowset.
    std::size_t RowSize = 0;
    // The copied front of a row: [kRecordBodyOffset, FixedEnd).
    std::size_t FixedEnd = 0;
    // The columns of the front, in the order of their length/indicator cells, which lie side by side
    // from kRecordBodyOffset on: a NULL clears the record's slot after the copy.
    struct TFixedColumn {
        std::size_t RecordOffset;
        std::size_t DataSize;
    };
    std::vector<TFixedColumn> Fixed;
    // The columns converted one by one: their items' offsets, size and type, kept flat here so that
    // the per-row loop reads them without going through the items.
    struct TConvertedColumn {
        std::size_t IndicatorOffset;
        std::size_t RecordOffset;
        std::size_t DataSize;
        TFieldType FieldType;
    };
    std::vector<TConvertedColumn> Converted;

    const std::byte* Row(std::size_t Index) const { return Bytes.data() + Index * RowSize; }
    static SQLLEN Indicator(const std::byte* Row, std::size_t Offset) {
        SQLLEN value;
        std::memcpy(&value, Row + Offset, sizeof value);
        return value;
    }
};

// Keeps a text's length in the record's cell at Offset, where its readers look for it.
inline void StoreTextLength(std::byte* Record, std::size_t Offset, std::size_t Length) {
    const auto length = static_cast<std::int64_t>(Length);
    std::memcpy(Record + Offset, &length, sizeof length);
}

// The 8-byte bookmark: the numbering origin in force when it was taken and the row number.
struct TODBCBookmark {
    std::int32_t Origin;
    std::int32_t RowNumber;
};
static_assert(sizeof(TODBCBookmark) == 8);

// Layout of an engine record buffer: row number, bookmark flag, then per column the driver's SQLLEN
// length/indicator cell, one null indicator byte ('1' when the column has a value) and the column's
// data slot, the cell and the slot 8-byte aligned (the row area binds them in place).
inline constexpr std::size_t kRecordRowNumberOffset = 0;
inline constexpr std::size_t kRecordFlagOffset = 4;
inline constexpr std::size_t kRecordBodyOffset = 8;
// The row number of a row that has not been numbered yet.
inline constexpr std::int32_t kRowNotNumbered = 4095;

// The C type a result column of SQLType is bound as (SQL_C_DEFAULT for the unmapped types).
QUORDA_API SQLSMALLINT BindCTypeFor(int SQLType);

// The statement handle of a dataset and the row-status cells its fetches fill.
struct TODBCDataSetEngine {
    TODBCStatementHandle Stmt;
    std::vector<SQLUSMALLINT> RowStatus;
    SQLUSMALLINT SingleRowStatus = 0;
    TRowArea Rows;
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
