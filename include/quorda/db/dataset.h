#pragma once

#include "quorda/db/bookmark.h"
#include "quorda/db/field_classes.h"
#include "quorda/db/field_def.h"
#include "quorda/db/fields.h"
#include "quorda/db/types.h"
#include "quorda/rtl/component.h"
#include "quorda/rtl/stream.h"
#include "quorda/rtl/variant.h"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorda {

class TDataLink;
class TDataSetRows;
class TDataSource;
class TStrings;

using TDataSetNotifyEvent = std::function<void(TDataSet* DataSet)>;
using TFilterRecordEvent = std::function<void(TDataSet* DataSet, bool& Accept)>;

// The generic dataset: a cursor over records seen through a ring of record buffers, with states,
// fields, bookmarks and data events for the data links of attached data sources.
//
// The ring holds BufferCount records around the active one (BufferCount grows to the largest
// BufferCount of the attached data links, at least 1) plus one spare buffer at the end used to fetch
// the next record before it is rotated into place. Records are moved by rotating buffer pointers.
// A descendant supplies the cursor through the virtual record operations (GetRecord, InternalOpen,
// InternalFirst, AllocRecordBuffer, GetFieldData, ...); see docs/dataset-framework.md.
//
// A descendant that overrides the record operations calls CloseForDestroy() in its own destructor:
// by the time ~TDataSet runs, the descendant's overrides are gone.
class QUORDA_API TDataSet : public TComponent, protected TDataSetBrowse {
public:
    explicit TDataSet(TComponent* AOwner);
    ~TDataSet() override;

    std::string ClassName() const override { return "TDataSet"; }
    void Loaded() override;

    // --- state
    TDataSetState State() const { return FState; }
    bool Active() const { return FState != dsInactive && FState != dsOpening; }
    virtual void SetActive(bool Value);
    void Open() { SetActive(true); }
    void Close() { SetActive(false); }
    bool Bof() const { return FBOF; }
    bool Eof() const { return FEOF; }
    // No current record (an insert into an empty dataset has one).
    bool IsEmpty() const { return FBOF && FEOF && FState != dsInsert; }
    bool Modified() const { return FModified; }
    bool CanModify() { return GetCanModify(); }
    int RecordCount() { return GetRecordCount(); }
    int RecNo() { return GetRecNo(); }
    void SetRecNo(int Value) { DoSetRecNo(Value); }
    bool IsUniDirectional() const { return FIsUniDirectional; }
    bool Filtered() const { return FFiltered; }
    virtual void SetFiltered(bool Value);
    // Whether the fields were created from the field definitions when the dataset opened.
    bool DefaultFields() const { return FDefaultFields; }
    bool AutoCalcFields() const { return FAutoCalcFields; }
    void SetAutoCalcFields(bool Value) { FAutoCalcFields = Value; }
    int BookmarkSize() const { return FBookmarkSize; }
    // The master data source of a detail dataset; null for a plain dataset.
    virtual TDataSource* GetDataSource() const { return nullptr; }

    // Data events to the links are suppressed while the count is above zero; EnableControls at zero
    // sends one state update (when the state changed meanwhile) and one dataset change.
    void DisableControls();
    void EnableControls();
    bool ControlsDisabled() const { return FDisableControlsCount > 0; }

    // --- fields
    TFieldDefs& FieldDefs() { return *FFieldDefs; }
    const TFieldDefs& FieldDefs() const { return *FFieldDefs; }
    TFields& Fields() { return *FFields; }
    const TFields& Fields() const { return *FFields; }
    int FieldCount() const { return FFields->Count(); }
    // Raises "Field not found" when absent.
    TField* FieldByName(std::string_view FieldName) const;
    TField* FindField(std::string_view FieldName) const;
    TField* FieldByNumber(int FieldNo) const;
    // Appends the fields of a ';'-separated list of names; an unknown name raises "Field not found".
    void GetFieldList(std::vector<TField*>& List, const std::string& FieldNames) const;
    void GetFieldNames(TStrings& List) const;
    // The value of a field, or a variant array of the values of a ';'-separated list.
    Variant FieldValues(const std::string& FieldNames) const;
    void SetFieldValues(const std::string& FieldNames, const Variant& Value);

