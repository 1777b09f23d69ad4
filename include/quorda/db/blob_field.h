#pragma once

#include "quorda/db/field.h"
#include "quorda/rtl/stream.h"

#include <memory>

namespace quorda {

// A value of any length kept outside the record buffer (ftBlob and the other blob types) and read or
// written through the dataset's blob stream.
class QUORDA_API TBlobField : public TField {
public:
    explicit TBlobField(TComponent* AOwner);
    std::string ClassName() const override { return "TBlobField"; }
    bool IsBlob() const override { return true; }
    void SetFieldType(TFieldType Value) override;
    void Clear() override;

    TFieldType BlobType() const { return DataType(); }
    void SetBlobType(TFieldType Value) { SetFieldType(Value); }

    // Whether the value was written in the current record (the blob streams set it).
    bool Modified() const;
    void SetModified(bool Value);

    // The stream of the dataset (null when the dataset offers none).
    std::unique_ptr<TStream> GetBlobStream(TBlobStreamMode Mode);
    // Size of the value in bytes.
    std::int64_t BlobSize() const;

    void LoadFromStream(TStream& Stream);
    void SaveToStream(TStream& Stream) const;
    void LoadFromFile(const std::string& FileName);
    void SaveToFile(const std::string& FileName) const;

protected:
    void CheckTypeSize(int Value) const override;
    // The dataset frees field buffers when a record is posted, cancelled or deleted.
    void FreeBuffers() override { FModified = false; }
    bool GetIsNull() const override;
    std::string GetAsString() const override;
    TBytes GetAsBytes() const override;
    Variant GetAsVariant() const override;
    void DoSetAsString(const std::string& Value) override;
    void DoSetAsBytes(const TBytes& Value) override;
    void SetVarValue(const Variant& Value) override;
    void GetText(std::string& AText, bool ADisplayText) const override;

private:
    bool FModified = false;
    int FModifiedRecord = -1;
};

// Text of any length (ftMemo, ftFmtMemo).
class QUORDA_API TMemoField : public TBlobField {
public:
    explicit TMemoField(TComponent* AOwner);
    std::string ClassName() const override { return "TMemoField"; }
};

// An image kept as a blob (ftGraphic).
class QUORDA_API TGraphicField : public TBlobField {
public:
    explicit TGraphicField(TComponent* AOwner);
    std::string ClassName() const override { return "TGraphicField"; }
};

} // namespace quorda
