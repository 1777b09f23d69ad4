#pragma once

#include "quorda/core/odbc_query.h"
#include "quorda/entity/entity_types.h"
#include "quorda/entity/field_item.h"
#include "quorda/ext/odbc_ext_dataset.h"
#include "quorda/rtl/component.h"
#include "quorda/rtl/strings.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quorda {

class TDataSet;
class TField;
class TRegIniFile;

// The query an entity selects and re-reads through: the editable query, made by CreateQueryExt on
// the default connection DataBase.
using TEntityQuery = TODBCExtQuery;
// The values of a cdtArray command, bound to the statement's parameters by position.
using TCommandValues = std::vector<Variant>;

// One database table (the fact table, target of INSERT, UPDATE, DELETE and locks) and one view or
// select source (the view table, source of SELECT), described by an ordered list of field items from
// which every statement is generated. An entity registers itself in lstOpenEntity for the whole of
// its life and keeps its find options and per-field find and filter values in the settings file
// EntityINIFileName, section viewFull.
//
// A derived entity declares its fields in its own constructor with CreateField; the defaults of the
// base (queries, stored-procedure slots, registration) are in place by then.
class QUORDA_API TEntity : public TComponent {
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

    // --- commands. Each runs the generated statement, or the command's stored procedure when one is
    // named, on a query of its own made by CreateQuery on DataBase. Values come from the caller's
    // array (cdtArray, by position), the current row of DataQuery (cdtQry, by name) or the fields'
    // Value slots (cdtField, by name). A successful write marks the entities named as this one for
    // re-reading (SetUpdateEntity). The result of a write is the first column of an opened
    // procedure's first row, -1 for an executed procedure, and the rows affected by a generated
    // statement (0 for an edit with nothing changed, which executes nothing and notifies nobody).
    // Locks never raise database errors: they are shown with Application::HandleException and give
    // lrLocked (or lrDeleted for a procedure's native error -746); a lock that reached no row gives
    // lrDeleted. Unless the row is gone, LockQuery re-reads it from the fact table.
    // The argument-less forms take their values from the fields.
    virtual Variant Add();
    virtual Variant Edit();
    virtual Variant Delete();
    virtual TLockResult Lock();
    virtual TLockResult LockCascade();
    virtual Variant AddForArray(TCommandDataType DataType, const TCommandValues& Values);
    virtual Variant EditForArray(TCommandDataType DataType, const TCommandValues& Values);
    virtual Variant DeleteForArray(TCommandDataType DataType, const TCommandValues& Values);
    virtual TLockResult LockForArray(TCommandDataType DataType, const TCommandValues& Values);
    // The cascade-lock procedure always binds Values by position (cdtArray), whatever DataType says;
    // without one this is LockForArray.
    TLockResult LockCascadeForArray(TCommandDataType DataType, const TCommandValues& Values);
    // The same with the key taken from the current row of DataQuery.
    virtual TLockResult LockForQry();
    virtual TLockResult LockCascadeForQry();
    virtual Variant DeleteForQry();
    // Runs the command's stored procedure with its parameters bound by SetParam: opened (the result
    // is the first column of the first row, Null without rows) or executed (the result is -1).
    Variant RunCommand(TExecType Command, TCommandDataType DataType, TDataSet* Source,
                       const TCommandValues& Values);
    // Prepares Query and binds each of its parameters from the source DataType names. Raises "Field %s
    // not found" for a cdtField parameter without a field, and a database error when an array holds
    // fewer values than the statement has parameters or cdtQry has no Source.
    void SetParam(TODBCDataSet& Query, TCommandDataType DataType, TDataSet* Source,
                  const TCommandValues& Values);
    // Re-reads the key's row from the fact table into LockQuery (forward-only per LockUniDirectional).
    virtual void SelectAfterLock(TCommandDataType DataType, const TCommandValues& Values);
    // Whether the row of a lock whose update counted no row is there after all.
    bool LockedRowIsThere(TCommandDataType DataType, const TCommandValues& Values);
    // A query holding strExecuteProc, the command's procedure name and its arguments (the fields that
    // take part in the command, in field order). Raises "Can not create empty procedure".
    std::unique_ptr<TODBCQuery> CreateSProcedure(TExecType Command);
    Variant ProcedureOpen(TODBCDataSet& Query);
    void ProcedureExec(TODBCDataSet& Query);

