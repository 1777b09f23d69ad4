// TODBCDataSet, searching: Locate and FindRecordByValues scan the rows in order, comparing field
// values, and return to where they started when nothing matches.

#include "quorda/core/odbc_dataset.h"
#include "quorda/rtl/messages.h"
#include "quorda/rtl/string_utils.h"

namespace quorda {
namespace {

bool IsTextField(const TField* Field) {
    switch (Field->DataType()) {
    case ftString:
    case ftFixedChar:
    case ftWideString:
    case ftMemo:
    case ftFmtMemo:
    case ftWideMemo:
        return true;
    default:
        return false;
    }
}

// A key matches a null value only when it is null itself; text compares as text, ignoring case
// and as a prefix on request; everything else by variant equality.
bool KeyMatches(const TField* Field, const Variant& Key, bool CaseInsensitive, bool PartialKey) {
    if (VarIsNull(Key) || VarIsEmpty(Key)) {
        return Field->IsNull();
    }
    if (Field->IsNull()) {
        return false;
    }
    if (IsTextField(Field) || VarIsStr(Key)) {
        const std::string value = Field->AsString();
        const std::string key = Key.AsString();
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

bool RowMatches(const std::vector<TField*>& Fields, const Variant& KeyValues, bool CaseInsensitive,
                bool PartialKey) {
    // One field takes the value itself; several take the elements of a variant array in order.
    if (Fields.size() == 1 && !VarIsArray(KeyValues)) {
        return KeyMatches(Fields.front(), KeyValues, CaseInsensitive, PartialKey);
    }
    const int low = VarArrayLowBound(KeyValues);
    for (std::size_t i = 0; i < Fields.size(); ++i) {
        if (!KeyMatches(Fields[i], KeyValues[low + static_cast<int>(i)], CaseInsensitive, PartialKey)) {
            return false;
        }
    }
    return true;
}

} // namespace

bool TODBCDataSet::Locate(const std::string& KeyFields, const Variant& KeyValues,
                          const TLocateOptions& Options) {
    const bool found = LocateRecord(KeyFields, KeyValues, Options);
    if (found) {
        DoAfterScroll();
    }
    return found;
}

bool TODBCDataSet::LocateRecord(const std::string& KeyFields, const Variant& KeyValues,
                                const TLocateOptions& Options) {
    CheckBrowseMode();
    CursorPosChanged();
    std::vector<TField*> fields;
    GetFieldList(fields, KeyFields);
    return LocateFindRecord(fields, KeyValues, Options.count(loCaseInsensitive) != 0,
                            Options.count(loPartialKey) != 0);
}

bool TODBCDataSet::LocateFindRecord(const std::vector<TField*>& Fields, const Variant& KeyValues,
                                    bool CaseInsensitive, bool PartialKey) {
    TBookmark saved = GetBookmark();
    bool found = false;
    DisableControls();
    try {
        First();
        while (!Eof()) {
            if (RowMatches(Fields, KeyValues, CaseInsensitive, PartialKey)) {
                found = true;
                break;
            }
            Next();
        }
        if (!found) {
            GotoBookmark(saved);
        }
    } catch (...) {
        EnableControls();
        throw;
    }
    EnableControls();
    FreeBookmark(saved);
    return found;
}

bool TODBCDataSet::FindRecordByValues(const std::vector<std::string>& FieldNames,
                                      const std::vector<Variant>& Values, bool FromFirst) {
    if (FieldNames.size() != Values.size()) {
        DatabaseError(LoadStr(SODBCNotCorrect));
    }
    DisableControls();
    TBookmark saved;
    bool found = false;
    try {
        saved = GetBookmark();
        if (FromFirst) {
            First();
        } else {
            Next();
        }
        while (!Eof()) {
            found = true;
            for (std::size_t i = 0; i < FieldNames.size(); ++i) {
                if (!(FieldByName(FieldNames[i])->Value() == Values[i])) {
                    found = false;
                    break;
                }
            }
            if (found) {
                break;
            }
            Next();
        }
        if (!found) {
            GotoBookmark(saved);
        }
    } catch (...) {
        EnableControls();
        throw;
    }
    EnableControls();
    FreeBookmark(saved);
    return found;
}

} // namespace quorda
