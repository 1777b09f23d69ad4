// TODBCDataSet, fetching: opening the cursor, stepping it forwards and backwards (scrollable,
// forward-only or a rowset at a time), numbering the rows it passes, copying a fetched row into a
// record buffer in the framework's native formats and reading fields back out of it.
//
// Row numbering: rows are numbered relative to an origin, the first row (origin 1: 0, 1, 2, ...) or
// the last (origin -1: 0, -1, -2, ...). The crack says where the ODBC cursor stands relative to the
// numbered row: -1 before it, 0 on it, 1 after it. A step that finds no row leaves the number alone,
// so that a step back in the other direction finds the same number again.

#include "odbc_cursor_p.h"
#include "odbc_dataset_p.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_dataset.h"
#include "quorda/db/db_consts.h"
#include "quorda/odbc/odbc_check.h"
#include "quorda/rtl/messages.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace quorda {

// ---- conversions of the per-row copy

namespace cursor_detail {

namespace {

// The day number (TTimeStamp::Date) of 1970-01-01, where std::chrono::sys_days counts from.
constexpr std::int32_t kSysDaysDayNumber = DateDelta + 25569;

// The conversions below run for every date and time stamp fetched; their checks are cheap enough to
// sit inline in the per-row copy, and only an impossible value calls into the rtl for its error.

// TTimeStamp::Date of a date (0001-01-01 is day 1). Raises the date-encode error for a date that does
// not exist, as encoding it would. A plain date is counted on the civil calendar; the month's length is
// looked up only past its 28th.
inline std::int32_t TimeStampDate(int Year, int Month, int Day) {
    if (Year >= 1 && Year <= 9999 && Month >= 1 && Month <= 12 && Day >= 1 &&
        (Day <= 28 || Day <= DaysInAMonth(Year, Month))) {
        const std::chrono::sys_days date{std::chrono::year(Year) / static_cast<unsigned>(Month) /
                                         static_cast<unsigned>(Day)};
        return static_cast<std::int32_t>(date.time_since_epoch().count()) + kSysDaysDayNumber;
    }
    return static_cast<std::int32_t>(EncodeDate(Year, Month, Day)) + DateDelta;
}

// Milliseconds since midnight. Raises the time-encode error for an impossible time.
inline std::int32_t TimeStampTime(int Hour, int Minute, int Second, int MSec) {
    if (Hour < 0 || Hour > 23 || Minute < 0 || Minute > 59 || Second < 0 || Second > 59 || MSec < 0 ||
        MSec > 999) {
        EncodeTime(Hour, Minute, Second, MSec);
    }
    return ((Hour * 60 + Minute) * 60 + Second) * 1000 + MSec;
}

// Milliseconds of a time-stamp fraction (nanoseconds): the decimal digits padded on the left to nine
// and the first three taken, so 5000000 gives 5 and 123456789 gives 123. Below 10^9 that is
// Fraction / 10^6; a larger value (beyond what a driver may send) has more digits, and its first three
// are still the answer.
inline int FractionMilliseconds(SQLUINTEGER Fraction) {
    if (Fraction < 1000000000) {
        return static_cast<int>(Fraction / 1000000);
    }
    SQLUINTEGER divisor = 1000000;
    while (Fraction / divisor >= 1000) {
        divisor *= 10;
    }
    return static_cast<int>(Fraction / divisor);
}

} // namespace

void FieldReadSizes(const TField& Field, const TFieldValueItem& Item, std::size_t& Count,
                    std::size_t& Clear) {
    const auto dataSize = static_cast<std::size_t>(std::max(Field.DataSize(), 0));
    Count = Field.DataType() == ftString && dataSize > 0 ? dataSize - 1 : dataSize;
    // A persistent field may be wider than the column now is: never read past the slot.
    Count = std::min(Count, Item.DataSize);
    Clear = dataSize - Count;
}

} // namespace cursor_detail

using namespace cursor_detail;

// ---- opening

void TODBCDataSet::ResetNumbering(std::int32_t Origin, std::int32_t Crack) {
    FCurrentRow = kRowNotNumbered;
    FRowNumbered = false;
    FOrigin = Origin;
    FCrack = Crack;
    FEngine->CurrentRowBlobs.Values.clear();
}

void TODBCDataSet::InternalOpen() {
    FRecordCountCache = -1;
    ResetNumbering(1, -1);
    InternalExecSQL();
    InternalInitFieldDefs();
    // Checked before the first fetch, whose error would not say what is wrong.
    if (FieldDefs().Count() == 0) {
        DatabaseError(LoadStr(SODBCNoResultSet));
    }
    if (DefaultFields()) {
        CreateFields();
    }
    BindFields(true);
    PrepareFieldReads();
    if (FODBCDatabase != nullptr && !FODBCDatabase->IgnoreOriginInfo()) {
        SetOrigin();
    }
}