    // --- navigation
    void First();
    void Last();
    void Next() { MoveBy(1); }
    void Prior() { MoveBy(-1); }
    // Moves up to Distance records (negative: backwards); returns the distance actually moved.
    int MoveBy(int Distance);
    // The records for range-for (dataset_rows.h): opens or goes to First, Next per step, ends at Eof.
    TDataSetRows Rows();
    // Re-reads the data source and shows the current record again.
    void Refresh();
    // Refills the ring around the cursor's current record: rmExact raises when that record is gone,
    // rmCenter centres it in the ring instead of keeping its position.
    virtual void Resync(const TResyncMode& Mode);
    // Posts or cancels a pending edit (post when modified). Runs before every move, so the browsing
    // case stays inline.
    void CheckBrowseMode() {
        CheckActive();
        DataEvent(deCheckBrowseMode, 0);
        if (FState == dsEdit || FState == dsInsert || FState == dsSetKey) {
            EndPendingEdit();
        }
    }
    // Forgets which buffer the cursor stands on, so the next fetch repositions it.
    void CursorPosChanged() { FCurrentRecord = -1; }
    // Brings the cursor onto the active record.
    void UpdateCursorPos();

    // --- editing
    void Edit();
    void Insert();
    void Append();
    virtual void Post();
    virtual void Cancel();
    virtual void Delete();
    // Lets the links store their pending values into the fields.
    void UpdateRecord();
    // Sets every field of the record being edited to null.
    void ClearFields();
    // Insert/Append, assign the values to the first fields in order, Post.
    void InsertRecord(const std::vector<Variant>& Values);
    void AppendRecord(const std::vector<Variant>& Values);
    void SetFields(const std::vector<Variant>& Values);

    // --- bookmarks
    // The bookmark of the active record; nil when there is none to take.
    virtual TBookmark GetBookmark();
    // Makes the bookmarked record the active one (a nil bookmark does nothing).
    void GotoBookmark(const TBookmark& ABookmark);
    // Compatibility with code that frees bookmarks: the bookmark becomes nil.
    virtual void FreeBookmark(TBookmark& ABookmark) { ABookmark = TBookmark(); }
    virtual bool BookmarkValid(const TBookmark& ABookmark) { return false; }
    // Negative, zero or positive as Bookmark1 comes before, at or after Bookmark2.
    virtual int CompareBookmarks(const TBookmark& Bookmark1, const TBookmark& Bookmark2) { return 0; }
    // The bookmark as a string of its bytes (empty when unavailable); setting goes to it.
    TBookmarkStr Bookmark() { return GetBookmarkStr(); }
    void SetBookmark(const TBookmarkStr& Value) { SetBookmarkStr(Value); }

    // --- search
    // The default searches sequentially from the first record (loCaseInsensitive and loPartialKey
    // apply to string values); when nothing matches the cursor stays where it was.
    virtual bool Locate(const std::string& KeyFields, const Variant& KeyValues,
                        const TLocateOptions& Options);
    // The values of ResultFields in the record matching the keys (Null when none), without moving.
    virtual Variant Lookup(const std::string& KeyFields, const Variant& KeyValues,
                           const std::string& ResultFields);

    // --- record data
    // The buffer of the active record; null while closed.
    TRecordBuffer ActiveBuffer() const { return FBuffers.empty() ? nullptr : FBuffers[FActiveRecord]; }
    virtual bool GetFieldData(TField* Field, void* Buffer);
    // Where the native value of Field lies in the active record (TField::DataView), for reads that
    // copy nothing. A dataset that keeps no such slot returns a view that is not Direct (the default).
    virtual TFieldDataView PeekFieldData(const TField* Field) { return {}; }
    // NativeFormat false converts dates and times to and from TDateTime through DataConvert.
    virtual bool GetFieldData(TField* Field, void* Buffer, bool NativeFormat);
    virtual void SetFieldData(TField* Field, const void* Buffer);
    virtual void SetFieldData(TField* Field, const void* Buffer, bool NativeFormat);
    virtual void DataConvert(TField* Field, const void* Source, void* Dest, bool ToNative);
    virtual std::unique_ptr<TStream> CreateBlobStream(TField* Field, TBlobStreamMode Mode);
    // The field's value as it reads in another state (dsOldValue, dsCurValue, dsNewValue).
    virtual Variant GetStateFieldValue(TDataSetState AState, TField* Field);
    virtual bool IsSequenced() { return true; }
    // The single broadcast point of data events: updates the dataset's own bookkeeping and passes
    // the event to every attached data source unless controls are disabled. Every step of the cursor
    // sends two events; with no data source attached only a field or layout change has work to do.
    virtual void DataEvent(TDataEvent Event, std::intptr_t Info) {
        if (!FDataSources.empty() || Event == deFieldChange || Event == deLayoutChange) {
            HandleDataEvent(Event, Info);
        }
    }

