// TMemDataSet: the cursor, bookmarks and field values.

#include "mem_dataset_p.h"
#include "quorda/db/db_consts.h"

#include <algorithm>
#include <cstring>

namespace quorda {

TGetResult TMemDataSet::GetRecord(TRecordBuffer Buffer, TGetMode GetMode, bool DoCheck) {
    const int count = static_cast<int>(FRows.size());
    switch (GetMode) {
    case gmNext: {
        int index = std::max(FCursor + 1, 0);
        while (index < count && !RecordAccepted(index)) {
            ++index;
        }
        if (index >= count) {
            FCursor = count;
            return grEOF;
        }
        FCursor = index;
        break;
    }
    case gmPrior: {
        int index = std::min(FCursor - 1, count - 1);
        while (index >= 0 && !RecordAccepted(index)) {
            --index;
        }
        if (index < 0) {
            FCursor = -1;
            return grBOF;
        }
        FCursor = index;
        break;
    }
    case gmCurrent:
        if (FCursor < 0 || FCursor >= count || !RecordAccepted(FCursor)) {
            return grError;
        }
        break;
    }
    FillBuffer(Buffer, FRows[static_cast<std::size_t>(FCursor)]);
    ClearCalcFields(Buffer);
    GetCalcFields(Buffer);
    return grOK;
}

void TMemDataSet::ClearCalcFields(TRecordBuffer Buffer) {
    if (CalcFieldsSize() > 0) {
        std::memset(Buffer + MemHeaderSize + FDataSize, 0, static_cast<std::size_t>(CalcFieldsSize()));
    }
}

void TMemDataSet::InternalSetToRecord(TRecordBuffer Buffer) {
    int index = IndexOfId(MemHeader(Buffer).RowId);
    if (index >= 0) {
        FCursor = index;
    }
}

// ---- bookmarks: the row id

void TMemDataSet::GetBookmarkData(TRecordBuffer Buffer, void* Data) {
    std::memcpy(Data, &MemHeader(Buffer).RowId, sizeof(std::uint64_t));
}

void TMemDataSet::SetBookmarkData(TRecordBuffer Buffer, const void* Data) {
    std::memcpy(&MemHeader(Buffer).RowId, Data, sizeof(std::uint64_t));
}

TBookmarkFlag TMemDataSet::GetBookmarkFlag(TRecordBuffer Buffer) {
    return static_cast<TBookmarkFlag>(MemHeader(Buffer).Flag);
}

void TMemDataSet::SetBookmarkFlag(TRecordBuffer Buffer, TBookmarkFlag Value) {
    MemHeader(Buffer).Flag = Value;
}

void TMemDataSet::InternalGotoBookmark(const void* ABookmark) {
    std::uint64_t id;
    std::memcpy(&id, ABookmark, sizeof(id));
    int index = IndexOfId(id);
    if (index < 0) {
        DatabaseError(SInvalidBookmark);
    }
    FCursor = index;
}

bool TMemDataSet::BookmarkValid(const TBookmark& ABookmark) {
    if (ABookmark.Size() != sizeof(std::uint64_t)) {
        return false;
    }
    std::uint64_t id;
    std::memcpy(&id, ABookmark.Data(), sizeof(id));
    return IndexOfId(id) >= 0;
}

int TMemDataSet::CompareBookmarks(const TBookmark& Bookmark1, const TBookmark& Bookmark2) {
    // A nil bookmark sorts after every other one.
    if (Bookmark1.IsNil() || Bookmark2.IsNil()) {
        return Bookmark1.IsNil() == Bookmark2.IsNil() ? 0 : (Bookmark1.IsNil() ? 1 : -1);
    }
    std::uint64_t id1 = 0;
    std::uint64_t id2 = 0;
    std::memcpy(&id1, Bookmark1.Data(), std::min(sizeof(id1), Bookmark1.Size()));
    std::memcpy(&id2, Bookmark2.Data(), std::min(sizeof(id2), Bookmark2.Size()));
    long long order1 = IndexOfId(id1);
    long long order2 = IndexOfId(id2);
    if (order1 < 0 || order2 < 0) {
        // A deleted row has no place any more; its id still orders it consistently.
        order1 = static_cast<long long>(id1);
        order2 = static_cast<long long>(id2);
    }
    return order1 < order2 ? -1 : (order1 > order2 ? 1 : 0);
}

// ---- counts and record numbers

int TMemDataSet::GetRecordCount() {
    CheckActive();
    if (!Filtered() || !OnFilterRecord) {
        return static_cast<int>(FRows.size());
    }
    int count = 0;
    for (int i = 0; i < static_cast<int>(FRows.size()); ++i) {
        count += RecordAccepted(i) ? 1 : 0;
    }
    return count;
}

int TMemDataSet::GetRecNo() {
    CheckActive();
    TRecordBuffer buffer = ActiveBuffer();
    if (IsEmpty() || !buffer || GetBookmarkFlag(buffer) != bfCurrent) {
        return 0;
    }
    int index = IndexOfId(MemHeader(buffer).RowId);
    if (index < 0) {
        return 0;
    }
    if (!Filtered() || !OnFilterRecord) {
        return index + 1;
    }
    int number = 0;
    for (int i = 0; i <= index; ++i) {
        number += RecordAccepted(i) ? 1 : 0;
    }
    return number;
}

void TMemDataSet::DoSetRecNo(int Value) {
    CheckBrowseMode();
    int number = 0;
    for (int i = 0; i < static_cast<int>(FRows.size()); ++i) {
        if (RecordAccepted(i) && ++number == Value) {
            DoBeforeScroll();
            FCursor = i;
            Resync({rmCenter});
            DoAfterScroll();
            return;
        }
    }
}

// ---- field values

TRecordBuffer TMemDataSet::GetActiveRecBuf() {
    switch (State()) {
    case dsBrowse:
    case dsNewValue:
    case dsCurValue:
        return IsEmpty() ? nullptr : ActiveBuffer();
    case dsEdit:
    case dsInsert:
    case dsSetKey:
        return ActiveBuffer();
    case dsCalcFields:
    case dsInternalCalc:
        return CalcBuffer();
    case dsFilter:
        return FFilterBuffer;
    case dsOldValue:
        // The record as it was before the edit began; an inserted record has no old value.
        if (FOldValid) {
            return FOldBuffer;
        }
        return nullptr;
    default:
        return nullptr;
    }
}

std::byte* TMemDataSet::FieldSlot(TRecordBuffer Record, TField* Field, int& Size) {
    if (const TSlot* slot = SlotOf(Field)) {
        Size = slot->Size;
        return Record + MemHeaderSize + slot->Offset;
    }
    if (Field->FieldNo() < 0) {
        // Calculated and lookup fields live in the calculated-field area.
        Size = Field->DataSize();
        return Record + MemHeaderSize + FDataSize + Field->Offset();
    }
    return nullptr;
}

bool TMemDataSet::GetFieldData(TField* Field, void* Buffer) {
    TRecordBuffer record = GetActiveRecBuf();
    if (!record) {
        return false;
    }
    int size = 0;
    std::byte* slot = FieldSlot(record, Field, size);
    if (!slot || slot[0] == std::byte{0}) {
        return false;
    }
    if (Buffer && !Field->IsBlob()) {
        std::memcpy(Buffer, slot + 1, static_cast<std::size_t>(std::min(size, Field->DataSize())));
    }
    return true;
}

void TMemDataSet::SetFieldData(TField* Field, const void* Buffer) {
    const TDataSetState state = State();
    if (!IsWriteMode(state)) {
        DatabaseError(SNotEditing);
    }
    TRecordBuffer record = GetActiveRecBuf();
    if (!record) {
        DatabaseError(SNotEditing);
    }
    if (Field->FieldNo() > 0) {
        if (state == dsCalcFields) {
            DatabaseError(SNotEditing);
        }
        if (Field->ReadOnly() && state != dsSetKey && state != dsFilter) {
            DatabaseErrorFmt(SReadOnlyField, Field->DisplayName());
        }
        Field->Validate(Buffer);
    }
    int size = 0;
    std::byte* slot = FieldSlot(record, Field, size);
    if (!slot) {
        DatabaseErrorFmt(SFieldNotFound, Field->FieldName());
    }
    if (Field->IsBlob()) {
        // Only null arrives here; values come through the blob stream.
        if (!Buffer) {
            StoreBlob(Field, record, std::string());
        }
    } else {
        std::memset(slot + 1, 0, static_cast<std::size_t>(size));
        slot[0] = std::byte{Buffer ? std::uint8_t{1} : std::uint8_t{0}};
        if (Buffer) {
            std::memcpy(slot + 1, Buffer, static_cast<std::size_t>(std::min(size, Field->DataSize())));
        }
    }
    if (state != dsCalcFields && state != dsFilter && state != dsNewValue) {
        DataEvent(deFieldChange, reinterpret_cast<std::intptr_t>(Field));
    }
}

} // namespace quorda
