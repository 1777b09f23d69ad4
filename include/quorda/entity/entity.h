#pragma once

#include "quorda/core/odbc_query.h"
#include "quorda/entity/entity_types.h"
#include "quorda/entity/field_item.h"
#include "quorda/rtl/component.h"
#include "quorda/rtl/strings.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>

namespace quorda {

class TDataSet;
class TRegIniFile;

// The query an entity selects and re-reads through. The entity needs only the SQL text, the
// parameters and the cursor of it, which the plain query has; the editable query takes its place
// once that module is part of the build.
using TEntityQuery = TODBCQuery;

// One database table (the fact table, target of INSERT, UPDATE, DELETE and locks) and one view or
// select source (the view table, source of SELECT), described by an ordered list of field items from
// which every statement is generated. An entity registers itself in lstOpenEntity for the whole of
// its life and keeps its find options and per-field find and filter values in the settings file
// EntityINIFileName, section viewFull.
//
// A derived entity declares its fields in its own constructor with CreateField; the defaults of the
// base (queries, stored-procedure slots, registration) are in place by then.
class TEntity : public TComponent {
public:
    explicit TEntity(TComponent* AOwner);
    // Leaves the registry, runs execClose, frees the queries, writes the settings (erasing the
    // section first), frees the fields. Never throws: a failure is shown with
    // Application::HandleException.
    ~TEntity() override;

    std::string ClassName() const override { return "TEntity"; }

    // --- fields
    // Creates a field of class TItem (constructed with the lower-cased name and the other arguments
    // as given), appends it under that name and loads its saved find and filter values.
    template <typename TItem>
    TItem* CreateFieldExt(const std::string& Name, const std::string& DisplayName,
                          const std::string& ViewTable, std::int32_t Width, bool View, bool Visible,
                          bool Ident, bool Sort, TFieldType FieldType, TSetExecType ExecSet) {
        auto Item = std::make_unique<TItem>(this, FieldKey(Name), DisplayName, ViewTable, Width, View,
                                            Visible, Ident, Sort, FieldType, ExecSet);
        TItem* Result = Item.get();
        AddField(std::move(Item));
        return Result;
    }
    TFieldItem* CreateField(const std::string& Name, const std::string& DisplayName,
                            const std::string& ViewTable, std::int32_t Width, bool View, bool Visible,
                            bool Ident, bool Sort, TFieldType FieldType, TSetExecType ExecSet);
    // The fields in column order: each string the lower-case fact name, each object its TFieldItem.
    const TStringList& lstFields() const { return *FLstFields; }
    int FieldCount() const { return FLstFields->Count(); }
    // Raises the list's index error outside 0..FieldCount()-1.
    TFieldItem* GetFields(int Index) const;
    // Case-insensitive; null when there is no such field.
    TFieldItem* FieldByName(const std::string& Name) const;

    // --- tables and queries
    const std::string& viewTable() const { return FViewTable; }
    void SetViewTable(const std::string& Value) { FViewTable = Value; }
    const std::string& factTable() const { return FFactTable; }
    void SetFactTable(const std::string& Value) { FFactTable = Value; }
    TEntityQuery* DataQuery() const { return FDataQuery.get(); }
    TEntityQuery* LockQuery() const { return FLockQuery.get(); }
    bool LockUniDirectional() const { return FLockUniDirectional; }
    void SetLockUniDirectional(bool Value) { FLockUniDirectional = Value; }
    std::int32_t Precision() const { return FPrecision; }
    void SetPrecision(std::int32_t Value) { FPrecision = Value; }
    std::int32_t Digits() const { return FDigits; }
    void SetDigits(std::int32_t Value) { FDigits = Value; }

    // --- selection
    // Always added to the WHERE of the selection.
    const std::string& WherePhrase() const { return FWherePhrase; }
    void SetWherePhrase(const std::string& Value) { FWherePhrase = Value; }
    // The current filter condition, with :name parameters bound from the fields' filter values.
    const std::string& FilterStr() const { return FFilterStr; }
    void SetFilterStr(const std::string& Value) { FFilterStr = Value; }
    // Index of the ordering field in lstFields; -1 for none.
    std::int32_t Ordering() const { return FOrdering; }
    void SetOrdering(std::int32_t Value) { FOrdering = Value; }
    bool OrderingDesc() const { return FOrderingDesc; }
    void SetOrderingDesc(bool Value) { FOrderingDesc = Value; }

    // --- find and settings
    bool SaveFindIni() const { return FSaveFindIni; }
    void SetSaveFindIni(bool Value) { FSaveFindIni = Value; }
    bool SaveFilterIni() const { return FSaveFilterIni; }
    void SetSaveFilterIni(bool Value) { FSaveFilterIni = Value; }
    bool FindSensitive() const { return FFindSensitive; }
    void SetFindSensitive(bool Value) { FFindSensitive = Value; }
    TEntityFindOption FindOption() const { return FFindOption; }
    void SetFindOption(TEntityFindOption Value) { FFindOption = Value; }
    TDirectionFind FindDown() const { return FFindDown; }
    void SetFindDown(TDirectionFind Value) { FFindDown = Value; }
    // The settings section; a change reloads the options (ReadFromINI).
    const std::string& viewFull() const { return FViewFull; }
    virtual void SetViewFull(const std::string& Value);

