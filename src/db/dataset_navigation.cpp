// Moving through the records: First, Last, MoveBy, Refresh.

#include "dataset_p.h"
#include "quorda/db/dataset.h"
#include "quorda/db/db_consts.h"

namespace quorda {

using detail::TryFinally;

void TDataSet::First() {
    CheckBrowseMode();
    DoBeforeScroll();
    if (FIsUniDirectional) {
        // A forward-only cursor cannot go back: it starts over by reopening, which leaves it on the
        // first record already.
        if (!FBOF) {
            SetActive(false);
            SetActive(true);
        }
        FBOF = true;
        DataEvent(deDataSetChange, 0);
        DoAfterScroll();
        return;
    }
    ClearBuffers();
    TryFinally(
        [&] {
            InternalFirst();
            GetNextRecords();
        },
        [&] {
            FBOF = true;
            CheckRing();
            DataEvent(deDataSetChange, 0);
            DoAfterScroll();
        });
}

void TDataSet::Last() {
    CheckBiDirectional();
    CheckBrowseMode();
    DoBeforeScroll();
    ClearBuffers();
    TryFinally(
        [&] {
            InternalLast();
            GetPriorRecords();
            if (FRecordCount > 0) {
                FActiveRecord = FRecordCount - 1;
            }
        },
        [&] {
            FEOF = true;
            CheckRing();
            DataEvent(deDataSetChange, 0);
            DoAfterScroll();
        });
}

int TDataSet::MoveBy(int Distance) {
    CheckBrowseMode();
    DoBeforeScroll();
    if (Distance == 0 || (Distance > 0 && FEOF) || (Distance < 0 && FBOF)) {
        return 0;
    }
    int moved = 0;
    // How far the records shifted inside the ring; the links use it to keep their windows in place.
    int scrolled = 0;
    TryFinally(
        [&] {
            if (Distance > 0) {
                FBOF = false;
                if (Distance == 1 && FActiveRecord == FRecordCount - 1 && FRecordCount == FBufferCount) {
                    // The step of a scan: the next record enters the full ring, the first falls out.
                    if (GetNextRecord()) {
                        scrolled = -1;
                        moved = 1;
                    } else {
                        FEOF = true;
                    }
                    return;
                }
                while (Distance > 0 && !FEOF) {
                    if (FActiveRecord < FRecordCount - 1) {
                        ++FActiveRecord;
                        --Distance;
                        ++moved;
                        continue;
                    }
                    bool full = FRecordCount == FBufferCount;
                    if (GetNextRecord()) {
                        if (full) {
                            --scrolled;
                        } else {
                            ++FActiveRecord;
                        }
                        --Distance;
                        ++moved;
                    } else {
                        FEOF = true;
                    }
                }
            } else {
                CheckBiDirectional();
                FEOF = false;
                while (Distance < 0 && !FBOF) {
                    if (FActiveRecord > 0) {
                        --FActiveRecord;
                        ++Distance;
                        --moved;
                        continue;
                    }
                    if (GetPriorRecord()) {
                        ++scrolled;
                        ++Distance;
                        --moved;
                    } else {
                        FBOF = true;
                    }
                }
            }
        },
        [&] {
            CheckRing();
            DataEvent(deDataSetScroll, scrolled);
            DoAfterScroll();
        });
    return moved;
}

void TDataSet::Refresh() {
    CheckBrowseMode();
    DoBeforeRefresh();
    UpdateCursorPos();
    InternalRefresh();
    Resync({});
    DoAfterRefresh();
}

void TDataSet::EndPendingEdit() {
    if (FState == dsSetKey) {
        Post();
        return;
    }
    UpdateRecord();
    if (FModified) {
        Post();
    } else {
        Cancel();
    }
}

} // namespace quorda
