#include "quorda/entity/entity.h"

#include "quorda/rtl/application.h"
#include "quorda/rtl/string_utils.h"
#include "quorda/tools/query_helpers.h"

#include <exception>

namespace quorda {

namespace {

// Hands an exception escaping a destructor's step to the application instead of losing it.
template <typename F>
void ReportFailure(F&& Step) noexcept {
    try {
        Step();
    } catch (const std::exception& E) {
        try {
            Application::HandleException(E);
        } catch (...) {
        }
    } catch (...) {
    }
}

} // namespace

TEntity::TEntity(TComponent* AOwner) : TComponent(AOwner) {
    CreateEntityParam();
}

void TEntity::CreateEntityParam() {
    FDataQuery = CreateQueryExt();
    FLockQuery = CreateQueryExt();
    FSPNames.fill({});
    FSPOpen.fill(false);
    FLstFields = std::make_unique<TStringList>(true);
    FViewTable.clear();
    FFactTable.clear();
    SetViewFull({});
    SetviewEntity({});
    FFlgReread = true;
    FLockUniDirectional = true;
    lstOpenEntity().AddObject(FViewEntity, this);
    FOrdering = -1;
    FOrderingDesc = false;
    FFindSensitive = false;
    FFindOption = efoFirstConCur;
    FFindDown = dfNext;
    FSaveFindIni = true;
    FSaveFilterIni = true;
}

TEntity::~TEntity() {
    TStringList& Open = lstOpenEntity();
    if (const int Index = Open.IndexOfObject(this); Index >= 0) {
        Open.Delete(Index);
    }
    ReportFailure([this] { execClose(); });
    FDataQuery.reset();
    FLockQuery.reset();
    ReportFailure([this] { SaveSettings(); });
    FLstFields.reset();
}

std::string TEntity::FieldKey(const std::string& Name) {
    return AnsiLowerCase(Name);
}

TFieldItem* TEntity::CreateField(const std::string& Name, const std::string& DisplayName,
                                 const std::string& ViewTable, std::int32_t Width, bool View, bool Visible,
                                 bool Ident, bool Sort, TFieldType FieldType, TSetExecType ExecSet) {
    return CreateFieldExt<TFieldItem>(Name, DisplayName, ViewTable, Width, View, Visible, Ident, Sort,
                                      FieldType, ExecSet);
}

void TEntity::AddField(std::unique_ptr<TFieldItem> Item) {
    TFieldItem* Field = Item.get();
    const std::string Name = Field->FactName();
    FLstFields->AddObject(Name, Item.release());
    ReadFromINIField(Field, Name);
}

void TEntity::ReplaceFields(std::vector<std::unique_ptr<TFieldItem>> Fields) {
    FLstFields->Clear();
    for (auto& Item : Fields) {
        TFieldItem* Field = Item.get();
        FLstFields->AddObject(Field->FactName(), Item.release());
        ReadFromINIField(Field, {});
    }
}

TFieldItem* TEntity::GetFields(int Index) const {
    return static_cast<TFieldItem*>(FLstFields->Objects(Index));
}

TFieldItem* TEntity::FieldByName(const std::string& Name) const {
    const int Index = FLstFields->IndexOf(Name);
    return Index < 0 ? nullptr : GetFields(Index);
}

void TEntity::SetViewFull(const std::string& Value) {
    if (Value == FViewFull) {
        return;
    }
    FViewFull = Value;
    ReadFromINI();
}

void TEntity::ClearFieldsValue() {
    for (int I = 0; I < FieldCount(); ++I) {
        GetFields(I)->SetValue(NullValue);
    }
}

void TEntity::ClearFieldsFind() {
    for (int I = 0; I < FieldCount(); ++I) {
        GetFields(I)->SetFindStr(NullValue);
    }
}

void TEntity::ClearFieldsFilter() {
    for (int I = 0; I < FieldCount(); ++I) {
        GetFields(I)->SetFilterStr(NullValue);
    }
}

void TEntity::SetFieldValue(const std::string& Name, const Variant& Value) {
    if (TFieldItem* Field = FieldByName(Name)) {
        Field->SetValue(Value);
    }
}

void TEntity::SetFieldFind(const std::string& Name, const Variant& Value) {
    if (TFieldItem* Field = FieldByName(Name)) {
        Field->SetFindStr(Value);
    }
}

void TEntity::SetFieldFilter(const std::string& Name, const Variant& Value) {
    if (TFieldItem* Field = FieldByName(Name)) {
        Field->SetFilterStr(Value);
    }
}

int TEntity::execClose() {
    if (IsDesigning() || Trim(GetSP(fetClose)).empty()) {
        return 0;
    }
    const TStringList& Open = lstOpenEntity();
    for (int I = 0; I < Open.Count(); ++I) {
        if (Open[I] == FViewEntity && Open.Objects(I) != this) {
            return 0;
        }
    }
    const Variant Result = RunCommand(fetClose, cdtField, nullptr, FieldPlaceholder());
    return VarIsNull(Result) ? 0 : Result.AsInteger();
}

} // namespace quorda
