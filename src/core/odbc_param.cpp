#include "quorda/core/odbc_params.h"
#include "quorda/rtl/messages.h"
#include "quorda/rtl/stream.h"

#include <memory>

namespace quorda {

TODBCParam::TODBCParam(TODBCParams* AParamList) {
    if (AParamList) {
        AParamList->AddParam(this);
    }
}

TODBCParam::~TODBCParam() {
    if (FParamList) {
        FParamList->RemoveParam(this);
    }
}

void TODBCParam::AssignParam(const TODBCParam* Param) {
    if (!Param || Param == this) {
        return;
    }
    SetDataType(Param->FDataType);
    if (Param->FNull) {
        Clear();
    } else {
        InitValue();
        FValue = Param->FValue;
    }
    FBound = Param->FBound;
    FName = Param->FName;
}

void TODBCParam::Clear() {
    FNull = true;
    FValue = Variant(0);
    FBlobText.clear();
}

void TODBCParam::InitValue() {
    FBound = true;
    FNull = false;
}

bool TODBCParam::IsEqual(const TODBCParam* Value) const {
    if (!Value || FValue.VarType() != Value->FValue.VarType() || FName != Value->FName ||
        FDataType != Value->FDataType || FNull != Value->FNull || FBound != Value->FBound) {
        return false;
    }
    // Arrays may hold elements that cannot be compared (a text against a number): those differ.
    try {
        return FValue == Value->FValue;
    } catch (const EVariantError&) {
        return false;
    }
}

void TODBCParam::SetDataType(TFieldType Value) {
    FDataType = Value;
    FValue = Variant(0);
}

void TODBCParam::LoadFromStream(TStream& Stream, TBlobType BlobType) {
    InitValue();
    FDataType = BlobType;
    Stream.SetPosition(0);
    std::string data(static_cast<std::size_t>(Stream.Size()), '\0');
    Stream.ReadBuffer(data.data(), static_cast<std::int64_t>(data.size()));
    FValue = std::move(data);
}

void TODBCParam::LoadFromFile(const std::string& FileName, TBlobType BlobType) {
    TFileStream stream(FileName, fmOpenRead);
    LoadFromStream(stream, BlobType);
}

void TODBCParam::SetBlobData(const void* Buffer, std::size_t Size) {
    SetAsString(Size ? std::string(static_cast<const char*>(Buffer), Size) : std::string());
    // Straight into the member: going through SetDataType would reset the value just stored.
    FDataType = ftBlob;
}

// --- getters

bool TODBCParam::GetAsBoolean() const {
    return FValue.AsBoolean();
}

std::int32_t TODBCParam::GetAsInteger() const {
    return FValue.AsInteger();
}

double TODBCParam::GetAsFloat() const {
    return FValue.AsDouble();
}

Currency TODBCParam::GetAsBCD() const {
    return FValue.AsCurrency();
}

TDateTime TODBCParam::GetAsDateTime() const {
    return FValue.AsDateTime();
}

std::string TODBCParam::GetAsMemo() const {
    return FValue.AsString();
}

std::string TODBCParam::GetAsString() const {
    if (FNull) {
        return {};
    }
    switch (FDataType) {
    case ftBoolean:
        return LoadStr(FValue.AsBoolean() ? SODBCTextTrue : SODBCTextFalse);
    case ftDate:
    case ftTime:
    case ftDateTime:
        return Variant::FromDateTime(FValue.AsDateTime()).AsString();
    default:
        return FValue.AsString();
    }
}

// --- setters: InitValue, then the type, then the value. The "through" setters store their own type
// straight into the member afterwards, so that the value survives.

void TODBCParam::SetAsBoolean(bool Value) {
    InitValue();
    SetDataType(ftBoolean);
    FValue = Value;
}

void TODBCParam::SetAsInteger(std::int32_t Value) {
    InitValue();
    SetDataType(ftInteger);
    FValue = Value;
}

void TODBCParam::SetAsLargeInt(std::int64_t Value) {
    InitValue();
    SetDataType(ftLargeint);
    FValue = Value;
}

void TODBCParam::SetAsSmallInt(std::int32_t Value) {
    SetAsInteger(Value);
    FDataType = ftSmallint;
}

void TODBCParam::SetAsWord(std::int32_t Value) {
    SetAsInteger(Value);
    FDataType = ftWord;
}

void TODBCParam::SetAsFloat(double Value) {
    InitValue();
    SetDataType(ftFloat);
    FValue = Value;
}

void TODBCParam::SetAsCurrency(double Value) {
    SetAsFloat(Value);
    FDataType = ftCurrency;
}

void TODBCParam::SetAsBCD(Currency Value) {
    InitValue();
    SetDataType(ftBCD);
    FValue = Value;
}

void TODBCParam::SetAsDate(TDateTime Value) {
    InitValue();
    SetDataType(ftDate);
    FValue = Variant::FromDateTime(Value);
}

void TODBCParam::SetAsTime(TDateTime Value) {
    SetAsDate(Value);
    FDataType = ftTime;
}

void TODBCParam::SetAsDateTime(TDateTime Value) {
    SetAsDate(Value);
    FDataType = ftDateTime;
}

void TODBCParam::SetAsMemo(const std::string& Value) {
    InitValue();
    SetDataType(ftMemo);
    FValue = Value;
}

void TODBCParam::SetAsString(const std::string& Value) {
    InitValue();
    if (FDataType != ftString && FDataType != ftMemo) {
        SetDataType(ftString);
    }
    FValue = Value;
}

void TODBCParam::SetAsVariant(const Variant& Value) {
    InitValue();
    switch (VarTypeIsInteger(Value.VarType()) ? varInteger : Value.VarType()) {
    case varEmpty:
    case varNull:
        // The type is kept; the value becomes what Clear leaves, so the native layouts still apply.
        Clear();
        return;
    case varInteger:
        SetDataType(ftInteger);
        break;
    case varSingle:
    case varDouble:
        SetDataType(ftFloat);
        break;
    case varCurrency:
        SetDataType(ftCurrency);
        break;
    case varDate:
        SetDataType(ftDateTime);
        break;
    case varBoolean:
        SetDataType(ftBoolean);
        break;
    case varString:
    case varOleStr:
        SetDataType(ftString);
        break;
    default:
        SetDataType(ftUnknown);
        break;
    }
    FValue = Value;
}

void TODBCParam::SetText(const std::string& Value) {
    InitValue();
    if (FDataType == ftUnknown) {
        FDataType = ftString;
    }
    // The text is stored first: when the conversion below raises, the parameter keeps the text.
    FValue = Value;
    switch (FDataType) {
    case ftSmallint:
    case ftInteger:
    case ftWord:
        FValue = FValue.AsInteger();
        break;
    case ftBoolean:
        FValue = FValue.AsBoolean();
        break;
    case ftFloat:
    case ftCurrency:
        FValue = FValue.AsDouble();
        break;
    case ftBCD:
        FValue = FValue.AsCurrency();
        break;
    case ftDate:
    case ftTime:
    case ftDateTime:
        FValue = Variant::FromDateTime(FValue.AsDateTime());
        break;
    default:
        break;
    }
}

} // namespace quorda
