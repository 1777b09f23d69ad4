#pragma once

#include "quorda/rtl/exception.h"
#include "quorda/rtl/object.h"

#include <string>

namespace quorda {

class TFiler;

// Raised when Assign meets a source it cannot copy from.
class QUORDA_API EAssignError : public Exception {
public:
    using Exception::Exception;
};

inline constexpr char SAssignError[] = "Cannot assign a %s to a %s";

// An object that can copy itself from another one and take part in property streaming.
class QUORDA_API TPersistent : public TObject {
public:
    TPersistent() = default;
    ~TPersistent() override = default;

    // The class name used in messages and streams ("TPersistent" unless a descendant says otherwise).
    virtual std::string ClassName() const { return "TPersistent"; }

    // Copies Source into this object. The default asks the source (AssignTo); when neither side knows
    // the other, EAssignError is raised.
    virtual void Assign(const TPersistent* Source);

    // The object that owns this one in the naming hierarchy (a component's owner, a collection).
    virtual TPersistent* GetOwner() const { return nullptr; }

    // Declares the non-published data a filer reads or writes (DefineProperty/DefineBinaryProperty).
    virtual void DefineProperties(TFiler* Filer) {}

protected:
    // Copies this object into Dest; the default raises EAssignError.
    virtual void AssignTo(TPersistent* Dest) const;

    // Raises EAssignError for a Source (null gives "nil") that cannot be assigned to this object.
    [[noreturn]] void AssignError(const TPersistent* Source) const;
};

} // namespace quorda