    // --- events
    TDataSetNotifyEvent BeforeOpen;
    TDataSetNotifyEvent AfterOpen;
    TDataSetNotifyEvent BeforeClose;
    TDataSetNotifyEvent AfterClose;
    TDataSetNotifyEvent BeforeInsert;
    TDataSetNotifyEvent AfterInsert;
    TDataSetNotifyEvent BeforeEdit;
    TDataSetNotifyEvent AfterEdit;
    TDataSetNotifyEvent BeforePost;
    TDataSetNotifyEvent AfterPost;
    TDataSetNotifyEvent BeforeCancel;
    TDataSetNotifyEvent AfterCancel;
    TDataSetNotifyEvent BeforeDelete;
    TDataSetNotifyEvent AfterDelete;
    TDataSetNotifyEvent BeforeScroll;
    TDataSetNotifyEvent AfterScroll;
    TDataSetNotifyEvent BeforeRefresh;
    TDataSetNotifyEvent AfterRefresh;
    TDataSetNotifyEvent OnCalcFields;
    TDataSetNotifyEvent OnNewRecord;
    TFilterRecordEvent OnFilterRecord;

protected:
    // Declares that every record buffer of this dataset holds Field's value at a fixed place: a
    // presence byte at Offset ('1' when the field has a value, anything else for NULL), then Size
    // bytes of the value in its native layout. While browsing, TField::DataView then reads it there
    // without a call to PeekFieldData. A text slot may come with its length: a 64-bit count of its
    // bytes at LengthOffset of every record buffer holding the value, which every view of the slot
    // then reads instead of looking for the zero. Forgotten at the next BindFields.
    void SetFieldSlot(TField* Field, std::ptrdiff_t Offset, std::size_t Size,
                      std::ptrdiff_t LengthOffset = -1) {
        Field->FSlotOffset = Offset;
        Field->FSlotSize = Size;
        Field->FSlotLengthDelta = LengthOffset < 0 ? 0 : LengthOffset - (Offset + 1);
        Field->FBrowse = this;
    }

    // --- ring, for descendants
    int ActiveRecord() const { return FActiveRecord; }
    int CurrentRecord() const { return FCurrentRecord; }
    int BufferCount() const { return FBufferCount; }
    TRecordBuffer Buffers(int Index) const { return FBuffers[Index]; }
    // The spare buffer after the records in use.
    TRecordBuffer TempBuffer() const { return FBuffers[FRecordCount]; }
    TRecordBuffer CalcBuffer() const { return FCalcBuffer; }
    int CalcFieldsSize() const { return FCalcFieldsSize; }
    int BlobFieldCount() const { return FBlobFieldCount; }
    bool InternalCalcFields() const { return FInternalCalcFields; }
    void SetBookmarkSize(int Value) { FBookmarkSize = Value; }

    void SetState(TDataSetState Value);
    // Switches the state without notifying the links (controls stay disabled until RestoreState).
    TDataSetState SetTempState(TDataSetState Value);
    void RestoreState(TDataSetState Value);
    void SetModified(bool Value) { FModified = Value; }
    // Asks OnFilterRecord about the record the fields read in the dsFilter state, restoring the
    // state also when the handler raises; true (accepted) without a handler.
    bool FilterRecord();
    void SetUniDirectional(bool Value) { FIsUniDirectional = Value; }
    void SetDefaultFields(bool Value) { FDefaultFields = Value; }

