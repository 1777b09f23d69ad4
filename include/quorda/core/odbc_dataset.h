#pragma once

#include "quorda/core/database_client.h"
#include "quorda/core/odbc_params.h"
#include "quorda/db/dataset.h"
#include "quorda/odbc/odbc_api.h"
#include "quorda/odbc/odbc_handle.h"
#include "quorda/rtl/strings.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorda {

class TODBCDatabase;

// One bound parameter, built by BindAllParam and kept alive while the statement may still ask for
// its data (data at execution). Items are heap-allocated so the address of ParamIndex, which is the
// token SQLParamData hands back, stays valid and unique per parameter.
struct TParamValueItem {
    // The converted value (owned).
    std::vector<std::byte> Data;
    // The length/indicator passed to SQLBindParameter.
    SQLLEN LengthIndicator = 0;
    SQLSMALLINT CType = 0;
    SQLSMALLINT SqlType = 0;
    std::int32_t ParamIndex = 0;
};

// One result column bound with SQLBindCol. In single-row mode Data holds one slot of Length bytes
// and Length doubles as the length/indicator cell after each fetch; in block mode Data holds
// RowSetSize slots and Indicators one SQLLEN cell per row.
struct TFieldValueItem {
    std::vector<std::byte> Data;
    SQLLEN Length = 0;
    // Carried along when a block-mode row is copied.
    std::int32_t Value1 = 0;
    std::int32_t Value2 = 0;
    std::vector<SQLLEN> Indicators;

    // Precomputed once at bind time so the per-row copy does not walk the definitions.
    SQLSMALLINT CType = 0;
    // Bytes between rows of this column in block mode (the bound buffer length for character and
    // binary data, the size of the C type for fixed-size types).
    std::size_t RowStride = 0;
    // Offset of the column's null indicator byte in a record buffer (its data slot follows).
    std::size_t RecordOffset = 0;
    // The definition's data size (GetDefDataSize).
    std::size_t DataSize = 0;
    // The definition's field type: selects the conversion of the per-row copy.
    TFieldType FieldType = ftUnknown;
    // The field bound to this column at open, and how a read of it copies the slot: ReadCount value
    // bytes, then ReadClear zero bytes up to the field's data size. Any other field reading the
    // column works the sizes out per read.
    const TField* ReadField = nullptr;
    std::size_t ReadCount = 0;
    std::size_t ReadClear = 0;
};

// The 8-byte bookmark: the numbering origin in force when it was taken and the row number.
struct TODBCBookmark {
    std::int32_t Origin;
    std::int32_t RowNumber;
};
static_assert(sizeof(TODBCBookmark) == 8);

// Layout of an engine record buffer: row number, bookmark flag, then per field definition one null
// indicator byte ('1' when the column has a value) followed by its data slot.
inline constexpr std::size_t kRecordRowNumberOffset = 0;
inline constexpr std::size_t kRecordFlagOffset = 4;
inline constexpr std::size_t kRecordHeaderSize = 5;
// The row number of a row that has not been numbered yet.
inline constexpr std::int32_t kRowNotNumbered = 4095;

// ODBC SQL type to field type, and field type to the SQL type of a parameter.
TFieldType ConvertSQLToBDE(int SQLType);
// The C type a result column of SQLType is bound as (SQL_C_DEFAULT for the unmapped types).
SQLSMALLINT BindCTypeFor(int SQLType);
// Raises EODBCDatabaseError "Parameter type not supported" for a type it does not map.
int ConvertBDEToSQL(TFieldType FieldType);

// The base of every ODBC dataset: SQL text with :name parameters, the statement handle (prepare,
// bind, execute, data at execution) and a cursor that delivers rows to the dataset framework,
// forwards and backwards, in single rows or blocks. The plain dataset is read-only.
class TODBCDataSet : public TDataSet, public IODBCDatabaseClient {
public:
    explicit TODBCDataSet(TComponent* AOwner);
    ~TODBCDataSet() override;

