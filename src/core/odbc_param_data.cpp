// The native data layouts of a parameter value: the persisted form (GetData/SetData) and the
// record-buffer form.
#include "quorda/core/odbc_params.h"
#include "quorda/rtl/extended.h"
#include "quorda/rtl/format_settings.h"
#include "quorda/rtl/messages.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace quorda {
namespace {

enum class TLayout { Text, Int16, Boolean, Int32, Extended, Date, Time, DateTime, Bytes, Nothing };

// Raises for the types that have no persisted layout.
TLayout LayoutOf(TFieldType DataType, const std::string& Name) {
    switch (DataType) {
    case ftString:
    case ftMemo:
    case ftBCD:
        return TLayout::Text;
    case ftSmallint:
    case ftWord:
        return TLayout::Int16;
    case ftBoolean:
        return TLayout::Boolean;
    case ftInteger:
    case ftAutoInc:
        return TLayout::Int32;
    case ftFloat:
    case ftCurrency:
        return TLayout::Extended;
    case ftDate:
        return TLayout::Date;
    case ftTime:
        return TLayout::Time;
    case ftDateTime:
        return TLayout::DateTime;
    case ftBlob:
    case ftGraphic:
    case ftFmtMemo:
    case ftParadoxOle:
    case ftDBaseOle:
        return TLayout::Bytes;
    case ftCursor:
        return TLayout::Nothing;
    default:
        break;
    }
    if (DataType == ftUnknown) {
        DatabaseErrorFmt(LoadStr(SODBCFieldUndefinedType), Name);
    }
    DatabaseError(LoadStr(SODBCFieldUnsupportedType));
}

// BCD text is persisted with a full stop whatever the locale, so that a saved form reads back
// anywhere.
TFormatSettings PersistedNumberSettings() {
    TFormatSettings settings = FormatSettings();
    settings.DecimalSeparator = '.';
    return settings;
}

void StoreLE(void* Dest, std::uint64_t Value, std::size_t Width) {
    auto* bytes = static_cast<std::uint8_t*>(Dest);
    for (std::size_t i = 0; i < Width; ++i) {
        bytes[i] = static_cast<std::uint8_t>(Value >> (8 * i));
    }
}

std::uint64_t LoadLE(const std::uint8_t* Source, std::size_t Width) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < Width; ++i) {
        value |= std::uint64_t(Source[i]) << (8 * i);
    }
    return value;
}

// The text of a Text layout: BCD as its exact amount, everything else as the variant's text.
std::string LayoutText(TFieldType DataType, const Variant& Value) {
    if (DataType == ftBCD) {
        return CurrToStr(Value.AsCurrency(), PersistedNumberSettings());
    }
    return Value.AsString();
}

} // namespace

int TODBCParam::GetDataSize() const {
    switch (LayoutOf(FDataType, FName)) {
    case TLayout::Text:
        return static_cast<int>(LayoutText(FDataType, FValue).size()) + 1;
    case TLayout::Int16:
    case TLayout::Boolean:
        return 2;
    case TLayout::Int32:
    case TLayout::Date:
    case TLayout::Time:
        return 4;
    case TLayout::Extended:
    case TLayout::DateTime:
        return 10;
    case TLayout::Bytes:
        return static_cast<int>(FValue.AsString().size());
    case TLayout::Nothing:
        break;
    }
    return 0;
}

void TODBCParam::GetData(void* Buffer) const {
    switch (LayoutOf(FDataType, FName)) {
    case TLayout::Text: {
        const std::string text = LayoutText(FDataType, FValue);
        std::memcpy(Buffer, text.c_str(), text.size() + 1);
        break;
    }
    case TLayout::Int16:
        StoreLE(Buffer, static_cast<std::uint16_t>(FValue.AsInteger()), 2);
        break;
    case TLayout::Boolean:
        // A true 16-bit boolean has every bit set.
        StoreLE(Buffer, FValue.AsBoolean() ? 0xFFFFu : 0u, 2);
        break;
    case TLayout::Int32:
        StoreLE(Buffer, static_cast<std::uint32_t>(FValue.AsInteger()), 4);
        break;
    case TLayout::Extended:
        DoubleToExtendedBytes(FValue.AsDouble(), Buffer);
        break;
    case TLayout::Date:
        StoreLE(Buffer, static_cast<std::uint32_t>(DateTimeToTimeStamp(FValue.AsDateTime()).Date), 4);
        break;
    case TLayout::Time:
        StoreLE(Buffer, static_cast<std::uint32_t>(DateTimeToTimeStamp(FValue.AsDateTime()).Time), 4);
        break;
    case TLayout::DateTime:
        DoubleToExtendedBytes(TimeStampToMSecs(DateTimeToTimeStamp(FValue.AsDateTime())), Buffer);
        break;
    case TLayout::Bytes: {
        const std::string bytes = FValue.AsString();
        if (!bytes.empty()) {
            std::memcpy(Buffer, bytes.data(), bytes.size());
        }
        break;
    }
    case TLayout::Nothing:
        break;
    }
}

