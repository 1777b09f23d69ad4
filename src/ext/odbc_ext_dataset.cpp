// TODBCExtDataSet: edits written into the record buffers, the old and new values kept per field,
// and posting through the update events.

#include "quorda/ext/odbc_ext_dataset.h"

#include "ext_record_p.h"
#include "quorda/db/blob_field.h"
#include "quorda/ext/odbc_ext_blob_stream.h"
#include "quorda/rtl/messages.h"

#include <cstdlib>
#include <cstring>

namespace quorda {

using ext_detail::ReadBookmark;

TODBCExtDataSet::TODBCExtDataSet(TComponent* AOwner)
    : TODBCDataSet(AOwner), FOldValues(std::make_unique<TStringList>(true)),
      FNewValues(std::make_unique<TStringList>(true)) {}

TODBCExtDataSet::~TODBCExtDataSet() {
    // Closes while this class's InternalClose is still in place.
    CloseForDestroy();
}

// ---- refused operations: the editable dataset has no record size and adds no records directly

int TODBCExtDataSet::GetRecordSize() {
    DatabaseError(LoadStr(SODBCNotImplemented));
}

void TODBCExtDataSet::InternalAddRecord(const void* Buffer, bool Append) {
    DatabaseError(LoadStr(SODBCNotImplemented));
}

void TODBCExtDataSet::InternalHandleException() {
    DatabaseError(LoadStr(SODBCNotImplemented));
}

// ---- the value lists

TFieldValue* TODBCExtDataSet::Entry(const TStringList& List, const TField* Field) {
    const int index = List.IndexOf(Field->FieldName());
    return index < 0 ? nullptr : static_cast<TFieldValue*>(List.Objects(index));
}

void TODBCExtDataSet::RememberOldValue(const TField* Field, const std::function<Variant()>& Value) {
    if (Entry(*FOldValues, Field) == nullptr) {
        FOldValues->AddObject(Field->FieldName(), new TFieldValue(Value()));
    }
}

void TODBCExtDataSet::SetNewValueEntry(const TField* Field, std::unique_ptr<TFieldValue> Value) {
    const int index = FNewValues->IndexOf(Field->FieldName());
    if (index >= 0) {
        FNewValues->Delete(index);
    }
    if (Value) {
        FNewValues->AddObject(Field->FieldName(), Value.release());
    }
}

void TODBCExtDataSet::MarkPending() {
    if (FUpdateKind != kUpdateNone) {
        return;
    }
    if (State() == dsEdit) {
        FUpdateKind = kUpdateModify;
    } else if (State() == dsInsert) {
        FUpdateKind = kUpdateInsert;
    }
}

void TODBCExtDataSet::ClearPending() {
    FUpdateKind = kUpdateNone;
    FOldValues->Clear();
    FNewValues->Clear();
}

// ---- field values

void TODBCExtDataSet::SetFieldData(TField* Field, const void* Buffer) {
    const TDataSetState state = State();
    if ((state < dsEdit || state > dsOldValue) && state != dsInternalCalc) {
        // The placeholder stays in the text: this message has always been raised unformatted.
        DatabaseError(LoadStr(SODBCNotEditing));
    }
    if (Field->FieldNo() > 0) {
        if (state == dsCalcFields) {
            DatabaseError(LoadStr(SODBCNotEditing));
        }
        if (Field->ReadOnly() && state != dsSetKey && state != dsFilter) {
            DatabaseErrorFmt(LoadStr(SODBCFieldReadOnly), Field->DisplayName());
        }
        Field->Validate(Buffer);
    }
    // Every field with a column of the result set is a data field here; only internally calculated
    // fields keep no old value and have no slot to write.
    if (Field->FieldKind() != fkInternalCalc) {
        RememberOldValue(Field, [Field] { return Field->AsVariant(); });
        TRecordBuffer record = nullptr;
        std::size_t slotSize = 0;
        std::byte* indicator = GetActiveRecBuf(record) ? FieldSlot(record, Field, slotSize) : nullptr;
        if (indicator != nullptr) {
            if (Buffer != nullptr) {
                indicator[0] = static_cast<std::byte>('1');
                std::memset(indicator + 1, 0, slotSize);
                std::size_t count = static_cast<std::size_t>(std::max(Field->DataSize(), 0));
                if (Field->DataType() == ftString && count > 0) {
                    --count;
                }
                std::memcpy(indicator + 1, Buffer, std::min(count, slotSize));
                SlotWritten(record, Field);
            } else {
                indicator[0] = static_cast<std::byte>('0');
            }
        }
    }
    MarkPending();
    if (state != dsCalcFields && state != dsFilter && state != dsNewValue) {
        DataEvent(deFieldChange, reinterpret_cast<std::intptr_t>(Field));
    }
}

Variant TODBCExtDataSet::GetStateFieldValue(TDataSetState AState, TField* Field) {
    if (AState > dsCurValue) {
        return Variant();
    }
    const TStringList& list = AState == dsOldValue ? *FOldValues : *FNewValues;
    if (FUpdateKind != kUpdateNone) {
        if (const TFieldValue* kept = Entry(list, Field)) {
            return kept->Value;
        }
    }
    return TODBCDataSet::GetStateFieldValue(AState, Field);
}

std::unique_ptr<TStream> TODBCExtDataSet::CreateBlobStream(TField* Field, TBlobStreamMode Mode) {
    auto* blob = dynamic_cast<TBlobField*>(Field);
    if (blob == nullptr) {
        return TODBCDataSet::CreateBlobStream(Field, Mode);
    }
    return std::make_unique<TODBCExtBlobStream>(blob, Mode);
}

// ---- records and bookmarks

void TODBCExtDataSet::InternalInitRecord(TRecordBuffer Buffer) {
    std::memset(Buffer, 0, RecordBufferSize());
    ext_detail::StoreBookmarkFlag(Buffer, bfInserted);
}

void TODBCExtDataSet::SetBookmarkFlag(TRecordBuffer Buffer, TBookmarkFlag Value) {
    ext_detail::StoreBookmarkFlag(Buffer, Value);
}

void TODBCExtDataSet::SetBookmarkData(TRecordBuffer Buffer, const void* Data) {
    ext_detail::StoreRowNumber(Buffer,
                               ReadBookmark(Data, static_cast<std::size_t>(BookmarkSize())).RowNumber);
}

int TODBCExtDataSet::CompareBookmarks(const TBookmark& Bookmark1, const TBookmark& Bookmark2) {
    if (Bookmark1.IsNil() || Bookmark2.IsNil()) {
        return Bookmark1.IsNil() == Bookmark2.IsNil() ? 0 : Bookmark1.IsNil() ? 1 : -1;
    }
    const TODBCBookmark first = ReadBookmark(Bookmark1.Data(), Bookmark1.Size());
    const TODBCBookmark second = ReadBookmark(Bookmark2.Data(), Bookmark2.Size());
    if (first.Origin == second.Origin) {
        return first.RowNumber > second.RowNumber ? 1 : first.RowNumber < second.RowNumber ? -1 : 0;
    }
    // Numbered from opposite ends: the first row's distance from the other end against the second's.
    const std::int64_t fromOtherEnd =
        static_cast<std::int64_t>(RecordCount()) - std::abs(first.RowNumber) - 1;
    const std::int64_t second_distance = std::abs(second.RowNumber);
    const int order = fromOtherEnd == second_distance ? 0 : fromOtherEnd < second_distance ? 1 : -1;
    return order * first.Origin;
}

// ---- posting

void TODBCExtDataSet::InternalPost() {
    try {
        const TUpdateRecordEvent* handler = nullptr;
        TUpdateKind kind = ukModify;
        switch (FUpdateKind) {
        case kUpdateModify:
            handler = &OnUpdateRec;
            kind = ukModify;
            break;
        case kUpdateInsert:
            handler = &OnInsertRec;
            kind = ukInsert;
            break;
        case kUpdateDelete:
            handler = &OnDeleteRec;
            kind = ukDelete;
            break;
        default:
            break;
        }
        if (handler != nullptr) {
            TUpdateAction action = uaApplied;
            do {
                action = uaApplied;
                if (*handler) {
                    (*handler)(this, kind, action);
                }
            } while (action == uaRetry);
        }
    } catch (...) {
        // Nothing stays pending, whatever the handler did.
        ClearPending();
        throw;
    }
    ClearPending();
}

void TODBCExtDataSet::InternalDelete() {
    FUpdateKind = kUpdateDelete;
    InternalPost();
}

void TODBCExtDataSet::InternalCancel() {
    ClearPending();
}

void TODBCExtDataSet::InternalClose() {
    TODBCDataSet::InternalClose();
    InternalCancel();
}

void TODBCExtDataSet::DoAfterPost() {
    // The handler changed the data source: show what it holds now.
    Refresh();
    TODBCDataSet::DoAfterPost();
}

} // namespace quorda