    std::string ClassName() const override { return "TODBCDataSet"; }

    // --- connection and statement
    TODBCDatabase* ODBCDatabase() const { return FODBCDatabase; }
    // Releases a statement it holds (InternalClose), leaves the old database's list, joins the new.
    virtual void SetODBCDatabase(TODBCDatabase* Value);
    // The SQL lines; a change rebuilds Params (values kept by name) through QueryChanged.
    TStrings& SQL();
    // Replaces the SQL lines when their text differs (disconnecting first).
    void SetQuery(const TStrings& Value);
    TODBCParams& Params() { return *FParams; }
    const TODBCParams& Params() const { return *FParams; }
    int GetParamsCount() const;
    TODBCParam* ParamByName(const std::string& Name) const;
    TODBCParam* FindParam(const std::string& Name) const;

    bool Prepared() const { return FPrepared; }
    void Prepare() { SetPrepared(true); }
    void UnPrepare() { SetPrepared(false); }
    void SetPrepare(bool Value) { SetPrepared(Value); }
    void SetPrepared(bool Value);
    // Executes a statement that returns no cursor; the dataset's state becomes dsBrowse.
    void ExecSQL();
    // SQLRowCount of the last execution; -1 when the driver cannot tell.
    int GetRowsAffected();
    int RowsAffected() { return GetRowsAffected(); }
    // The connection handle of the database, or null without one.
    SQLHDBC GetDBC() const;
    SQLHSTMT StatementHandle() const { return FStmt.Get(); }
    // Raises SODBCDataBaseNotOpen when there is no open database.
    void CheckDBOpenError() const;
    // Allocates the statement handle (cursor type and rowset size applied) when there is none.
    void CreateHandle();
    std::string GetCursorName();
    void SetCursorName(const std::string& Name);
    std::string CursorName() { return GetCursorName(); }

    // --- settings
    std::int32_t BlobBufferSize() const { return FBlobBufferSize; }
    // 1 to 8192; other values raise SODBCMaxStringSize.
    void SetBlobBufferSize(std::int32_t Value);
    std::int32_t MaxBlobBuffer() const { return FMaxBlobBuffer; }
    // At least 1; other values raise SODBCMaxBlobBuffer.
    void SetMaxBlobBuffer(std::int32_t Value);
    bool UniDirectional() const { return FUniDirectional; }
    // Applies the cursor type to an existing statement at once.
    void SetUniDirectional(bool Value);
    bool BlockCursor() const { return FBlockCursor; }
    // Refused on an open dataset.
    void SetBlockCursor(bool Value);
    std::int32_t RowSetSize() const { return FRowSetSize; }
    // Refused on an open dataset; negative values are ignored.
    void SetRowSetSize(std::int32_t Value);
    // Whether string and memo parameters go through Translate (to OEM) before binding.
    bool TranslateFlag() const { return FTranslate; }
    void SetTranslateFlag(bool Value) { FTranslate = Value; }

    // --- cursor operations of the ODBC dataset
    // Opens, or re-executes the statement of an open dataset under its fields and buffers.
    void ImmediatelyOpen();
    // Closes the ODBC cursor under the open dataset and returns where it stood.
    TBookmark SilentClose();
    // Re-executes and returns to Bookmark.
    void SilentOpen(const TBookmark& Bookmark);
    // Whether the statement produces a result set.
    bool IsDataSet();
    // Counts by probing absolute positions (binary search) instead of stepping.
    virtual int GetRecordCountExt();
    bool LocateRecord(const std::string& KeyFields, const Variant& KeyValues, const TLocateOptions& Options);
    bool LocateFindRecord(const std::vector<TField*>& Fields, const Variant& KeyValues, bool CaseInsensitive,
                          bool PartialKey);
    // Raises SODBCNotCorrect when the arrays differ in length.
    bool FindRecordByValues(const std::vector<std::string>& FieldNames, const std::vector<Variant>& Values,
                            bool FromFirst);
    // Inline for the browse state, which nearly every field read happens in.
    bool GetActiveRecBuf(TRecordBuffer& RecBuf) {
        if (State() != dsBrowse) {
            return GetStateRecBuf(RecBuf);
        }
        RecBuf = IsEmpty() ? nullptr : ActiveBuffer();
        return RecBuf != nullptr;
    }