    // --- stored procedures, by command
    const std::string& GetSP(TExecType Type) const { return FSPNames[Type]; }
    void SetSP(TExecType Type, const std::string& Name) { FSPNames[Type] = Name; }
    bool GetSPOpen(TExecType Type) const { return FSPOpen[Type]; }
    void SetSPOpen(TExecType Type, bool Flag) { FSPOpen[Type] = Flag; }

    // --- value, find and filter slots (unknown names are ignored)
    void ClearFieldsValue();
    void ClearFieldsFind();
    void ClearFieldsFilter();
    void SetFieldValue(const std::string& Name, const Variant& Value);
    void SetFieldFind(const std::string& Name, const Variant& Value);
    void SetFieldFilter(const std::string& Name, const Variant& Value);

    // --- generated SQL. Every generator clears the target list first.
    // "SELECT " and the list-and-FROM line; from the fact table fields with a view table are left out.
    virtual void GenerateSQLSelect(TStrings& SQL, bool FromFact);
    // "WHERE " and the key conditions.
    virtual void GenerateSQLLockWhere(TStrings& SQL);
    void GenerateSQLInsert(TStrings& SQL);
    // The no-op UPDATE that locks the row; raises "Can not create select lock query" without fields.
    void GenerateSQLLock(TStrings& SQL);
    // The UPDATE of the changed columns compared with LockQuery's current row; false (and no text)
    // when nothing changed.
    bool GenerateSQLUpdate(TStrings& SQL);
    // The same compared with the current row of Current.
    bool GenerateSQLUpdate(TStrings& SQL, const TDataSet& Current);
    void GenerateSQLDelete(TStrings& SQL);
    // "ORDER BY " and the sortable columns starting at the field at Index; empty for -1.
    virtual std::string GenerateOrder(std::int32_t Index);
    // Copies each set filter value into the field's Value when DataQuery has a parameter of its name.
    void AddFilterValue();
    // The statement of the open selection: the select from the view table, WherePhrase, FilterStr
    // (followed by AddFilterValue) and the ORDER BY line for Ordering.
    void GenerateSQLSelection(TStrings& SQL);

    // --- settings
    void ReadFromINI();
    void WriteToINI();
    void ReadFromINIField(TFieldItem* Field, const std::string& Name);
    void WriteToINIField(TFieldItem* Field, const std::string& Name);

    // --- reread notification
    // The name under which the entity announces itself; also its key in lstOpenEntity.
    const std::string& viewEntity() const { return FViewEntity; }
    virtual void SetviewEntity(const std::string& Value);
    // The entity must re-read. Setting it (with a non-empty name) moves the entity to the front of
    // the entries named as its upper-cased name.
    bool flgReread() const { return FFlgReread; }
    virtual void SetFlgReread(bool Value);
    // Whether the entity wants to be re-read; asked once per run of undecided namesakes.
    virtual bool CheckUpdate() = 0;
    // Called before a plain refresh.
    virtual void SetRereadEntity() {}

    // Runs the close procedure when one is named and this entity was the last of its name (outside
    // design mode); returns its result, 0 when nothing ran.
    virtual int execClose();

protected:
    // The defaults of a new entity and its registration; run by the constructor.
    void CreateEntityParam();

private:
    static std::string FieldKey(const std::string& Name);
    void AddField(std::unique_ptr<TFieldItem> Item);
    // "a=:a AND b=:b" for the key fields; the parameter named as in the list or as the fact name.
    std::string KeyConditions(bool ListedNames) const;
    void ReadFromINIField(TRegIniFile& Ini, TFieldItem* Field, const std::string& Name);
    void WriteToINIField(TRegIniFile& Ini, TFieldItem* Field, const std::string& Name);
    void WriteToINI(TRegIniFile& Ini);
    void SaveSettings();
    // The call of the close procedure.
    int RunCloseProcedure();

    std::string FViewEntity;
    std::unique_ptr<TEntityQuery> FDataQuery;
    std::unique_ptr<TEntityQuery> FLockQuery;
    std::unique_ptr<TStringList> FLstFields;
    std::string FViewTable;
    std::string FFactTable;
    std::string FViewFull;
    bool FFlgReread = true;
    bool FLockUniDirectional = true;
    std::int32_t FPrecision = 0;
    std::int32_t FDigits = 0;
    std::string FWherePhrase;
    std::string FFilterStr;
    std::int32_t FOrdering = -1;
    bool FOrderingDesc = false;
    bool FSaveFindIni = true;
    bool FSaveFilterIni = true;
    bool FFindSensitive = false;
    TEntityFindOption FFindOption = efoFirstConCur;
    std::array<std::string, ExecTypeCount> FSPNames;
    std::array<bool, ExecTypeCount> FSPOpen{};
    TDirectionFind FFindDown = dfNext;
};

// Marks every entity named Name for re-reading.
void SetRereadFlag(const std::string& Name);
// After a write by Entity: marks every entity named Name, the writer too, and makes the writer the
// first of them in lstOpenEntity.
void SetUpdateEntity(const std::string& Name, TEntity* Entity);
// Makes Entity the first of the entities named Name, marking nothing.
void FirstNumber(const std::string& Name, TEntity* Entity);
// The re-read decision: each run of consecutive unmarked namesakes asks its first member's
// CheckUpdate once and gives every member that answer.
void StartRereadAllUpdate();

} // namespace quorda
