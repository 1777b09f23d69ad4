#include "quorda/db/boolean_field.h"
#include "quorda/db/db_consts.h"
#include "quorda/rtl/string_utils.h"

#include <algorithm>
#include <cstdint>

namespace quorda {

TBooleanField::TBooleanField(TComponent* AOwner) : TField(AOwner) {
    SetDataType(ftBoolean);
    SetDisplayValues("True;False");
}

void TBooleanField::SetDisplayValues(const std::string& Value) {
    if (FDisplayValues == Value) {
        return;
    }
    auto separator = Value.find(';');
    if (separator == std::string::npos || separator == 0 || separator + 1 == Value.size()) {
        DatabaseErrorFmt(std::string(SFieldError) + SInvalidDisplayValues, DisplayName(), Value);
    }
    FDisplayValues = Value;
    FTrueText = Value.substr(0, separator);
    FFalseText = Value.substr(separator + 1);
    PropertyChanged(true);
}

int TBooleanField::GetDefaultWidth() const {
    return static_cast<int>(std::max(Utf8Length(FTrueText), Utf8Length(FFalseText)));
}

bool TBooleanField::GetAsBoolean() const {
    std::int16_t value = 0;
    return GetSlotData(&value) && value != 0;
}

std::string TBooleanField::GetAsString() const {
    std::int16_t value = 0;
    if (!GetData(&value)) {
        return {};
    }
    return value != 0 ? FTrueText : FFalseText;
}

Variant TBooleanField::GetAsVariant() const {
    std::int16_t value = 0;
    if (!GetData(&value)) {
        return Variant::Null();
    }
    return Variant(value != 0);
}

void TBooleanField::DoSetAsBoolean(bool Value) {
    std::int16_t value = Value ? 1 : 0;
    SetData(&value);
}

void TBooleanField::DoSetAsString(const std::string& Value) {
    if (Value.empty()) {
        Clear();
    } else if (StartsText(Value, FTrueText)) {
        DoSetAsBoolean(true);
    } else if (StartsText(Value, FFalseText)) {
        DoSetAsBoolean(false);
    } else {
        DatabaseErrorFmt(SNotABoolean, Value);
    }
}

void TBooleanField::SetVarValue(const Variant& Value) {
    DoSetAsBoolean(Value.AsBoolean());
}

} // namespace quorda
