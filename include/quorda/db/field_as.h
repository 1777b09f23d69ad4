#pragma once

// Typed reads of a field: TField::As<T>() and TField::As<std::optional<T>>().
//
// Where the dataset keeps the value in a slot of its record buffer (TField::DataView), the reads
// here take it from there as its C++ type: no copy, no allocation, no variant. Every other case goes
// through the field's classic accessor; the results are the same either way.

#include "quorda/db/field.h"
#include "quorda/rtl/currency.h"
#include "quorda/rtl/datetime.h"

#include <chrono>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace quorda {

// How a field's value is read as T: a specialisation provides
//   static std::optional<T> Read(const TField& Field);   // std::nullopt for NULL
// and As<T> works for that T at once. A reader may test for NULL and read the value in one step
// (one look at the record buffer), and converts exactly as AsString, AsInteger, ... do. An
// unsupported T does not compile.
template <typename T>
struct TFieldAs;

// The reads below are inline so that reading a slot costs a few loads; their fallbacks stay calls.
#if defined(__GNUC__) || defined(__clang__)
#define QUORDA_READ_FALLBACK __attribute__((noinline, cold))
#define QUORDA_READ_INLINE __attribute__((always_inline))
#else
#define QUORDA_READ_FALLBACK
#define QUORDA_READ_INLINE
#endif

namespace detail {

template <typename T, T (TField::*Get)() const>
struct TFieldAsAccessor {
    QUORDA_READ_FALLBACK static std::optional<T> Read(const TField& Field) {
        if (Field.IsNull()) {
            return std::nullopt;
        }
        return (Field.*Get)();
    }
};

template <typename T>
struct IsOptional : std::false_type {};
template <typename T>
struct IsOptional<std::optional<T>> : std::true_type {};

} // namespace detail

// A date-time without a time zone, to the millisecond, as the record buffer holds it.
using TLocalMSecs = std::chrono::local_time<std::chrono::milliseconds>;

namespace detail {

template <typename Native>
Native LoadNative(const std::byte* Data) {
    Native value;
    std::memcpy(&value, Data, sizeof value);
    return value;
}

// Whether View is the dataset's slot of a value stored in Size bytes (or a NULL there).
inline bool SlotOfSize(const TFieldDataView& View, std::size_t Size) {
    return View.Direct && (View.Data == nullptr || View.Size == Size);
}

// A value stored in the slot as Native, converted to T; the classic accessor Get when the dataset
// keeps no slot or the field reads another width than Native's.
template <typename T, typename Native, T (TField::*Get)() const>
QUORDA_READ_INLINE inline std::optional<T> ReadSlot(const TField& Field) {
    const TFieldDataView view = Field.DataView();
    if (!SlotOfSize(view, sizeof(Native))) {
        return TFieldAsAccessor<T, Get>::Read(Field);
    }
    if (view.Data == nullptr) {
        return std::nullopt;
    }
    return static_cast<T>(LoadNative<Native>(view.Data));
}

// Whether View is the slot of a date, time or date-time field of DataType (or a NULL there).
inline bool IsDateTimeSlot(const TFieldDataView& View, TFieldType DataType) {
    switch (DataType) {
    case ftDate:
    case ftTime:
        return SlotOfSize(View, sizeof(std::int32_t));
    case ftDateTime:
        return SlotOfSize(View, sizeof(double));
    default:
        return false;
    }
}

// The TDateTime of such a slot holding a value.
inline TDateTime SlotDateTime(const TFieldDataView& View, TFieldType DataType) {
    TDateTimeRec rec{};
    std::memcpy(&rec, View.Data, View.Size);
    return DateTimeRecToDateTime(DataType, rec);
}
// A date, time or date-time slot as its TDateTime.
QUORDA_API std::optional<TDateTime> ReadDateTimeSlot(const TField& Field);
// The same slot as milliseconds since 1970-01-01, local time.
QUORDA_API std::optional<TLocalMSecs> ReadLocalMSecs(const TField& Field);
// The day number (TTimeStamp::Date) of 1970-01-01, where std::chrono's clocks count from.
inline constexpr std::int64_t kEpochDayNumber = DateDelta + 25569;

} // namespace detail

// A text field's value in its slot of the record buffer; any other value (or a dataset without
// slots) as the field's text, kept by the field. Valid until the cursor moves, the record changes or
// the field is read this way again.
template <>
struct QUORDA_API TFieldAs<std::string_view> {
    QUORDA_READ_INLINE static std::optional<std::string_view> Read(const TField& Field) {
        if (Field.DataType() == ftString || Field.DataType() == ftFixedChar) {
            const TFieldDataView view = Field.DataView();
            if (view.Direct) {
                if (view.Data == nullptr) {
                    return std::nullopt;
                }
                return Field.SlotText(view);
            }
        }
        return ReadText(Field);
    }

private:
    // Any other value, or a dataset without slots: the field's text, kept by the field.
    static std::optional<std::string_view> ReadText(const TField& Field);
};

