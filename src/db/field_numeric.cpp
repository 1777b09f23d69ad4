#include "quorda/db/db_consts.h"
#include "quorda/db/numeric_fields.h"
#include "quorda/rtl/numbers.h"
#include "quorda/rtl/string_utils.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace quorda {

namespace {

// Reads a value that the dataset keeps at its full width (sizeof T) in a slot of the record buffer,
// in place: true with HasValue false for NULL. False when there is no such slot; the caller then
// reads the general way.
template <typename T>
bool ReadInPlace(const TField& Field, T& Value, bool& HasValue) {
    const TFieldDataView view = Field.DataView();
    if (!detail::SlotOfSize(view, sizeof(T))) {
        return false;
    }
    HasValue = view.Data != nullptr;
    if (HasValue) {
        Value = detail::LoadNative<T>(view.Data);
    }
    return true;
}

// Round half to even, the classic Round of floating-point values.
double RoundEven(double Value) {
    return std::nearbyint(Value);
}

} // namespace

// ---- TNumericField

TNumericField::TNumericField(TComponent* AOwner) : TField(AOwner) {
    SetAlignment(taRightJustify);
}

void TNumericField::SetDisplayFormat(const std::string& Value) {
    if (FDisplayFormat != Value) {
        FDisplayFormat = Value;
        PropertyChanged(true);
    }
}

void TNumericField::SetEditFormat(const std::string& Value) {
    if (FEditFormat != Value) {
        FEditFormat = Value;
        PropertyChanged(true);
    }
}

void TNumericField::CheckTypeSize(int Value) const {
    // Some data sources report the byte width of a number as its size; accept what fits.
    if (Value < 0 || Value > 16) {
        DatabaseErrorFmt(SInvalidFieldSize, Value);
    }
}

void TNumericField::RangeError(double Value, double Min, double Max) const {
    DatabaseErrorFmt(std::string(SFieldError) + SRangeError, DisplayName(), FloatToStr(Value),
                     FloatToStr(Min), FloatToStr(Max));
}

void TNumericField::SetWholeNumberText(const std::string& Value) {
    if (Value.empty()) {
        Clear();
        return;
    }
    std::int64_t number;
    if (!TryStrToInt64(Value, number)) {
        DatabaseErrorFmt(std::string(SFieldError) + SNotAnInteger, DisplayName(), Value);
    }
    DoSetAsLargeInt(number);
}

const std::string& TNumericField::TextFormat(bool ADisplayText) const {
    return ADisplayText || FEditFormat.empty() ? FDisplayFormat : FEditFormat;
}

// ---- TIntegerField and its narrower relatives

TIntegerField::TIntegerField(TComponent* AOwner)
    : TNumericField(AOwner), FMinRange(std::numeric_limits<std::int32_t>::min()),
      FMaxRange(std::numeric_limits<std::int32_t>::max()) {
    SetDataType(ftInteger);
}

void TIntegerField::SetMinValue(std::int32_t Value) {
    if (Value < FMinRange || Value > FMaxRange) {
        RangeError(Value, FMinRange, FMaxRange);
    }
    FMinValue = Value;
}

void TIntegerField::SetMaxValue(std::int32_t Value) {
    if (Value < FMinRange || Value > FMaxRange) {
        RangeError(Value, FMinRange, FMaxRange);
    }
    FMaxValue = Value;
}

bool TIntegerField::GetValue(std::int32_t& Value) const {
    bool hasValue = false;
    if (DataType() != ftSmallint && DataType() != ftWord && ReadInPlace(*this, Value, hasValue)) {
        return hasValue;
    }
    union {
        std::int32_t Int;
        std::int16_t Small;
        std::uint16_t Word;
    } data{};
    if (!GetSlotData(&data)) {
        return false;
    }
    switch (DataType()) {
    case ftSmallint:
        Value = data.Small;
        break;
    case ftWord:
        Value = data.Word;
        break;
    default:
        Value = data.Int;
        break;
    }
    return true;
}

bool TIntegerField::CheckRange(std::int64_t Value) const {
    if (FMinValue != 0 || FMaxValue != 0) {
        return Value >= FMinValue && Value <= FMaxValue;
    }
    return Value >= FMinRange && Value <= FMaxRange;
}

