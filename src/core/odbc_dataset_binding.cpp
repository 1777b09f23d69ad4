// TODBCDataSet, parameter binding: each parameter's value converted into a buffer of its own and
// bound with SQLBindParameter, inline or to be sent at execution time.

#include "core/driver_quirks_p.h"
#include "odbc_dataset_p.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_dataset.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/datetime.h"
#include "quorda/rtl/messages.h"

#include <cstring>
#include <string>

namespace quorda {
namespace {

// The time-stamp fraction in nanoseconds from the milliseconds (the count read as the first three of
// nine fraction digits: 7 ms -> 007000000).
SQLUINTEGER FractionFromMilliseconds(unsigned Milliseconds) {
    return static_cast<SQLUINTEGER>(Milliseconds) * 1000000u;
}

// "yyyy-mm-dd hh:mm:ss.fff"
constexpr SQLULEN kTimestampColumnSize = 23;

} // namespace

SQLLEN StoreText(TParamValueItem& Item, SQLSMALLINT SqlType, std::string_view Text) {
    Item.CType = SQL_C_CHAR;
    Item.SqlType = SqlType;
    Item.Data.resize(Text.size() + 1);
    std::memcpy(Item.Data.data(), Text.data(), Text.size());
    Item.Data[Text.size()] = std::byte{0};
    return static_cast<SQLLEN>(Text.size());
}

SQLLEN StoreTimestamp(TParamValueItem& Item, TDateTime Value) {
    SQL_TIMESTAMP_STRUCT stamp{};
    std::uint16_t year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, msec = 0;
    DecodeDateTime(Value, year, month, day, hour, minute, second, msec);
    stamp.year = static_cast<SQLSMALLINT>(year);
    stamp.month = month;
    stamp.day = day;
    stamp.hour = hour;
    stamp.minute = minute;
    stamp.second = second;
    stamp.fraction = FractionFromMilliseconds(msec);
    return StoreValue(Item, SQL_C_TIMESTAMP, SQL_TIMESTAMP, stamp);
}

void TODBCDataSet::Translate(const char* Src, char* Dest, bool ToOem) {
    // Text is UTF-8 throughout; there is no OEM code page to convert to.
    if (Src != Dest) {
        std::memmove(Dest, Src, std::strlen(Src) + 1);
    }
}

SQLLEN TODBCDataSet::ConvertData(TODBCParam* Param, TParamValueItem& Item) {
    const TFieldType dataType = Param->DataType();
    // Text of a string or memo parameter: the value and a terminating zero (a formatted memo's
    // native data carries none, its buffer still gets one so the text stays bounded), translated on
    // request.
    auto storeText = [&](SQLSMALLINT SqlType) {
        const std::string text = Param->GetAsMemo();
        const SQLLEN length = StoreText(Item, SqlType, text);
        if (FTranslate && Param->Translate()) {
            Translate(text.c_str(), reinterpret_cast<char*>(Item.Data.data()), true);
        }
        return length;
    };

    switch (dataType) {
    case ftUnknown:
    case ftBlob:
    case ftGraphic: {
        Item.CType = SQL_C_BINARY;
        Item.SqlType = SQL_LONGVARBINARY;
        const int size = Param->GetDataSize();
        Item.Data.assign(static_cast<std::size_t>(size), std::byte{0});
        Param->GetData(Item.Data.data());
        return size;
    }
    case ftString:
        return storeText(SQL_CHAR);
    case ftMemo:
    case ftFmtMemo:
        return storeText(SQL_LONGVARCHAR);
    case ftSmallint:
    case ftInteger:
    case ftWord:
    case ftBoolean:
        return StoreValue(Item, SQL_C_LONG, SQL_INTEGER, static_cast<SQLINTEGER>(Param->AsInteger()));
    case ftLargeint:
        return StoreValue(Item, SQL_C_SBIGINT, SQL_BIGINT,
                          static_cast<SQLBIGINT>(Param->GetAsVariant().AsInt64()));
    case ftFloat:
        return StoreValue(Item, SQL_C_DOUBLE, SQL_DOUBLE, Param->AsFloat());
    case ftCurrency:
        return StoreText(Item, SQL_CHAR, Param->AsString());
    case ftDate: {
        SQL_DATE_STRUCT date{};
        std::uint16_t year = 0, month = 0, day = 0;
        DecodeDate(Param->AsDate(), year, month, day);
        date.year = static_cast<SQLSMALLINT>(year);
        date.month = month;
        date.day = day;
        return StoreValue(Item, SQL_C_DATE, SQL_DATE, date);
    }
    case ftTime: {
        SQL_TIME_STRUCT time{};
        std::uint16_t hour = 0, minute = 0, second = 0, msec = 0;
        DecodeTime(Param->AsTime(), hour, minute, second, msec);
        time.hour = hour;
        time.minute = minute;
        time.second = second;
        return StoreValue(Item, SQL_C_TIME, SQL_TIME, time);
    }
    case ftDateTime:
        return StoreTimestamp(Item, Param->AsDateTime());
    default:
        throw EODBCDatabaseError("Parameter type not supported");
    }
}

void TODBCDataSet::CheckParamCount() {
    const int count = GetParamsCount();
    // Only a statement beyond the smallest known driver limit costs the question to the driver.
    if (count <= kSmallestKnownMaxParams) {
        return;
    }
    std::int32_t limit = kODBCMaxParams;
    if (count <= kODBCMaxParams && FODBCDatabase != nullptr && FODBCDatabase->Connected()) {
        limit = DriverQuirksOf(GetDBC()).MaxParams;
    }
    if (count > limit) {
        DatabaseErrorFmt(LoadStr(SODBCTooManyParams), count, limit);
    }
}

void TODBCDataSet::BindAllParam() {
    CheckParamCount();
    const auto count = static_cast<std::size_t>(GetParamsCount());
    if (FParamValues.size() != count) {
        InternalFreeStmt(SQL_RESET_PARAMS);
        FParamValues.clear();
        FParamValues.resize(count);
    }
    const SQLLEN atExecSize = FODBCDatabase != nullptr ? FODBCDatabase->ParamAtExecSize() : 8192;
    bool textNulChecked = false;
    bool textRejectsNul = false;
    for (std::size_t i = 0; i < count; ++i) {
        TODBCParam* param = Params().Items(static_cast<int>(i));
        std::unique_ptr<TParamValueItem>& owned = FParamValues[i];
        if (!owned) {
            owned = std::make_unique<TParamValueItem>();
        }
        TParamValueItem& item = *owned;
        // Converted into the item's own buffer, which keeps its address while the value fits.
        const SQLLEN length = ConvertData(param, item);
        // Text is bound with its byte length, so a NUL byte inside arrives; a driver that cannot
        // take one gets a clear refusal instead of a cut or rejected value.
        if (item.CType == SQL_C_CHAR && !param->IsNull() && length > 0 &&
            std::memchr(item.Data.data(), 0, static_cast<std::size_t>(length)) != nullptr) {
            if (!textNulChecked) {
                textRejectsNul = DriverQuirksOf(GetDBC()).TextRejectsNul;
                textNulChecked = true;
            }
            if (textRejectsNul) {
                DatabaseErrorFmt(LoadStr(SODBCParamHoldsNul), param->Name());
            }
        }
        // Drivers are handed a valid address even for an empty value.
        if (item.Data.empty()) {
            item.Data.push_back(std::byte{0});
        }
        SQLULEN columnSize = static_cast<SQLULEN>(length < 0 ? 0 : length);
        if (item.SqlType == SQL_TIMESTAMP) {
            // The size of a time stamp is that of its text with milliseconds, not of the structure:
            // drivers cut the text to it (SQLite ODBC drops the seconds at 16).
            columnSize = kTimestampColumnSize;
        }
        const bool atExecution = !param->IsNull() && length > atExecSize;
        if (param->IsNull()) {
            item.LengthIndicator = SQL_NULL_DATA;
        } else if (atExecution) {
            item.LengthIndicator = SqlLenDataAtExec(length);
        } else {
            item.LengthIndicator = length;
        }
        item.ParamIndex = static_cast<std::int32_t>(i);
        if (atExecution && item.SqlType == SQL_CHAR) {
            item.SqlType = SQL_LONGVARCHAR;
            columnSize *= 2;
        }
        const bool text =
            item.SqlType == SQL_LONGVARCHAR || item.SqlType == SQL_CHAR || item.SqlType == SQL_VARCHAR;
        // Text bound before under the same types keeps its larger column size: a shorter value fits
        // it, and repeated executions with texts of varying length need not bind again.
        const bool sameTypes = item.Bound && !item.BoundAtExecution && !atExecution &&
                               KeepsBinding(item.CType) && item.BoundCType == item.CType &&
                               item.BoundSqlType == item.SqlType;
        if (sameTypes && text && columnSize < item.BoundColumnSize) {
            columnSize = item.BoundColumnSize;
        }
        if (sameTypes && columnSize == item.BoundColumnSize && item.BoundData == item.Data.data()) {
            continue;
        }
        const auto number = static_cast<SQLUSMALLINT>(i + 1);
        SQLRETURN ret;
        if (atExecution) {
            // The value pointer is the token SQLParamData hands back: the item's own index.
            ret = SQLBindParameter(FEngine->Stmt.Get(), number, SQL_PARAM_INPUT, item.CType, item.SqlType,
                                   columnSize, 0, &item.ParamIndex, 0, &item.LengthIndicator);
        } else {
            ret = SQLBindParameter(FEngine->Stmt.Get(), number, SQL_PARAM_INPUT, item.CType, item.SqlType,
                                   columnSize, 0, item.Data.data(), static_cast<SQLLEN>(columnSize),
                                   &item.LengthIndicator);
        }
        item.Bound = false;
        CheckStmtCall(ret, "SQLBindParameter");
        item.Bound = true;
        item.BoundAtExecution = atExecution;
        item.BoundCType = item.CType;
        item.BoundSqlType = item.SqlType;
        item.BoundColumnSize = columnSize;
        item.BoundData = item.Data.data();
    }
}

} // namespace quorda
