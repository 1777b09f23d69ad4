#include "quorda/core/odbc_params.h"

#include "quorda/rtl/messages.h"
#include "quorda/rtl/string_utils.h"
#include "quorda/rtl/strings.h"

#include <algorithm>
#include <iterator>

namespace quorda {

TODBCParams::~TODBCParams() {
    Clear();
}

void TODBCParams::Clear() {
    // Each parameter takes itself out of the list when it is freed, so walk from the end.
    while (!FItems.empty()) {
        delete FItems.back();
    }
}

void TODBCParams::AddParam(TODBCParam* Value) {
    if (!Value || Value->FParamList == this) {
        return;
    }
    if (Value->FParamList) {
        Value->FParamList->RemoveParam(Value);
    }
    FItems.push_back(Value);
    Value->FParamList = this;
}

void TODBCParams::RemoveParam(TODBCParam* Value) {
    // Searched from the end, where Clear takes its parameters.
    auto it = std::find(FItems.rbegin(), FItems.rend(), Value);
    if (it != FItems.rend()) {
        FItems.erase(std::next(it).base());
        Value->FParamList = nullptr;
    }
}

TODBCParam* TODBCParams::CreateParam(TFieldType FldType, const std::string& ParamName) {
    auto* param = new TODBCParam(this);
    param->SetName(ParamName);
    param->SetDataType(FldType);
    return param;
}

TODBCParam* TODBCParams::GetParam(std::uint16_t Index) const {
    return Items(Index);
}

TODBCParam* TODBCParams::Items(int Index) const {
    if (Index < 0 || Index >= Count()) {
        DatabaseErrorFmt(SListIndexError, Index);
    }
    return FItems[static_cast<std::size_t>(Index)];
}

void TODBCParams::Assign(const TPersistent* Source) {
    const auto* source = dynamic_cast<const TODBCParams*>(Source);
    if (!source) {
        TPersistent::Assign(Source);
        return;
    }
    // Assigning a collection to itself would clear it before copying.
    if (source == this) {
        return;
    }
    Clear();
    for (const TODBCParam* item : source->FItems) {
        (new TODBCParam(this))->AssignParam(item);
    }
}

void TODBCParams::AssignTo(TPersistent* Dest) const {
    if (auto* dest = dynamic_cast<TODBCParams*>(Dest)) {
        dest->Assign(this);
    } else {
        TPersistent::AssignTo(Dest);
    }
}

void TODBCParams::AssignValues(const TODBCParams* Value) {
    if (!Value || Value == this) {
        return;
    }
    for (TODBCParam* item : FItems) {
        for (const TODBCParam* source : Value->FItems) {
            if (item->Name() == source->Name()) {
                item->Assign(source);
                break;
            }
        }
    }
}

bool TODBCParams::IsEqual(const TODBCParams* Value) const {
    if (!Value || Value->Count() != Count()) {
        return false;
    }
    for (std::size_t i = 0; i < FItems.size(); ++i) {
        if (!FItems[i]->IsEqual(Value->FItems[i])) {
            return false;
        }
    }
    return true;
}

TODBCParam* TODBCParams::FindParam(std::string_view Value) const {
    for (TODBCParam* item : FItems) {
        if (SameText(item->Name(), Value)) {
            return item;
        }
    }
    return nullptr;
}

TODBCParam* TODBCParams::ParamByName(std::string_view Value) const {
    TODBCParam* result = FindParam(Value);
    if (!result) {
        DatabaseErrorFmt(LoadStr(SODBCParameterNotFound), std::string(Value));
    }
    return result;
}

void TODBCParams::GetParamList(std::vector<TODBCParam*>& List, const std::string& ParamNames) const {
    std::size_t pos = 0;
    while (pos < ParamNames.size()) {
        List.push_back(ParamByName(ExtractFieldName(ParamNames, pos)));
    }
}

Variant TODBCParams::GetParamValue(const std::string& ParamName) const {
    if (ParamName.find(';') == std::string::npos) {
        return ParamByName(ParamName)->Value();
    }
    std::vector<TODBCParam*> params;
    GetParamList(params, ParamName);
    Variant result = VarArrayCreate(0, static_cast<int>(params.size()) - 1);
    for (std::size_t i = 0; i < params.size(); ++i) {
        result.SetArrayElement(static_cast<int>(i), params[i]->Value());
    }
    return result;
}

void TODBCParams::SetParamValue(const std::string& ParamName, const Variant& Value) {
    if (ParamName.find(';') == std::string::npos) {
        ParamByName(ParamName)->SetAsVariant(Value);
        return;
    }
    std::vector<TODBCParam*> params;
    GetParamList(params, ParamName);
    for (std::size_t i = 0; i < params.size(); ++i) {
        params[i]->SetAsVariant(Value.ArrayElement(static_cast<int>(i)));
    }
}

} // namespace quorda
