#include "field_bytes_p.h"
#include "quorda/db/blob_field.h"
#include "quorda/db/dataset.h"
#include "quorda/db/db_consts.h"
#include "quorda/rtl/stream.h"

namespace quorda {

TBlobField::TBlobField(TComponent* AOwner) : TField(AOwner) {
    SetDataType(ftBlob);
}

void TBlobField::SetFieldType(TFieldType Value) {
    if (IsBlobType(Value)) {
        SetDataType(Value);
    }
}

void TBlobField::CheckTypeSize(int Value) const {
    if (Value < 0) {
        DatabaseErrorFmt(SInvalidFieldSize, Value);
    }
}

bool TBlobField::Modified() const {
    return FModified && DataSet() && FModifiedRecord == DataSet()->ActiveRecord();
}

void TBlobField::SetModified(bool Value) {
    FModified = Value;
    if (Value && DataSet()) {
        FModifiedRecord = DataSet()->ActiveRecord();
    }
}

std::unique_ptr<TStream> TBlobField::GetBlobStream(TBlobStreamMode Mode) {
    if (!DataSet()) {
        DatabaseErrorFmt(SNoDataset, FieldName());
    }
    return DataSet()->CreateBlobStream(this, Mode);
}

std::int64_t TBlobField::BlobSize() const {
    auto stream = const_cast<TBlobField*>(this)->GetBlobStream(bmRead);
    return stream ? stream->Size() : 0;
}

bool TBlobField::GetIsNull() const {
    if (!Modified()) {
        return TField::GetIsNull();
    }
    auto stream = const_cast<TBlobField*>(this)->GetBlobStream(bmRead);
    return !stream || stream->Size() == 0;
}

std::string TBlobField::GetAsString() const {
    auto stream = const_cast<TBlobField*>(this)->GetBlobStream(bmRead);
    if (!stream) {
        return {};
    }
    std::string value(static_cast<std::size_t>(stream->Size()), '\0');
    stream->SetPosition(0);
    if (!value.empty()) {
        stream->ReadBuffer(value.data(), static_cast<std::int64_t>(value.size()));
    }
    return value;
}

TBytes TBlobField::GetAsBytes() const {
    std::string value = GetAsString();
    return TBytes(value.begin(), value.end());
}

Variant TBlobField::GetAsVariant() const {
    if (IsNull()) {
        return Variant::Null();
    }
    return Variant(GetAsString());
}

void TBlobField::DoSetAsString(const std::string& Value) {
    auto stream = GetBlobStream(bmWrite);
    if (!stream) {
        throw AccessError("String");
    }
    if (!Value.empty()) {
        stream->WriteBuffer(Value.data(), static_cast<std::int64_t>(Value.size()));
    }
}

void TBlobField::DoSetAsBytes(const TBytes& Value) {
    DoSetAsString(std::string(Value.begin(), Value.end()));
}

void TBlobField::SetVarValue(const Variant& Value) {
    if (VarIsArray(Value)) {
        DoSetAsBytes(VarArrayToBytes(Value));
    } else {
        DoSetAsString(Value.AsString());
    }
}

void TBlobField::Clear() {
    // Opening the stream for writing empties the value.
    GetBlobStream(bmWrite);
}

void TBlobField::GetText(std::string& AText, bool ADisplayText) const {
    AText = TField::GetAsString();
}

void TBlobField::LoadFromStream(TStream& Stream) {
    auto stream = GetBlobStream(bmWrite);
    if (!stream) {
        throw AccessError("Blob");
    }
    // One write of the whole value: a dataset's stream may take each write as the complete value.
    Stream.SetPosition(0);
    std::string value(static_cast<std::size_t>(Stream.Size()), '\0');
    if (!value.empty()) {
        Stream.ReadBuffer(value.data(), static_cast<std::int64_t>(value.size()));
        stream->WriteBuffer(value.data(), static_cast<std::int64_t>(value.size()));
    }
}

void TBlobField::SaveToStream(TStream& Stream) const {
    auto stream = const_cast<TBlobField*>(this)->GetBlobStream(bmRead);
    if (stream && stream->Size() > 0) {
        Stream.CopyFrom(*stream, 0);
    }
}

void TBlobField::LoadFromFile(const std::string& FileName) {
    TFileStream file(FileName, fmOpenRead | fmShareDenyWrite);
    LoadFromStream(file);
}

void TBlobField::SaveToFile(const std::string& FileName) const {
    TFileStream file(FileName, fmCreate);
    SaveToStream(file);
}

TMemoField::TMemoField(TComponent* AOwner) : TBlobField(AOwner) {
    SetDataType(ftMemo);
}

TGraphicField::TGraphicField(TComponent* AOwner) : TBlobField(AOwner) {
    SetDataType(ftGraphic);
}

} // namespace quorda