std::string TIntegerField::GetAsString() const {
    std::int32_t value;
    return GetValue(value) ? IntToStr(value) : std::string();
}

std::int32_t TIntegerField::GetAsInteger() const {
    std::int32_t value;
    return GetValue(value) ? value : 0;
}

Variant TIntegerField::GetAsVariant() const {
    std::int32_t value;
    return GetValue(value) ? Variant(value) : Variant::Null();
}

void TIntegerField::DoSetAsInteger(std::int32_t Value) {
    DoSetAsLargeInt(Value);
}

void TIntegerField::DoSetAsLargeInt(std::int64_t Value) {
    if (!CheckRange(Value)) {
        if (FMinValue != 0 || FMaxValue != 0) {
            RangeError(static_cast<double>(Value), FMinValue, FMaxValue);
        }
        RangeError(static_cast<double>(Value), FMinRange, FMaxRange);
    }
    union {
        std::int32_t Int;
        std::int16_t Small;
        std::uint16_t Word;
    } data{};
    switch (DataType()) {
    case ftSmallint:
        data.Small = static_cast<std::int16_t>(Value);
        break;
    case ftWord:
        data.Word = static_cast<std::uint16_t>(Value);
        break;
    default:
        data.Int = static_cast<std::int32_t>(Value);
        break;
    }
    SetData(&data);
}

void TIntegerField::DoSetAsFloat(double Value) {
    double rounded = RoundEven(Value);
    if (!(rounded >= FMinRange && rounded <= FMaxRange)) {
        RangeError(Value, FMinRange, FMaxRange);
    }
    DoSetAsLargeInt(static_cast<std::int64_t>(rounded));
}

void TIntegerField::DoSetAsCurrency(Currency Value) {
    DoSetAsLargeInt(Value.Round());
}

void TIntegerField::DoSetAsString(const std::string& Value) {
    SetWholeNumberText(Value);
}

void TIntegerField::SetVarValue(const Variant& Value) {
    DoSetAsLargeInt(Value.AsInt64());
}

void TIntegerField::GetText(std::string& AText, bool ADisplayText) const {
    std::int32_t value;
    if (!GetValue(value)) {
        AText.clear();
        return;
    }
    const std::string& format = TextFormat(ADisplayText);
    AText = format.empty() ? IntToStr(value) : FormatFloat(format, value);
}

TSmallintField::TSmallintField(TComponent* AOwner) : TIntegerField(AOwner) {
    SetDataType(ftSmallint);
    FMinRange = std::numeric_limits<std::int16_t>::min();
    FMaxRange = std::numeric_limits<std::int16_t>::max();
}

TWordField::TWordField(TComponent* AOwner) : TIntegerField(AOwner) {
    SetDataType(ftWord);
    FMinRange = 0;
    FMaxRange = std::numeric_limits<std::uint16_t>::max();
}

TAutoIncField::TAutoIncField(TComponent* AOwner) : TIntegerField(AOwner) {
    SetDataType(ftAutoInc);
}

// ---- TLargeintField

TLargeintField::TLargeintField(TComponent* AOwner) : TNumericField(AOwner) {
    SetDataType(ftLargeint);
}

bool TLargeintField::GetValue(std::int64_t& Value) const {
    bool hasValue = false;
    if (ReadInPlace(*this, Value, hasValue)) {
        return hasValue;
    }
    std::int64_t data = 0;
    if (!GetSlotData(&data)) {
        return false;
    }
    Value = data;
    return true;
}

std::string TLargeintField::GetAsString() const {
    std::int64_t value;
    return GetValue(value) ? IntToStr(value) : std::string();
}

std::int32_t TLargeintField::GetAsInteger() const {
    std::int64_t value = GetAsLargeInt();
    // A value that does not fit is refused rather than cut to its low 32 bits.
    if (value < std::numeric_limits<std::int32_t>::min() ||
        value > std::numeric_limits<std::int32_t>::max()) {
        RangeError(static_cast<double>(value), std::numeric_limits<std::int32_t>::min(),
                   std::numeric_limits<std::int32_t>::max());
    }
    return static_cast<std::int32_t>(value);
}

