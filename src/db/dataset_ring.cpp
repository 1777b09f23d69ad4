// The ring of record buffers: sizing, filling, rotating and resynchronising.
//
// FBuffers holds FBufferCount + 1 pointers. Records in use occupy [0, FRecordCount); FActiveRecord is
// the active one; FCurrentRecord is the buffer whose record the cursor stands on (-1: unknown). The
// buffer at FBufferCount is the spare one a fetch fills before it is rotated into place.

#include "quorda/db/data_link.h"
#include "quorda/db/data_source.h"
#include "quorda/db/dataset.h"
#include "quorda/db/db_consts.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

namespace quorda {

void TDataSet::CheckRingInvariants() const {
#ifndef NDEBUG
    if (FBuffers.empty()) {
        assert(FBufferCount == -1);
        assert(FRecordCount == 0);
        assert(FActiveRecord == 0);
        return;
    }
    assert(static_cast<int>(FBuffers.size()) == FBufferCount + 1);
    assert(FRecordCount >= 0 && FRecordCount <= FBufferCount);
    assert(FActiveRecord >= 0 && FActiveRecord < std::max(FRecordCount, 1));
    assert(FCurrentRecord >= -1 && FCurrentRecord < FBufferCount);
    // Field views take an empty ring for an empty dataset.
    assert(FState != dsBrowse || (FRecordCount == 0) == (FBOF && FEOF));
#endif
}

void TDataSet::SetBufListSize(int Value) {
    if (Value == 0) {
        Value = -1;
    }
    if (Value == FBufferCount) {
        return;
    }
    if (Value > FBufferCount) {
        const std::size_t first = FBuffers.size();
        FBuffers.resize(static_cast<std::size_t>(Value) + 1, nullptr);
        try {
            for (std::size_t i = first; i < FBuffers.size(); ++i) {
                FBuffers[i] = AllocRecordBuffer();
            }
        } catch (...) {
            for (std::size_t i = first; i < FBuffers.size(); ++i) {
                if (FBuffers[i]) {
                    FreeRecordBuffer(FBuffers[i]);
                }
            }
            FBuffers.resize(first);
            throw;
        }
    } else {
        if (Value > -1 && FActiveRecord > Value - 1) {
            // Keep the active record: drop records from the front until it fits.
            for (int i = 0; i <= FActiveRecord - Value; ++i) {
                ShiftBuffersBackward();
            }
            FActiveRecord = Value - 1;
            FCurrentRecord = -1;
        }
        for (std::size_t i = static_cast<std::size_t>(Value + 1); i < FBuffers.size(); ++i) {
            FreeRecordBuffer(FBuffers[i]);
        }
        FBuffers.resize(static_cast<std::size_t>(Value + 1));
        if (FCurrentRecord >= std::max(Value, 0)) {
            FCurrentRecord = -1;
        }
    }
    FBufferCount = Value;
    FRecordCount = std::min(FRecordCount, std::max(Value, 0));
    if (FBuffers.empty()) {
        FActiveRecord = 0;
    }
    CheckRing();
}

void TDataSet::RecalcBufListSize() {
    if (!IsCursorOpen()) {
        return;
    }
    int count = 1;
    for (TDataSource* source : FDataSources) {
        for (TDataLink* link : source->FDataLinks) {
            count = std::max(count, link->BufferCount());
        }
    }
    if (FIsUniDirectional) {
        count = 1;
    }
    if (FBufferCount == count) {
        return;
    }
    SetBufListSize(count);
    GetNextRecords();
    if (FRecordCount < FBufferCount && !FIsUniDirectional) {
        FActiveRecord += GetPriorRecords();
        CursorPosChanged();
    }
    for (TDataSource* source : FDataSources) {
        for (TDataLink* link : source->FDataLinks) {
            link->CalcRange();
        }
    }
    CheckRing();
}

namespace {

// The first buffer goes to the end, every other one moves down a place. A ring of one record plus
// the spare (forward-only cursors, datasets without links) does this on every fetch: it only swaps.
inline void RotateDown(std::vector<TRecordBuffer>& Buffers) {
    TRecordBuffer* ring = Buffers.data();
    const std::size_t last = Buffers.size() - 1;
    TRecordBuffer first = ring[0];
    if (last == 1) {
        ring[0] = ring[1];
    } else {
        std::memmove(ring, ring + 1, last * sizeof(TRecordBuffer));
    }
    ring[last] = first;
}

} // namespace

void TDataSet::ShiftBuffersBackward() {
    RotateDown(FBuffers);
}

void TDataSet::ShiftBuffersForward() {
    if (FBuffers.size() == 2) {
        std::swap(FBuffers[0], FBuffers[1]);
        return;
    }
    std::rotate(FBuffers.rbegin(), FBuffers.rbegin() + 1, FBuffers.rend());
}

void TDataSet::ActivateBuffers() {
    FBOF = false;
    FEOF = false;
    FActiveRecord = 0;
}

void TDataSet::ClearBuffers() {
    FRecordCount = 0;
    FActiveRecord = 0;
    FCurrentRecord = -1;
    FBOF = true;
    FEOF = true;
}

bool TDataSet::GetNextRecord() {
    if (FRecordCount > 0) {
        SetCurrentRecord(FRecordCount - 1);
    }
    if (GetRecord(FBuffers[static_cast<std::size_t>(FBufferCount)], gmNext, true) != grOK) {
        CursorPosChanged();
        CheckRing();
        return false;
    }
    if (FRecordCount == 0) {
        ActivateBuffers();
    }
    if (FRecordCount == FBufferCount) {
        // The new record takes the last place; the first one falls out.
        RotateDown(FBuffers);
    } else {
        ++FRecordCount;
        std::swap(FBuffers[static_cast<std::size_t>(FRecordCount - 1)],
                  FBuffers[static_cast<std::size_t>(FBufferCount)]);
    }
    FCurrentRecord = FRecordCount - 1;
    CheckRing();
    return true;
}

int TDataSet::GetNextRecords() {
    int result = 0;
    while (FRecordCount < FBufferCount && GetNextRecord()) {
        ++result;
    }
    return result;
}

bool TDataSet::GetPriorRecord() {
    CheckBiDirectional();
    if (FRecordCount > 0) {
        SetCurrentRecord(0);
    }
    bool ok = GetRecord(FBuffers[static_cast<std::size_t>(FBufferCount)], gmPrior, true) == grOK;
    if (ok) {
        if (FRecordCount == 0) {
            ActivateBuffers();
        }
        // The new record takes the first place; with a full ring the last one falls out.
        ShiftBuffersForward();
        if (FRecordCount < FBufferCount) {
            ++FRecordCount;
        }
        FCurrentRecord = 0;
    } else {
        CursorPosChanged();
    }
    CheckRing();
    return ok;
}

int TDataSet::GetPriorRecords() {
    int result = 0;
    while (FRecordCount < FBufferCount && GetPriorRecord()) {
        ++result;
    }
    return result;
}

void TDataSet::PositionCursorOn(int Index) {
    if (!FIsUniDirectional) {
        TRecordBuffer buffer = FBuffers[static_cast<std::size_t>(Index)];
        switch (GetBookmarkFlag(buffer)) {
        case bfCurrent:
        case bfInserted:
            // An inserted record carries the bookmark of the record it was inserted before.
            InternalSetToRecord(buffer);
            break;
        case bfBOF:
            InternalFirst();
            break;
        case bfEOF:
            InternalLast();
            break;
        }
    }
    FCurrentRecord = Index;
}

void TDataSet::UpdateCursorPos() {
    if (FRecordCount > 0) {
        SetCurrentRecord(FActiveRecord);
    }
}

void TDataSet::Resync(const TResyncMode& Mode) {
    if (FIsUniDirectional) {
        return;
    }
    TRecordBuffer first = FBuffers[0];
    if (GetRecord(first, gmCurrent, false) != grOK) {
        if (Mode.count(rmExact)) {
            DatabaseError(SNoSuchRecord);
        }
        // The record is gone: show its successor, or failing that its predecessor.
        if (GetRecord(first, gmNext, true) != grOK && GetRecord(first, gmPrior, true) != grOK) {
            ClearBuffers();
            CheckRing();
            DataEvent(deDataSetChange, 0);
            return;
        }
    }
    FCurrentRecord = 0;
    FEOF = false;
    FBOF = false;
    int before = Mode.count(rmCenter) ? (FBufferCount - 1) / 2 : FActiveRecord;
    FRecordCount = 1;
    FActiveRecord = 0;
    int fetched = 0;
    while (fetched < before && GetPriorRecord()) {
        ++fetched;
    }
    FActiveRecord = fetched;
    GetNextRecords();
    if (FRecordCount < FBufferCount) {
        FActiveRecord += GetPriorRecords();
    }
    CheckRing();
    DataEvent(deDataSetChange, 0);
}

} // namespace quorda