void TODBCDataSet::OpenCursor(bool InfoQuery) {
    // Describing the columns needs the executed statement: always open it for real.
    TDataSet::OpenCursor(false);
}

void TODBCDataSet::ImmediatelyOpen() {
    if (!Active()) {
        Open();
        return;
    }
    ExecuteAgain();
}

void TODBCDataSet::ExecuteAgain() {
    InternalFreeStmt(SQL_CLOSE);
    FRecordCountCache = -1;
    InternalExecSQL();
}

TBookmark TODBCDataSet::SilentClose() {
    TBookmark bookmark = GetBookmark();
    CheckCall(SQLFreeStmt(FEngine->Stmt.Get(), SQL_CLOSE), "SQLFreeStmt(SQL_CLOSE)");
    return bookmark;
}

void TODBCDataSet::SilentOpen(const TBookmark& Bookmark) {
    FRecordCountCache = -1;
    InternalExecSQL();
    InternalGotoBookmark(Bookmark.Data());
    if (!Bookmark.IsNil()) {
        Resync({});
    }
}

int TODBCDataSet::GetRecNo() {
    CheckActive();
    return -1;
}

void TODBCDataSet::InternalHandleException() {
    TDataSet::InternalHandleException();
}

// ---- moving the cursor

void TODBCDataSet::RaiseForwardOnly() {
    DatabaseError(SUniDirectional);
}

// Inline in FetchStep, which makes this step for every row of a scrollable cursor.
[[gnu::always_inline]] inline SQLRETURN TODBCDataSet::ScrollFetch(SQLUSMALLINT Orientation, SQLLEN Offset) {
    // Rowsets are forward-only: a scrollable cursor fetches one row, with one status cell.
    SQLULEN fetched = 0;
    return CheckCall(
        SQLExtendedFetch(FEngine->Stmt.Get(), Orientation, Offset, &fetched, &FEngine->SingleRowStatus),
        "SQLExtendedFetch");
}

SQLRETURN TODBCDataSet::ExtendedFetch(SQLUSMALLINT Orientation, SQLLEN Offset) {
    CheckScrollable();
    return ScrollFetch(Orientation, Offset);
}

void TODBCDataSet::InternalFirst() {
    if (FForwardOnlyCursor) {
        // The framework refills the ring from here, and the cursor cannot go back to its start:
        // the statement runs again.
        ExecuteAgain();
        ResetNumbering(1, -1);
        return;
    }
    ExtendedFetch(SQL_FETCH_FIRST, 0);
    ExtendedFetch(SQL_FETCH_PRIOR, 0);
    ResetNumbering(1, -1);
}

void TODBCDataSet::InternalLast() {
    ExtendedFetch(SQL_FETCH_LAST, 0);
    ExtendedFetch(SQL_FETCH_NEXT, 0);
    ResetNumbering(-1, 1);
}

// FetchStep and CopyRowToBuffer run for every row fetched: inline in GetRecord, their only caller.
[[gnu::always_inline]] inline TGetResult TODBCDataSet::FetchStep(TRecordBuffer Buffer,
                                                                 SQLUSMALLINT Orientation) {
    SQLRETURN ret = SQL_SUCCESS;
    // The row of the bindings the fetch filled: a rowset's current one, or the only one.
    std::size_t row = 0;
    if (!FForwardOnlyCursor) {
        ret = ScrollFetch(Orientation, 0);
    } else if (FCrack == 1) {
        // A forward-only cursor that reported its end stays there, whichever way the step goes: no row
        // can follow, and after a rowset fetch's SQL_NO_DATA the driver manager refuses another fetch
        // (S1010). The answer is the one a fetch gave before: the end going forward, the start going
        // back.
        if (Orientation == SQL_FETCH_NEXT) {
            return grEOF;
        }
        FCrack = -1;
        return grBOF;
    } else if (BlockMode() && Orientation == SQL_FETCH_NEXT) {
        if (FRowsetIndex != -1 && FRowsetIndex < static_cast<std::int64_t>(FRowsFetched) - 1) {
            ++FRowsetIndex;
        } else {
            // A driver that finds no more rows need not touch the counter: a stale count would replay
            // the last rowset.
            FRowsFetched = 0;
            ret = CheckCall(SQLExtendedFetch(FEngine->Stmt.Get(), SQL_FETCH_NEXT, 0, &FRowsFetched,
                                             FEngine->RowStatus.data()),
                            "SQLExtendedFetch");
            FRowsetIndex = 0;
        }
        row = static_cast<std::size_t>(FRowsetIndex);
    } else {
        // Forward-only: a step back moves forward as well.
        ret = CheckCall(SQLFetch(FEngine->Stmt.Get()), "SQLFetch");
        row = BoundRow();
    }
    if (ret == SQL_NO_DATA_FOUND) {
        if (Orientation != SQL_FETCH_NEXT) {
            FCrack = -1;
            return grBOF;
        }
        FCrack = 1;
        return grEOF;
    }
    if (!FRowNumbered) {
        FCurrentRow = 0;
        FRowNumbered = true;
    } else if (Orientation == SQL_FETCH_NEXT) {
        if (FCrack != -1) {
            ++FCurrentRow;
        }
    } else if (Orientation == SQL_FETCH_PRIOR) {
        if (FCrack != 1) {
            --FCurrentRow;
        }
    }
    FCrack = 0;
    CopyRowToBuffer(Buffer, row);
    Buffer[kRecordFlagOffset] = static_cast<std::byte>(bfCurrent);
    return grOK;
}

