#include "quorda/rtl/variant.h"

#include "variant_p.h"

namespace quorda {

Variant::ArrayBox::ArrayBox(std::unique_ptr<ArrayData> data) noexcept : FData(std::move(data)) {}
Variant::ArrayBox::ArrayBox(const ArrayBox& other) : FData(std::make_unique<ArrayData>(*other.FData)) {}
Variant::ArrayBox::ArrayBox(ArrayBox&& other) noexcept = default;
Variant::ArrayBox& Variant::ArrayBox::operator=(const ArrayBox& other) {
    if (this != &other) {
        FData = std::make_unique<ArrayData>(*other.FData);
    }
    return *this;
}
Variant::ArrayBox& Variant::ArrayBox::operator=(ArrayBox&& other) noexcept = default;
Variant::ArrayBox::~ArrayBox() = default;

Variant::Variant(TVarType type, Storage value) noexcept : FType(type), FValue(std::move(value)) {}

Variant::Variant(const Variant& other) = default;

// A moved-from variant is Empty, never a hollow array.
Variant::Variant(Variant&& other) noexcept : FType(other.FType), FValue(std::move(other.FValue)) {
    other.Clear();
}

Variant& Variant::operator=(const Variant& other) {
    if (this != &other) {
        // Copy first: other may be an element of this variant's array.
        Variant copy(other);
        *this = std::move(copy);
    }
    return *this;
}

Variant& Variant::operator=(Variant&& other) noexcept {
    if (this != &other) {
        // other may live inside this variant's array: take it out before the array goes away.
        Storage value(std::move(other.FValue));
        const TVarType type = other.FType;
        other.Clear();
        FValue = std::move(value);
        FType = type;
    }
    return *this;
}

Variant::~Variant() = default;

void Variant::Clear() noexcept {
    FType = varEmpty;
    FValue.emplace<std::monostate>();
}

Variant Variant::Null() noexcept {
    return Variant(varNull, std::monostate{});
}

Variant Variant::FromDateTime(TDateTime value) noexcept {
    return Variant(varDate, value);
}

// Arrays

const Variant::ArrayData& Variant::Array() const {
    if (!IsArray()) {
        throw EVariantInvalidArgError("Invalid argument");
    }
    return *std::get<ArrayBox>(FValue);
}

Variant::ArrayData& Variant::Array() {
    if (!IsArray()) {
        throw EVariantInvalidArgError("Invalid argument");
    }
    return *std::get<ArrayBox>(FValue);
}

std::size_t Variant::CheckedIndex(int index) const {
    const ArrayData& data = Array();
    const long offset = long(index) - data.Low;
    if (offset < 0 || offset >= long(data.Items.size())) {
        throw EVariantBadIndexError("Variant array index out of bounds");
    }
    return std::size_t(offset);
}

int Variant::ArrayLowBound() const {
    return Array().Low;
}

int Variant::ArrayHighBound() const {
    const ArrayData& data = Array();
    return int(long(data.Low) + long(data.Items.size()) - 1);
}

const Variant& Variant::ArrayElement(int index) const {
    return Array().Items[CheckedIndex(index)];
}

void Variant::SetArrayElement(int index, const Variant& value) {
    const std::size_t offset = CheckedIndex(index);
    // Copy before assigning: value may be this array itself or one of its elements.
    Variant copy(value);
    Array().Items[offset] = std::move(copy);
}

Variant& Variant::operator[](int index) {
    return Array().Items[CheckedIndex(index)];
}

Variant VarArrayCreate(int lowBound, int highBound) {
    const long count = long(highBound) - lowBound + 1;
    if (count < 0) {
        throw EVariantInvalidArgError("Variant array cannot be created");
    }
    auto data = std::make_unique<Variant::ArrayData>();
    data->Low = lowBound;
    data->Items.resize(std::size_t(count));
    return Variant(TVarType(varArray | varVariant), Variant::ArrayBox(std::move(data)));
}

Variant VarArrayOf(std::initializer_list<Variant> values) {
    Variant result = VarArrayCreate(0, int(values.size()) - 1);
    int index = 0;
    for (const Variant& value : values) {
        result.SetArrayElement(index++, value);
    }
    return result;
}

int VarArrayLowBound(const Variant& value, int dim) {
    if (dim != 1) {
        throw EVariantInvalidArgError("Invalid argument");
    }
    return value.ArrayLowBound();
}

int VarArrayHighBound(const Variant& value, int dim) {
    if (dim != 1) {
        throw EVariantInvalidArgError("Invalid argument");
    }
    return value.ArrayHighBound();
}

int VarArrayDimCount(const Variant& value) {
    return value.IsArray() ? 1 : 0;
}

// Type tests

bool VarIsNull(const Variant& value) noexcept {
    return value.VarType() == varNull;
}
bool VarIsEmpty(const Variant& value) noexcept {
    return value.VarType() == varEmpty;
}
bool VarIsClear(const Variant& value) noexcept {
    return value.VarType() == varEmpty;
}
bool VarIsArray(const Variant& value) noexcept {
    return (value.VarType() & varArray) != 0;
}

bool VarIsStr(const Variant& value) noexcept {
    const int type = value.VarType() & varTypeMask;
    return type == varString || type == varOleStr;
}

bool VarTypeIsInteger(TVarType type) noexcept {
    switch (type) {
    case varSmallint:
    case varInteger:
    case varShortInt:
    case varByte:
    case varWord:
    case varLongWord:
    case varInt64:
    case varQWord:
        return true;
    default:
        return false;
    }
}

bool VarIsOrdinal(const Variant& value) noexcept {
    const auto type = static_cast<TVarType>(value.VarType() & varTypeMask);
    return type == varBoolean || VarTypeIsInteger(type);
}

bool VarIsFloat(const Variant& value) noexcept {
    switch (value.VarType() & varTypeMask) {
    case varSingle:
    case varDouble:
    case varCurrency:
    case varDecimal:
        return true;
    default:
        return false;
    }
}

bool VarIsNumeric(const Variant& value) noexcept {
    return VarIsOrdinal(value) || VarIsFloat(value);
}

std::string VarTypeAsText(TVarType type) {
    static constexpr const char* kNames[] = {
        "Empty",    "Null",     "Smallint", "Integer",  "Single",  "Double",  "Currency", "Date",
        "OleStr",   "Dispatch", "Error",    "Boolean",  "Variant", "Unknown", "Decimal",  "???",
        "ShortInt", "Byte",     "Word",     "LongWord", "Int64",   "QWord"};
    const int base = type & varTypeMask;
    std::string text;
    if (base < int(std::size(kNames))) {
        text = kNames[base];
    } else if (base == varString) {
        text = "String";
    } else if (base == varAny) {
        text = "Any";
    } else {
        text = FormatMessage("$%.4X", base);
    }
    if ((type & varArray) != 0) {
        text = "Array of " + text;
    }
    if ((type & varByRef) != 0) {
        text = "Ref to " + text;
    }
    return text;
}

} // namespace quorda
