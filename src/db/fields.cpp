#include "quorda/db/fields.h"

#include "quorda/db/dataset.h"
#include "quorda/db/db_consts.h"
#include "quorda/rtl/string_utils.h"
#include "quorda/rtl/strings.h"

#include <algorithm>
#include <stdexcept>

namespace quorda {

TFields::TFields(TDataSet* DataSet) : FDataSet(DataSet) {}

TFields::~TFields() {
    OnChange = nullptr;
    FDataSet = nullptr;
    Clear();
}

TField* TFields::Fields(int Index) const {
    if (Index < 0 || Index >= Count()) {
        throw std::out_of_range("TFields: field index out of range");
    }
    return FList[static_cast<std::size_t>(Index)];
}

void TFields::Add(TField* Field) {
    CheckFieldName(Field->FieldName());
    FList.push_back(Field);
    Field->FFields = this;
    Changed();
}

void TFields::Remove(TField* Field) {
    auto it = std::find(FList.begin(), FList.end(), Field);
    if (it == FList.end()) {
        return;
    }
    FList.erase(it);
    Field->FFields = nullptr;
    Changed();
}

void TFields::Clear() {
    while (!FList.empty()) {
        TField* field = FList.back();
        FList.pop_back();
        // Detached first, so that the field's destructor neither closes the dataset nor looks for
        // itself in this list.
        field->FDataSet = nullptr;
        field->FFields = nullptr;
        delete field;
    }
    Changed();
}

int TFields::IndexOf(const TField* Field) const {
    auto it = std::find(FList.begin(), FList.end(), Field);
    return it == FList.end() ? -1 : static_cast<int>(it - FList.begin());
}

TField* TFields::FindField(std::string_view FieldName) const {
    for (TField* field : FList) {
        if (SameText(field->FieldName(), FieldName)) {
            return field;
        }
    }
    return nullptr;
}

TField* TFields::FieldByName(std::string_view FieldName) const {
    TField* field = FindField(FieldName);
    if (!field) {
        DatabaseErrorFmt(SFieldNotFound, std::string(FieldName));
    }
    return field;
}

TField* TFields::FieldByNumber(int FieldNo) const {
    for (TField* field : FList) {
        if (field->FieldNo() == FieldNo) {
            return field;
        }
    }
    return nullptr;
}

void TFields::CheckFieldName(const std::string& FieldName) const {
    if (FindField(FieldName)) {
        DatabaseErrorFmt(SDuplicateFieldName, FieldName);
    }
}

void TFields::CheckFieldNames(const std::string& FieldNames) const {
    std::size_t pos = 0;
    while (pos < FieldNames.size()) {
        FieldByName(ExtractFieldName(FieldNames, pos));
    }
}

void TFields::GetFieldNames(TStrings& Names) const {
    Names.Clear();
    for (TField* field : FList) {
        Names.Add(field->FieldName());
    }
}

void TFields::ClearFieldDefs() {
    for (TField* field : FList) {
        field->FFieldDef = nullptr;
    }
}

void TFields::SetFieldIndex(TField* Field, int Value) {
    int old = IndexOf(Field);
    if (old < 0) {
        return;
    }
    Value = std::clamp(Value, 0, Count() - 1);
    if (Value == old) {
        return;
    }
    FList.erase(FList.begin() + old);
    FList.insert(FList.begin() + Value, Field);
    Field->PropertyChanged(true);
    Changed();
}

void TFields::Changed() {
    if (FDataSet && !FDataSet->ComponentState().Contains(csDestroying)) {
        FDataSet->DataEvent(deFieldListChange, 0);
    }
    if (OnChange) {
        OnChange(this);
    }
}

} // namespace quorda
