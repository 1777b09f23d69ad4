// Fields of a dataset: creation, binding, value transfer and calculated fields.

#include "quorda/db/dataset.h"
#include "quorda/db/db_consts.h"
#include "quorda/rtl/string_utils.h"
#include "quorda/rtl/strings.h"

#include <array>
#include <cstring>
#include <vector>

namespace quorda {

namespace {

// A scratch buffer for one field value: on the stack for the usual sizes.
class TValueBuffer {
public:
    explicit TValueBuffer(int Size) {
        auto size = static_cast<std::size_t>(Size > 0 ? Size : 1);
        if (size > FLocal.size()) {
            FLarge.resize(size);
            FData = FLarge.data();
        }
        std::memset(FData, 0, size);
    }
    TValueBuffer(const TValueBuffer&) = delete;
    TValueBuffer& operator=(const TValueBuffer&) = delete;
    std::byte* Data() { return FData; }

private:
    std::array<std::byte, 64> FLocal;
    std::vector<std::byte> FLarge;
    std::byte* FData = FLocal.data();
};

bool IsDateTimeType(TFieldType Type) {
    return Type == ftDate || Type == ftTime || Type == ftDateTime;
}

} // namespace

// ---- lookup by name

TField* TDataSet::FieldByName(std::string_view FieldName) const {
    return FFields->FieldByName(FieldName);
}

TField* TDataSet::FindField(std::string_view FieldName) const {
    return FFields->FindField(FieldName);
}

TField* TDataSet::FieldByNumber(int FieldNo) const {
    return FFields->FieldByNumber(FieldNo);
}

void TDataSet::GetFieldList(std::vector<TField*>& List, const std::string& FieldNames) const {
    std::size_t pos = 0;
    while (pos < FieldNames.size()) {
        List.push_back(FieldByName(ExtractFieldName(FieldNames, pos)));
    }
}

void TDataSet::GetFieldNames(TStrings& List) const {
    FFields->GetFieldNames(List);
}

Variant TDataSet::FieldValues(const std::string& FieldNames) const {
    std::vector<TField*> fields;
    GetFieldList(fields, FieldNames);
    if (fields.size() <= 1) {
        return FieldByName(FieldNames)->Value();
    }
    Variant result = VarArrayCreate(0, static_cast<int>(fields.size()) - 1);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        result.SetArrayElement(static_cast<int>(i), fields[i]->Value());
    }
    return result;
}

void TDataSet::SetFieldValues(const std::string& FieldNames, const Variant& Value) {
    if (!VarIsArray(Value)) {
        FieldByName(FieldNames)->SetValue(Value);
        return;
    }
    std::vector<TField*> fields;
    GetFieldList(fields, FieldNames);
    int low = VarArrayLowBound(Value);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        fields[i]->SetValue(Value[low + static_cast<int>(i)]);
    }
}

// ---- creation and binding

TFieldClass TDataSet::GetFieldClass(TFieldType FieldType) {
    return DefaultFieldClass(FieldType);
}

void TDataSet::CreateFields() {
    for (int i = 0; i < FFieldDefs->Count(); ++i) {
        TFieldDef* def = FFieldDefs->Items(i);
        if (def->DataType() != ftUnknown) {
            def->CreateField(this);
        }
    }
}

void TDataSet::DestroyFields() {
    FFields->Clear();
}

void TDataSet::BindFields(bool Binding) {
    // Calculated and lookup fields get FieldNo -1 and a slot in the calculated-field area; data
    // fields take the number of their definition; unbinding sets every FieldNo to 0.
    FCalcFieldsSize = 0;
    FBlobFieldCount = 0;
    for (TField* field : *FFields) {
        field->FFieldDef = nullptr;
        field->FSlotOffset = -1;
        field->FSlotLengthDelta = 0;
        if (!Binding) {
            field->FFieldNo = 0;
        } else if (field->FieldKind() == fkCalculated || field->FieldKind() == fkLookup) {
            field->FFieldNo = -1;
            field->FOffset = FCalcFieldsSize;
            FCalcFieldsSize += field->DataSize() + 1;
        } else {
            int index = FFieldDefs->IndexOf(field->FieldName());
            if (index < 0) {
                DatabaseErrorFmt(SFieldNotFound, field->FieldName());
            }
            TFieldDef* def = FFieldDefs->Items(index);
            field->FFieldDef = def;
            field->FFieldNo = def->FieldNo();
            if (def->InternalCalcField()) {
                FInternalCalcFields = true;
            }
            if (field->IsBlob()) {
                field->FSize = def->Size();
                field->FOffset = FBlobFieldCount++;
            }
        }
        field->Bind(Binding);
    }
}

void TDataSet::InitFieldDefs() {
    if (IsCursorOpen()) {
        InternalInitFieldDefs();
        return;
    }
    try {
        OpenCursor(true);
    } catch (...) {
        try {
            CloseCursor();
        } catch (...) {
        }
        throw;
    }
    CloseCursor();
}