std::int64_t TLargeintField::GetAsLargeInt() const {
    std::int64_t value;
    return GetValue(value) ? value : 0;
}

Variant TLargeintField::GetAsVariant() const {
    std::int64_t value;
    return GetValue(value) ? Variant(static_cast<long long>(value)) : Variant::Null();
}

void TLargeintField::DoSetAsLargeInt(std::int64_t Value) {
    if ((FMinValue != 0 || FMaxValue != 0) && (Value < FMinValue || Value > FMaxValue)) {
        RangeError(static_cast<double>(Value), static_cast<double>(FMinValue),
                   static_cast<double>(FMaxValue));
    }
    SetData(&Value);
}

void TLargeintField::DoSetAsFloat(double Value) {
    double rounded = RoundEven(Value);
    // 2^63 itself does not fit, hence the strict upper bound.
    if (!(rounded >= -9223372036854775808.0 && rounded < 9223372036854775808.0)) {
        RangeError(Value, -9223372036854775808.0, 9223372036854775807.0);
    }
    DoSetAsLargeInt(static_cast<std::int64_t>(rounded));
}

void TLargeintField::DoSetAsString(const std::string& Value) {
    SetWholeNumberText(Value);
}

void TLargeintField::SetVarValue(const Variant& Value) {
    DoSetAsLargeInt(Value.AsInt64());
}

void TLargeintField::GetText(std::string& AText, bool ADisplayText) const {
    std::int64_t value;
    if (!GetValue(value)) {
        AText.clear();
        return;
    }
    const std::string& format = TextFormat(ADisplayText);
    AText = format.empty() ? IntToStr(value) : FormatFloat(format, static_cast<double>(value));
}

// ---- TFloatField

TFloatField::TFloatField(TComponent* AOwner) : TNumericField(AOwner) {
    SetDataType(ftFloat);
}

void TFloatField::SetPrecision(int Value) {
    FPrecision = (Value == -1 || Value > 1) ? Value : 2;
}

void TFloatField::SetCurrency(bool Value) {
    if (FCurrency != Value) {
        FCurrency = Value;
        PropertyChanged(false);
    }
}

double TFloatField::GetAsFloat() const {
    double value = 0;
    bool hasValue = false;
    if (ReadInPlace(*this, value, hasValue)) {
        return hasValue ? value : 0.0;
    }
    return GetSlotData(&value) ? value : 0.0;
}

std::int32_t TFloatField::GetAsInteger() const {
    double value = RoundEven(GetAsFloat());
    if (!(value >= std::numeric_limits<std::int32_t>::min() &&
          value <= std::numeric_limits<std::int32_t>::max())) {
        RangeError(value, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max());
    }
    return static_cast<std::int32_t>(value);
}

std::int64_t TFloatField::GetAsLargeInt() const {
    double value = RoundEven(GetAsFloat());
    if (!(value >= -9223372036854775808.0 && value < 9223372036854775808.0)) {
        RangeError(value, -9223372036854775808.0, 9223372036854775807.0);
    }
    return static_cast<std::int64_t>(value);
}

std::string TFloatField::GetAsString() const {
    double value = 0;
    return GetData(&value) ? FloatToStr(value) : std::string();
}

Variant TFloatField::GetAsVariant() const {
    double value = 0;
    return GetData(&value) ? Variant(value) : Variant::Null();
}

void TFloatField::DoSetAsFloat(double Value) {
    if ((FMinValue != 0 || FMaxValue != 0) && !(Value >= FMinValue && Value <= FMaxValue)) {
        RangeError(Value, FMinValue, FMaxValue);
    }
    SetData(&Value);
}

void TFloatField::DoSetAsString(const std::string& Value) {
    if (Value.empty()) {
        Clear();
        return;
    }
    double number;
    if (!TryStrToFloat(Value, number)) {
        DatabaseErrorFmt(std::string(SFieldError) + SNotAFloat, DisplayName(), Value);
    }
    DoSetAsFloat(number);
}

void TFloatField::SetVarValue(const Variant& Value) {
    DoSetAsFloat(Value.AsDouble());
}

