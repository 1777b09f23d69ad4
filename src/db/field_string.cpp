#include "quorda/db/db_consts.h"
#include "quorda/db/string_field.h"
#include "quorda/rtl/numbers.h"
#include "quorda/rtl/string_utils.h"

#include <array>
#include <cctype>
#include <cstring>
#include <string_view>
#include <vector>

namespace quorda {

namespace {

// Length of the longest prefix of Text (at most Limit bytes) that does not end inside a UTF-8
// sequence, so that cutting a value to the field size never leaves half a character behind.
std::size_t Utf8CutLength(const std::string& Text, std::size_t Limit) {
    if (Text.size() <= Limit) {
        return Text.size();
    }
    std::size_t cut = Limit;
    // Step back over continuation bytes to the lead byte of the character that straddles the limit.
    while (cut > 0 && (static_cast<unsigned char>(Text[cut]) & 0xC0) == 0x80) {
        --cut;
    }
    return cut;
}

} // namespace

TStringField::TStringField(TComponent* AOwner) : TField(AOwner) {
    SetDataType(ftString);
    SetSize(20);
}

void TStringField::SetFieldType(TFieldType Value) {
    if (Value == ftString || Value == ftFixedChar) {
        SetDataType(Value);
    }
}

void TStringField::CheckTypeSize(int Value) const {
    // Size 0 is allowed: a query may return an empty text column.
    if (Value < 0) {
        DatabaseErrorFmt(SInvalidFieldSize, Value);
    }
}

bool TStringField::GetValue(std::string& Value) const {
    // Straight from the dataset's slot where it keeps one (zero-padded, read up to its zero).
    const TFieldDataView view = DataView();
    if (view.Direct) {
        if (view.Data == nullptr) {
            Value.clear();
            return false;
        }
        Value.assign(SlotText(view));
        return true;
    }
    const auto dataSize = static_cast<std::size_t>(DataSize());
    std::array<char, 1024> local;
    std::vector<char> large;
    char* buffer = local.data();
    if (dataSize > local.size()) {
        large.resize(dataSize);
        buffer = large.data();
    }
    std::memset(buffer, 0, dataSize);
    if (!GetData(buffer)) {
        Value.clear();
        return false;
    }
    // The slot may be filled to the last byte; the value never reaches past Size.
    Value.assign(buffer, strnlen(buffer, dataSize - 1));
    return true;
}

std::string TStringField::GetAsString() const {
    // A fresh string built from the slot at once: cheaper than assigning to an empty one.
    const TFieldDataView view = DataView();
    if (view.Direct) {
        return view.Data == nullptr ? std::string() : std::string(SlotText(view));
    }
    std::string value;
    GetValue(value);
    return value;
}

std::int32_t TStringField::GetAsInteger() const {
    return StrToInt(GetAsString());
}
std::int64_t TStringField::GetAsLargeInt() const {
    return StrToInt64(GetAsString());
}
double TStringField::GetAsFloat() const {
    return StrToFloat(GetAsString());
}
Currency TStringField::GetAsCurrency() const {
    return StrToCurr(GetAsString());
}

bool TStringField::GetAsBoolean() const {
    std::string value = GetAsString();
    if (value.empty()) {
        return false;
    }
    char first = static_cast<char>(std::toupper(static_cast<unsigned char>(value[0])));
    return first == 'T' || first == 'Y';
}

TDateTime TStringField::GetAsDateTime() const {
    return StrToDateTime(GetAsString());
}

Variant TStringField::GetAsVariant() const {
    std::string value;
    if (!GetValue(value)) {
        return Variant::Null();
    }
    return Variant(std::move(value));
}

void TStringField::DoSetAsString(const std::string& Value) {
    const auto dataSize = static_cast<std::size_t>(DataSize());
    std::vector<char> buffer(dataSize, '\0');
    std::size_t length = Utf8CutLength(Value, dataSize - 1);
    std::memcpy(buffer.data(), Value.data(), length);
    SetData(buffer.data());
}

void TStringField::DoSetAsInteger(std::int32_t Value) {
    DoSetAsString(IntToStr(Value));
}
void TStringField::DoSetAsLargeInt(std::int64_t Value) {
    DoSetAsString(IntToStr(Value));
}
void TStringField::DoSetAsFloat(double Value) {
    DoSetAsString(FloatToStr(Value));
}
void TStringField::DoSetAsCurrency(Currency Value) {
    DoSetAsString(CurrToStr(Value));
}
void TStringField::DoSetAsBoolean(bool Value) {
    DoSetAsString(Value ? "T" : "F");
}
void TStringField::DoSetAsDateTime(TDateTime Value) {
    DoSetAsString(DateTimeToStr(Value));
}
void TStringField::SetVarValue(const Variant& Value) {
    DoSetAsString(Value.AsString());
}

} // namespace quorda