    virtual void CheckActive() {
        if (!Active()) {
            RaiseInactive();
        }
    }
    virtual void CheckInactive();
    void CheckBiDirectional() const {
        if (FIsUniDirectional) {
            RaiseUniDirectional();
        }
    }

    // Links the fields to the field definitions (Binding true) or unlinks them; lays out the
    // calculated-field area. A data field without a definition raises "Field not found".
    void BindFields(bool Binding);
    virtual void CreateFields();
    virtual void DestroyFields();
    // Fills FieldDefs from the cursor (opening it for the purpose when closed).
    virtual void InitFieldDefs();
    // Creates field definitions from persistent fields when there are none.
    void InitFieldDefsFromFields();
    virtual TFieldClass GetFieldClass(TFieldType FieldType);

    virtual void OpenCursor(bool InfoQuery);
    virtual void OpenCursorComplete();
    virtual void CloseCursor();
    // Sizes the ring to what the links need and fills it.
    void RecalcBufListSize();
    virtual void SetBufListSize(int Value);
    virtual void ActivateBuffers();
    virtual void ClearBuffers();
    virtual int GetNextRecords();
    virtual bool GetNextRecord();
    virtual int GetPriorRecords();
    virtual bool GetPriorRecord();
    // Brings the cursor onto the record of buffer Index (InternalSetToRecord, or InternalFirst /
    // InternalLast for a crack buffer). Every fetch asks; mostly the cursor stands there already.
    virtual void SetCurrentRecord(int Index) {
        if (FCurrentRecord != Index) {
            PositionCursorOn(Index);
        }
    }
    bool BookmarkAvailable();
    virtual TBookmarkStr GetBookmarkStr();
    virtual void SetBookmarkStr(const TBookmarkStr& Value);

    virtual void CalculateFields(TRecordBuffer Buffer);
    // Runs OnCalcFields for Buffer when the dataset has calculated fields; descendants call it from
    // GetRecord after filling a buffer.
    virtual void GetCalcFields(TRecordBuffer Buffer);
    virtual void ClearCalcFields(TRecordBuffer Buffer) {}
    virtual void RefreshInternalCalcFields(TRecordBuffer Buffer);
    virtual void InitRecord(TRecordBuffer Buffer);
    virtual void FreeFieldBuffers();

    virtual void DoAfterCancel() { Fire(AfterCancel); }
    virtual void DoAfterClose();
    virtual void DoAfterDelete() { Fire(AfterDelete); }
    virtual void DoAfterEdit() { Fire(AfterEdit); }
    virtual void DoAfterInsert() { Fire(AfterInsert); }
    virtual void DoAfterOpen() { Fire(AfterOpen); }
    virtual void DoAfterPost() { Fire(AfterPost); }
    virtual void DoAfterRefresh() { Fire(AfterRefresh); }
    virtual void DoAfterScroll() { Fire(AfterScroll); }
    virtual void DoBeforeCancel() { Fire(BeforeCancel); }
    virtual void DoBeforeClose();
    virtual void DoBeforeDelete() { Fire(BeforeDelete); }
    virtual void DoBeforeEdit() { Fire(BeforeEdit); }
    virtual void DoBeforeInsert() { Fire(BeforeInsert); }
    virtual void DoBeforeOpen() { Fire(BeforeOpen); }
    virtual void DoBeforePost() { Fire(BeforePost); }
    virtual void DoBeforeRefresh() { Fire(BeforeRefresh); }
    virtual void DoBeforeScroll() { Fire(BeforeScroll); }
    virtual void DoOnCalcFields() { Fire(OnCalcFields); }
    virtual void DoOnNewRecord() { Fire(OnNewRecord); }

