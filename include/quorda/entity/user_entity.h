#pragma once

#include "quorda/entity/entity.h"
#include "quorda/rtl/published.h"

#include <functional>
#include <string>

namespace quorda {

class TFiler;
class TReader;
class TUserEntity;
class TWriter;

// Asked whether the entity wants to be re-read; flgUpdate starts false.
using TCheckUpdateEvent = std::function<void(TUserEntity* Sender, bool& flgUpdate)>;

// The entity configured at design time: its settings are published properties, its field list is
// stored with the component as the defined property "Fields", and CheckUpdate is an event.
//
// Published, in this order (each read by X() and written by SetX() of TEntity unless listed here):
// lstFields (read-only, not stored: "Fields" stores it), viewTable, factTable, viewFull, flgReread,
// viewEntity, LockUniDirectional, Precision, Digits, SaveFindIni, SaveFilterIni, FindSensitive,
// FindOption, WherePhrase, FilterStr, FindDown, Ordering, OrderingDesc, StoredProcedures,
// OnCheckUpdate.
class QUORDA_API TUserEntity : public TEntity {
public:
    explicit TUserEntity(TComponent* AOwner);

    std::string ClassName() const override;

    // False without a handler; otherwise the handler's answer.
    bool CheckUpdate() override;

    // The seven procedure names in command order, each followed by ";".
    std::string GetStroredProcedures() const;
    // Takes the ";"-terminated names in command order (untrimmed); text after the last ";" and names
    // beyond the seventh are dropped, and commands without a name get none.
    void SetStroredProcedures(const std::string& Text);
    std::string StoredProcedures() const { return GetStroredProcedures(); }
    void SetStoredProcedures(const std::string& Text) { SetStroredProcedures(Text); }

    TCheckUpdateEvent OnCheckUpdate;

    // Defines "Fields", always stored, also when the list is empty.
    void DefineProperties(TFiler* Filer) override;
    // "Fields": a list with 20 values per field. Reading replaces the fields only when the whole list
    // reads; a streamed name keeps its case.
    void ReadData(TReader& Reader);
    void WriteData(TWriter& Writer) const;
};

// The published properties of TUserEntity, in their order (registered with the component reader).
QUORDA_API const TPropertyList& UserEntityProperties();
// Registers TUserEntity (and the database classes) for a program that only loads modules.
QUORDA_API void RegisterEntityClasses();

} // namespace quorda
