#pragma once

#include "quorda/db/types.h"
#include "quorda/rtl/persistent.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorda {

class TComponent;
class TDataSet;
class TField;
class TFieldDefs;

// The description of one column of a dataset's cursor: what a field object is created from.
class QUORDA_API TFieldDef : public TPersistent {
public:
    TFieldDef(TFieldDefs* Owner, const std::string& Name, TFieldType DataType, int Size, bool Required,
              int FieldNo);

    std::string ClassName() const override { return "TFieldDef"; }
    TPersistent* GetOwner() const override;
    void Assign(const TPersistent* Source) override;

    const std::string& Name() const { return FName; }
    void SetName(const std::string& Value) { FName = Value; }
    const std::string& DisplayName() const { return FName; }
    TFieldType DataType() const { return FDataType; }
    void SetDataType(TFieldType Value) { FDataType = Value; }
    int Size() const { return FSize; }
    void SetSize(int Value) { FSize = Value; }
    int Precision() const { return FPrecision; }
    void SetPrecision(int Value) { FPrecision = Value; }
    // The 1-based column number the dataset gives the definition.
    int FieldNo() const { return FFieldNo; }
    void SetFieldNo(int Value) { FFieldNo = Value; }
    bool Required() const { return FRequired; }
    void SetRequired(bool Value) { FRequired = Value; }
    bool InternalCalcField() const { return FInternalCalcField; }
    void SetInternalCalcField(bool Value) { FInternalCalcField = Value; }
    const TFieldAttributes& Attributes() const { return FAttributes; }
    void SetAttributes(const TFieldAttributes& Value) { FAttributes = Value; }

    TFieldDefs* Collection() const { return FOwner; }
    // Position in the owning list.
    int Index() const;

    // Creates the field object for this definition (class by the dataset's GetFieldClass) and
    // attaches it to the dataset. Raises "Unknown field type" for a type without a field class.
    TField* CreateField(TComponent* Owner);

private:
    TFieldDefs* FOwner;
    std::string FName;
    TFieldType FDataType;
    int FSize;
    int FPrecision = -1;
    int FFieldNo;
    bool FRequired;
    bool FInternalCalcField = false;
    TFieldAttributes FAttributes;
};

// The owned, ordered list of a dataset's field definitions. Names are compared without regard to case.
class QUORDA_API TFieldDefs : public TPersistent {
public:
    explicit TFieldDefs(TDataSet* DataSet);
    ~TFieldDefs() override;

    std::string ClassName() const override { return "TFieldDefs"; }
    TPersistent* GetOwner() const override;
    // Replaces the definitions with copies of another TFieldDefs.
    void Assign(const TPersistent* Source) override;

    TDataSet* DataSet() const { return FDataSet; }
    int Count() const { return static_cast<int>(FItems.size()); }
    TFieldDef* Items(int Index) const;
    TFieldDef* operator[](int Index) const { return Items(Index); }

    // Appends a definition with the next field number; an empty name raises "Field needs a name".
    TFieldDef* Add(const std::string& Name, TFieldType DataType, int Size = 0, bool Required = false);
    // Appends a definition with an explicit field number, the name taken as given.
    TFieldDef* Add(const std::string& Name, TFieldType DataType, int Size, bool Required, int FieldNo);
    // Appends an unnamed ftUnknown definition with the next field number.
    TFieldDef* AddFieldDef();
    void Delete(int Index);
    void Clear();

    // -1 when absent.
    int IndexOf(std::string_view Name) const;
    // Raises "Field not found" when absent.
    TFieldDef* Find(std::string_view Name) const;
    // Name, or Name_1, Name_2, ... whichever is not yet used.
    std::string MakeNameUnique(const std::string& Name) const;

    // Whether the definitions describe the current cursor (Update reads them once).
    bool Updated() const { return FUpdated; }
    void SetUpdated(bool Value) { FUpdated = Value; }
    // Asks the dataset to describe its cursor unless already done.
    void Update();

private:
    friend class TFieldDef;

    TDataSet* FDataSet;
    std::vector<std::unique_ptr<TFieldDef>> FItems;
    bool FUpdated = false;
};

} // namespace quorda
