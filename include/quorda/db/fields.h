#pragma once

#include "quorda/db/field.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quorda {

class TStrings;

// The ordered list of a dataset's field objects. Indexing is O(1); name lookups are a linear,
// case-insensitive search. Clear deletes the fields.
class QUORDA_API TFields {
public:
    explicit TFields(TDataSet* DataSet);
    TFields(const TFields&) = delete;
    TFields& operator=(const TFields&) = delete;
    ~TFields();

    TDataSet* DataSet() const { return FDataSet; }
    int Count() const { return static_cast<int>(FList.size()); }
    TField* Fields(int Index) const;
    TField* operator[](int Index) const { return Fields(Index); }
    auto begin() const { return FList.begin(); }
    auto end() const { return FList.end(); }

    // Appends Field; a duplicate name raises "Duplicate fieldname".
    void Add(TField* Field);
    // Takes Field out of the list without deleting it.
    void Remove(TField* Field);
    // Deletes every field, last first.
    void Clear();
    int IndexOf(const TField* Field) const;

    TField* FindField(std::string_view FieldName) const;
    // Raises "Field not found" when absent.
    TField* FieldByName(std::string_view FieldName) const;
    TField* FieldByNumber(int FieldNo) const;
    // Raises "Duplicate fieldname" when the name is taken.
    void CheckFieldName(const std::string& FieldName) const;
    // Raises "Field not found" for the first name of a ';'-separated list that is absent.
    void CheckFieldNames(const std::string& FieldNames) const;
    void GetFieldNames(TStrings& Names) const;
    // Forgets the field definitions the fields were bound to.
    void ClearFieldDefs();

    // Heard after every change of the list.
    std::function<void(TFields* Sender)> OnChange;

private:
    friend class TField;
    void SetFieldIndex(TField* Field, int Value);
    void Changed();

    TDataSet* FDataSet;
    std::vector<TField*> FList;
};

} // namespace quorda