    // --- framework overrides (public in the framework)
    bool GetFieldData(TField* Field, void* Buffer) override;
    using TDataSet::GetFieldData;
    void SetFieldData(TField* Field, const void* Buffer) override;
    using TDataSet::SetFieldData;
    std::unique_ptr<TStream> CreateBlobStream(TField* Field, TBlobStreamMode Mode) override;
    bool IsSequenced() override { return false; }
    // Orders bookmarks by their rows; rows numbered from different ends are placed through the record
    // count (counted once). A nil bookmark sorts after every other one.
    int CompareBookmarks(const TBookmark& Bookmark1, const TBookmark& Bookmark2) override;
    bool Locate(const std::string& KeyFields, const Variant& KeyValues,
                const TLocateOptions& Options) override;

    // --- IODBCDatabaseClient
    TODBCDataSet* ClientDataSet() override { return this; }
    void CloseForDatabase() override;
    bool HoldsStatement() const override { return static_cast<bool>(FStmt); }
    void ReleaseStatement() override;
    void DetachFromDatabase() override;

    // --- virtual operations introduced here, in their classic order
    virtual bool RetCodeIsSuccessful(SQLRETURN RetCode);
    // Converts a parameter's value into a fresh buffer of Item; returns the value's length.
    virtual SQLLEN ConvertData(TODBCParam* Param, TParamValueItem& Item);
    virtual void CreateParams(TODBCParams* AParams, std::string& Text);
    virtual void InternalExecSQL();
    virtual void QueryChanged(TObject* Sender);
    virtual void PrepareSQL(const std::string& Text);
    virtual std::string GetRealSQLText();
    virtual bool DoFilter(TRecordBuffer Buffer);
    virtual void InternalFreeStmt(SQLUSMALLINT Option);

protected:
    friend class TODBCBlobStream;

    // --- framework overrides
    void DefineProperties(TFiler* Filer) override;
    void Notification(TComponent* AComponent, TOperation Operation) override;
    void DestroyFields() override;
    bool GetCanModify() override { return false; }
    int GetRecordCount() override;
    int GetRecNo() override;
    void InternalRefresh() override;
    void OpenCursor(bool InfoQuery) override;
    TRecordBuffer AllocRecordBuffer() override;
    void FreeRecordBuffer(TRecordBuffer& Buffer) override;
    void GetBookmarkData(TRecordBuffer Buffer, void* Data) override;
    TBookmarkFlag GetBookmarkFlag(TRecordBuffer Buffer) override;
    int GetRecordSize() override;
    void InternalAddRecord(const void* Buffer, bool Append) override;
    void InternalDelete() override;
    void InternalInitRecord(TRecordBuffer Buffer) override;
    void InternalPost() override;
    void SetBookmarkFlag(TRecordBuffer Buffer, TBookmarkFlag Value) override;
    void SetBookmarkData(TRecordBuffer Buffer, const void* Data) override;
    void InternalFirst() override;
    void InternalLast() override;
    void InternalGotoBookmark(const void* ABookmark) override;
    void InternalSetToRecord(TRecordBuffer Buffer) override;
    TGetResult GetRecord(TRecordBuffer Buffer, TGetMode GetMode, bool DoCheck) override;
    void InternalClose() override;
    void InternalHandleException() override;
    void InternalInitFieldDefs() override;
    void InternalOpen() override;
    bool IsCursorOpen() override { return static_cast<bool>(FStmt); }