void TDataSet::InitFieldDefsFromFields() {
    if (FFieldDefs->Count() > 0) {
        return;
    }
    for (TField* field : *FFields) {
        if (field->FieldKind() == fkCalculated || field->FieldKind() == fkLookup) {
            continue;
        }
        TFieldDef* def = FFieldDefs->Add(field->FieldName(), field->DataType(), field->Size(),
                                         field->Required(), FFieldDefs->Count() + 1);
        TFieldAttributes attributes;
        if (field->Required()) {
            attributes.insert(faRequired);
        }
        if (field->ReadOnly()) {
            attributes.insert(faReadonly);
        }
        def->SetAttributes(attributes);
        if (auto* bcd = dynamic_cast<TBCDField*>(field)) {
            def->SetPrecision(bcd->Precision());
        } else if (auto* number = dynamic_cast<TFloatField*>(field)) {
            def->SetPrecision(number->Precision());
        }
        field->FFieldDef = def;
    }
}

// ---- value transfer

bool TDataSet::GetFieldData(TField* Field, void* Buffer) {
    return false;
}

bool TDataSet::GetFieldData(TField* Field, void* Buffer, bool NativeFormat) {
    if (NativeFormat || !Buffer) {
        return GetFieldData(Field, Buffer);
    }
    return GetConvertedFieldData(Field, Buffer);
}

bool TDataSet::GetConvertedFieldData(TField* Field, void* Buffer) {
    TValueBuffer native(Field->DataSize());
    bool result = GetFieldData(Field, native.Data());
    if (result) {
        DataConvert(Field, native.Data(), Buffer, false);
    }
    return result;
}

void TDataSet::SetFieldData(TField* Field, const void* Buffer) {
    // A dataset that stores nothing still refuses writes outside an edit, rather than drop them.
    if (!IsWriteMode(FState)) {
        DatabaseError(SNotEditing);
    }
}

void TDataSet::SetFieldData(TField* Field, const void* Buffer, bool NativeFormat) {
    if (NativeFormat || !Buffer) {
        SetFieldData(Field, Buffer);
        return;
    }
    SetConvertedFieldData(Field, Buffer);
}

void TDataSet::SetConvertedFieldData(TField* Field, const void* Buffer) {
    TValueBuffer native(Field->DataSize());
    DataConvert(Field, Buffer, native.Data(), true);
    SetFieldData(Field, native.Data());
}

void TDataSet::DataConvert(TField* Field, const void* Source, void* Dest, bool ToNative) {
    TFieldType type = Field->DataType();
    if (!IsDateTimeType(type)) {
        std::memcpy(Dest, Source, static_cast<std::size_t>(Field->DataSize()));
        return;
    }
    if (ToNative) {
        TDateTime value;
        std::memcpy(&value, Source, sizeof(value));
        TDateTimeRec rec = DateTimeToDateTimeRec(type, value);
        std::memcpy(Dest, &rec, sizeof(rec));
    } else {
        TDateTimeRec rec;
        std::memcpy(&rec, Source, sizeof(rec));
        TDateTime value = DateTimeRecToDateTime(type, rec);
        std::memcpy(Dest, &value, sizeof(value));
    }
}

std::unique_ptr<TStream> TDataSet::CreateBlobStream(TField* Field, TBlobStreamMode Mode) {
    return nullptr;
}

Variant TDataSet::GetStateFieldValue(TDataSetState AState, TField* Field) {
    if (Field->FieldKind() != fkData && Field->FieldKind() != fkInternalCalc) {
        return Variant::Null();
    }
    TDataSetState saved = FState;
    FState = AState;
    try {
        Variant result = Field->AsVariant();
        FState = saved;
        return result;
    } catch (...) {
        FState = saved;
        throw;
    }
}

void TDataSet::FreeFieldBuffers() {
    for (TField* field : *FFields) {
        field->FreeBuffers();
    }
}

// ---- calculated fields

void TDataSet::CalculateFields(TRecordBuffer Buffer) {
    FCalcBuffer = Buffer;
    if (FState == dsInternalCalc) {
        return;
    }
    TDataSetState saved = FState;
    FState = dsCalcFields;
    try {
        ClearCalcFields(FCalcBuffer);
        DoOnCalcFields();
    } catch (...) {
        FState = saved;
        throw;
    }
    FState = saved;
}

void TDataSet::GetCalcFields(TRecordBuffer Buffer) {
    if (FCalcFieldsSize > 0 || FInternalCalcFields) {
        CalculateFields(Buffer);
    }
}

void TDataSet::RefreshInternalCalcFields(TRecordBuffer Buffer) {
    // A dataset that computes internal fields itself overrides this; calculated fields still follow.
    if (FAutoCalcFields && FCalcFieldsSize > 0) {
        CalculateFields(Buffer);
    }
}

void TDataSet::InitRecord(TRecordBuffer Buffer) {
    InternalInitRecord(Buffer);
    ClearCalcFields(Buffer);
}

} // namespace quorda