template <>
struct TFieldAs<std::string> {
    static std::optional<std::string> Read(const TField& Field) {
        if (Field.DataType() == ftString || Field.DataType() == ftFixedChar) {
            const std::optional<std::string_view> text = TFieldAs<std::string_view>::Read(Field);
            if (!text) {
                return std::nullopt;
            }
            return std::string(*text);
        }
        return detail::TFieldAsAccessor<std::string, &TField::AsString>::Read(Field);
    }
};

namespace detail {

// A whole-number field as Int straight from its slot, where the slot's width fits Int; through the
// classic accessor Get otherwise (a 64-bit value read as 32 bits takes AsInteger's range check).
template <typename Int, Int (TField::*Get)() const>
QUORDA_READ_INLINE inline std::optional<Int> ReadWholeNumber(const TField& Field) {
    switch (Field.DataType()) {
    case ftLargeint:
        if constexpr (sizeof(Int) >= sizeof(std::int64_t)) {
            return ReadSlot<Int, std::int64_t, Get>(Field);
        }
        break;
    case ftInteger:
    case ftAutoInc:
        return ReadSlot<Int, std::int32_t, Get>(Field);
    case ftSmallint:
        return ReadSlot<Int, std::int16_t, Get>(Field);
    case ftWord:
        return ReadSlot<Int, std::uint16_t, Get>(Field);
    default:
        break;
    }
    return TFieldAsAccessor<Int, Get>::Read(Field);
}

} // namespace detail

template <>
struct TFieldAs<std::int32_t> {
    QUORDA_READ_INLINE static std::optional<std::int32_t> Read(const TField& Field) {
        return detail::ReadWholeNumber<std::int32_t, &TField::AsInteger>(Field);
    }
};

template <>
struct TFieldAs<std::int64_t> {
    QUORDA_READ_INLINE static std::optional<std::int64_t> Read(const TField& Field) {
        return detail::ReadWholeNumber<std::int64_t, &TField::AsLargeInt>(Field);
    }
};

// Also TDateTime, which is a double: a date or time field reads as its TDateTime.
template <>
struct TFieldAs<double> {
    QUORDA_READ_INLINE static std::optional<double> Read(const TField& Field) {
        switch (Field.DataType()) {
        case ftFloat:
        case ftCurrency:
            return detail::ReadSlot<double, double, &TField::AsFloat>(Field);
        case ftInteger:
        case ftAutoInc:
            return detail::ReadSlot<double, std::int32_t, &TField::AsFloat>(Field);
        case ftLargeint:
            return detail::ReadSlot<double, std::int64_t, &TField::AsFloat>(Field);
        case ftDate:
        case ftTime:
        case ftDateTime:
            return detail::ReadDateTimeSlot(Field);
        default:
            return detail::TFieldAsAccessor<double, &TField::AsFloat>::Read(Field);
        }
    }
};

template <>
struct TFieldAs<bool> {
    QUORDA_READ_INLINE static std::optional<bool> Read(const TField& Field) {
        const TFieldDataView view = Field.DataView();
        if (Field.DataType() == ftBoolean && detail::SlotOfSize(view, sizeof(std::int16_t))) {
            if (view.Data == nullptr) {
                return std::nullopt;
            }
            return detail::LoadNative<std::int16_t>(view.Data) != 0;
        }
        return detail::TFieldAsAccessor<bool, &TField::AsBoolean>::Read(Field);
    }
};

// Dates and date-times to the millisecond, without the round trip through a TDateTime.
template <>
struct TFieldAs<TLocalMSecs> {
    QUORDA_READ_INLINE static std::optional<TLocalMSecs> Read(const TField& Field) {
        // A date-time slot holds whole milliseconds since 0001-01-01 (day number 1) as a double.
        const TFieldDataView view = Field.DataView();
        if (Field.DataType() == ftDateTime && detail::SlotOfSize(view, sizeof(double))) {
            if (view.Data == nullptr) {
                return std::nullopt;
            }
            const auto msecs = static_cast<std::int64_t>(detail::LoadNative<double>(view.Data));
            return TLocalMSecs{std::chrono::milliseconds{msecs - detail::kEpochDayNumber * MSecsPerDay}};
        }
        return detail::ReadLocalMSecs(Field);
    }
};

template <>
struct TFieldAs<Currency> : detail::TFieldAsAccessor<Currency, &TField::AsCurrency> {};
template <>
struct TFieldAs<TBytes> : detail::TFieldAsAccessor<TBytes, &TField::AsBytes> {};

template <typename T>
QUORDA_READ_INLINE inline T TField::As() const {
    if constexpr (detail::IsOptional<T>::value) {
        return TFieldAs<typename T::value_type>::Read(*this);
    } else {
        std::optional<T> value = TFieldAs<T>::Read(*this);
        if (!value) {
            NullValueError();
        }
        return *std::move(value);
    }
}

} // namespace quorda
