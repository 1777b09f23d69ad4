// TODBCDataSet, the SQL text: its lines, the rewritten text with "?" markers, the parameter
// collection rebuilt on every change, and both stored with the component.

#include "odbc_dataset_p.h"
#include "quorda/core/odbc_dataset.h"
#include "quorda/core/param_markers.h"
#include "quorda/rtl/strings.h"

namespace quorda {

TStrings& TODBCDataSet::SQL() {
    return *FSQL;
}

void TODBCDataSet::SetQuery(const TStrings& Value) {
    if (Value.Text() == FSQL->Text()) {
        return;
    }
    Disconnect();
    FSQL->BeginUpdate();
    try {
        FSQL->Assign(&Value);
    } catch (...) {
        FSQL->EndUpdate();
        throw;
    }
    FSQL->EndUpdate();
}

std::string TODBCDataSet::GetRealSQLText() {
    // Lines are separated, not terminated, by the line break: one line "x" stays one character.
    std::string text;
    for (int i = 0; i < FSQL->Count(); ++i) {
        if (i > 0) {
            text += FSQL->LineBreak();
        }
        text += FSQL->Get(i);
    }
    return text;
}

void TODBCDataSet::CreateParams(TODBCParams* AParams, std::string& Text) {
    quorda::CreateParams(AParams, Text);
}

void TODBCDataSet::QueryChanged(TObject* Sender) {
    FRealSQL = GetRealSQLText();
    if (IsLoading()) {
        // The parameters come from the component stream; only the text is rewritten.
        CreateParams(nullptr, FRealSQL);
        return;
    }
    Disconnect();
    auto fresh = std::make_unique<TODBCParams>();
    CreateParams(fresh.get(), FRealSQL);
    fresh->AssignValues(FParams.get());
    FParams = std::move(fresh);
    DataEvent(dePropertyChange, 0);
}

int TODBCDataSet::GetParamsCount() const {
    return FParams->Count();
}

TODBCParam* TODBCDataSet::ParamByName(std::string_view Name) const {
    return FParams->ParamByName(Name);
}

TODBCParam* TODBCDataSet::FindParam(std::string_view Name) const {
    return FParams->FindParam(Name);
}

} // namespace quorda
