// TMemDataSet: the record operations behind Edit, Insert, Post, Cancel and Delete.

#include "mem_dataset_p.h"
#include "quorda/db/db_consts.h"

#include <algorithm>
#include <cstring>

namespace quorda {

void TMemDataSet::SetFiltered(bool Value) {
    if (Value == Filtered()) {
        return;
    }
    if (Active()) {
        CheckBrowseMode();
    }
    TDataSet::SetFiltered(Value);
    if (Active()) {
        First();
    }
}

void TMemDataSet::InternalInitRecord(TRecordBuffer Buffer) {
    std::memset(Buffer, 0, static_cast<std::size_t>(MemHeaderSize + FDataSize));
    MemHeader(Buffer).Flag = bfInserted;
}

void TMemDataSet::InternalEdit() {
    std::memcpy(FOldBuffer, ActiveBuffer(), static_cast<std::size_t>(FRecordSize));
    FOldValid = true;
}

void TMemDataSet::InternalCancel() {
    ReleasePendingBlobs();
    FOldValid = false;
}

void TMemDataSet::InternalPost() {
    TDataSet::InternalPost();
    TRecordBuffer buffer = ActiveBuffer();
    TMemRecordHeader& header = MemHeader(buffer);
    const std::byte* data = buffer + MemHeaderSize;
    if (State() == dsEdit) {
        int index = IndexOfId(header.RowId);
        if (index < 0) {
            DatabaseError(SNoSuchRecord);
        }
        TRow& row = FRows[static_cast<std::size_t>(index)];
        // Blob values replaced in this edit give back the ones they replace.
        for (const TSlot& slot : FSlots) {
            if (!slot.Blob) {
                continue;
            }
            std::uint32_t oldHandle;
            std::uint32_t newHandle;
            std::memcpy(&oldHandle, row.Data.get() + slot.Offset + 1, sizeof(oldHandle));
            std::memcpy(&newHandle, data + slot.Offset + 1, sizeof(newHandle));
            if (oldHandle != newHandle) {
                FreeBlob(oldHandle);
            }
        }
        std::memcpy(row.Data.get(), data, static_cast<std::size_t>(FDataSize));
        FCursor = index;
    } else {
        TRow row{++FNextId, std::make_unique<std::byte[]>(static_cast<std::size_t>(FDataSize))};
        std::memcpy(row.Data.get(), data, static_cast<std::size_t>(FDataSize));
        // An appended record goes last; an inserted one before the row it was inserted at.
        int index = static_cast<int>(FRows.size());
        if (header.Flag != bfEOF) {
            int neighbour = IndexOfId(header.RowId);
            if (neighbour >= 0) {
                index = neighbour;
            }
        }
        std::uint64_t id = row.Id;
        InsertRow(index, std::move(row));
        header.RowId = id;
        header.Flag = bfCurrent;
        FCursor = index;
    }
    // The blob values written in this edit now belong to the row.
    FPendingBlobs.clear();
    FOldValid = false;
}

void TMemDataSet::InternalAddRecord(const void* Buffer, bool Append) {
    TRow row{++FNextId, std::make_unique<std::byte[]>(static_cast<std::size_t>(FDataSize))};
    std::memcpy(row.Data.get(), static_cast<const std::byte*>(Buffer) + MemHeaderSize,
                static_cast<std::size_t>(FDataSize));
    int count = static_cast<int>(FRows.size());
    int index = Append ? count : std::clamp(FCursor, 0, count);
    InsertRow(index, std::move(row));
    FPendingBlobs.clear();
    FCursor = index;
}

void TMemDataSet::InternalDelete() {
    int index = IndexOfId(MemHeader(ActiveBuffer()).RowId);
    if (index < 0) {
        DatabaseError(SNoSuchRecord);
    }
    FreeRowBlobs(FRows[static_cast<std::size_t>(index)]);
    FRows.erase(FRows.begin() + index);
    FIndexDirty = true;
    // The cursor now stands on the row that followed (or after the last one).
    FCursor = index;
}

void TMemDataSet::StoreBlob(TField* Field, TRecordBuffer Record, std::string Data) {
    int size = 0;
    std::byte* slot = FieldSlot(Record, Field, size);
    if (!slot) {
        return;
    }
    std::uint32_t current;
    std::memcpy(&current, slot + 1, sizeof(current));
    const bool currentPending =
        std::find(FPendingBlobs.begin(), FPendingBlobs.end(), current) != FPendingBlobs.end();
    std::uint32_t handle = 0;
    if (!Data.empty()) {
        if (currentPending) {
            // Written again in the same edit: the pending value is replaced in place.
            FBlobs[current - 1] = std::move(Data);
            handle = current;
        } else {
            handle = AllocBlob(std::move(Data));
            FPendingBlobs.push_back(handle);
        }
    }
    if (currentPending && handle != current) {
        std::erase(FPendingBlobs, current);
        FreeBlob(current);
    }
    slot[0] = std::byte{handle != 0 ? std::uint8_t{1} : std::uint8_t{0}};
    std::memcpy(slot + 1, &handle, sizeof(handle));
}

} // namespace quorda
