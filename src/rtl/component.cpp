#include "quorda/rtl/component.h"

#include "quorda/rtl/string_utils.h"

#include <algorithm>

namespace quorda {

bool IsValidIdent(const std::string& Ident) {
    if (Ident.empty()) {
        return false;
    }
    auto isAlpha = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; };
    if (!isAlpha(Ident[0])) {
        return false;
    }
    return std::all_of(Ident.begin(), Ident.end(),
                       [&](char c) { return isAlpha(c) || (c >= '0' && c <= '9'); });
}

TComponent::TComponent(TComponent* AOwner) {
    if (AOwner != nullptr) {
        AOwner->InsertComponent(this);
    }
}

TComponent::~TComponent() {
    Destroying();
    // Partners are told first; each one may drop other partners while it reacts, so the list is
    // walked from the end and re-checked after every call.
    while (!FFreeNotifies.empty()) {
        TComponent* partner = FFreeNotifies.back();
        FFreeNotifies.pop_back();
        try {
            partner->Notification(this, opRemove);
        } catch (...) {
            // Destructors never throw; a partner that fails to react still has to forget us.
        }
        partner->RemoveNotification(this);
    }
    FComponentState.Exclude(csFreeNotification);
    DestroyComponents();
    if (FOwner != nullptr) {
        try {
            FOwner->RemoveComponent(this);
        } catch (...) {
            FOwner->Remove(this);
        }
    }
}

TComponent* TComponent::Components(int Index) const {
    if (Index < 0 || Index >= ComponentCount()) {
        throw EComponentError(FormatMessage("List index (%d) out of bounds", Index));
    }
    return FComponents[static_cast<size_t>(Index)];
}

int TComponent::ComponentIndex() const {
    if (FOwner == nullptr) {
        return -1;
    }
    auto& list = FOwner->FComponents;
    auto it = std::find(list.begin(), list.end(), this);
    return it == list.end() ? -1 : static_cast<int>(it - list.begin());
}

void TComponent::SetComponentIndex(int Value) {
    const int current = ComponentIndex();
    if (current < 0) {
        return;
    }
    auto& list = FOwner->FComponents;
    Value = std::clamp(Value, 0, static_cast<int>(list.size()) - 1);
    if (Value != current) {
        list.erase(list.begin() + current);
        list.insert(list.begin() + Value, this);
    }
}

TComponent* TComponent::FindComponent(const std::string& AName) const {
    if (AName.empty()) {
        return nullptr;
    }
    for (TComponent* component : FComponents) {
        if (SameText(component->FName, AName)) {
            return component;
        }
    }
    return nullptr;
}

void TComponent::SetName(const std::string& NewName) {
    if (FName == NewName) {
        return;
    }
    if (!NewName.empty() && !IsValidIdent(NewName)) {
        throw EComponentError(FormatMessage(SInvalidName, NewName));
    }
    if (FOwner != nullptr) {
        FOwner->ValidateRename(this, FName, NewName);
    } else {
        ValidateRename(nullptr, FName, NewName);
    }
    ChangeName(NewName);
}

void TComponent::ValidateRename(TComponent* AComponent, const std::string& CurName,
                                const std::string& NewName) {
    if (AComponent != nullptr && !SameText(CurName, NewName) && AComponent->FOwner == this &&
        FindComponent(NewName) != nullptr) {
        throw EComponentError(FormatMessage(SDuplicateName, NewName));
    }
    if (FComponentState.Contains(csDesigning) && FOwner != nullptr) {
        FOwner->ValidateRename(AComponent, CurName, NewName);
    }
}

void TComponent::InsertComponent(TComponent* AComponent) {
    if (AComponent == nullptr || AComponent == this) {
        return;
    }
    AComponent->ValidateInsert(this);
    // Two components of one owner with the same name would make FindComponent ambiguous.
    if (!AComponent->FName.empty() && FindComponent(AComponent->FName) != nullptr) {
        throw EComponentError(FormatMessage(SDuplicateName, AComponent->FName));
    }
    if (AComponent->FOwner != nullptr) {
        // A component has one owner; moving it means leaving the old one first.
        AComponent->FOwner->RemoveComponent(AComponent);
    }
    Insert(AComponent);
    if (FComponentState.Contains(csDesigning)) {
        AComponent->SetDesigning(true);
    }
    Notification(AComponent, opInsert);
}