    // --- record operations of the cursor
    virtual TRecordBuffer AllocRecordBuffer() { return nullptr; }
    virtual void FreeRecordBuffer(TRecordBuffer& Buffer) { Buffer = nullptr; }
    virtual void GetBookmarkData(TRecordBuffer Buffer, void* Data) {}
    virtual TBookmarkFlag GetBookmarkFlag(TRecordBuffer Buffer) { return bfCurrent; }
    virtual void SetBookmarkData(TRecordBuffer Buffer, const void* Data) {}
    virtual void SetBookmarkFlag(TRecordBuffer Buffer, TBookmarkFlag Value) {}
    virtual int GetRecordSize() { return 0; }
    virtual bool GetCanModify() { return !FIsUniDirectional; }
    virtual int GetRecordCount() { return -1; }
    virtual int GetRecNo() { return -1; }
    virtual void DoSetRecNo(int Value) {}
    virtual void InternalAddRecord(const void* Buffer, bool Append) {}
    virtual void InternalCancel() {}
    virtual void InternalDelete() {}
    virtual void InternalEdit() {}
    virtual void InternalFirst() {}
    virtual void InternalGotoBookmark(const void* ABookmark) {}
    // Reports the exception being handled to the application (call from a catch block).
    virtual void InternalHandleException();
    virtual void InternalInitRecord(TRecordBuffer Buffer) {}
    virtual void InternalInsert() {}
    virtual void InternalLast() {}
    // The default checks required fields ("Field %s is required, but not supplied.").
    virtual void InternalPost();
    virtual void InternalRefresh() {}
    virtual void InternalSetToRecord(TRecordBuffer Buffer) {}
    virtual TGetResult GetRecord(TRecordBuffer Buffer, TGetMode GetMode, bool DoCheck) = 0;
    virtual void InternalClose() = 0;
    virtual void InternalOpen() = 0;
    virtual void InternalInitFieldDefs() = 0;
    virtual bool IsCursorOpen() = 0;

    // Closes without the close events and without raising; for the destructor of a descendant.
    void CloseForDestroy() noexcept;

private:
    friend class TBlobField;
    friend class TDataLink;
    friend class TDataSource;
    friend class TField;
    friend class TFieldDef;
    friend class TFieldDefs;
    friend class TFields;

    // DataEvent's work once it has something to do (see there).
    void HandleDataEvent(TDataEvent Event, std::intptr_t Info);
    // SetCurrentRecord's work when the cursor stands elsewhere.
    void PositionCursorOn(int Index);
    // CheckBrowseMode's work in the editing states.
    void EndPendingEdit();
    [[noreturn]] static void RaiseInactive();
    [[noreturn]] static void RaiseUniDirectional();
    void Fire(const TDataSetNotifyEvent& Event) {
        if (Event) {
            Event(this);
        }
    }
    void DoInternalOpen();
    // The converting half of GetFieldData/SetFieldData, kept out of line so that the native reads
    // every typed accessor makes stay a plain forward.
    bool GetConvertedFieldData(TField* Field, void* Buffer);
    void SetConvertedFieldData(TField* Field, const void* Buffer);
    void DoInsertAppend(bool DoAppend);
    void DoInsertAppendRecord(const std::vector<Variant>& Values, bool DoAppend);
    void ShiftBuffersForward();
    void ShiftBuffersBackward();
    void RegisterDataSource(TDataSource* DataSource);
    void UnregisterDataSource(TDataSource* DataSource);
    void FreeAllBuffers() noexcept;
    bool LocateRecord(const std::vector<TField*>& KeyFields, const Variant& KeyValues, bool CaseInsensitive,
                      bool PartialKey);
    // Debug builds check the ring's three integers after every ring operation.
    void CheckRing() const {
#ifndef NDEBUG
        CheckRingInvariants();
#endif
    }
    void CheckRingInvariants() const;

    std::unique_ptr<TFieldDefs> FFieldDefs;
    std::unique_ptr<TFields> FFields;
    std::vector<TDataSource*> FDataSources;
    int FBufferCount = -1;
    int FCurrentRecord = -1;
    TRecordBuffer FCalcBuffer = nullptr;
    int FCalcFieldsSize = 0;
    int FBlobFieldCount = 0;
    int FBookmarkSize = 0;
    int FDisableControlsCount = 0;
    TDataSetState FDisableControlsState = dsInactive;
    TDataEvent FEnableControlsEvent = deDataSetChange;
    bool FModified = false;
    bool FFiltered = false;
    bool FDefaultFields = false;
    bool FAutoCalcFields = true;
    bool FInternalCalcFields = false;
    bool FIsUniDirectional = false;
    bool FInternalOpenComplete = false;
    bool FOpenAfterRead = false;
};

} // namespace quorda

#include "quorda/db/dataset_rows.h"