void TODBCParam::SetData(const void* Buffer, std::size_t Size) {
    const TLayout layout = LayoutOf(FDataType, FName);
    const auto* source = static_cast<const std::uint8_t*>(Buffer);
    if (layout == TLayout::Text || layout == TLayout::Bytes) {
        std::size_t length = Size;
        if (layout == TLayout::Text) {
            length = static_cast<std::size_t>(std::find(source, source + Size, 0) - source);
        }
        std::string text(reinterpret_cast<const char*>(source), length);
        InitValue();
        if (FDataType == ftBCD) {
            Currency amount;
            if (!TryStrToCurr(text, amount, PersistedNumberSettings())) {
                amount = StrToCurr(text);
            }
            FValue = amount;
        } else {
            FValue = std::move(text);
        }
        return;
    }
    // Fixed-size layouts: bytes beyond Size read as zero.
    std::array<std::uint8_t, 10> fixed{};
    std::memcpy(fixed.data(), source, std::min(Size, fixed.size()));
    InitValue();
    switch (layout) {
    case TLayout::Int16:
        FValue = FDataType == ftWord ? std::int32_t(std::uint16_t(LoadLE(fixed.data(), 2)))
                                     : std::int32_t(std::int16_t(LoadLE(fixed.data(), 2)));
        break;
    case TLayout::Boolean:
        FValue = LoadLE(fixed.data(), 2) != 0;
        break;
    case TLayout::Int32:
        FValue = std::int32_t(std::uint32_t(LoadLE(fixed.data(), 4)));
        break;
    case TLayout::Extended:
        FValue = ExtendedBytesToDouble(fixed.data());
        break;
    case TLayout::Date: {
        // Computed in 64 bits: a corrupt day count must not overflow.
        const std::int64_t days = std::int32_t(std::uint32_t(LoadLE(fixed.data(), 4)));
        FValue = Variant::FromDateTime(double(days - DateDelta));
        break;
    }
    case TLayout::Time: {
        const std::int32_t msecs = std::int32_t(std::uint32_t(LoadLE(fixed.data(), 4)));
        FValue = Variant::FromDateTime(double(msecs) / MSecsPerDay);
        break;
    }
    case TLayout::DateTime:
        FValue =
            Variant::FromDateTime(TimeStampToDateTime(MSecsToTimeStamp(ExtendedBytesToDouble(fixed.data()))));
        break;
    default:
        FValue = Variant(0);
        break;
    }
}

int TODBCParam::RecBufDataSize() const {
    switch (FDataType) {
    case ftFloat:
    case ftCurrency:
    case ftDateTime:
    case ftBCD:
        return 8;
    default:
        return GetDataSize();
    }
}

void TODBCParam::RecBufGetData(void* Buffer) const {
    switch (FDataType) {
    case ftFloat:
    case ftCurrency: {
        const double value = FValue.AsDouble();
        std::memcpy(Buffer, &value, sizeof value);
        break;
    }
    case ftDateTime: {
        const double msecs = TimeStampToMSecs(DateTimeToTimeStamp(FValue.AsDateTime()));
        std::memcpy(Buffer, &msecs, sizeof msecs);
        break;
    }
    case ftBCD: {
        const std::int64_t raw = FValue.AsCurrency().Raw();
        std::memcpy(Buffer, &raw, sizeof raw);
        break;
    }
    default:
        GetData(Buffer);
        break;
    }
}

} // namespace quorda
