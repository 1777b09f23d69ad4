// Whole components through the filer: published properties, sub-object paths, component trees and
// the references between components.
#include "filer_p.h"
#include "quorda/rtl/component.h"
#include "quorda/rtl/published.h"
#include "quorda/rtl/string_utils.h"

#include <algorithm>
#include <string_view>

namespace quorda {

// ---- writing

void TWriter::WritePropName(const std::string& Name) {
    WriteStr(FPropPath + Name);
}

void TWriter::WritePropertyList(TPersistent* Instance) {
    if (const TPropertyList* list = PublishedProperties(*Instance)) {
        for (const TPropInfo* info : list->All()) {
            if (!info->Stored || info->Kind == TPropKind::Event) {
                continue;
            }
            if (info->Kind == TPropKind::Object) {
                const std::string outer = FPropPath;
                FPropPath += info->Name + ".";
                try {
                    WritePropertyList(info->Object(*Instance));
                } catch (...) {
                    FPropPath = outer;
                    throw;
                }
                FPropPath = outer;
                continue;
            }
            const TPropValue value = info->Get(*Instance);
            if (info->Default == value) {
                continue;
            }
            switch (info->Kind) {
            case TPropKind::Integer:
                WritePropName(info->Name);
                WriteInteger(std::get<std::int64_t>(value));
                break;
            case TPropKind::Boolean:
                WritePropName(info->Name);
                WriteBoolean(std::get<bool>(value));
                break;
            case TPropKind::Float:
                WritePropName(info->Name);
                WriteFloat(std::get<double>(value));
                break;
            case TPropKind::String:
                WritePropName(info->Name);
                WriteString(std::get<std::string>(value));
                break;
            case TPropKind::Enumeration: {
                const auto ordinal = std::get<std::int64_t>(value);
                if (ordinal < 0 || ordinal >= static_cast<std::int64_t>(info->EnumNames.size())) {
                    throw EWriteError(SWriteError);
                }
                WritePropName(info->Name);
                WriteIdent(info->EnumNames[static_cast<std::size_t>(ordinal)]);
                break;
            }
            case TPropKind::Component: {
                // No reference is the default of every reference.
                const TComponent* target = std::get<TComponent*>(value);
                if (target != nullptr && !target->Name().empty()) {
                    WritePropName(info->Name);
                    WriteIdent(target->Name());
                }
                break;
            }
            case TPropKind::Object:
            case TPropKind::Event:
                break;
            }
        }
    }
    Instance->DefineProperties(this);
}

void TWriter::WriteRootComponent(TComponent* Root) {
    SetRoot(Root);
    WriteSignature();
    WriteComponent(Root);
}

void TWriter::WriteComponent(TComponent* Component) {
    const std::string className = Component->ClassName();
    if (FindRegisteredClass(className) == nullptr) {
        throw EWriteError(FormatMessage(SClassNotFound, className));
    }
    WriteStr(className);
    WriteStr(Component->Name());
    WriteProperties(Component);
    Component->GetChildren([this](TComponent* Child) { WriteComponent(Child); }, Root());
    WriteListEnd();
}

// ---- reading

void TReader::Expect(std::string What) {
    FExpected = std::move(What);
}

void TReader::ReadPublishedValue(TPersistent* Instance, const TPropInfo& Property) {
    if (!Property.Set || Property.Kind == TPropKind::Object || Property.Kind == TPropKind::Event) {
        // Sub-objects are reached through their own properties; handlers are never streamed.
        PropValueError();
    }
    switch (Property.Kind) {
    case TPropKind::Integer:
        Property.Set(*Instance, ReadInt64());
        break;
    case TPropKind::Boolean:
        Property.Set(*Instance, ReadBoolean());
        break;
    case TPropKind::Float:
        Property.Set(*Instance, ReadFloat());
        break;
    case TPropKind::String:
        Property.Set(*Instance, ReadString());
        break;
    case TPropKind::Enumeration: {
        const std::string ident = ReadIdent();
        const auto& names = Property.EnumNames;
        const auto it = std::find_if(names.begin(), names.end(),
                                     [&](const std::string& Name) { return SameText(Name, ident); });
        if (it == names.end()) {
            PropValueError();
        }
        Property.Set(*Instance, static_cast<std::int64_t>(it - names.begin()));
        break;
    }
    case TPropKind::Component: {
        const std::string ident = ReadIdent();
        if (SameText(ident, "nil")) {
            Property.Set(*Instance, static_cast<TComponent*>(nullptr));
        } else {
            FFixups.push_back(TFixup{Instance, &Property, ident});
        }
        break;
    }
    case TPropKind::Object:
    case TPropKind::Event:
        break;
    }
}

void TReader::ReadProperty(TPersistent* Instance) {
    const std::string name = ReadPropName();
    Expect("a property of " + Instance->ClassName());
    // "SQL.Strings": every part but the last names a published sub-object.
    TPersistent* target = Instance;
    std::string_view last = name;
    for (std::size_t dot = last.find('.'); dot != std::string_view::npos && target != nullptr;
         dot = last.find('.')) {
        const TPropertyList* list = PublishedProperties(*target);
        const TPropInfo* info = list != nullptr ? list->Find(std::string(last.substr(0, dot))) : nullptr;
        // A sub-object that is not stored is not read either (the entity's field list).
        target = info != nullptr && info->Kind == TPropKind::Object && info->Stored ? info->Object(*target)
                                                                                    : nullptr;
        last = last.substr(dot + 1);
    }
    if (target == nullptr) {
        // Not a path of sub-objects: a defined property whose own name has a dot.
        target = Instance;
        last = name;
    }
    if (const TPropertyList* list = PublishedProperties(*target)) {
        if (const TPropInfo* info = list->Find(std::string(last))) {
            Expect("the value of property " + name);
            ReadPublishedValue(target, *info);
            return;
        }
    }
    // A property reader may itself read nested properties: keep the outer state.
    const std::string savedName = std::move(FPropName);
    const bool savedHandled = FPropHandled;
    FPropName = std::string(last);
    FPropHandled = false;
    const std::string expected = std::move(FExpected);
    Expect("the value of property " + name);
    try {
        target->DefineProperties(this);
    } catch (...) {
        FPropName = savedName;
        FPropHandled = savedHandled;
        throw;
    }
    const bool handled = FPropHandled;
    FPropName = savedName;
    FPropHandled = savedHandled;
    if (!handled) {
        Expect(expected);
        throw EReadError(FormatMessage(SUnknownProperty, name));
    }
}

void TReader::FixupReferences() {
    std::vector<TFixup> fixups = std::move(FFixups);
    FFixups.clear();
    for (const TFixup& fixup : fixups) {
        TComponent* root = Root();
        TComponent* target = nullptr;
        if (root != nullptr) {
            target = SameText(root->Name(), fixup.Name) ? root : root->FindComponent(fixup.Name);
        }
        Expect("a component named " + fixup.Name + " for property " + fixup.Property->Name);
        if (target == nullptr) {
            throw EReadError(FormatMessage(SUnresolvedReference, fixup.Name));
        }
        fixup.Property->Set(*fixup.Instance, target);
    }
}

TComponent* TReader::ReadComponent(TComponent* Owner, TComponent* Existing) {
    TNestingGuard guard(FComponentDepth);
    Expect("a component class name");
    const std::string className = ReadStr();
    const TRegisteredClass* registered = Existing == nullptr ? FindRegisteredClass(className) : nullptr;
    if (Existing == nullptr && registered == nullptr) {
        Expect("a registered class");
        throw EReadError(FormatMessage(SClassNotFound, className));
    }
    Expect("the name of a " + className);
    const std::string name = ReadStr();
    TComponent* component = Existing;
    if (component == nullptr) {
        component = registered->Create(Owner);
        FCreated.push_back(component);
    }
    component->BeginLoading();
    FLoaded.push_back(component);
    component->SetName(name);
    Expect("a property name or the end of the properties of " + name);
    while (!EndOfList()) {
        ReadProperty(component);
        Expect("a property name or the end of the properties of " + name);
    }
    ReadListEnd();
    Expect("a component or the end of the components of " + name);
    while (!EndOfList()) {
        ReadComponent(component, nullptr);
        Expect("a component or the end of the components of " + name);
    }
    ReadListEnd();
    return component;
}

TComponent* TReader::ReadRootComponent(TComponent* Root) {
    const std::string rootName = Root != nullptr ? Root->Name() : std::string();
    FFixups.clear();
    FLoaded.clear();
    FCreated.clear();
    try {
        Expect("the signature TPF0");
        ReadSignature();
        SetRoot(Root);
        TComponent* root = ReadComponent(nullptr, Root);
        SetRoot(root);
        FixupReferences();
        // Loaded may run code that reads other components: every one is complete by now.
        const std::vector<TComponent*> loaded = std::move(FLoaded);
        FLoaded.clear();
        for (TComponent* component : loaded) {
            component->EndLoading();
        }
        FCreated.clear();
        return root;
    } catch (...) {
        const std::string offset = std::to_string(Stream().Position());
        if (Root != nullptr) {
            Root->CancelLoading();
        }
        // A created component owned by another created one goes with its owner.
        for (auto it = FCreated.rbegin(); it != FCreated.rend(); ++it) {
            if (std::find(FCreated.begin(), FCreated.end(), (*it)->Owner()) == FCreated.end()) {
                delete *it;
            }
        }
        FCreated.clear();
        FLoaded.clear();
        FFixups.clear();
        SetRoot(Root);
        if (Root != nullptr) {
            try {
                Root->SetName(rootName);
            } catch (...) {
                // The name it had before was valid where it is.
            }
        }
        try {
            throw;
        } catch (const EReadError& e) {
            throw EReadError(FormatMessage(SReadContext, e.Message(), offset, FExpected));
        }
    }
}

} // namespace quorda