TGetResult TODBCDataSet::GetRecord(TRecordBuffer Buffer, TGetMode GetMode, bool DoCheck) {
    SQLUSMALLINT orientation = SQL_FETCH_NEXT;
    switch (GetMode) {
    case gmCurrent:
        switch (FCrack) {
        case 0:
            CopyRowToBuffer(Buffer, BoundRow());
            return grOK;
        case -1:
            return grBOF;
        case 1:
            return grEOF;
        default:
            return grError;
        }
    case gmNext:
        orientation = SQL_FETCH_NEXT;
        break;
    case gmPrior:
        orientation = SQL_FETCH_PRIOR;
        break;
    }
    TGetResult result = FetchStep(Buffer, orientation);
    while (Filtered() && result == grOK && !DoFilter(Buffer)) {
        result = FetchStep(Buffer, orientation);
    }
    return result;
}

// ---- the row into the record buffer

[[gnu::always_inline]] inline void TODBCDataSet::CopyRowToBuffer(TRecordBuffer Buffer, std::size_t Row) {
    std::memcpy(Buffer + kRecordRowNumberOffset, &FCurrentRow, sizeof FCurrentRow);
    const TRowArea& area = FEngine->Rows;
    const std::byte* row = area.Row(Row);
    // The values kept as the driver wrote them come over in one piece; a NULL among them leaves a
    // cleared slot.
    std::memcpy(Buffer + kRecordBodyOffset, row + kRecordBodyOffset, area.FixedEnd - kRecordBodyOffset);
    const std::byte* cells = row + kRecordBodyOffset;
    for (std::size_t i = 0; i < area.Fixed.size(); ++i) {
        if (TRowArea::Indicator(cells, i * sizeof(SQLLEN)) == SQL_NULL_DATA) {
            std::memset(Buffer + area.Fixed[i].RecordOffset, 0, 1 + area.Fixed[i].DataSize);
        }
    }
    for (const TRowArea::TConvertedColumn& item : area.Converted) {
        const std::byte* data = row + item.RecordOffset + 1;
        const SQLLEN indicator = TRowArea::Indicator(row, item.IndicatorOffset);
        std::byte* slot = Buffer + item.RecordOffset + 1;
        if (indicator == SQL_NULL_DATA) {
            std::memset(slot - 1, 0, 1 + item.DataSize);
            continue;
        }
        slot[-1] = static_cast<std::byte>('1');
        switch (item.FieldType) {
        case ftString: {
            // The bound text ends at its zero; a value cut at the buffer's end loses its half character.
            const auto* text = reinterpret_cast<const char*>(data);
            const std::size_t capacity = item.DataSize - 1;
            std::size_t length = 0;
            if (indicator >= 0 && static_cast<std::size_t>(indicator) <= capacity) {
                length = static_cast<std::size_t>(indicator);
            } else {
                length = Utf8CompleteLength(text, strnlen(text, capacity));
            }
            // Only a value ending in a blank asks whether blanks are trimmed.
            if (length > 0 && static_cast<unsigned char>(text[length - 1]) <= ' ' &&
                FODBCDatabase != nullptr && FODBCDatabase->StringTrimRight()) {
                while (length > 0 && static_cast<unsigned char>(text[length - 1]) <= ' ') {
                    --length;
                }
            }
            // Readers stop at the first zero, so one zero ends the value; the bytes after it may be
            // another row's.
            std::memcpy(slot, text, length);
            slot[length] = std::byte{0};
            StoreTextLength(Buffer, item.IndicatorOffset, length);
            break;
        }
        case ftDate: {
            SQL_DATE_STRUCT date;
            std::memcpy(&date, data, sizeof date);
            const std::int32_t days = TimeStampDate(date.year, date.month, date.day);
            std::memset(slot, 0, item.DataSize);
            std::memcpy(slot, &days, sizeof days);
            break;
        }
        case ftTime: {
            SQL_TIME_STRUCT time;
            std::memcpy(&time, data, sizeof time);
            const std::int32_t msecs = TimeStampTime(time.hour, time.minute, time.second, 0);
            std::memset(slot, 0, item.DataSize);
            std::memcpy(slot, &msecs, sizeof msecs);
            break;
        }
        case ftDateTime: {
            SQL_TIMESTAMP_STRUCT stamp;
            std::memcpy(&stamp, data, sizeof stamp);
            const std::int32_t days = TimeStampDate(stamp.year, stamp.month, stamp.day);
            const std::int32_t msecs =
                TimeStampTime(stamp.hour, stamp.minute, stamp.second, FractionMilliseconds(stamp.fraction));
            const double value = static_cast<double>(days) * MSecsPerDay + msecs;
            std::memcpy(slot, &value, sizeof value);
            break;
        }
        default:
            std::memcpy(slot, data, item.DataSize);
            break;
        }
    }
}