    // --- statement side
    void BindAllParam();
    // Converts text to the OEM code page for binding; text stays UTF-8 here, so this copies.
    virtual void Translate(const char* Src, char* Dest, bool ToOem);
    // Closes the dataset and releases the statement handle (prepared or executed without a cursor).
    void Disconnect();
    // Every ODBC call of the dataset goes through one of these two: the call is traced, its code
    // tested with RetCodeIsSuccessful, and a failure raises the EODBCError read from the
    // environment, connection and statement (CheckCall) or from the statement alone (CheckStmtCall,
    // for parameter binding and data at execution). Both return the code.
    SQLRETURN CheckCall(SQLRETURN Ret, std::string_view Call);
    SQLRETURN CheckStmtCall(SQLRETURN Ret, std::string_view Call);
    // Row bookkeeping of a fresh execution (record count unknown, rows not numbered yet).
    void ResetRowCounters();

    // --- cursor side
    int GetSpecialDataSize(TFieldType FieldType, int Size);
    int GetDefDataSize(const TFieldDef& FieldDef) const;
    void SetOrigin();
    // One fetch step in the direction Orientation (SQL_FETCH_NEXT / SQL_FETCH_PRIOR).
    TGetResult FetchStep(TRecordBuffer Buffer, SQLUSMALLINT Orientation);
    // Copies the row the bindings hold into Buffer, converting to the native formats.
    void CopyRowToBuffer(TRecordBuffer Buffer);
    // Fills the read sizes of every column from the field bound to it.
    void PrepareFieldReads();
    // SQLExtendedFetch on the shared single row-status cell; raises on failure, returns the code.
    SQLRETURN ExtendedFetch(SQLUSMALLINT Orientation, SQLLEN Offset);
    // Repositions after counting (origin and row number as they were).
    void RestorePositionAfterCount();
    // BlockCursor, RowSetSize above 0 and UniDirectional: rows arrive a rowset at a time.
    bool BlockMode() const { return FBlockCursor && FRowSetSize > 0 && FUniDirectional; }
    // Forgets the row numbering (the next successful fetch numbers its row 0).
    void ResetNumbering(std::int32_t Origin, std::int32_t Crack);

    // Numbering state of the cursor (see docs/dataset-framework.md for the crack rules).
    std::int32_t FCurrentRow = kRowNotNumbered;
    // Whether FCurrentRow holds a real number: row 4095 of a long result is a row like any other.
    bool FRowNumbered = false;
    std::int32_t FOrigin = 1;
    std::int32_t FCrack = -1;
    std::int32_t FRecordCountCache = -1;
    std::int32_t FRowsetIndex = -1;
    SQLULEN FRowsFetched = 0;
    TRecordBuffer FFilterBuffer = nullptr;

    std::vector<std::unique_ptr<TParamValueItem>> FParamValues;
    std::vector<std::unique_ptr<TFieldValueItem>> FFieldValues;

private:
    // The record buffer of every state but browsing.
    bool GetStateRecBuf(TRecordBuffer& RecBuf);
    // Sends the values of data-at-execution parameters after SQLExecute answered SQL_NEED_DATA.
    void SendDataAtExecution();
    // SQLFreeStmt with SQL_RESET_PARAMS, SQL_UNBIND and SQL_DROP; only the drop is checked.
    void DropStatement();

    TODBCStatementHandle FStmt;
    TODBCDatabase* FODBCDatabase = nullptr;
    std::unique_ptr<TStringList> FSQL;
    std::unique_ptr<TODBCParams> FParams;
    // The statement text handed to the driver ("?" in place of every :name).
    std::string FRealSQL;
    bool FPrepared = false;
    std::int32_t FBlobBufferSize = 8192;
    std::int32_t FMaxBlobBuffer = 100000;
    bool FBlockCursor = false;
    std::vector<SQLUSMALLINT> FRowStatus;
    SQLUSMALLINT FSingleRowStatus = 0;
    std::int32_t FRowSetSize = 100;
    bool FUniDirectional = false;
    bool FTranslate = false;
    // Header plus one indicator byte and one data slot per definition.
    std::int32_t FRecordDataSize = static_cast<std::int32_t>(kRecordHeaderSize);
};

} // namespace quorda
