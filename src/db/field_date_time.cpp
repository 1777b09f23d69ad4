#include "quorda/db/date_time_fields.h"
#include "quorda/rtl/format_settings.h"

namespace quorda {

TDateTimeField::TDateTimeField(TComponent* AOwner) : TField(AOwner) {
    SetDataType(ftDateTime);
}

void TDateTimeField::SetDisplayFormat(const std::string& Value) {
    if (FDisplayFormat != Value) {
        FDisplayFormat = Value;
        PropertyChanged(true);
    }
}

TDateTime TDateTimeField::GetAsDateTime() const {
    // Straight from the dataset's slot where it keeps one, as DataConvert would convert it.
    const TFieldDataView view = DataView();
    if (view.Direct && view.Data == nullptr) {
        return 0.0;
    }
    if (detail::IsDateTimeSlot(view, DataType())) {
        return detail::SlotDateTime(view, DataType());
    }
    TDateTime value = 0;
    return GetData(&value, false) ? value : 0.0;
}

Variant TDateTimeField::GetAsVariant() const {
    TDateTime value = 0;
    return GetData(&value, false) ? Variant::FromDateTime(value) : Variant::Null();
}

std::string TDateTimeField::GetAsString() const {
    std::string text;
    GetText(text, false);
    return text;
}

void TDateTimeField::GetText(std::string& AText, bool ADisplayText) const {
    TDateTime value = 0;
    if (!GetData(&value, false)) {
        AText.clear();
        return;
    }
    std::string format;
    if (ADisplayText && !FDisplayFormat.empty()) {
        format = FDisplayFormat;
    } else if (DataType() == ftTime) {
        format = FormatSettings().LongTimeFormat;
    } else if (DataType() == ftDate) {
        format = FormatSettings().ShortDateFormat;
    } else {
        format = "c";
    }
    AText = FormatDateTime(format, value);
}

void TDateTimeField::DoSetAsDateTime(TDateTime Value) {
    SetData(&Value, false);
}

void TDateTimeField::DoSetAsString(const std::string& Value) {
    if (Value.empty()) {
        Clear();
        return;
    }
    DoSetAsDateTime(ParseText(Value));
}

TDateTime TDateTimeField::ParseText(const std::string& Value) const {
    return StrToDateTime(Value);
}

void TDateTimeField::SetVarValue(const Variant& Value) {
    DoSetAsDateTime(Value.AsDateTime());
}

TDateField::TDateField(TComponent* AOwner) : TDateTimeField(AOwner) {
    SetDataType(ftDate);
}

TDateTime TDateField::ParseText(const std::string& Value) const {
    return StrToDate(Value);
}

TTimeField::TTimeField(TComponent* AOwner) : TDateTimeField(AOwner) {
    SetDataType(ftTime);
}

TDateTime TTimeField::ParseText(const std::string& Value) const {
    return StrToTime(Value);
}

} // namespace quorda
