// Reread notification between entities of one process that show the same data: writers mark their
// namesakes in lstOpenEntity, and a decision pass asks each group once whether it wants to re-read.
#include "quorda/entity/entity.h"
#include "quorda/rtl/string_utils.h"

namespace quorda {

namespace {

TEntity* EntityAt(int Index) {
    return static_cast<TEntity*>(lstOpenEntity().Objects(Index));
}

// Exchanges the first entry named Name with Entity's own entry when both exist.
void MoveToFront(const std::string& Name, TEntity* Entity) {
    TStringList& Open = lstOpenEntity();
    const int First = Open.IndexOf(Name);
    const int Own = Open.IndexOfObject(Entity);
    if (First >= 0 && Own >= 0 && First != Own) {
        Open.Exchange(First, Own);
    }
}

} // namespace

void TEntity::SetviewEntity(const std::string& Value) {
    FViewEntity = Value;
    TStringList& Open = lstOpenEntity();
    if (const int Index = Open.IndexOfObject(this); Index >= 0) {
        Open.Put(Index, Value);
    }
}

void TEntity::SetFlgReread(bool Value) {
    FFlgReread = Value;
    if (Value && !FViewEntity.empty()) {
        // Only an upper-case name finds its group here; lower- and mixed-case names stay in place.
        MoveToFront(AnsiUpperCase(FViewEntity), this);
    }
}

void SetRereadFlag(const std::string& Name) {
    const TStringList& Open = lstOpenEntity();
    for (int I = 0; I < Open.Count(); ++I) {
        if (EntityAt(I)->viewEntity() == Name) {
            EntityAt(I)->SetFlgReread(true);
        }
    }
}

void SetUpdateEntity(const std::string& Name, TEntity* Entity) {
    const TStringList& Open = lstOpenEntity();
    // Marking may exchange the marked entry with one before it, never with one still to come, so a
    // forward walk meets every entry once.
    for (int I = 0; I < Open.Count(); ++I) {
        if (Open[I] == Name) {
            EntityAt(I)->SetFlgReread(true);
        }
    }
    MoveToFront(Name, Entity);
}

void FirstNumber(const std::string& Name, TEntity* Entity) {
    MoveToFront(Name, Entity);
}

void StartRereadAllUpdate() {
    const TStringList& Open = lstOpenEntity();
    std::string LastName = "----";
    bool LastDecision = false;
    for (int I = 0; I < Open.Count(); ++I) {
        if (Open[I].empty()) {
            continue;
        }
        TEntity* Entity = EntityAt(I);
        if (Entity->flgReread()) {
            continue;
        }
        if (Entity->viewEntity() != LastName) {
            Entity->SetFlgReread(Entity->CheckUpdate());
        } else {
            Entity->SetFlgReread(LastDecision);
        }
        LastName = Entity->viewEntity();
        LastDecision = Entity->flgReread();
    }
}

} // namespace quorda
