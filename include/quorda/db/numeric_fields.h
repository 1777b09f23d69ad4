#pragma once

#include "quorda/db/field.h"

namespace quorda {

// Common ground of the number fields: right alignment and the display/edit formats (FormatFloat
// pictures; empty means the plain text of the value).
class QUORDA_API TNumericField : public TField {
public:
    explicit TNumericField(TComponent* AOwner);
    std::string ClassName() const override { return "TNumericField"; }

    const std::string& DisplayFormat() const { return FDisplayFormat; }
    void SetDisplayFormat(const std::string& Value);
    const std::string& EditFormat() const { return FEditFormat; }
    void SetEditFormat(const std::string& Value);

protected:
    void CheckTypeSize(int Value) const override;
    bool GetAsBoolean() const override { return GetAsInteger() != 0; }
    void DoSetAsBoolean(bool Value) override { DoSetAsInteger(Value ? 1 : 0); }
    // Raises "Field "X" error: V is not between Min and Max.".
    [[noreturn]] void RangeError(double Value, double Min, double Max) const;
    // The format GetText uses: the display format for display text, else the edit format when set.
    const std::string& TextFormat(bool ADisplayText) const;
    // What setting AsString does on a whole-number field: empty text clears it, other text must read
    // as an integer and goes on to DoSetAsLargeInt (which checks the field's range).
    void SetWholeNumberText(const std::string& Value);

private:
    std::string FDisplayFormat;
    std::string FEditFormat;
};

// A 32-bit integer (ftInteger). MinValue/MaxValue narrow the accepted range when either is non-zero.
class QUORDA_API TIntegerField : public TNumericField {
public:
    explicit TIntegerField(TComponent* AOwner);
    std::string ClassName() const override { return "TIntegerField"; }

    std::int32_t MinValue() const { return FMinValue; }
    void SetMinValue(std::int32_t Value);
    std::int32_t MaxValue() const { return FMaxValue; }
    void SetMaxValue(std::int32_t Value);

protected:
    int GetDataSize() const override { return 4; }
    std::string GetAsString() const override;
    std::int32_t GetAsInteger() const override;
    std::int64_t GetAsLargeInt() const override { return GetAsInteger(); }
    double GetAsFloat() const override { return GetAsInteger(); }
    Currency GetAsCurrency() const override { return Currency(GetAsInteger()); }
    Variant GetAsVariant() const override;
    void DoSetAsString(const std::string& Value) override;
    void DoSetAsInteger(std::int32_t Value) override;
    void DoSetAsLargeInt(std::int64_t Value) override;
    void DoSetAsFloat(double Value) override;
    void DoSetAsCurrency(Currency Value) override;
    void SetVarValue(const Variant& Value) override;
    void GetText(std::string& AText, bool ADisplayText) const override;

    // Reads the value widened from the native width of the type; false for null.
    bool GetValue(std::int32_t& Value) const;
    bool CheckRange(std::int64_t Value) const;

    std::int32_t FMinRange;
    std::int32_t FMaxRange;

private:
    std::int32_t FMinValue = 0;
    std::int32_t FMaxValue = 0;
};

// A 16-bit signed integer (ftSmallint).
class QUORDA_API TSmallintField : public TIntegerField {
public:
    explicit TSmallintField(TComponent* AOwner);
    std::string ClassName() const override { return "TSmallintField"; }

protected:
    int GetDataSize() const override { return 2; }
};

// A 16-bit unsigned integer (ftWord).
class QUORDA_API TWordField : public TIntegerField {
public:
    explicit TWordField(TComponent* AOwner);
    std::string ClassName() const override { return "TWordField"; }

protected:
    int GetDataSize() const override { return 2; }
};

// A 32-bit integer the data source numbers itself (ftAutoInc).
class QUORDA_API TAutoIncField : public TIntegerField {
public:
    explicit TAutoIncField(TComponent* AOwner);
    std::string ClassName() const override { return "TAutoIncField"; }
};

// A 64-bit integer (ftLargeint).
class QUORDA_API TLargeintField : public TNumericField {
public:
    explicit TLargeintField(TComponent* AOwner);
    std::string ClassName() const override { return "TLargeintField"; }