void TComponent::RemoveComponent(TComponent* AComponent) {
    if (AComponent == nullptr || AComponent->FOwner != this) {
        return;
    }
    Notification(AComponent, opRemove);
    Remove(AComponent);
    AComponent->SetDesigning(false);
}

void TComponent::DestroyComponents() {
    while (!FComponents.empty()) {
        TComponent* component = FComponents.back();
        Remove(component);
        delete component;
    }
}

void TComponent::Insert(TComponent* AComponent) {
    FComponents.push_back(AComponent);
    AComponent->FOwner = this;
}

void TComponent::Remove(TComponent* AComponent) {
    AComponent->FOwner = nullptr;
    auto it = std::find(FComponents.begin(), FComponents.end(), AComponent);
    if (it != FComponents.end()) {
        FComponents.erase(it);
    }
}

void TComponent::SetDesigning(bool Value, bool SetChildren) {
    if (Value) {
        FComponentState.Include(csDesigning);
    } else {
        FComponentState.Exclude(csDesigning);
    }
    if (SetChildren) {
        for (TComponent* component : FComponents) {
            component->SetDesigning(Value);
        }
    }
}

void TComponent::SetAncestor(bool Value) {
    if (Value) {
        FComponentState.Include(csAncestor);
    } else {
        FComponentState.Exclude(csAncestor);
    }
    for (TComponent* component : FComponents) {
        component->SetAncestor(Value);
    }
}

void TComponent::SetInline(bool Value) {
    if (Value) {
        FComponentState.Include(csInline);
    } else {
        FComponentState.Exclude(csInline);
    }
}

void TComponent::SetDesignInstance(bool Value) {
    if (Value) {
        FComponentState.Include(csDesignInstance);
    } else {
        FComponentState.Exclude(csDesignInstance);
    }
}

void TComponent::BeginLoading() {
    FComponentState.Include(csLoading);
    FComponentState.Include(csReading);
}

void TComponent::EndLoading() {
    FComponentState.Exclude(csReading);
    Loaded();
}

void TComponent::CancelLoading() {
    FComponentState.Exclude(csReading);
    FComponentState.Exclude(csLoading);
}

void TComponent::Loaded() {
    FComponentState.Exclude(csLoading);
}

void TComponent::Destroying() {
    if (FComponentState.Contains(csDestroying)) {
        return;
    }
    FComponentState.Include(csDestroying);
    for (TComponent* component : FComponents) {
        component->Destroying();
    }
}

void TComponent::FreeNotification(TComponent* AComponent) {
    if (AComponent == nullptr || AComponent == this || (FOwner != nullptr && AComponent == FOwner)) {
        return;
    }
    if (std::find(FFreeNotifies.begin(), FFreeNotifies.end(), AComponent) == FFreeNotifies.end()) {
        FFreeNotifies.push_back(AComponent);
        FComponentState.Include(csFreeNotification);
        AComponent->FreeNotification(this);
    }
}

void TComponent::RemoveFreeNotification(TComponent* AComponent) {
    if (AComponent == nullptr) {
        return;
    }
    RemoveNotification(AComponent);
    AComponent->RemoveNotification(this);
}

void TComponent::RemoveNotification(TComponent* AComponent) {
    auto it = std::find(FFreeNotifies.begin(), FFreeNotifies.end(), AComponent);
    if (it != FFreeNotifies.end()) {
        FFreeNotifies.erase(it);
    }
    if (FFreeNotifies.empty()) {
        FComponentState.Exclude(csFreeNotification);
    }
}

void TComponent::Notification(TComponent* AComponent, TOperation Operation) {
    if (Operation == opRemove) {
        RemoveFreeNotification(AComponent);
    }
    // A child may remove components while it reacts: walk from the end and re-clamp.
    for (size_t i = FComponents.size(); i > 0;) {
        --i;
        FComponents[i]->Notification(AComponent, Operation);
        if (i > FComponents.size()) {
            i = FComponents.size();
        }
    }
}

} // namespace quorda