// ---- reading fields

bool TODBCDataSet::GetStateRecBuf(TRecordBuffer& RecBuf) {
    switch (State()) {
    case dsFilter:
        RecBuf = FFilterBuffer;
        break;
    case dsBrowse:
    case dsEdit:
    case dsInsert:
    case dsSetKey:
    case dsCalcFields:
    case dsNewValue:
    case dsOldValue:
        RecBuf = IsEmpty() ? nullptr : ActiveBuffer();
        break;
    default:
        RecBuf = nullptr;
        break;
    }
    return RecBuf != nullptr;
}

void TODBCDataSet::PrepareFieldReads() {
    for (int i = 0; i < Fields().Count(); ++i) {
        TField* field = Fields()[i];
        const int fieldNo = field->FieldNo();
        if (field->FieldKind() == fkData && fieldNo >= 1 &&
            static_cast<std::size_t>(fieldNo) <= FFieldValues.size()) {
            TFieldValueItem& item = *FFieldValues[static_cast<std::size_t>(fieldNo - 1)];
            item.ReadField = field;
            FieldReadSizes(*field, item, item.ReadCount, item.ReadClear);
            // A text's length is kept in its length/indicator cell of the record.
            const std::ptrdiff_t lengthOffset =
                item.FieldType == ftString ? static_cast<std::ptrdiff_t>(item.IndicatorOffset) : -1;
            SetFieldSlot(field, static_cast<std::ptrdiff_t>(item.RecordOffset), item.ReadCount, lengthOffset);
        }
    }
}

const std::byte* TODBCDataSet::ActiveValue(const TField* Field, const TFieldValueItem*& Item) {
    TRecordBuffer record = nullptr;
    if (!GetActiveRecBuf(record)) {
        return nullptr;
    }
    // Definitions are numbered by column, so the field number finds the binding and its slot; a field
    // without a column of its own (calculated, unbound) has no value here.
    const int fieldNo = Field->FieldNo();
    if (fieldNo < 1 || static_cast<std::size_t>(fieldNo) > FFieldValues.size()) {
        return nullptr;
    }
    Item = FFieldValues[static_cast<std::size_t>(fieldNo - 1)].get();
    const std::byte* indicator = record + Item->RecordOffset;
    return *indicator == static_cast<std::byte>('1') ? indicator + 1 : nullptr;
}

TFieldDataView TODBCDataSet::PeekFieldData(const TField* Field) {
    const TFieldValueItem* item = nullptr;
    const std::byte* value = ActiveValue(Field, item);
    if (value == nullptr) {
        return {nullptr, 0, true};
    }
    std::size_t count = item->ReadCount;
    if (Field != item->ReadField) {
        std::size_t clear = 0;
        FieldReadSizes(*Field, *item, count, clear);
    }
    return {value, count, true};
}

bool TODBCDataSet::GetFieldData(TField* Field, void* Buffer) {
    const TFieldValueItem* item = nullptr;
    const std::byte* value = ActiveValue(Field, item);
    if (value == nullptr) {
        return false;
    }
    if (Buffer != nullptr) {
        std::size_t count = item->ReadCount;
        std::size_t clear = item->ReadClear;
        if (Field != item->ReadField) {
            FieldReadSizes(*Field, *item, count, clear);
        }
        // Runs once per field read: the common widths copy without a library call.
        auto* out = static_cast<std::byte*>(Buffer);
        if (count == 4) {
            std::memcpy(out, value, 4);
        } else if (count == 8) {
            std::memcpy(out, value, 8);
        } else {
            std::memcpy(out, value, count);
        }
        if (clear > 0) {
            std::memset(out + count, 0, clear);
        }
    }
    return true;
}

bool TODBCDataSet::DoFilter(TRecordBuffer Buffer) {
    FFilterBuffer = Buffer;
    return FilterRecord();
}

} // namespace quorda
