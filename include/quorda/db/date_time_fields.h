#pragma once

#include "quorda/db/field.h"

namespace quorda {

// A date and time (ftDateTime), stored natively as double milliseconds of a TTimeStamp. Text uses
// DisplayFormat (FormatDateTime) when set, otherwise the type's default format.
class QUORDA_API TDateTimeField : public TField {
public:
    explicit TDateTimeField(TComponent* AOwner);
    std::string ClassName() const override { return "TDateTimeField"; }

    const std::string& DisplayFormat() const { return FDisplayFormat; }
    void SetDisplayFormat(const std::string& Value);

protected:
    int GetDataSize() const override { return 8; }
    std::string GetAsString() const override;
    double GetAsFloat() const override { return GetAsDateTime(); }
    TDateTime GetAsDateTime() const override;
    Variant GetAsVariant() const override;
    void DoSetAsString(const std::string& Value) override;
    void DoSetAsFloat(double Value) override { DoSetAsDateTime(Value); }
    void DoSetAsDateTime(TDateTime Value) override;
    void SetVarValue(const Variant& Value) override;
    void GetText(std::string& AText, bool ADisplayText) const override;

    // Parses text for this field's type (date, time or both).
    virtual TDateTime ParseText(const std::string& Value) const;

private:
    std::string FDisplayFormat;
};

// A date (ftDate), stored natively as the int32 day number of a TTimeStamp.
class QUORDA_API TDateField : public TDateTimeField {
public:
    explicit TDateField(TComponent* AOwner);
    std::string ClassName() const override { return "TDateField"; }

protected:
    TDateTime ParseText(const std::string& Value) const override;
};

// A time of day (ftTime), stored natively as int32 milliseconds since midnight.
class QUORDA_API TTimeField : public TDateTimeField {
public:
    explicit TTimeField(TComponent* AOwner);
    std::string ClassName() const override { return "TTimeField"; }

protected:
    TDateTime ParseText(const std::string& Value) const override;
};

} // namespace quorda
