#pragma once

#include "quorda/db/field.h"

namespace quorda {

// Raw bytes kept in the record buffer.
class QUORDA_API TBinaryField : public TField {
public:
    explicit TBinaryField(TComponent* AOwner);
    std::string ClassName() const override { return "TBinaryField"; }

protected:
    void CheckTypeSize(int Value) const override;
    std::string GetAsString() const override;
    TBytes GetAsBytes() const override;
    Variant GetAsVariant() const override;
    void DoSetAsString(const std::string& Value) override;
    void DoSetAsBytes(const TBytes& Value) override;
    void SetVarValue(const Variant& Value) override;

    bool GetValue(TBytes& Value) const;
};

// Exactly Size bytes (ftBytes); shorter values are padded with zeros.
class QUORDA_API TBytesField : public TBinaryField {
public:
    explicit TBytesField(TComponent* AOwner);
    std::string ClassName() const override { return "TBytesField"; }

protected:
    int GetDataSize() const override { return Size(); }
};

// Up to Size bytes (ftVarBytes), stored as a 16-bit length followed by the bytes.
class QUORDA_API TVarBytesField : public TBytesField {
public:
    explicit TVarBytesField(TComponent* AOwner);
    std::string ClassName() const override { return "TVarBytesField"; }

protected:
    int GetDataSize() const override { return Size() + 2; }
};

} // namespace quorda
