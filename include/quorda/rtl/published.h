#pragma once

#include "quorda/rtl/component.h"
#include "quorda/rtl/stream.h"

#include <concepts>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace quorda {

// What a published property holds, which decides how it is streamed.
enum class TPropKind {
    Integer,     // an integer of up to 64 bits
    Boolean,     // False/True
    Float,       // a double, streamed as an extended
    String,      // UTF-8 text
    Enumeration, // an ordinal, streamed as the enumerator's name
    Component,   // a reference to another component, streamed as its name and resolved after reading
    Object,      // an owned persistent object whose own properties are streamed as "Name.Property"
    Event,       // a handler: shown to designers, never streamed (a std::function has no name)
};

using TPropValue = std::variant<std::monostate, std::int64_t, bool, double, std::string, TComponent*>;

// One published property of a class.
struct QUORDA_API TPropInfo {
    std::string Name;
    TPropKind Kind = TPropKind::Integer;
    // Enumerator names by ordinal (Enumeration only).
    std::vector<std::string> EnumNames;
    std::function<TPropValue(TPersistent&)> Get;
    // Empty for a read-only property.
    std::function<void(TPersistent&, const TPropValue&)> Set;
    // The sub-object of an Object property.
    std::function<TPersistent*(TPersistent&)> Object;
    // A value equal to the default is not written; without a default the value is always written.
    std::optional<TPropValue> Default;
    bool Stored = true;
};

// The published properties of one class: its inherited list, then its own, in declaration order.
class QUORDA_API TPropertyList {
public:
    TPropertyList(const TPropertyList* Inherited, std::vector<TPropInfo> Own)
        : FInherited(Inherited), FOwn(std::move(Own)) {}

    // Every property, the inherited ones first.
    std::vector<const TPropInfo*> All() const;
    // Case-insensitive; null when the class has no such property.
    const TPropInfo* Find(const std::string& Name) const;

private:
    const TPropertyList* FInherited;
    std::vector<TPropInfo> FOwn;
};

// Builds the property list of class C from its accessors (member functions or callables taking a
// C&). The kind follows the getter's type: bool, integers, floating point, strings, pointers to
// components; enumerations name their enumerators.
//
//   static const TPropertyList list = TPublished<TMyQuery>(&TQueryBaseProperties())
//       .Property("Table", &TMyQuery::Table, &TMyQuery::SetTable)
//       .Property("RowSetSize", &TMyQuery::RowSetSize, &TMyQuery::SetRowSetSize, 100)
//       .Enum("Mode", &TMyQuery::Mode, &TMyQuery::SetMode, {"mdRead", "mdWrite"}, mdRead)
//       .Build();
template <class C>
class TPublished {
    template <class G>
    using ValueOf = std::remove_cvref_t<std::invoke_result_t<G, C&>>;

public:
    explicit TPublished(const TPropertyList* Inherited = nullptr) : FInherited(Inherited) {}

    template <class G, class S>
    TPublished& Property(std::string Name, G Getter, S Setter) {
        FOwn.push_back(Make(std::move(Name), Getter, Setter));
        return *this;
    }
    template <class G, class S, class D>
    TPublished& Property(std::string Name, G Getter, S Setter, D Default) {
        FOwn.push_back(Make(std::move(Name), Getter, Setter));
        FOwn.back().Default = ToValue(static_cast<ValueOf<G>>(Default));
        return *this;
    }
    template <class G, class S>
    TPublished& Enum(std::string Name, G Getter, S Setter, std::initializer_list<const char*> Names,
                     std::optional<ValueOf<G>> Default = std::nullopt) {
        TPropInfo info;
        info.Name = std::move(Name);
        info.Kind = TPropKind::Enumeration;
        info.EnumNames.assign(Names.begin(), Names.end());
        info.Get = [Getter](TPersistent& Instance) {
            return TPropValue(static_cast<std::int64_t>(std::invoke(Getter, Cast(Instance))));
        };
        info.Set = [Setter](TPersistent& Instance, const TPropValue& Value) {
            std::invoke(Setter, Cast(Instance), static_cast<ValueOf<G>>(std::get<std::int64_t>(Value)));
        };
        if (Default) {
            info.Default = TPropValue(static_cast<std::int64_t>(*Default));
        }
        FOwn.push_back(std::move(info));
        return *this;
    }
    // A persistent sub-object owned by the instance (string lists, parameter collections).
    template <class G>
    TPublished& Object(std::string Name, G Getter) {
        TPropInfo info;
        info.Name = std::move(Name);
        info.Kind = TPropKind::Object;
        info.Object = [Getter](TPersistent& Instance) -> TPersistent* {
            return &std::invoke(Getter, Cast(Instance));
        };
        FOwn.push_back(std::move(info));
        return *this;
    }
    TPublished& Event(std::string Name) {
        TPropInfo info;
        info.Name = std::move(Name);
        info.Kind = TPropKind::Event;
        info.Stored = false;
        FOwn.push_back(std::move(info));
        return *this;
    }
    // Marks the property added last as not stored.
    TPublished& NotStored() {
        FOwn.back().Stored = false;
        return *this;
    }
    TPropertyList Build() { return TPropertyList(FInherited, std::move(FOwn)); }

