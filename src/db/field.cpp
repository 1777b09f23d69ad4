#include "quorda/db/field.h"

#include "quorda/db/dataset.h"
#include "quorda/db/db_consts.h"
#include "quorda/db/fields.h"
#include "quorda/rtl/string_utils.h"

#include <cmath>
#include <cstring>

namespace quorda {

namespace {

// "(INTEGER)" for a value, "(integer)" for null: the text of a value that has no text of its own.
std::string ClassDescription(const std::string& ClassName, bool IsNull) {
    std::string name = ClassName;
    if (!name.empty() && name.front() == 'T') {
        name.erase(0, 1);
    }
    if (auto pos = name.rfind("Field"); pos != std::string::npos) {
        name.erase(pos);
    }
    return "(" + (IsNull ? LowerCase(name) : UpperCase(name)) + ")";
}

} // namespace

TField::TField(TComponent* AOwner) : TComponent(AOwner) {}

TField::~TField() {
    if (FDataSet) {
        // A field that goes away while its dataset is open takes the dataset down with it, so that no
        // link keeps showing it.
        if (FDataSet->Active()) {
            try {
                FDataSet->Close();
            } catch (...) {
            }
        }
    }
    if (FFields) {
        FFields->Remove(this);
    }
}

void TField::Assign(const TPersistent* Source) {
    if (!Source) {
        Clear();
    } else if (auto* field = dynamic_cast<const TField*>(Source)) {
        SetValue(field->Value());
    } else {
        TComponent::Assign(Source);
    }
}

void TField::SetFieldName(const std::string& Value) {
    if (FFields && !SameText(Value, FFieldName) && FFields->FindField(Value)) {
        DatabaseErrorFmt(SDuplicateFieldName, Value);
    }
    FFieldName = Value;
}

void TField::SetSize(int Value) {
    CheckInactive();
    CheckTypeSize(Value);
    FSize = Value;
}

void TField::CheckTypeSize(int Value) const {
    if (Value != 0 && !IsBlob()) {
        DatabaseErrorFmt(SInvalidFieldSize, Value);
    }
}

int TField::Index() const {
    return FFields ? FFields->IndexOf(this) : -1;
}

void TField::SetIndex(int Value) {
    if (FFields) {
        FFields->SetFieldIndex(this, Value);
    }
}

std::string TField::DisplayName() const {
    return FDisplayLabel.empty() ? FFieldName : FDisplayLabel;
}

void TField::SetDisplayLabel(const std::string& Value) {
    if (FDisplayLabel != Value) {
        FDisplayLabel = Value;
        PropertyChanged(true);
    }
}

int TField::DisplayWidth() const {
    return FDisplayWidth != 0 ? FDisplayWidth : GetDefaultWidth();
}

void TField::SetDisplayWidth(int Value) {
    if (FDisplayWidth != Value) {
        FDisplayWidth = Value;
        PropertyChanged(true);
    }
}

void TField::SetAlignment(TAlignment Value) {
    if (FAlignment != Value) {
        FAlignment = Value;
        PropertyChanged(false);
    }
}

void TField::SetVisible(bool Value) {
    if (FVisible != Value) {
        FVisible = Value;
        PropertyChanged(true);
    }
}

void TField::SetReadOnly(bool Value) {
    if (FReadOnly != Value) {
        FReadOnly = Value;
        PropertyChanged(true);
    }
}

void TField::SetFieldKind(TFieldKind Value) {
    CheckInactive();
    FFieldKind = Value;
}

void TField::SetDataSet(TDataSet* Value) {
    if (Value == FDataSet) {
        return;
    }
    if (FDataSet) {
        FDataSet->CheckInactive();
    }
    if (Value) {
        Value->CheckInactive();
        Value->Fields().CheckFieldName(FFieldName);
    }
    FSlotOffset = -1;
    FSlotLengthDelta = 0;
    if (FDataSet) {
        FDataSet->Fields().Remove(this);
    }
    FDataSet = nullptr;
    if (Value) {
        Value->Fields().Add(this);
        FDataSet = Value;
    }
}

bool TField::GetCanModify() const {
    if (FReadOnly || (FFieldKind != fkData && FFieldKind != fkInternalCalc)) {
        return false;
    }
    return FDataSet && FDataSet->Active() && FDataSet->CanModify();
}

bool TField::GetIsNull() const {
    return !GetData(nullptr);
}

void TField::Change() {
    if (OnChange) {
        OnChange(this);
    }
}

// ---- value access

TFieldDataView TField::PeekDataView() const {
    // While OnValidate runs, the value being validated is not in the record: no view of it.
    if (!FDataSet || FValidating) {
        return {};
    }
    return FDataSet->PeekFieldData(this);
}

bool TField::GetSlotData(void* Buffer) const {
    const TFieldDataView view = DataView();
    if (!view.Direct) {
        return GetData(Buffer);
    }
    if (view.Data == nullptr) {
        return false;
    }
    // The usual widths copy without a library call; the bytes past the value stay the caller's zeros.
    switch (view.Size) {
    case 2:
        std::memcpy(Buffer, view.Data, 2);
        break;
    case 4:
        std::memcpy(Buffer, view.Data, 4);
        break;
    case 8:
        std::memcpy(Buffer, view.Data, 8);
        break;
    default:
        std::memcpy(Buffer, view.Data, view.Size);
        break;
    }
    return true;
}

bool TField::GetData(void* Buffer, bool NativeFormat) const {
    if (!FDataSet) {
        DatabaseErrorFmt(SNoDataset, FFieldName);
    }
    if (FValidating) {
        // While OnValidate runs the value being validated stands in for the stored one.
        if (FValueBuffer && Buffer) {
            if (NativeFormat) {
                std::memcpy(Buffer, FValueBuffer, static_cast<std::size_t>(DataSize()));
            } else {
                FDataSet->DataConvert(const_cast<TField*>(this), FValueBuffer, Buffer, false);
            }
        }
        return FValueBuffer != nullptr;
    }
    return FDataSet->GetFieldData(const_cast<TField*>(this), Buffer, NativeFormat);
}

void TField::SetData(const void* Buffer, bool NativeFormat) {
    if (!FDataSet) {
        DatabaseErrorFmt(SNoDataset, DisplayName());
    }
    FDataSet->SetFieldData(this, Buffer, NativeFormat);
}

void TField::Validate(const void* Buffer) {
    if (!OnValidate) {
        return;
    }
    struct Guard {
        TField* Self;
        ~Guard() {
            Self->FValidating = false;
            Self->FValueBuffer = nullptr;
        }
    } guard{this};
    FValueBuffer = Buffer;
    FValidating = true;
    OnValidate(this);
}

void TField::Clear() {
    SetData(nullptr);
}

void TField::FocusControl() {
    if (!FDataSet) {
        return;
    }
    TField* field = this;
    FDataSet->DataEvent(deFocusControl, reinterpret_cast<std::intptr_t>(&field));
}

Variant TField::OldValue() const {
    if (!FDataSet) {
        DatabaseErrorFmt(SNoDataset, FFieldName);
    }
    return FDataSet->GetStateFieldValue(dsOldValue, const_cast<TField*>(this));
}

Variant TField::CurValue() const {
    if (!FDataSet) {
        DatabaseErrorFmt(SNoDataset, FFieldName);
    }
    return FDataSet->GetStateFieldValue(dsCurValue, const_cast<TField*>(this));
}

Variant TField::NewValue() const {
    if (!FDataSet) {
        DatabaseErrorFmt(SNoDataset, FFieldName);
    }
    return FDataSet->GetStateFieldValue(dsNewValue, const_cast<TField*>(this));
}

void TField::SetNewValue(const Variant& Value) {
    if (!FDataSet) {
        DatabaseErrorFmt(SNoDataset, FFieldName);
    }
    TDataSetState saved = FDataSet->SetTempState(dsNewValue);
    try {
        SetAsVariant(Value);
    } catch (...) {
        FDataSet->RestoreState(saved);
        throw;
    }
    FDataSet->RestoreState(saved);
}

std::string TField::Text() const {
    std::string text;
    if (OnGetText) {
        OnGetText(const_cast<TField*>(this), text, false);
    } else {
        GetText(text, false);
    }
    return text;
}

void TField::SetText(const std::string& Value) {
    if (OnSetText) {
        OnSetText(this, Value);
    } else {
        DoSetText(Value);
    }
}

std::string TField::DisplayText() const {
    std::string text;
    if (OnGetText) {
        OnGetText(const_cast<TField*>(this), text, true);
    } else {
        GetText(text, true);
    }
    return text;
}

void TField::GetText(std::string& AText, bool ADisplayText) const {
    AText = GetAsString();
}

void TField::DoSetText(const std::string& Value) {
    DoSetAsString(Value);
}

// ---- conversions a field class does not support

std::string TField::GetAsString() const {
    return ClassDescription(ClassName(), IsNull());
}
std::int32_t TField::GetAsInteger() const {
    throw AccessError("Integer");
}
std::int64_t TField::GetAsLargeInt() const {
    throw AccessError("LargeInt");
}
double TField::GetAsFloat() const {
    throw AccessError("Float");
}
Currency TField::GetAsCurrency() const {
    return Currency(GetAsFloat());
}
bool TField::GetAsBoolean() const {
    throw AccessError("Boolean");
}
TDateTime TField::GetAsDateTime() const {
    throw AccessError("TDateTime");
}
Variant TField::GetAsVariant() const {
    throw AccessError("Variant");
}

TBytes TField::GetAsBytes() const {
    TBytes bytes(static_cast<std::size_t>(DataSize()));
    if (bytes.empty() || !GetData(bytes.data())) {
        return {};
    }
    return bytes;
}

void TField::DoSetAsString(const std::string&) {
    throw AccessError("String");
}
void TField::DoSetAsInteger(std::int32_t) {
    throw AccessError("Integer");
}
void TField::DoSetAsLargeInt(std::int64_t) {
    throw AccessError("LargeInt");
}
void TField::DoSetAsFloat(double) {
    throw AccessError("Float");
}
void TField::DoSetAsCurrency(Currency Value) {
    DoSetAsFloat(Value.ToDouble());
}
void TField::DoSetAsBoolean(bool) {
    throw AccessError("Boolean");
}
void TField::DoSetAsDateTime(TDateTime) {
    throw AccessError("TDateTime");
}
void TField::DoSetAsBytes(const TBytes&) {
    throw AccessError("Bytes");
}
void TField::SetVarValue(const Variant&) {
    throw AccessError("Variant");
}

void TField::DoSetAsVariant(const Variant& Value) {
    if (VarIsNull(Value) || VarIsEmpty(Value)) {
        Clear();
        return;
    }
    try {
        SetVarValue(Value);
    } catch (const EVariantError&) {
        DatabaseErrorFmt(std::string(SFieldError) + SInvalidVariant, DisplayName());
    }
}

EDatabaseError TField::AccessError(const std::string& TypeName) const {
    return EDatabaseError(FormatMessage(SInvalidTypeConversion, TypeName, FFieldName));
}

void TField::NullValueError() const {
    DatabaseErrorFmt(SFieldIsNull, FFieldName);
}

void TField::CheckInactive() const {
    if (FDataSet) {
        FDataSet->CheckInactive();
    }
}

void TField::PropertyChanged(bool LayoutAffected) {
    if (FDataSet && FDataSet->Active()) {
        FDataSet->DataEvent(LayoutAffected ? deLayoutChange : deDataSetChange, 0);
    }
}

// ---- native date/time slots

TDateTimeRec DateTimeToDateTimeRec(TFieldType DataType, TDateTime Value) {
    TTimeStamp stamp = DateTimeToTimeStamp(Value);
    TDateTimeRec rec;
    // The unused half of an 8-byte slot stays zero.
    std::memset(&rec, 0, sizeof(rec));
    switch (DataType) {
    case ftDate:
        rec.Date = stamp.Date;
        break;
    case ftTime:
        rec.Time = stamp.Time;
        break;
    default:
        rec.DateTime = TimeStampToMSecs(stamp);
        break;
    }
    return rec;
}

namespace {

// Past the last day of the calendar (10000-01-01 counted from day 1), in milliseconds.
constexpr double kRecordMSecsLimit = 3652060.0 * MSecsPerDay;

} // namespace

TDateTime DateTimeRecToDateTime(TFieldType DataType, const TDateTimeRec& Value) {
    TTimeStamp stamp;
    switch (DataType) {
    case ftDate:
        stamp.Date = Value.Date;
        stamp.Time = 0;
        break;
    case ftTime:
        stamp.Date = DateDelta;
        stamp.Time = Value.Time;
        break;
    default: {
        // Every time stamp a record holds is whole milliseconds from day 1 on: split in integers and
        // composed as TimeStampToDateTime(MSecsToTimeStamp(...)) would, without the two calls per read.
        const double msecs = std::trunc(Value.DateTime);
        if (msecs >= 0 && msecs < kRecordMSecsLimit) {
            const auto total = static_cast<std::int64_t>(msecs);
            const auto days = static_cast<double>(total / MSecsPerDay - DateDelta);
            const double time = static_cast<double>(total % MSecsPerDay) / MSecsPerDay;
            return days < 0 ? days - time : days + time;
        }
        stamp = MSecsToTimeStamp(msecs);
        break;
    }
    }
    return TimeStampToDateTime(stamp);
}

} // namespace quorda
