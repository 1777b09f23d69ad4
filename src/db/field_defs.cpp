#include "quorda/db/dataset.h"
#include "quorda/db/db_consts.h"
#include "quorda/db/field_def.h"
#include "quorda/rtl/string_utils.h"

#include <stdexcept>

namespace quorda {

// ---- TFieldDef

TFieldDef::TFieldDef(TFieldDefs* Owner, const std::string& Name, TFieldType DataType, int Size, bool Required,
                     int FieldNo)
    : FOwner(Owner), FName(Name), FDataType(DataType), FSize(Size), FFieldNo(FieldNo), FRequired(Required) {}

TPersistent* TFieldDef::GetOwner() const {
    return FOwner;
}

void TFieldDef::Assign(const TPersistent* Source) {
    if (auto* def = dynamic_cast<const TFieldDef*>(Source)) {
        FName = def->FName;
        FDataType = def->FDataType;
        FSize = def->FSize;
        FPrecision = def->FPrecision;
        FRequired = def->FRequired;
        FAttributes = def->FAttributes;
        return;
    }
    TPersistent::Assign(Source);
}

int TFieldDef::Index() const {
    if (!FOwner) {
        return -1;
    }
    for (int i = 0; i < FOwner->Count(); ++i) {
        if (FOwner->Items(i) == this) {
            return i;
        }
    }
    return -1;
}

TField* TFieldDef::CreateField(TComponent* Owner) {
    TDataSet* dataSet = FOwner ? FOwner->DataSet() : nullptr;
    TFieldClass fieldClass = dataSet ? dataSet->GetFieldClass(FDataType) : DefaultFieldClass(FDataType);
    if (!fieldClass) {
        DatabaseErrorFmt(SUnknownFieldType, FName);
    }
    TField* field = fieldClass(Owner);
    try {
        field->FFieldDef = this;
        field->SetSize(FSize);
        field->FRequired = FRequired;
        field->FFieldName = FName;
        field->FFieldNo = FFieldNo;
        field->SetFieldType(FDataType);
        field->FReadOnly = FAttributes.count(faReadonly) != 0;
        if (auto* floatField = dynamic_cast<TFloatField*>(field); floatField && FPrecision > 0) {
            floatField->SetPrecision(FPrecision);
        } else if (auto* bcdField = dynamic_cast<TBCDField*>(field); bcdField && FPrecision > 0) {
            bcdField->SetPrecision(FPrecision);
        }
        field->SetDataSet(dataSet);
    } catch (...) {
        delete field;
        throw;
    }
    return field;
}

// ---- TFieldDefs

TFieldDefs::TFieldDefs(TDataSet* DataSet) : FDataSet(DataSet) {}

TFieldDefs::~TFieldDefs() = default;

TPersistent* TFieldDefs::GetOwner() const {
    return FDataSet;
}

void TFieldDefs::Assign(const TPersistent* Source) {
    if (auto* defs = dynamic_cast<const TFieldDefs*>(Source)) {
        if (defs == this) {
            return;
        }
        Clear();
        for (const auto& def : defs->FItems) {
            TFieldDef* copy = Add(def->Name(), def->DataType(), def->Size(), def->Required(), Count() + 1);
            copy->Assign(def.get());
        }
        return;
    }
    TPersistent::Assign(Source);
}

TFieldDef* TFieldDefs::Items(int Index) const {
    return FItems.at(static_cast<std::size_t>(Index)).get();
}

TFieldDef* TFieldDefs::Add(const std::string& Name, TFieldType DataType, int Size, bool Required) {
    if (Name.empty()) {
        DatabaseError(SNeedFieldName);
    }
    return Add(Name, DataType, Size, Required, Count() + 1);
}

TFieldDef* TFieldDefs::Add(const std::string& Name, TFieldType DataType, int Size, bool Required,
                           int FieldNo) {
    FItems.push_back(std::make_unique<TFieldDef>(this, Name, DataType, Size, Required, FieldNo));
    return FItems.back().get();
}

TFieldDef* TFieldDefs::AddFieldDef() {
    return Add(std::string(), ftUnknown, 0, false, Count() + 1);
}

void TFieldDefs::Delete(int Index) {
    if (Index < 0 || Index >= Count()) {
        throw std::out_of_range("TFieldDefs::Delete");
    }
    if (FDataSet) {
        FDataSet->Fields().ClearFieldDefs();
    }
    FItems.erase(FItems.begin() + Index);
}

void TFieldDefs::Clear() {
    // Fields bound to these definitions must not keep dangling pointers.
    if (FDataSet) {
        FDataSet->Fields().ClearFieldDefs();
    }
    FItems.clear();
}

int TFieldDefs::IndexOf(std::string_view Name) const {
    for (std::size_t i = 0; i < FItems.size(); ++i) {
        if (SameText(FItems[i]->Name(), Name)) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

TFieldDef* TFieldDefs::Find(std::string_view Name) const {
    int index = IndexOf(Name);
    if (index < 0) {
        DatabaseErrorFmt(SFieldNotFound, std::string(Name));
    }
    return FItems[static_cast<std::size_t>(index)].get();
}

std::string TFieldDefs::MakeNameUnique(const std::string& Name) const {
    std::string result = Name;
    for (int suffix = 1; IndexOf(result) >= 0; ++suffix) {
        result = Name + "_" + std::to_string(suffix);
    }
    return result;
}

void TFieldDefs::Update() {
    if (!FUpdated) {
        if (FDataSet) {
            FDataSet->InitFieldDefs();
        }
        FUpdated = true;
    }
}

} // namespace quorda
