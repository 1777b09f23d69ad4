#pragma once

#include "quorda/rtl/currency.h"
#include "quorda/rtl/datetime.h"
#include "quorda/rtl/exception.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

namespace quorda {

// Variant type codes in the classic numbering; an array carries varArray | element type.
enum TVarType : std::uint16_t {
    varEmpty = 0x0000,
    varNull = 0x0001,
    varSmallint = 0x0002,
    varInteger = 0x0003,
    varSingle = 0x0004,
    varDouble = 0x0005,
    varCurrency = 0x0006,
    varDate = 0x0007,
    varOleStr = 0x0008,
    varDispatch = 0x0009,
    varError = 0x000A,
    varBoolean = 0x000B,
    varVariant = 0x000C,
    varUnknown = 0x000D,
    varDecimal = 0x000E,
    varShortInt = 0x0010,
    varByte = 0x0011,
    varWord = 0x0012,
    varLongWord = 0x0013,
    varInt64 = 0x0014,
    varQWord = 0x0015,
    varString = 0x0100,
    varAny = 0x0101,
    varTypeMask = 0x0FFF,
    varArray = 0x2000,
    varByRef = 0x4000,
};

class QUORDA_API EVariantError : public Exception {
public:
    using Exception::Exception;
};

// "Could not convert variant of type (Null) into type (Integer)"
class QUORDA_API EVariantTypeCastError : public EVariantError {
public:
    using EVariantError::EVariantError;
};

// "Overflow while converting variant of type (Double) into type (Integer)"
class QUORDA_API EVariantOverflowError : public EVariantError {
public:
    using EVariantError::EVariantError;
};

// "Variant array index out of bounds"
class QUORDA_API EVariantBadIndexError : public EVariantError {
public:
    using EVariantError::EVariantError;
};

// "Invalid variant operation"
class QUORDA_API EVariantInvalidOpError : public EVariantError {
public:
    using EVariantError::EVariantError;
};

// "Invalid argument": an array operation on a value that is not an array, bad bounds.
class QUORDA_API EVariantInvalidArgError : public EVariantError {
public:
    using EVariantError::EVariantError;
};

enum TVariantRelationship { vrEqual, vrLessThan, vrGreaterThan, vrNotEqual };

// A dynamically typed value: empty (unassigned), Null, a boolean, an integer of one of the classic
// widths, a float, a currency amount, a date, a string or a one-dimensional array of variants.
// Copies are deep, arrays included. Conversions follow the classic rules: Empty reads as 0, "" or
// False; Null reads as "" but raises EVariantTypeCastError for every other target; strings read as
// numbers by the current DecimalSeparator and raise EVariantTypeCastError when they are not numbers.
class QUORDA_API Variant {
public:
    Variant() noexcept = default;
    Variant(bool value) noexcept : FType(varBoolean), FValue(std::int64_t(value)) {}
    Variant(signed char value) noexcept : FType(varShortInt), FValue(std::int64_t(value)) {}
    Variant(unsigned char value) noexcept : FType(varByte), FValue(std::int64_t(value)) {}
    Variant(short value) noexcept : FType(varSmallint), FValue(std::int64_t(value)) {}
    Variant(unsigned short value) noexcept : FType(varWord), FValue(std::int64_t(value)) {}
    Variant(int value) noexcept : FType(varInteger), FValue(std::int64_t(value)) {}
    Variant(unsigned int value) noexcept : FType(varLongWord), FValue(std::int64_t(value)) {}
    Variant(long value) noexcept : FType(varInt64), FValue(std::int64_t(value)) {}
    Variant(long long value) noexcept : FType(varInt64), FValue(std::int64_t(value)) {}
    Variant(unsigned long value) noexcept : FType(varQWord), FValue(std::uint64_t(value)) {}
    Variant(unsigned long long value) noexcept : FType(varQWord), FValue(std::uint64_t(value)) {}
    Variant(float value) noexcept : FType(varSingle), FValue(double(value)) {}
    Variant(double value) noexcept : FType(varDouble), FValue(value) {}
    Variant(Currency value) noexcept : FType(varCurrency), FValue(value) {}
    Variant(std::string value) noexcept : FType(varString), FValue(std::move(value)) {}
    Variant(std::string_view value) : FType(varString), FValue(std::string(value)) {}
    Variant(const char* value) : FType(varString), FValue(std::string(value ? value : "")) {}
    Variant(char* value) : Variant(static_cast<const char*>(value)) {}
    // A lone char is ambiguous (character or small number) and any other pointer would silently turn
    // into a boolean.
    Variant(char) = delete;
    Variant(std::nullptr_t) = delete;
    template <typename T>
    Variant(T*) = delete;

    Variant(const Variant& other);
    Variant(Variant&& other) noexcept;
    Variant& operator=(const Variant& other);
    Variant& operator=(Variant&& other) noexcept;
    ~Variant();

    static Variant Null() noexcept;
    static Variant Unassigned() noexcept { return Variant(); }
    static Variant FromDateTime(TDateTime value) noexcept;

