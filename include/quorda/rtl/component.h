#pragma once

#include "quorda/rtl/exception.h"
#include "quorda/rtl/persistent.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quorda {

// Raised for invalid or duplicate component names.
class QUORDA_API EComponentError : public Exception {
public:
    using Exception::Exception;
};

inline constexpr char SInvalidName[] = "'%s' is not a valid component name";
inline constexpr char SDuplicateName[] = "A component named %s already exists";

enum TOperation { opInsert, opRemove };

enum TComponentStateFlag {
    csLoading,
    csReading,
    csWriting,
    csDestroying,
    csDesigning,
    csAncestor,
    csUpdating,
    csFixups,
    csFreeNotification,
    csInline,
    csDesignInstance,
};

// The set of TComponentStateFlag values a component is in.
class QUORDA_API TComponentState {
public:
    TComponentState() = default;
    TComponentState(std::initializer_list<TComponentStateFlag> flags) {
        for (auto flag : flags) {
            Include(flag);
        }
    }

    bool Contains(TComponentStateFlag flag) const { return (FBits & Bit(flag)) != 0; }
    void Include(TComponentStateFlag flag) { FBits |= Bit(flag); }
    void Exclude(TComponentStateFlag flag) { FBits &= ~Bit(flag); }
    bool Empty() const { return FBits == 0; }
    bool operator==(const TComponentState&) const = default;

private:
    static std::uint32_t Bit(TComponentStateFlag flag) { return std::uint32_t{1} << flag; }
    std::uint32_t FBits = 0;
};

// A named object with an owner. The owner deletes the components it owns when it is destroyed;
// deleting an owned component first is safe (it leaves its owner). Components that refer to each
// other without ownership register with FreeNotification and hear opRemove before the other goes.
//
// Notifications sent while a component is being destroyed arrive after its descendant parts are
// gone: receivers compare the pointer, they never downcast it.
class QUORDA_API TComponent : public TPersistent {
public:
    explicit TComponent(TComponent* AOwner);
    ~TComponent() override;

    std::string ClassName() const override { return "TComponent"; }
    TPersistent* GetOwner() const override { return FOwner; }

    TComponent* Owner() const { return FOwner; }

    const std::string& Name() const { return FName; }
    // Validates the identifier and uniqueness among the owner's components (case-insensitive).
    virtual void SetName(const std::string& NewName);

    std::intptr_t Tag() const { return FTag; }
    void SetTag(std::intptr_t Value) { FTag = Value; }

    int ComponentCount() const { return static_cast<int>(FComponents.size()); }
    TComponent* Components(int Index) const;
    // Position in the owner's list, -1 without an owner.
    int ComponentIndex() const;
    void SetComponentIndex(int Value);
    // Case-insensitive search among the owned components; null when absent or Name is empty.
    TComponent* FindComponent(const std::string& AName) const;

    // Takes ownership of AComponent (which must have no owner) and notifies opInsert.
    void InsertComponent(TComponent* AComponent);
    // Notifies opRemove and gives up ownership; the caller becomes responsible for AComponent.
    void RemoveComponent(TComponent* AComponent);
    // Deletes every owned component, last first.
    void DestroyComponents();

    const TComponentState& ComponentState() const { return FComponentState; }
    bool IsDesigning() const { return FComponentState.Contains(csDesigning); }
    bool IsLoading() const { return FComponentState.Contains(csLoading); }
    void SetDesigning(bool Value, bool SetChildren = true);
    void SetAncestor(bool Value);
    void SetInline(bool Value);
    void SetDesignInstance(bool Value);

    // Marks the component as being read from a stream (csLoading + csReading); EndLoading clears
    // csReading and calls Loaded, which clears csLoading.
    void BeginLoading();
    void EndLoading();
    // Leaves the loading state without Loaded, after a failed read.
    void CancelLoading();

    // The components a stream stores inside this one, in order; Root is the component being
    // written. The default has none: only containers (a data module) list what they own.
    virtual void GetChildren(const std::function<void(TComponent*)>& Proc, TComponent* Root) {}

    // Marks the component (and its owned components) as going away.
    void Destroying();

    // Registers AComponent to hear opRemove when this component is destroyed (and vice versa).
    void FreeNotification(TComponent* AComponent);
    void RemoveFreeNotification(TComponent* AComponent);

    // Called when AComponent is inserted into or removed from this component's owner tree, or when a
    // free-notification partner goes away. The default forgets a removed partner and forwards the
    // notification to every owned component.
    virtual void Notification(TComponent* AComponent, TOperation Operation);

    // Called after the component was read from a stream; the default clears csLoading.
    virtual void Loaded();

protected:
    virtual void Updating() { FComponentState.Include(csUpdating); }
    virtual void Updated() { FComponentState.Exclude(csUpdating); }
    virtual void ValidateRename(TComponent* AComponent, const std::string& CurName,
                                const std::string& NewName);
    virtual void ValidateInsert(TComponent* AComponent) {}
    virtual void ChangeName(const std::string& NewName) { FName = NewName; }

    TComponentState& MutableComponentState() { return FComponentState; }

private:
    void Insert(TComponent* AComponent);
    void Remove(TComponent* AComponent);
    void RemoveNotification(TComponent* AComponent);

    TComponent* FOwner = nullptr;
    std::string FName;
    std::intptr_t FTag = 0;
    std::vector<TComponent*> FComponents;
    std::vector<TComponent*> FFreeNotifies;
    TComponentState FComponentState;
};

// True for a name made of letters, digits and underscores that does not start with a digit.
QUORDA_API bool IsValidIdent(const std::string& Ident);

} // namespace quorda
