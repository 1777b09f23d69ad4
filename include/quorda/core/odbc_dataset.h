#pragma once

#include "quorda/core/database_client.h"
#include "quorda/core/odbc_params.h"
#include "quorda/db/dataset.h"
#include "quorda/odbc/odbc_check.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/odbc/odbc_types.h"
#include "quorda/rtl/strings.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorda {

class TODBCDatabase;

// The engine's binding records and statement state (src/core/odbc_dataset_p.h).
struct TParamValueItem;
struct TFieldValueItem;
struct TODBCDataSetEngine;

// A batch execution that failed at one row: the driver's diagnostics (or the conversion error) of that
// row, with the index of the row in the batch (from 0) and a message that names it.
class EODBCBatchError : public EODBCError {
public:
    EODBCBatchError(std::size_t RowIndex, const std::string& Message, const EODBCError* Cause);

    std::size_t RowIndex() const noexcept { return FRowIndex; }

private:
    std::size_t FRowIndex;
};

// ODBC SQL type to field type, and field type to the SQL type of a parameter.
QUORDA_API TFieldType ConvertSQLToBDE(int SQLType);
// Raises EODBCDatabaseError "Parameter type not supported" for a type it does not map.
QUORDA_API int ConvertBDEToSQL(TFieldType FieldType);

// The base of every ODBC dataset: SQL text with :name parameters, the statement handle (prepare,
// bind, execute, data at execution) and a cursor that delivers rows to the dataset framework,
// forwards and backwards, in single rows or blocks. The plain dataset is read-only.
class QUORDA_API TODBCDataSet : public TDataSet, public IODBCDatabaseClient {
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
    TODBCParam* ParamByName(std::string_view Name) const;
    TODBCParam* FindParam(std::string_view Name) const;

    bool Prepared() const { return FPrepared; }
    void Prepare() { SetPrepared(true); }
    void UnPrepare() { SetPrepared(false); }
    void SetPrepare(bool Value) { SetPrepared(Value); }
    void SetPrepared(bool Value);
    // Executes a statement that returns no cursor; the dataset's state becomes dsBrowse.
    void ExecSQL();
    // Executes the statement once per row of Rows, value i of a row going to parameter i (a row holds
    // one value per parameter). A column's type is its parameter's DataType, else that of its first
    // non-null value. Rows go through parameter arrays where the driver takes them and gains from
    // them, else one execution each. Returns the rows affected in total. On a failure raises
    // EODBCBatchError naming the row; rows before it may have been applied (run the batch in a
    // transaction to have all or nothing). The dataset's state becomes dsBrowse.
    std::int64_t ExecSQLBatch(const std::vector<std::vector<Variant>>& Rows);
    // SQLRowCount of the last execution; -1 when the driver cannot tell.
    int GetRowsAffected();
    int RowsAffected() { return GetRowsAffected(); }
    // The connection handle of the database, or null without one.
    SQLHDBC GetDBC() const;
    SQLHSTMT StatementHandle() const;
    // Raises SODBCDataBaseNotOpen when there is no open database.
    void CheckDBOpenError() const;
    // Allocates the statement handle (cursor type and rowset size applied) when there is none.
    void CreateHandle();
    // Both raise SODBCNoStatement before the dataset holds a statement (as does any call that needs one).
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
    // Seconds a statement may run before the driver stops it (SQL_QUERY_TIMEOUT), applied to every
    // statement the dataset makes from now on; 0 waits without limit.
    std::int32_t QueryTimeout() const { return FQueryTimeout; }
    void SetQueryTimeout(std::int32_t Value) { FQueryTimeout = Value; }
    // Asks the driver to stop the statement that is running (SQLCancel). Callable from any thread
    // while another one waits in an execution or a fetch, which then fails with the driver's error;
    // without a statement it does nothing. Named apart from the framework's Cancel, which abandons an
    // edit.
    void CancelStatement();
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
    TFieldDataView PeekFieldData(const TField* Field) override;
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
    bool HoldsStatement() const override;
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
    bool IsCursorOpen() override;

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
    // Every fetched row passes CheckCall: a plain success with tracing off needs nothing more and is
    // answered inline.
    SQLRETURN CheckCall(SQLRETURN Ret, std::string_view Call) {
        return Ret == kSQLSuccess && !ODBCTraceEnabled() ? Ret : CheckReturnedCode(Ret, Call);
    }
    SQLRETURN CheckStmtCall(SQLRETURN Ret, std::string_view Call);
    // CheckCall's trace and test of every other return code.
    SQLRETURN CheckReturnedCode(SQLRETURN Ret, std::string_view Call);
    // Row bookkeeping of a fresh execution (record count unknown, rows not numbered yet).
    void ResetRowCounters();