    std::int64_t MinValue() const { return FMinValue; }
    void SetMinValue(std::int64_t Value) { FMinValue = Value; }
    std::int64_t MaxValue() const { return FMaxValue; }
    void SetMaxValue(std::int64_t Value) { FMaxValue = Value; }

protected:
    int GetDataSize() const override { return 8; }
    std::string GetAsString() const override;
    std::int32_t GetAsInteger() const override;
    std::int64_t GetAsLargeInt() const override;
    double GetAsFloat() const override { return static_cast<double>(GetAsLargeInt()); }
    Currency GetAsCurrency() const override { return Currency(GetAsLargeInt()); }
    Variant GetAsVariant() const override;
    void DoSetAsString(const std::string& Value) override;
    void DoSetAsInteger(std::int32_t Value) override { DoSetAsLargeInt(Value); }
    void DoSetAsLargeInt(std::int64_t Value) override;
    void DoSetAsFloat(double Value) override;
    void DoSetAsCurrency(Currency Value) override { DoSetAsLargeInt(Value.Round()); }
    void SetVarValue(const Variant& Value) override;
    void GetText(std::string& AText, bool ADisplayText) const override;

    bool GetValue(std::int64_t& Value) const;

private:
    std::int64_t FMinValue = 0;
    std::int64_t FMaxValue = 0;
};

// A double (ftFloat). Precision is the number of significant digits of the text; with the Currency
// flag the text is a currency amount.
class QUORDA_API TFloatField : public TNumericField {
public:
    explicit TFloatField(TComponent* AOwner);
    std::string ClassName() const override { return "TFloatField"; }

    int Precision() const { return FPrecision; }
    void SetPrecision(int Value);
    bool IsCurrency() const { return FCurrency; }
    void SetCurrency(bool Value);
    double MinValue() const { return FMinValue; }
    void SetMinValue(double Value) { FMinValue = Value; }
    double MaxValue() const { return FMaxValue; }
    void SetMaxValue(double Value) { FMaxValue = Value; }

protected:
    int GetDataSize() const override { return 8; }
    std::string GetAsString() const override;
    std::int32_t GetAsInteger() const override;
    std::int64_t GetAsLargeInt() const override;
    double GetAsFloat() const override;
    Currency GetAsCurrency() const override { return Currency(GetAsFloat()); }
    Variant GetAsVariant() const override;
    void DoSetAsString(const std::string& Value) override;
    void DoSetAsInteger(std::int32_t Value) override { DoSetAsFloat(Value); }
    void DoSetAsLargeInt(std::int64_t Value) override { DoSetAsFloat(static_cast<double>(Value)); }
    void DoSetAsFloat(double Value) override;
    void DoSetAsCurrency(Currency Value) override { DoSetAsFloat(Value.ToDouble()); }
    void SetVarValue(const Variant& Value) override;
    void GetText(std::string& AText, bool ADisplayText) const override;

private:
    int FPrecision = 15;
    bool FCurrency = false;
    double FMinValue = 0;
    double FMaxValue = 0;
};

// A float field shown as a currency amount (ftCurrency).
class QUORDA_API TCurrencyField : public TFloatField {
public:
    explicit TCurrencyField(TComponent* AOwner);
    std::string ClassName() const override { return "TCurrencyField"; }
};

// A fixed-point number with up to four decimals (ftBCD), stored as a Currency. Size is the number of
// decimals (0 to 4), Precision the number of digits.
class QUORDA_API TBCDField : public TNumericField {
public:
    explicit TBCDField(TComponent* AOwner);
    std::string ClassName() const override { return "TBCDField"; }

    int Precision() const { return FPrecision; }
    void SetPrecision(int Value) { FPrecision = Value; }
    bool IsCurrency() const { return FCurrency; }
    void SetCurrency(bool Value) { FCurrency = Value; }

protected:
    int GetDataSize() const override { return 8; }
    void CheckTypeSize(int Value) const override;
    std::string GetAsString() const override;
    std::int32_t GetAsInteger() const override;
    std::int64_t GetAsLargeInt() const override { return GetAsCurrency().Round(); }
    double GetAsFloat() const override { return GetAsCurrency().ToDouble(); }
    Currency GetAsCurrency() const override;
    Variant GetAsVariant() const override;
    void DoSetAsString(const std::string& Value) override;
    void DoSetAsInteger(std::int32_t Value) override { DoSetAsCurrency(Currency(Value)); }
    void DoSetAsLargeInt(std::int64_t Value) override;
    void DoSetAsFloat(double Value) override;
    void DoSetAsCurrency(Currency Value) override;
    void SetVarValue(const Variant& Value) override;
    void GetText(std::string& AText, bool ADisplayText) const override;

    bool GetValue(Currency& Value) const;

private:
    int FPrecision = 18;
    bool FCurrency = false;
};

} // namespace quorda
