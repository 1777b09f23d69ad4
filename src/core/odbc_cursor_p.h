// Helpers shared by the cursor side of TODBCDataSet: the per-row conversions work on plain integers
// and bytes, so that copying a row allocates nothing and builds no text.
#pragma once

#include "odbc/odbc_api_p.h"
#include "quorda/rtl/datetime.h"

#include <cstddef>
#include <cstdint>

namespace quorda {
class TField;
struct TFieldValueItem;
} // namespace quorda

namespace quorda::cursor_detail {

// The length of the longest prefix of Text[0, Length) that does not end inside a UTF-8 sequence:
// a value the driver cut at the buffer's end loses the half character, not the text after it.
inline std::size_t Utf8CompleteLength(const char* Text, std::size_t Length) {
    std::size_t start = Length;
    int continuation = 0;
    while (start > 0 && continuation < 4 && (static_cast<unsigned char>(Text[start - 1]) & 0xC0) == 0x80) {
        --start;
        ++continuation;
    }
    if (start == 0) {
        return Length;
    }
    const auto lead = static_cast<unsigned char>(Text[start - 1]);
    const int need = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    return continuation + 1 < need ? start - 1 : Length;
}

// Size of the C type for types the driver writes at a fixed width; 0 for character and binary data.
inline std::size_t FixedCTypeSize(SQLSMALLINT CType) {
    switch (CType) {
    case SQL_C_SHORT:
        return sizeof(SQLSMALLINT);
    case SQL_C_LONG:
        return sizeof(SQLINTEGER);
    case SQL_C_SBIGINT:
        return sizeof(SQLBIGINT);
    case SQL_C_DOUBLE:
        return sizeof(SQLDOUBLE);
    case SQL_C_DATE:
        return sizeof(SQL_DATE_STRUCT);
    case SQL_C_TIME:
        return sizeof(SQL_TIME_STRUCT);
    case SQL_C_TIMESTAMP:
        return sizeof(SQL_TIMESTAMP_STRUCT);
    default:
        return 0;
    }
}

// How a read of Field copies Item's slot: Count value bytes, then Clear zero bytes.
void FieldReadSizes(const TField& Field, const TFieldValueItem& Item, std::size_t& Count, std::size_t& Clear);

} // namespace quorda::cursor_detail