void TFloatField::GetText(std::string& AText, bool ADisplayText) const {
    double value = 0;
    if (!GetData(&value)) {
        AText.clear();
        return;
    }
    const std::string& format = TextFormat(ADisplayText);
    if (!format.empty()) {
        AText = FormatFloat(format, value);
    } else if (FCurrency) {
        AText = FloatToStrF(value, ADisplayText ? ffCurrency : ffFixed, FPrecision,
                            FormatSettings().CurrencyDecimals);
    } else {
        AText = FloatToStrF(value, ffGeneral, FPrecision, 0);
    }
}

TCurrencyField::TCurrencyField(TComponent* AOwner) : TFloatField(AOwner) {
    SetDataType(ftCurrency);
    SetCurrency(true);
}

// ---- TBCDField

TBCDField::TBCDField(TComponent* AOwner) : TNumericField(AOwner) {
    SetDataType(ftBCD);
    SetSize(4);
}

void TBCDField::CheckTypeSize(int Value) const {
    if (Value < 0 || Value > 4) {
        DatabaseErrorFmt(SInvalidFieldSize, Value);
    }
}

bool TBCDField::GetValue(Currency& Value) const {
    std::int64_t raw = 0;
    if (!GetData(&raw)) {
        return false;
    }
    Value = Currency::FromRaw(raw);
    return true;
}

Currency TBCDField::GetAsCurrency() const {
    Currency value;
    return GetValue(value) ? value : Currency();
}

std::int32_t TBCDField::GetAsInteger() const {
    std::int64_t value = GetAsCurrency().Round();
    if (value < std::numeric_limits<std::int32_t>::min() ||
        value > std::numeric_limits<std::int32_t>::max()) {
        RangeError(static_cast<double>(value), std::numeric_limits<std::int32_t>::min(),
                   std::numeric_limits<std::int32_t>::max());
    }
    return static_cast<std::int32_t>(value);
}

std::string TBCDField::GetAsString() const {
    Currency value;
    return GetValue(value) ? CurrToStr(value) : std::string();
}

Variant TBCDField::GetAsVariant() const {
    Currency value;
    return GetValue(value) ? Variant(value) : Variant::Null();
}

void TBCDField::DoSetAsCurrency(Currency Value) {
    std::int64_t raw = Value.Raw();
    SetData(&raw);
}

void TBCDField::DoSetAsLargeInt(std::int64_t Value) {
    if (Value < MinCurrency.Round() || Value > MaxCurrency.Round()) {
        RangeError(static_cast<double>(Value), MinCurrency.ToDouble(), MaxCurrency.ToDouble());
    }
    DoSetAsCurrency(Currency(Value));
}

void TBCDField::DoSetAsFloat(double Value) {
    if (!(Value >= MinCurrency.ToDouble() && Value <= MaxCurrency.ToDouble())) {
        RangeError(Value, MinCurrency.ToDouble(), MaxCurrency.ToDouble());
    }
    DoSetAsCurrency(Currency(Value));
}

void TBCDField::DoSetAsString(const std::string& Value) {
    if (Value.empty()) {
        Clear();
        return;
    }
    Currency number;
    if (!TryStrToCurr(Value, number)) {
        DatabaseErrorFmt(std::string(SFieldError) + SNotACurrency, DisplayName(), Value);
    }
    DoSetAsCurrency(number);
}

void TBCDField::SetVarValue(const Variant& Value) {
    DoSetAsCurrency(Value.AsCurrency());
}

void TBCDField::GetText(std::string& AText, bool ADisplayText) const {
    Currency value;
    if (!GetValue(value)) {
        AText.clear();
        return;
    }
    const std::string& format = TextFormat(ADisplayText);
    if (!format.empty()) {
        AText = FormatFloat(format, value.ToDouble());
    } else if (FCurrency) {
        AText = FloatToStrF(value.ToDouble(), ADisplayText ? ffCurrency : ffFixed, FPrecision, 2);
    } else {
        // Exact decimal text: a double with 18 digits would show binary noise.
        AText = CurrToStr(value);
    }
}

} // namespace quorda
