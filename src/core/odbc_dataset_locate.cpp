// TODBCDataSet, searching: Locate and FindRecordByValues scan the rows in order, comparing field
// values, and return to where they started when nothing matches.

#include "odbc_dataset_p.h"
#include "quorda/core/odbc_dataset.h"
#include "quorda/db/locate_match.h"
#include "quorda/rtl/messages.h"

namespace quorda {
namespace {

// Scans from the first row (or from the row after the current one) until Matches holds, with the
// controls disabled; when no row matches, goes back to the row it started from.
template <typename Predicate>
bool ScanForRow(TDataSet& DataSet, bool FromFirst, Predicate Matches) {
    DataSet.DisableControls();
    TBookmark saved;
    bool found = false;
    try {
        saved = DataSet.GetBookmark();
        if (FromFirst) {
            DataSet.First();
        } else {
            DataSet.Next();
        }
        while (!DataSet.Eof()) {
            if (Matches()) {
                found = true;
                break;
            }
            DataSet.Next();
        }
        if (!found) {
            DataSet.GotoBookmark(saved);
        }
    } catch (...) {
        DataSet.EnableControls();
        throw;
    }
    DataSet.EnableControls();
    DataSet.FreeBookmark(saved);
    return found;
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
    return ScanForRow(*this, true,
                      [&] { return LocateKeysMatch(Fields, KeyValues, CaseInsensitive, PartialKey); });
}

bool TODBCDataSet::FindRecordByValues(const std::vector<std::string>& FieldNames,
                                      const std::vector<Variant>& Values, bool FromFirst) {
    if (FieldNames.size() != Values.size()) {
        DatabaseError(LoadStr(SODBCNotCorrect));
    }
    return ScanForRow(*this, FromFirst, [&] {
        for (std::size_t i = 0; i < FieldNames.size(); ++i) {
            if (!(FieldByName(FieldNames[i])->Value() == Values[i])) {
                return false;
            }
        }
        return true;
    });
}

} // namespace quorda
