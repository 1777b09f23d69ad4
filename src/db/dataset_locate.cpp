// The default sequential Locate and Lookup.

#include "quorda/db/dataset.h"
#include "quorda/db/locate_match.h"
#include "quorda/rtl/string_utils.h"

namespace quorda {

bool IsTextFieldType(TFieldType Type) {
    switch (Type) {
    case ftString:
    case ftFixedChar:
    case ftWideString:
    case ftFixedWideChar:
    case ftMemo:
    case ftFmtMemo:
    case ftWideMemo:
        return true;
    default:
        return false;
    }
}

namespace {

// Whether the field's value matches one key value. Text compares as text (optionally ignoring case,
// optionally as a prefix); everything else by the variant comparison. Null matches only null.
bool KeyMatches(TField* Field, const Variant& Key, bool CaseInsensitive, bool PartialKey) {
    if (VarIsNull(Key) || VarIsEmpty(Key)) {
        return Field->IsNull();
    }
    if (Field->IsNull()) {
        return false;
    }
    if (VarIsStr(Key) || IsTextFieldType(Field->DataType())) {
        std::string value = Field->AsString();
        std::string key = Key.AsString();
        if (PartialKey) {
            return CaseInsensitive ? StartsText(key, value) : value.compare(0, key.size(), key) == 0;
        }
        return CaseInsensitive ? SameText(value, key) : value == key;
    }
    try {
        return VarCompareValue(Field->AsVariant(), Key) == vrEqual;
    } catch (const EVariantError&) {
        return false;
    }
}

// The key for field Index: the value itself for a single field, else the element of the array.
const Variant& KeyAt(const Variant& KeyValues, std::size_t Count, std::size_t Index) {
    if (Count == 1 && !VarIsArray(KeyValues)) {
        return KeyValues;
    }
    return KeyValues[VarArrayLowBound(KeyValues) + static_cast<int>(Index)];
}

} // namespace

bool LocateKeysMatch(const std::vector<TField*>& Fields, const Variant& KeyValues, bool CaseInsensitive,
                     bool PartialKey) {
    for (std::size_t i = 0; i < Fields.size(); ++i) {
        if (!KeyMatches(Fields[i], KeyAt(KeyValues, Fields.size(), i), CaseInsensitive, PartialKey)) {
            return false;
        }
    }
    return true;
}

bool TDataSet::LocateRecord(const std::vector<TField*>& KeyFields, const Variant& KeyValues,
                            bool CaseInsensitive, bool PartialKey) {
    if (KeyFields.empty()) {
        return false;
    }
    TBookmark saved = GetBookmark();
    bool found = false;
    DisableControls();
    try {
        First();
        while (!FEOF) {
            if (LocateKeysMatch(KeyFields, KeyValues, CaseInsensitive, PartialKey)) {
                found = true;
                break;
            }
            Next();
        }
        if (!found && !saved.IsNil()) {
            GotoBookmark(saved);
        }
    } catch (...) {
        EnableControls();
        throw;
    }
    EnableControls();
    return found;
}

bool TDataSet::Locate(const std::string& KeyFields, const Variant& KeyValues, const TLocateOptions& Options) {
    CheckBiDirectional();
    CheckBrowseMode();
    CursorPosChanged();
    std::vector<TField*> fields;
    GetFieldList(fields, KeyFields);
    return LocateRecord(fields, KeyValues, Options.count(loCaseInsensitive) != 0,
                        Options.count(loPartialKey) != 0);
}

Variant TDataSet::Lookup(const std::string& KeyFields, const Variant& KeyValues,
                         const std::string& ResultFields) {
    CheckBiDirectional();
    CheckBrowseMode();
    std::vector<TField*> fields;
    GetFieldList(fields, KeyFields);
    Variant result = Variant::Null();
    if (fields.empty()) {
        return result;
    }
    TBookmark saved = GetBookmark();
    DisableControls();
    try {
        First();
        while (!FEOF) {
            if (LocateKeysMatch(fields, KeyValues, false, false)) {
                result = FieldValues(ResultFields);
                break;
            }
            Next();
        }
        if (!saved.IsNil()) {
            GotoBookmark(saved);
        }
    } catch (...) {
        EnableControls();
        throw;
    }
    EnableControls();
    return result;
}

} // namespace quorda