    // --- the open selection
    // Runs the select procedure first when one is named (it prepares the data), then EntityOpenOnly.
    virtual void EntityOpen();
    // (Re)opens DataQuery on the statement of the selection, its parameters bound from the fields'
    // Value slots (filter values copied in), shows the columns through OpenTableProc, makes this entity
    // the unmarked leader of its namesakes and stands on the row it stood on before, when it had one.
    virtual void EntityOpenOnly();
    // When DataQuery is open: the re-read decision pass, then a refresh (or, for a marked entity with a
    // select procedure, the procedure run again into the reopened selection); the entity leads its
    // namesakes afterwards, unmarked.
    virtual void ReOpenSql();
    // DataQuery's after-open handling: display text through SetFieldAsText for every column without a
    // text handler of its own; visibility, label and width from the selected fields.
    virtual void OpenTableProc(TDataSet* DataSet);
    // The display text of a column: floats grouped in thousands with Precision and Digits, integers
    // grouped, a blob "(Blob)"; nulls, empty selections and edit text plain.
    void SetFieldAsText(TField* Field, std::string& Text, bool DisplayText);
    // Whether DataQuery is at the edge Direction moves toward.
    bool FindEofBof(TDirectionFind Direction) const;
    // Moves DataQuery, in FindDown's direction, to the next row (never the current one) that matches
    // every field whose find value is non-blank text or a date; stays on the current row and returns
    // false without a match.
    virtual bool Find();

    // Runs the close procedure when one is named and this entity was the last of its name (outside
    // design mode); returns its result, 0 when nothing ran.
    virtual int execClose();

protected:
    // The defaults of a new entity and its registration; run by the constructor.
    void CreateEntityParam();
    // Frees the present fields and lists Fields in their place, each under its fact name as it is
    // (no lower-casing). Each loads the saved values of a nameless field, as a field created blank.
    void ReplaceFields(std::vector<std::unique_ptr<TFieldItem>> Fields);

private:
    static std::string FieldKey(const std::string& Name);
    void AddField(std::unique_ptr<TFieldItem> Item);
    // "a=:a AND b=:b" for the key fields; the parameter named as in the list or as the fact name.
    std::string KeyConditions(bool ListedNames) const;
    void ReadFromINIField(TRegIniFile& Ini, TFieldItem* Field, const std::string& Name);
    void WriteToINIField(TRegIniFile& Ini, TFieldItem* Field, const std::string& Name);
    void WriteToINI(TRegIniFile& Ini);
    void SaveSettings();
    bool HasProcedure(TExecType Command) const;
    // The values of the commands that bind from the fields: one placeholder field binding never reads.
    static const TCommandValues& FieldPlaceholder();
    // Insert, update or delete by procedure or generated statement, then the reread marks.
    Variant RunWrite(TExecType Command, TCommandDataType DataType, const TCommandValues& Values);

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
QUORDA_API void SetRereadFlag(const std::string& Name);
// After a write by Entity: marks every entity named Name, the writer too, and makes the writer the
// first of them in lstOpenEntity.
QUORDA_API void SetUpdateEntity(const std::string& Name, TEntity* Entity);
// Makes Entity the first of the entities named Name, marking nothing.
QUORDA_API void FirstNumber(const std::string& Name, TEntity* Entity);
// The re-read decision: each run of consecutive unmarked namesakes asks its first member's
// CheckUpdate once and gives every member that answer.
QUORDA_API void StartRereadAllUpdate();

} // namespace quorda
