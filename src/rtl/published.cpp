#include "quorda/rtl/published.h"

#include "quorda/rtl/string_utils.h"

#include <map>
#include <mutex>

namespace quorda {

std::vector<const TPropInfo*> TPropertyList::All() const {
    std::vector<const TPropInfo*> result =
        FInherited != nullptr ? FInherited->All() : std::vector<const TPropInfo*>{};
    for (const TPropInfo& info : FOwn) {
        result.push_back(&info);
    }
    return result;
}

const TPropInfo* TPropertyList::Find(const std::string& Name) const {
    for (const TPropInfo& info : FOwn) {
        if (SameText(info.Name, Name)) {
            return &info;
        }
    }
    return FInherited != nullptr ? FInherited->Find(Name) : nullptr;
}

namespace {

struct TClassRegistry {
    std::mutex Lock;
    std::map<std::string, TRegisteredClass> Classes;
};

TClassRegistry& Registry() {
    static TClassRegistry registry;
    return registry;
}

} // namespace

void RegisterClass(const std::string& ClassName, TComponentFactory Create, const TPropertyList& Properties) {
    TClassRegistry& registry = Registry();
    const std::lock_guard guard(registry.Lock);
    registry.Classes[ClassName] = TRegisteredClass{ClassName, std::move(Create), &Properties};
}

const TRegisteredClass* FindRegisteredClass(const std::string& ClassName) {
    TClassRegistry& registry = Registry();
    const std::lock_guard guard(registry.Lock);
    // Entries are never removed, so the pointer stays valid after the lock is released.
    auto it = registry.Classes.find(ClassName);
    return it == registry.Classes.end() ? nullptr : &it->second;
}

const TPropertyList* PublishedProperties(const TPersistent& Instance) {
    const TRegisteredClass* registered = FindRegisteredClass(Instance.ClassName());
    return registered != nullptr ? registered->Properties : nullptr;
}

const TPropertyList& ComponentProperties() {
    static const TPropertyList list =
        TPublished<TComponent>().Property("Tag", &TComponent::Tag, &TComponent::SetTag, 0).Build();
    return list;
}

namespace {

const bool kComponentRegistered = [] {
    RegisterClass<TComponent>("TComponent", ComponentProperties());
    return true;
}();

} // namespace

} // namespace quorda
