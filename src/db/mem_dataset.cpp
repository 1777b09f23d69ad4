// TMemDataSet: lifecycle, layout and the row store.

#include "mem_dataset_p.h"
#include "quorda/db/db_consts.h"

#include <algorithm>
#include <cstring>

namespace quorda {

namespace {

// Bytes of the data slot for a column of this type, or -1 for a type the table cannot hold.
int SlotSize(TFieldType Type, int Size) {
    switch (Type) {
    case ftString:
    case ftFixedChar:
        return Size + 1;
    case ftSmallint:
    case ftWord:
    case ftBoolean:
        return 2;
    case ftInteger:
    case ftAutoInc:
        return 4;
    case ftLargeint:
    case ftFloat:
    case ftCurrency:
    case ftBCD:
    case ftDate:
    case ftTime:
    case ftDateTime:
        return 8;
    case ftBytes:
        return Size;
    case ftVarBytes:
        return Size + 2;
    default:
        // Blob types keep a handle to the value held apart.
        return IsBlobType(Type) ? static_cast<int>(sizeof(std::uint32_t)) : -1;
    }
}

} // namespace

TMemDataSet::TMemDataSet(TComponent* AOwner) : TDataSet(AOwner) {
    SetBookmarkSize(sizeof(std::uint64_t));
}

TMemDataSet::~TMemDataSet() {
    CloseForDestroy();
    ClearRows();
}

void TMemDataSet::CreateDataSet() {
    CheckInactive();
    if (FieldDefs().Count() == 0) {
        InitFieldDefsFromFields();
    }
    if (FieldDefs().Count() == 0) {
        DatabaseError(SErrNoFieldsDefined);
    }
    BuildLayout();
    Open();
}

void TMemDataSet::EmptyDataSet() {
    if (Active()) {
        CheckBrowseMode();
    }
    ClearRows();
    FCursor = -1;
    if (Active()) {
        Resync({});
    }
}

// ---- layout

bool TMemDataSet::LayoutMatches() const {
    if (!FLayoutBuilt || FShape.size() != static_cast<std::size_t>(FieldDefs().Count())) {
        return false;
    }
    for (int i = 0; i < FieldDefs().Count(); ++i) {
        const TFieldDef* def = FieldDefs().Items(i);
        if (!(FShape[static_cast<std::size_t>(i)] ==
              TColumnShape{def->Name(), def->DataType(), def->Size()})) {
            return false;
        }
    }
    return true;
}

void TMemDataSet::BuildLayout() {
    std::vector<TSlot> slots;
    std::vector<TColumnShape> shape;
    std::vector<int> byFieldNo;
    int offset = 0;
    for (int i = 0; i < FieldDefs().Count(); ++i) {
        const TFieldDef* def = FieldDefs().Items(i);
        int size = SlotSize(def->DataType(), def->Size());
        if (size < 0 || def->FieldNo() < 1) {
            DatabaseErrorFmt(SUnknownFieldType, def->Name());
        }
        slots.push_back(TSlot{offset, size, IsBlobType(def->DataType())});
        shape.push_back(TColumnShape{def->Name(), def->DataType(), def->Size()});
        if (static_cast<int>(byFieldNo.size()) <= def->FieldNo()) {
            byFieldNo.resize(static_cast<std::size_t>(def->FieldNo()) + 1, -1);
        }
        byFieldNo[static_cast<std::size_t>(def->FieldNo())] = i;
        offset += 1 + size;
    }
    // Rows of another shape cannot be read with this one.
    ClearRows();
    FSlots = std::move(slots);
    FShape = std::move(shape);
    FSlotOfFieldNo = std::move(byFieldNo);
    // Room at the end so that every row block is at least one byte long.
    FDataSize = std::max(offset, 1);
    FLayoutBuilt = true;
}

const TMemDataSet::TSlot* TMemDataSet::SlotOf(TField* Field) const {
    int fieldNo = Field->FieldNo();
    if (fieldNo <= 0 || fieldNo >= static_cast<int>(FSlotOfFieldNo.size())) {
        return nullptr;
    }
    int index = FSlotOfFieldNo[static_cast<std::size_t>(fieldNo)];
    return index < 0 ? nullptr : &FSlots[static_cast<std::size_t>(index)];
}

// ---- opening and closing

void TMemDataSet::InternalOpen() {
    if (FieldDefs().Count() == 0) {
        InitFieldDefsFromFields();
    }
    if (FieldDefs().Count() == 0) {
        DatabaseError(SErrNoFieldsDefined);
    }
    if (!LayoutMatches()) {
        BuildLayout();
    }
    FieldDefs().SetUpdated(true);
    if (DefaultFields()) {
        CreateFields();
    }
    BindFields(true);
    FRecordSize = MemHeaderSize + FDataSize + CalcFieldsSize();
    FCursor = -1;
    FFilterBuffer = AllocRecordBuffer();
    FOldBuffer = AllocRecordBuffer();
    FOldValid = false;
    FCursorOpen = true;
}

void TMemDataSet::InternalClose() {
    // Streams still alive must not write into buffers that are about to go.
    for (TMemBlobStream* stream : FStreams) {
        stream->FDataSet = nullptr;
    }
    FStreams.clear();
    ReleasePendingBlobs();
    FreeRecordBuffer(FFilterBuffer);
    FreeRecordBuffer(FOldBuffer);
    FOldValid = false;
    FCursorOpen = false;
    BindFields(false);
    if (DefaultFields()) {
        DestroyFields();
    }
}

TRecordBuffer TMemDataSet::AllocRecordBuffer() {
    auto* buffer = new std::byte[static_cast<std::size_t>(FRecordSize)]();
    return buffer;
}

void TMemDataSet::FreeRecordBuffer(TRecordBuffer& Buffer) {
    delete[] Buffer;
    Buffer = nullptr;
}

// ---- rows

void TMemDataSet::ClearRows() noexcept {
    FRows.clear();
    FIndexOfId.clear();
    FIndexDirty = false;
    FBlobs.clear();
    FFreeBlobs.clear();
    FPendingBlobs.clear();
}

int TMemDataSet::IndexOfId(std::uint64_t Id) {
    if (FIndexDirty) {
        FIndexOfId.clear();
        for (std::size_t i = 0; i < FRows.size(); ++i) {
            FIndexOfId[FRows[i].Id] = static_cast<int>(i);
        }
        FIndexDirty = false;
    }
    auto it = FIndexOfId.find(Id);
    return it == FIndexOfId.end() ? -1 : it->second;
}

void TMemDataSet::InsertRow(int Index, TRow Row) {
    std::uint64_t id = Row.Id;
    FRows.insert(FRows.begin() + Index, std::move(Row));
    if (Index == static_cast<int>(FRows.size()) - 1 && !FIndexDirty) {
        FIndexOfId[id] = Index;
    } else {
        FIndexDirty = true;
    }
}

void TMemDataSet::FillBuffer(TRecordBuffer Buffer, const TRow& Row) {
    TMemRecordHeader& header = MemHeader(Buffer);
    header.RowId = Row.Id;
    header.Flag = bfCurrent;
    std::memcpy(Buffer + MemHeaderSize, Row.Data.get(), static_cast<std::size_t>(FDataSize));
}

bool TMemDataSet::RecordAccepted(int Index) {
    if (!Filtered() || !OnFilterRecord) {
        return true;
    }
    FillBuffer(FFilterBuffer, FRows[static_cast<std::size_t>(Index)]);
    ClearCalcFields(FFilterBuffer);
    GetCalcFields(FFilterBuffer);
    return FilterRecord();
}

// ---- blob store: values are held apart from the rows and referenced by handle (0: null)

std::uint32_t TMemDataSet::AllocBlob(std::string Data) {
    if (!FFreeBlobs.empty()) {
        std::uint32_t handle = FFreeBlobs.back();
        FFreeBlobs.pop_back();
        FBlobs[handle - 1] = std::move(Data);
        return handle;
    }
    FBlobs.push_back(std::move(Data));
    return static_cast<std::uint32_t>(FBlobs.size());
}

void TMemDataSet::FreeBlob(std::uint32_t Handle) noexcept {
    if (Handle == 0 || Handle > FBlobs.size()) {
        return;
    }
    FBlobs[Handle - 1].clear();
    FBlobs[Handle - 1].shrink_to_fit();
    FFreeBlobs.push_back(Handle);
}

const std::string& TMemDataSet::BlobData(std::uint32_t Handle) const {
    static const std::string empty;
    return Handle == 0 || Handle > FBlobs.size() ? empty : FBlobs[Handle - 1];
}

void TMemDataSet::FreeRowBlobs(const TRow& Row) noexcept {
    for (const TSlot& slot : FSlots) {
        if (slot.Blob) {
            std::uint32_t handle;
            std::memcpy(&handle, Row.Data.get() + slot.Offset + 1, sizeof(handle));
            FreeBlob(handle);
        }
    }
}

void TMemDataSet::ReleasePendingBlobs() noexcept {
    for (std::uint32_t handle : FPendingBlobs) {
        FreeBlob(handle);
    }
    FPendingBlobs.clear();
}

} // namespace quorda
