#pragma once

#include "quorda/db/field.h"

#include <array>

namespace quorda {

// A boolean stored in 16 bits (ftBoolean). DisplayValues "True;False" names the two values for text
// in and out; text input accepts any prefix of either name, without regard to case.
class QUORDA_API TBooleanField : public TField {
public:
    explicit TBooleanField(TComponent* AOwner);
    std::string ClassName() const override { return "TBooleanField"; }

    const std::string& DisplayValues() const { return FDisplayValues; }
    // "TrueText;FalseText"; a text without both parts raises "... are not valid boolean displayvalues".
    void SetDisplayValues(const std::string& Value);

protected:
    int GetDataSize() const override { return 2; }
    int GetDefaultWidth() const override;
    std::string GetAsString() const override;
    std::int32_t GetAsInteger() const override { return GetAsBoolean() ? 1 : 0; }
    bool GetAsBoolean() const override;
    Variant GetAsVariant() const override;
    void DoSetAsString(const std::string& Value) override;
    void DoSetAsInteger(std::int32_t Value) override { DoSetAsBoolean(Value != 0); }
    void DoSetAsBoolean(bool Value) override;
    void SetVarValue(const Variant& Value) override;

private:
    std::string FDisplayValues;
    std::string FTrueText;
    std::string FFalseText;
};

} // namespace quorda
