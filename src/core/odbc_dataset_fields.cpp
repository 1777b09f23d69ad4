// TODBCDataSet, field definitions: the result columns described and bound, the data size of each
// definition, the record buffers laid out from them, and where each field's values come from.

#include "odbc_cursor_p.h"
#include "odbc_dataset_p.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_dataset.h"
#include "quorda/odbc/odbc_check.h"
#include "quorda/rtl/messages.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

namespace quorda {
namespace {

using cursor_detail::FixedCTypeSize;
using cursor_detail::Utf8CompleteLength;

// Column sizes are counted in characters; UTF-8 needs up to four bytes for each.
constexpr std::size_t kMaxUtf8BytesPerChar = 4;

// Bytes of a fixed-size numeric value in its record slot; 0 for every other type.
int FixedSlotSize(TFieldType Type) {
    switch (Type) {
    case ftSmallint:
    case ftWord:
    case ftBoolean:
        return 2;
    case ftInteger:
        return 4;
    case ftLargeint:
    case ftFloat:
    case ftCurrency:
        return 8;
    default:
        return 0;
    }
}

bool IsDateTimeType(TFieldType Type) {
    return Type == ftDate || Type == ftTime || Type == ftDateTime;
}

// Quirk WidenUnsignedIntegers (MariaDB Connector/ODBC): an UNSIGNED column is reported under the
// signed type of its size, whose C type would wrap or clamp the upper half of its range (INT
// UNSIGNED 4294967295 reads as -1; BIGINT UNSIGNED beyond 2^63 - 1 as 2^63 - 1 with a mere warning).
// Such a column is read as the next wider type; BIGINT UNSIGNED, which has none, as decimal text.
bool IsSignedIntegerType(SQLSMALLINT SqlType) {
    return SqlType == SQL_SMALLINT || SqlType == SQL_INTEGER || SqlType == SQL_BIGINT;
}

SQLSMALLINT WidenedUnsignedType(SQLSMALLINT SqlType, SQLULEN& ColumnSize) {
    switch (SqlType) {
    case SQL_SMALLINT:
        return SQL_INTEGER;
    case SQL_INTEGER:
        return SQL_BIGINT;
    default:
        ColumnSize = 20; // digits of 2^64 - 1
        return SQL_VARCHAR;
    }
}

} // namespace

int TODBCDataSet::GetSpecialDataSize(TFieldType FieldType, int Size) {
    if (IsDateTimeType(FieldType)) {
        return Size;
    }
    if (const int size = FixedSlotSize(FieldType); size > 0) {
        return size;
    }
    // The prefix names the record initialisation, as it always has.
    DatabaseError("TODBCDataSet.InternalInitRecord: " + LoadStr(SODBCNotImplemented));
}

int TODBCDataSet::GetDefDataSize(const TFieldDef& FieldDef) const {
    switch (FieldDef.DataType()) {
    case ftString:
    case ftMemo:
    case ftFmtMemo:
        return FieldDef.Size() + 1;
    case ftDate:
    case ftTime:
    case ftDateTime:
        return 8;
    default: {
        const int size = FixedSlotSize(FieldDef.DataType());
        return size > 0 ? size : FieldDef.Size();
    }
    }
}

void TODBCDataSet::InternalInitFieldDefs() {
    SQLSMALLINT columnCount = 0;
    CheckCall(SQLNumResultCols(FEngine->Stmt.Get(), &columnCount), "SQLNumResultCols");
    FieldDefs().Clear();
    FFieldValues.clear();
    FEngine->Rows = {};
    if (columnCount <= 0) {
        return;
    }
    const bool block = BlockMode();
    const auto rows = static_cast<std::size_t>(block ? FRowSetSize : 1);
    // A statement keeps the rowset size its handle was made with. Prepared under other settings, it
    // would fetch more rows than the buffers below hold: bring it down to what they hold.
    SQLULEN statementRows = 0; // zeroed: some drivers write only 32 bits of it
    if (SQL_SUCCEEDED(TraceODBC(SQLGetStmtOption(FEngine->Stmt.Get(), SQL_ROWSET_SIZE, &statementRows),
                                "SQLGetStmtOption(SQL_ROWSET_SIZE)")) &&
        statementRows > rows) {
        CheckCall(SQLSetStmtOption(FEngine->Stmt.Get(), SQL_ROWSET_SIZE, static_cast<SQLULEN>(rows)),
                  "SQLSetStmtOption(SQL_ROWSET_SIZE)");
    }
    const auto blobCap = static_cast<SQLULEN>(FBlobBufferSize);
    std::vector<std::size_t> slotSizes;
    for (SQLUSMALLINT column = 1; column <= static_cast<SQLUSMALLINT>(columnCount); ++column) {
        std::array<SQLCHAR, 33> nameBuffer{};
        SQLSMALLINT nameLength = 0;
        SQLSMALLINT sqlType = 0;
        SQLULEN columnSize = 0;
        SQLSMALLINT digits = 0;
        SQLSMALLINT nullable = 0;
        CheckCall(SQLDescribeCol(FEngine->Stmt.Get(), column, nameBuffer.data(),
                                 static_cast<SQLSMALLINT>(nameBuffer.size()), &nameLength, &sqlType,
                                 &columnSize, &digits, &nullable),
                  "SQLDescribeCol");
        nameBuffer.back() = 0;
        const char* rawName = reinterpret_cast<const char*>(nameBuffer.data());
        std::string columnName(rawName, Utf8CompleteLength(rawName, std::strlen(rawName)));
        if (columnName.empty()) {
            columnName = "unknown";
        }

        if (IsSignedIntegerType(sqlType)) {
            SQLLEN isUnsigned = SQL_FALSE;
            const SQLRETURN ret = TraceODBC(SQLColAttributes(FEngine->Stmt.Get(), column, SQL_COLUMN_UNSIGNED,
                                                             nullptr, 0, nullptr, &isUnsigned),
                                            "SQLColAttributes(SQL_COLUMN_UNSIGNED)");
            if (SQL_SUCCEEDED(ret) && isUnsigned == SQL_TRUE) {
                sqlType = WidenedUnsignedType(sqlType, columnSize);
            }
        }
        const TFieldType dataType = ConvertSQLToBDE(sqlType);
        const SQLSMALLINT cType = BindCTypeFor(sqlType);
        SQLULEN size = std::min(columnSize, blobCap);
        // Text arrives as UTF-8: room for the declared characters, still within the cap.
        if (cType == SQL_C_CHAR) {
            size = columnSize > blobCap / kMaxUtf8BytesPerChar ? blobCap : columnSize * kMaxUtf8BytesPerChar;
        }
        int dataSize = 0;
        int defSize = 0;
        if (dataType == ftString || dataType == ftMemo || dataType == ftBlob) {
            dataSize = static_cast<int>(size);
            defSize = dataSize;
        } else {
            dataSize = GetSpecialDataSize(dataType, static_cast<int>(size));
        }

        std::string name = columnName;
        for (int suffix = 1; FieldDefs().IndexOf(name) >= 0; ++suffix) {
            name = columnName + "_" + std::to_string(suffix);
        }
        TFieldDef* def = FieldDefs().Add(name, dataType, defSize, false, column);
        def->SetInternalCalcField(true);

        auto owned = std::make_unique<TFieldValueItem>();
        TFieldValueItem& item = *owned;
        const std::size_t fixedSize = FixedCTypeSize(cType);
        item.CType = cType;
        item.FieldType = dataType;
        item.DataSize = static_cast<std::size_t>(GetDefDataSize(*def));
        // A date, time or time stamp is bound as its structure, whatever length the driver reports;
        // a value of fixed size at the size of its C type.
        const std::size_t length = fixedSize > 0 ? fixedSize : static_cast<std::size_t>(dataSize) + 1;
        item.BindLength = static_cast<SQLLEN>(length);
        slotSizes.push_back(std::max(length, item.DataSize));
        FFieldValues.push_back(std::move(owned));
    }
    LayOutRows(slotSizes, rows);
    TRowArea& area = FEngine->Rows;
    if (block) {
        // SQLite ODBC takes the bind type as a statement attribute only.
        CheckCall(SQLSetStmtAttr(FEngine->Stmt.Get(), SQL_ATTR_ROW_BIND_TYPE,
                                 reinterpret_cast<SQLPOINTER>(static_cast<std::uintptr_t>(area.RowSize)), 0),
                  "SQLSetStmtAttr(SQL_ATTR_ROW_BIND_TYPE)");
    }
    for (std::size_t i = 0; i < FFieldValues.size(); ++i) {
        const TFieldValueItem& item = *FFieldValues[i];
        std::byte* row = area.Bytes.data();
        CheckCall(SQLBindCol(FEngine->Stmt.Get(), static_cast<SQLUSMALLINT>(i + 1), item.CType,
                             row + item.RecordOffset + 1, item.BindLength,
                             reinterpret_cast<SQLLEN*>(row + item.IndicatorOffset)),
                  "SQLBindCol");
    }
}

namespace {

constexpr std::size_t AlignedSize(std::size_t Size) {
    return (Size + 7) & ~std::size_t{7};
}

// Whether the record holds a column's value exactly as the driver writes it.
bool KeptAsWritten(const TFieldValueItem& Item) {
    return Item.FieldType != ftDate && Item.FieldType != ftTime && Item.FieldType != ftDateTime &&
           FixedCTypeSize(Item.CType) == Item.DataSize;
}

} // namespace

void TODBCDataSet::LayOutRows(const std::vector<std::size_t>& SlotSizes, std::size_t RowCount) {
    TRowArea& area = FEngine->Rows;
    std::size_t fixedCount = 0;
    for (const auto& item : FFieldValues) {
        fixedCount += KeptAsWritten(*item) ? 1 : 0;
    }
    // The front: the length/indicator cells of its columns side by side, then each column's null
    // indicator byte just before its slot.
    std::size_t offset = kRecordBodyOffset + fixedCount * sizeof(SQLLEN);
    std::size_t cell = kRecordBodyOffset;
    for (std::size_t i = 0; i < FFieldValues.size(); ++i) {
        TFieldValueItem& item = *FFieldValues[i];
        if (KeptAsWritten(item)) {
            item.IndicatorOffset = cell;
            item.RecordOffset = offset + sizeof(SQLLEN) - 1;
            cell += sizeof(SQLLEN);
            offset += sizeof(SQLLEN) + AlignedSize(SlotSizes[i]);
            area.Fixed.push_back({item.RecordOffset, item.DataSize});
        }
    }
    area.FixedEnd = offset;
    // Every other column: its cell, then its null indicator byte and slot.
    for (std::size_t i = 0; i < FFieldValues.size(); ++i) {
        TFieldValueItem& item = *FFieldValues[i];
        if (!KeptAsWritten(item)) {
            item.IndicatorOffset = offset;
            item.RecordOffset = offset + 2 * sizeof(SQLLEN) - 1;
            offset += 2 * sizeof(SQLLEN) + AlignedSize(SlotSizes[i]);
            area.Converted.push_back(
                {item.IndicatorOffset, item.RecordOffset, item.DataSize, item.FieldType});
        }
    }
    area.RowSize = offset;
    area.Bytes.assign(offset * RowCount, std::byte{0});
    // The front is copied as it is: its null indicator bytes say "has a value" until a NULL clears them.
    for (std::size_t row = 0; row < RowCount; ++row) {
        for (const TRowArea::TFixedColumn& column : area.Fixed) {
            area.Bytes[row * offset + column.RecordOffset] = static_cast<std::byte>('1');
        }
    }
}

std::size_t TODBCDataSet::RecordBufferSize() const {
    // The laid-out row; before any column, the header alone.
    return std::max(kRecordBodyOffset, FEngine->Rows.RowSize);
}

std::byte* TODBCDataSet::FieldSlot(TRecordBuffer Buffer, const TField* Field, std::size_t& DataSize) const {
    const int fieldNo = Field->FieldNo();
    if (Buffer == nullptr || fieldNo < 1 || static_cast<std::size_t>(fieldNo) > FFieldValues.size()) {
        DataSize = 0;
        return nullptr;
    }
    const TFieldValueItem& item = *FFieldValues[static_cast<std::size_t>(fieldNo - 1)];
    DataSize = item.DataSize;
    return Buffer + item.RecordOffset;
}

void TODBCDataSet::SlotWritten(TRecordBuffer Buffer, const TField* Field) const {
    std::size_t dataSize = 0;
    const std::byte* slot = FieldSlot(Buffer, Field, dataSize);
    if (slot == nullptr) {
        return;
    }
    const TFieldValueItem& item = *FFieldValues[static_cast<std::size_t>(Field->FieldNo() - 1)];
    if (item.FieldType == ftString) {
        StoreTextLength(Buffer, item.IndicatorOffset,
                        strnlen(reinterpret_cast<const char*>(slot + 1), dataSize));
    }
}

TRecordBuffer TODBCDataSet::AllocRecordBuffer() {
    // Zeroed, so that the flag of a buffer never filled reads bfCurrent rather than garbage.
    auto* buffer = new std::byte[RecordBufferSize()]();
    const std::int32_t fresh = -1;
    std::memcpy(buffer + kRecordRowNumberOffset, &fresh, sizeof fresh);
    return buffer;
}

void TODBCDataSet::FreeRecordBuffer(TRecordBuffer& Buffer) {
    delete[] Buffer;
    Buffer = nullptr;
}

void TODBCDataSet::DestroyFields() {
    FEngine->Rows = {};
    FFieldValues.clear();
    TDataSet::DestroyFields();
}

void TODBCDataSet::SetOrigin() {
    // The origin is information only: a driver that cannot tell leaves it empty.
    auto attribute = [this](SQLUSMALLINT Column, SQLUSMALLINT Attribute) {
        std::array<char, 33> text{};
        SQLSMALLINT length = 0;
        SQLLEN numeric = 0;
        const SQLRETURN ret =
            TraceODBC(SQLColAttributes(FEngine->Stmt.Get(), Column, Attribute, text.data(),
                                       static_cast<SQLSMALLINT>(text.size()), &length, &numeric),
                      "SQLColAttributes");
        if (!RetCodeIsSuccessful(ret) || ret == SQL_NO_DATA_FOUND) {
            return std::string();
        }
        text.back() = 0;
        return std::string(text.data());
    };
    for (int i = 0; i < FieldCount(); ++i) {
        TField* field = Fields()[i];
        const auto column = static_cast<SQLUSMALLINT>(i + 1);
        const std::string table = attribute(column, SQL_COLUMN_TABLE_NAME);
        if (!table.empty()) {
            field->SetOrigin(field->Origin() + table + ".");
        }
        const std::string name = attribute(column, SQL_COLUMN_NAME);
        if (!name.empty()) {
            field->SetOrigin(field->Origin() + name);
        }
    }
}

} // namespace quorda
