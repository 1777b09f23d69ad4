#pragma once

#include "quorda/db/field.h"

namespace quorda {

// Text of at most Size bytes (ftString, ftFixedChar), stored zero-terminated in Size + 1 bytes.
class QUORDA_API TStringField : public TField {
public:
    explicit TStringField(TComponent* AOwner);
    std::string ClassName() const override { return "TStringField"; }
    void SetFieldType(TFieldType Value) override;

    bool FixedChar() const { return DataType() == ftFixedChar; }

protected:
    int GetDataSize() const override { return Size() + 1; }
    int GetDefaultWidth() const override { return Size(); }
    void CheckTypeSize(int Value) const override;

    std::string GetAsString() const override;
    std::int32_t GetAsInteger() const override;
    std::int64_t GetAsLargeInt() const override;
    double GetAsFloat() const override;
    Currency GetAsCurrency() const override;
    bool GetAsBoolean() const override;
    TDateTime GetAsDateTime() const override;
    Variant GetAsVariant() const override;
    void DoSetAsString(const std::string& Value) override;
    void DoSetAsInteger(std::int32_t Value) override;
    void DoSetAsLargeInt(std::int64_t Value) override;
    void DoSetAsFloat(double Value) override;
    void DoSetAsCurrency(Currency Value) override;
    void DoSetAsBoolean(bool Value) override;
    void DoSetAsDateTime(TDateTime Value) override;
    void SetVarValue(const Variant& Value) override;

    // Reads the text; false for null.
    bool GetValue(std::string& Value) const;
};

} // namespace quorda