    // The instance as C; a table registered for an unrelated class fails here, not in memory.
    static C& Cast(TPersistent& Instance) {
        auto* typed = dynamic_cast<C*>(&Instance);
        if (typed == nullptr) {
            throw EReadError("Property list does not belong to " + Instance.ClassName());
        }
        return *typed;
    }

private:
    template <class V>
    static TPropValue ToValue(const V& Value) {
        if constexpr (std::is_same_v<V, bool>) {
            return Value;
        } else if constexpr (std::is_integral_v<V>) {
            return static_cast<std::int64_t>(Value);
        } else if constexpr (std::is_floating_point_v<V>) {
            return static_cast<double>(Value);
        } else if constexpr (std::is_pointer_v<V>) {
            return static_cast<TComponent*>(Value);
        } else {
            return std::string(Value);
        }
    }

    template <class V>
    static V FromValue(const TPropValue& Value) {
        if constexpr (std::is_same_v<V, bool>) {
            return std::get<bool>(Value);
        } else if constexpr (std::is_integral_v<V>) {
            const std::int64_t value = std::get<std::int64_t>(Value);
            if (!std::in_range<V>(value)) {
                throw EReadError("Invalid property value");
            }
            return static_cast<V>(value);
        } else if constexpr (std::is_floating_point_v<V>) {
            return static_cast<V>(std::get<double>(Value));
        } else if constexpr (std::is_pointer_v<V>) {
            TComponent* component = std::get<TComponent*>(Value);
            auto* typed = dynamic_cast<V>(component);
            if (component != nullptr && typed == nullptr) {
                throw EReadError("Invalid property value");
            }
            return typed;
        } else {
            return std::get<std::string>(Value);
        }
    }

    template <class V>
    static constexpr TPropKind KindOf() {
        if constexpr (std::is_same_v<V, bool>) {
            return TPropKind::Boolean;
        } else if constexpr (std::is_integral_v<V>) {
            return TPropKind::Integer;
        } else if constexpr (std::is_floating_point_v<V>) {
            return TPropKind::Float;
        } else if constexpr (std::is_pointer_v<V>) {
            static_assert(std::is_base_of_v<TComponent, std::remove_pointer_t<V>>);
            return TPropKind::Component;
        } else {
            static_assert(std::is_convertible_v<V, std::string>);
            return TPropKind::String;
        }
    }

    template <class G, class S>
    static TPropInfo Make(std::string Name, G Getter, S Setter) {
        using V = ValueOf<G>;
        TPropInfo info;
        info.Name = std::move(Name);
        info.Kind = KindOf<V>();
        info.Get = [Getter](TPersistent& Instance) { return ToValue(std::invoke(Getter, Cast(Instance))); };
        if constexpr (!std::is_same_v<S, std::nullptr_t>) {
            info.Set = [Setter](TPersistent& Instance, const TPropValue& Value) {
                std::invoke(Setter, Cast(Instance), FromValue<V>(Value));
            };
        }
        return info;
    }

    const TPropertyList* FInherited;
    std::vector<TPropInfo> FOwn;
};

// Creates a component of a registered class for the reader.
using TComponentFactory = std::function<TComponent*(TComponent* Owner)>;

struct TRegisteredClass {
    std::string ClassName;
    TComponentFactory Create;
    const TPropertyList* Properties = nullptr;
};

// Makes ClassName known to the component reader and its published properties to the writer and
// reader. Registering a name again replaces the entry. Properties must outlive the registration (a
// function-local static).
QUORDA_API void RegisterClass(const std::string& ClassName, TComponentFactory Create,
                              const TPropertyList& Properties);
// Registers C, created as new C(Owner), under C's own ClassName.
template <class C>
void RegisterClass(const std::string& ClassName, const TPropertyList& Properties) {
    RegisterClass(
        ClassName, [](TComponent* Owner) -> TComponent* { return new C(Owner); }, Properties);
}
// Case-sensitive, as class names are; null when unknown.
QUORDA_API const TRegisteredClass* FindRegisteredClass(const std::string& ClassName);
// The published properties of Instance's class; null when it has none registered.
QUORDA_API const TPropertyList* PublishedProperties(const TPersistent& Instance);

// TComponent's own: Tag (default 0). Its name travels in the component header.
QUORDA_API const TPropertyList& ComponentProperties();

} // namespace quorda
