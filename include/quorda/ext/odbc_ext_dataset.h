#pragma once

#include "quorda/core/odbc_dataset.h"
#include "quorda/rtl/object.h"
#include "quorda/rtl/strings.h"
#include "quorda/rtl/variant.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace quorda {

class TODBCExtBlobStream;
class TPropertyList;

// The handler of a posted change: it writes the change to the database and answers through
// UpdateAction (uaRetry calls it again; every other answer ends the post).
using TUpdateRecordEvent =
    std::function<void(TDataSet* DataSet, TUpdateKind UpdateKind, TUpdateAction& UpdateAction)>;

// One value kept for a field in the old-value or new-value list.
class QUORDA_API TFieldValue : public TObject {
public:
    explicit TFieldValue(Variant AValue) : Value(std::move(AValue)) {}
    Variant Value;
};

// Pending update kinds of TODBCExtDataSet.
enum : std::uint8_t { kUpdateNone = 0, kUpdateModify = 1, kUpdateInsert = 2, kUpdateDelete = 3 };

// The editable ODBC dataset. It writes no SQL: edits go into its own record buffers, the value a
// field had before its first change is kept in memory, and posting or deleting hands the change to
// OnUpdateRec, OnInsertRec or OnDeleteRec, whose handlers write it to the database. After a post the
// dataset re-executes its statement and returns to the record it stood on.
class QUORDA_API TODBCExtDataSet : public TODBCDataSet {
public:
    explicit TODBCExtDataSet(TComponent* AOwner);
    ~TODBCExtDataSet() override;

    std::string ClassName() const override { return "TODBCExtDataSet"; }

    // How many fields have been changed in the current edit or insert (entries of the old-value list).
    int ModifiedField() const { return FOldValues->Count(); }
    // The pending update kind: kUpdateNone, kUpdateModify, kUpdateInsert or kUpdateDelete.
    std::uint8_t PendingUpdate() const { return FUpdateKind; }

    void SetFieldData(TField* Field, const void* Buffer) override;
    using TODBCDataSet::SetFieldData;
    Variant GetStateFieldValue(TDataSetState AState, TField* Field) override;
    std::unique_ptr<TStream> CreateBlobStream(TField* Field, TBlobStreamMode Mode) override;
    int CompareBookmarks(const TBookmark& Bookmark1, const TBookmark& Bookmark2) override;

    TUpdateRecordEvent OnUpdateRec;
    TUpdateRecordEvent OnInsertRec;
    TUpdateRecordEvent OnDeleteRec;

protected:
    friend class TODBCExtBlobStream;

    bool GetCanModify() override { return true; }
    int GetRecordSize() override;
    void InternalAddRecord(const void* Buffer, bool Append) override;
    void InternalHandleException() override;
    void InternalDelete() override;
    void InternalInitRecord(TRecordBuffer Buffer) override;
    void InternalClose() override;
    void InternalCancel() override;
    void InternalPost() override;
    void SetBookmarkFlag(TRecordBuffer Buffer, TBookmarkFlag Value) override;
    void SetBookmarkData(TRecordBuffer Buffer, const void* Data) override;
    void DoAfterPost() override;

    // The field's entry in a value list; null when it has none.
    static TFieldValue* Entry(const TStringList& List, const TField* Field);
    // Keeps Value as the field's value before the change, unless an earlier change already did.
    void RememberOldValue(const TField* Field, const std::function<Variant()>& Value);
    // Replaces (Value given) or removes the field's entry in the new-value list.
    void SetNewValueEntry(const TField* Field, std::unique_ptr<TFieldValue> Value);
    // The kind a change made in the current state starts, unless one is pending already.
    void MarkPending();
    void ClearPending();

    std::unique_ptr<TStringList> FOldValues;
    std::unique_ptr<TStringList> FNewValues;
    std::uint8_t FUpdateKind = kUpdateNone;
};

// The editable query component.
class QUORDA_API TODBCExtQuery : public TODBCExtDataSet {
public:
    explicit TODBCExtQuery(TComponent* AOwner) : TODBCExtDataSet(AOwner) {}
    // Out of line beside the class's registration, which every program using the class then links.
    std::string ClassName() const override;
};

// The query's published properties and the three update events.
QUORDA_API const TPropertyList& ODBCExtQueryProperties();
// Registers TODBCExtQuery with the component reader (see RegisterODBCClasses).
QUORDA_API void RegisterODBCExtClasses();

} // namespace quorda
