#include "quorda/db/dataset.h"
#include "quorda/db/field.h"
#include "quorda/rtl/string_utils.h"
#include "quorda/tools/query_helpers.h"

namespace quorda {

namespace {

// Whether some non-blob field of the current record starts with Text (already upper-cased when the
// search ignores case). A prefix match on purpose, not a search anywhere in the value.
bool RecordMatches(TDataSet& DataSet, bool CaseSensitive, const std::string& Text) {
    for (int i = 0; i < DataSet.FieldCount(); ++i) {
        const TField* field = DataSet.Fields()[i];
        if (field->IsBlob()) {
            continue;
        }
        const std::string value = CaseSensitive ? field->AsString() : AnsiUpperCase(field->AsString());
        if (value.starts_with(Text)) {
            return true;
        }
    }
    return false;
}

} // namespace

bool FindAnyRecord(TDataSet* DataSet, bool CaseSensitive, const std::string& Text) {
    const std::string wanted = CaseSensitive ? Text : AnsiUpperCase(Text);
    DataSet->DisableControls();
    TBookmark start;
    bool found = false;
    try {
        start = DataSet->GetBookmark();
        DataSet->Next();
        while (!DataSet->Eof()) {
            if (RecordMatches(*DataSet, CaseSensitive, wanted)) {
                found = true;
                break;
            }
            DataSet->Next();
        }
        if (!found) {
            DataSet->GotoBookmark(start);
        }
    } catch (...) {
        DataSet->FreeBookmark(start);
        DataSet->EnableControls();
        throw;
    }
    DataSet->FreeBookmark(start);
    DataSet->EnableControls();
    return found;
}

} // namespace quorda
