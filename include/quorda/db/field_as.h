#pragma once

// Typed reads of a field: TField::As<T>() and TField::As<std::optional<T>>().

#include "quorda/db/field.h"
#include "quorda/rtl/currency.h"
#include "quorda/rtl/datetime.h"

#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>

namespace quorda {

// How a field's value is read as T: a specialisation provides
//   static std::optional<T> Read(const TField& Field);   // std::nullopt for NULL
// and As<T> works for that T at once. A reader may test for NULL and read the value in one step
// (one look at the record buffer); the ones here use the field's classic accessors, so they convert
// exactly as AsString, AsInteger, ... do. An unsupported T does not compile.
template <typename T>
struct TFieldAs;

namespace detail {

template <typename T, T (TField::*Get)() const>
struct TFieldAsAccessor {
    static std::optional<T> Read(const TField& Field) {
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

template <>
struct TFieldAs<std::string> : detail::TFieldAsAccessor<std::string, &TField::AsString> {};
template <>
struct TFieldAs<std::int32_t> : detail::TFieldAsAccessor<std::int32_t, &TField::AsInteger> {};
template <>
struct TFieldAs<std::int64_t> : detail::TFieldAsAccessor<std::int64_t, &TField::AsLargeInt> {};
// Also TDateTime, which is a double: a date or time field reads as its TDateTime.
template <>
struct TFieldAs<double> : detail::TFieldAsAccessor<double, &TField::AsFloat> {};
template <>
struct TFieldAs<bool> : detail::TFieldAsAccessor<bool, &TField::AsBoolean> {};
template <>
struct TFieldAs<Currency> : detail::TFieldAsAccessor<Currency, &TField::AsCurrency> {};
template <>
struct TFieldAs<TBytes> : detail::TFieldAsAccessor<TBytes, &TField::AsBytes> {};

template <typename T>
T TField::As() const {
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