    // --- cursor side
    int GetSpecialDataSize(TFieldType FieldType, int Size);
    int GetDefDataSize(const TFieldDef& FieldDef) const;
    void SetOrigin();
    // Places every described column in a row of the engine's row area (slots of SlotSizes bytes) and
    // makes room for RowCount rows.
    void LayOutRows(const std::vector<std::size_t>& SlotSizes, std::size_t RowCount);
    // One fetch step in the direction Orientation (SQL_FETCH_NEXT / SQL_FETCH_PRIOR).
    TGetResult FetchStep(TRecordBuffer Buffer, SQLUSMALLINT Orientation);
    // Copies row Row of the bindings (of a rowset, or the only one) into Buffer, converting to the
    // native formats.
    void CopyRowToBuffer(TRecordBuffer Buffer, std::size_t Row);
    // Fills the read sizes of every column from the field bound to it.
    void PrepareFieldReads();
    // The bytes of one record buffer.
    std::size_t RecordBufferSize() const;
    // Where Field's column lives in a record buffer: its indicator byte, followed by the data slot
    // of DataSize bytes; null for a field without a column of its own (calculated, unbound).
    std::byte* FieldSlot(TRecordBuffer Buffer, const TField* Field, std::size_t& DataSize) const;
    // After a value was written into Field's slot of Buffer: keeps a text's length beside it.
    void SlotWritten(TRecordBuffer Buffer, const TField* Field) const;
    // SQLExtendedFetch on the shared single row-status cell; raises on failure, returns the code.
    // A forward-only cursor is refused without a call: after SQLFetch the driver manager answers any
    // SQLExtendedFetch with a sequence error.
    SQLRETURN ExtendedFetch(SQLUSMALLINT Orientation, SQLLEN Offset);
    // ExtendedFetch on a cursor known to be scrollable.
    SQLRETURN ScrollFetch(SQLUSMALLINT Orientation, SQLLEN Offset);
    // Raises SUniDirectional when the statement's cursor is forward-only (asked on every scrollable
    // fetch: the test is inline, the raise is not).
    void CheckScrollable() const {
        if (FForwardOnlyCursor) {
            RaiseForwardOnly();
        }
    }
    [[noreturn]] static void RaiseForwardOnly();
    // Closes the cursor and runs the statement again under the open dataset's fields and buffers.
    void ExecuteAgain();
    // Repositions after counting (origin and row number as they were).
    void RestorePositionAfterCount();
    // BlockCursor, RowSetSize above 0 and a forward-only cursor: rows arrive a rowset at a time.
    bool BlockMode() const { return FBlockCursor && FRowSetSize > 0 && FForwardOnlyCursor; }
    // The row of the bindings the cursor stands on: the rowset's current one, or the only one.
    std::size_t BoundRow() const { return BlockMode() ? static_cast<std::size_t>(FRowsetIndex) : 0; }
    // Forgets the row numbering (the next successful fetch numbers its row 0).
    void ResetNumbering(std::int32_t Origin, std::int32_t Crack);

    // Numbering state of the cursor (see docs/dataset-framework.md for the crack rules).
    std::int32_t FCurrentRow;
    // Whether FCurrentRow holds a real number: row 4095 of a long result is a row like any other.
    bool FRowNumbered = false;
    std::int32_t FOrigin = 1;
    std::int32_t FCrack = -1;
    std::int32_t FRecordCountCache = -1;
    std::int32_t FRowsetIndex = -1;
    SQLULEN FRowsFetched = 0;
    // The cursor type the statement handle has: the one it was made with or last set on it. Fetching
    // follows it, not UniDirectional, which a driver no longer applies to a statement that has run.
    bool FForwardOnlyCursor = false;
    TRecordBuffer FFilterBuffer = nullptr;

    std::vector<std::unique_ptr<TParamValueItem>> FParamValues;
    std::vector<std::unique_ptr<TFieldValueItem>> FFieldValues;

private:
    friend TODBCDataSetEngine& EngineOf(TODBCDataSet& DataSet);

    // The record buffer of every state but browsing.
    bool GetStateRecBuf(TRecordBuffer& RecBuf);
    // The value slot of Field in the active record and the binding of its column; null when the
    // field has no value there (NULL, no record, no column of its own).
    const std::byte* ActiveValue(const TField* Field, const TFieldValueItem*& Item);
    // Sends the values of data-at-execution parameters after SQLExecute answered SQL_NEED_DATA.
    void SendDataAtExecution();
    // Frees the forward-only statement a batch made for itself (nothing checked: it runs on the way
    // out of ExecSQLBatch, also after an error).
    void ReleaseBatchStatement() noexcept;
    // SQLFreeStmt with SQL_RESET_PARAMS, SQL_UNBIND and SQL_DROP; only the drop is checked.
    void DropStatement();
    // Refuses more parameters than the driver takes, before anything is bound.
    void CheckParamCount();
    // Raises SODBCNoStatement for a call that failed because there is no statement.
    void RefuseMissingStatement(SQLRETURN Ret) const;
    // Set and free the statement handle under the engine's statement lock; Free returns the driver's code.
    void ResetStmtHandle(SQLHSTMT Handle);
    SQLRETURN FreeStmtHandle();

    // The statement handle and the row-status cells it fills.
    std::unique_ptr<TODBCDataSetEngine> FEngine;
    std::int32_t FQueryTimeout = 0;
    TODBCDatabase* FODBCDatabase = nullptr;
    std::unique_ptr<TStringList> FSQL;
    std::unique_ptr<TODBCParams> FParams;
    // The statement text handed to the driver ("?" in place of every :name).
    std::string FRealSQL;
    bool FPrepared = false;
    std::int32_t FBlobBufferSize = 8192;
    std::int32_t FMaxBlobBuffer = 100000;
    bool FBlockCursor = false;
    std::int32_t FRowSetSize = 100;
    bool FUniDirectional = false;
    bool FTranslate = false;
};

} // namespace quorda