    TVarType VarType() const noexcept { return FType; }
    bool IsNull() const noexcept { return FType == varNull; }
    bool IsEmpty() const noexcept { return FType == varEmpty; }
    bool IsArray() const noexcept { return (FType & varArray) != 0; }
    void Clear() noexcept;

    bool AsBoolean() const;
    // Floats, currency and dates round half to even; out-of-range values raise EVariantOverflowError.
    std::int32_t AsInteger() const;
    std::int64_t AsInt64() const;
    double AsDouble() const;
    Currency AsCurrency() const;
    TDateTime AsDateTime() const;
    std::string AsString() const;

    // Array access. The index is checked against the bounds (EVariantBadIndexError); a value that is
    // not an array raises EVariantInvalidArgError. Elements may themselves be arrays.
    int ArrayLowBound() const;
    int ArrayHighBound() const;
    const Variant& ArrayElement(int index) const;
    void SetArrayElement(int index, const Variant& value);
    const Variant& operator[](int index) const { return ArrayElement(index); }
    Variant& operator[](int index);

    // The classic "=": see VarCompareValue.
    friend QUORDA_API bool operator==(const Variant& left, const Variant& right);

private:
    struct ArrayData;
    // Owns an array and copies it deeply, so that variants have value semantics.
    class ArrayBox {
    public:
        explicit ArrayBox(std::unique_ptr<ArrayData> data) noexcept;
        ArrayBox(const ArrayBox& other);
        ArrayBox(ArrayBox&& other) noexcept;
        ArrayBox& operator=(const ArrayBox& other);
        ArrayBox& operator=(ArrayBox&& other) noexcept;
        ~ArrayBox();
        ArrayData& operator*() const noexcept { return *FData; }
        ArrayData* operator->() const noexcept { return FData.get(); }

    private:
        std::unique_ptr<ArrayData> FData;
    };

    // Integers and booleans are held as int64 (QWord as uint64), Single and Date as double.
    using Storage =
        std::variant<std::monostate, std::int64_t, std::uint64_t, double, Currency, std::string, ArrayBox>;

    Variant(TVarType type, Storage value) noexcept;
    const ArrayData& Array() const;
    ArrayData& Array();
    std::size_t CheckedIndex(int index) const;
    [[noreturn]] void CastError(TVarType target) const;

    TVarType FType = varEmpty;
    Storage FValue;

    friend Variant VarArrayCreate(int lowBound, int highBound);
};

// A one-dimensional array of variants (varArray | varVariant) with the given inclusive bounds;
// elements start Empty. highBound = lowBound - 1 makes an empty array; below that raises
// EVariantInvalidArgError.
QUORDA_API Variant VarArrayCreate(int lowBound, int highBound);
// An array of variants with lower bound 0.
QUORDA_API Variant VarArrayOf(std::initializer_list<Variant> values);
QUORDA_API int VarArrayLowBound(const Variant& value, int dim = 1);
QUORDA_API int VarArrayHighBound(const Variant& value, int dim = 1);
// 1 for an array, 0 otherwise.
QUORDA_API int VarArrayDimCount(const Variant& value);

inline TVarType VarType(const Variant& value) noexcept {
    return value.VarType();
}
QUORDA_API bool VarIsNull(const Variant& value) noexcept;
QUORDA_API bool VarIsEmpty(const Variant& value) noexcept;
QUORDA_API bool VarIsClear(const Variant& value) noexcept;
QUORDA_API bool VarIsArray(const Variant& value) noexcept;
QUORDA_API bool VarIsStr(const Variant& value) noexcept;
QUORDA_API bool VarIsOrdinal(const Variant& value) noexcept;
// The whole-number types, signed and unsigned (varSmallint ... varQWord; not varBoolean).
QUORDA_API bool VarTypeIsInteger(TVarType type) noexcept;
QUORDA_API bool VarIsFloat(const Variant& value) noexcept;
QUORDA_API bool VarIsNumeric(const Variant& value) noexcept;
// "Integer", "String", "Array of Variant", ...
QUORDA_API std::string VarTypeAsText(TVarType type);

// The text of any non-array value; Null and Empty give "".
QUORDA_API std::string VarToStr(const Variant& value);
// The value converted to the given simple type (varEmpty and varNull give that value).
QUORDA_API Variant VarAsType(const Variant& value, TVarType type);

// Classic comparison. Empty equals only Empty and sorts first; Null equals only Null (so Null = Null
// is true) and sorts before every other value; numbers of any kind compare numerically, a boolean
// against a number compares as booleans, a date against anything compares as dates; a string against
// a number compares numerically and raises EVariantTypeCastError when the string is not a number;
// two strings compare byte by byte, case-sensitively; a boolean against a string compares their
// texts. Arrays compare element by element and only with arrays (EVariantInvalidOpError otherwise);
// unequal arrays are vrNotEqual.
QUORDA_API TVariantRelationship VarCompareValue(const Variant& left, const Variant& right);
QUORDA_API bool VarSameValue(const Variant& left, const Variant& right);

} // namespace quorda
