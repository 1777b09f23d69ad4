// Editing: Edit, Insert, Append, Post, Cancel, Delete and the record helpers built on them.

#include "quorda/db/dataset.h"
#include "quorda/db/db_consts.h"

#include <algorithm>

namespace quorda {

void TDataSet::Edit() {
    if (FState == dsEdit || FState == dsInsert) {
        return;
    }
    CheckBrowseMode();
    if (!CanModify()) {
        DatabaseError(SDatasetReadOnly);
    }
    if (FRecordCount == 0) {
        Append();
        return;
    }
    DoBeforeEdit();
    UpdateCursorPos();
    InternalEdit();
    GetCalcFields(ActiveBuffer());
    SetState(dsEdit);
    DataEvent(deRecordChange, 0);
    DoAfterEdit();
}

void TDataSet::Insert() {
    DoInsertAppend(false);
}

void TDataSet::Append() {
    DoInsertAppend(true);
}

void TDataSet::DoInsertAppend(bool DoAppend) {
    CheckBrowseMode();
    if (!CanModify()) {
        DatabaseError(SDatasetReadOnly);
    }
    DoBeforeInsert();
    DoBeforeScroll();
    if (DoAppend) {
        // Appending shows the last records with the new one after them.
        ClearBuffers();
        InternalLast();
        GetPriorRecords();
        if (FRecordCount > 0) {
            FActiveRecord = FRecordCount - 1;
        }
    }
    // The new record is placed before the active one (insert) or after it (append); it carries the
    // bookmark of the record it is placed next to, so that the cursor can find its place.
    TBookmark neighbour;
    if (FRecordCount > 0) {
        neighbour = GetBookmark();
    }
    if (!DoAppend) {
        if (FRecordCount > 0) {
            std::rotate(FBuffers.begin() + FActiveRecord, FBuffers.begin() + FBufferCount,
                        FBuffers.begin() + FBufferCount + 1);
        }
    } else if (FRecordCount == FBufferCount) {
        ShiftBuffersBackward();
    } else if (FRecordCount > 0) {
        ++FActiveRecord;
    }
    InitRecord(ActiveBuffer());
    CursorPosChanged();
    if (FRecordCount == 0) {
        SetBookmarkFlag(ActiveBuffer(), bfEOF);
    } else {
        FBOF = false;
        if (!neighbour.IsNil()) {
            SetBookmarkData(ActiveBuffer(), neighbour.Data());
        }
    }
    InternalInsert();
    if (FRecordCount < FBufferCount) {
        ++FRecordCount;
    }
    if (DoAppend) {
        SetBookmarkFlag(ActiveBuffer(), bfEOF);
        FBOF = false;
        FEOF = true;
    }
    CheckRing();
    SetState(dsInsert);
    try {
        DoOnNewRecord();
    } catch (...) {
        try {
            UpdateCursorPos();
            FreeFieldBuffers();
            SetState(dsBrowse);
            Resync({});
        } catch (...) {
        }
        throw;
    }
    FModified = false;
    DataEvent(deDataSetChange, 0);
    DoAfterInsert();
    DoAfterScroll();
}

void TDataSet::Post() {
    UpdateRecord();
    if (FState == dsEdit || FState == dsInsert) {
        DataEvent(deCheckBrowseMode, 0);
        DoBeforePost();
        UpdateCursorPos();
        InternalPost();
        CursorPosChanged();
        FreeFieldBuffers();
        // Browse state first, so that the links do not see the resynchronised ring still editing.
        SetState(dsBrowse);
        Resync({});
        DoAfterPost();
    } else if (FState != dsSetKey) {
        DatabaseError(SNotEditing);
    }
}

void TDataSet::Cancel() {
    if (FState != dsEdit && FState != dsInsert) {
        return;
    }
    DataEvent(deCheckBrowseMode, 0);
    DoBeforeCancel();
    bool scrollEvents = FState == dsInsert;
    if (scrollEvents) {
        DoBeforeScroll();
    }
    UpdateCursorPos();
    InternalCancel();
    FreeFieldBuffers();
    SetState(dsBrowse);
    Resync({});
    DoAfterCancel();
    if (scrollEvents) {
        DoAfterScroll();
    }
}

void TDataSet::Delete() {
    CheckActive();
    if (FState == dsInsert || FState == dsSetKey) {
        Cancel();
        return;
    }
    if (!CanModify()) {
        DatabaseError(SDatasetReadOnly);
    }
    if (FRecordCount == 0) {
        DatabaseError(SDatasetEmpty);
    }
    DataEvent(deCheckBrowseMode, 0);
    DoBeforeDelete();
    DoBeforeScroll();
    UpdateCursorPos();
    InternalDelete();
    FreeFieldBuffers();
    SetState(dsBrowse);
    Resync({});
    DoAfterDelete();
    DoAfterScroll();
}

void TDataSet::UpdateRecord() {
    if (!IsEditMode(FState)) {
        DatabaseError(SNotEditing);
    }
    DataEvent(deUpdateRecord, 0);
}

void TDataSet::ClearFields() {
    if (!IsEditMode(FState)) {
        DatabaseError(SNotEditing);
    }
    DataEvent(deCheckBrowseMode, 0);
    FreeFieldBuffers();
    InternalInitRecord(ActiveBuffer());
    if (FState != dsSetKey) {
        GetCalcFields(ActiveBuffer());
    }
    DataEvent(deRecordChange, 0);
}

void TDataSet::SetFields(const std::vector<Variant>& Values) {
    if (static_cast<int>(Values.size()) > FieldCount()) {
        DatabaseError(STooManyFields);
    }
    for (std::size_t i = 0; i < Values.size(); ++i) {
        // An unassigned value leaves the field as it is.
        if (!VarIsEmpty(Values[i])) {
            FFields->Fields(static_cast<int>(i))->SetAsVariant(Values[i]);
        }
    }
}

void TDataSet::DoInsertAppendRecord(const std::vector<Variant>& Values, bool DoAppend) {
    if (static_cast<int>(Values.size()) > FieldCount()) {
        DatabaseError(STooManyFields);
    }
    if (DoAppend) {
        Append();
    } else {
        Insert();
    }
    SetFields(Values);
    Post();
}

void TDataSet::InsertRecord(const std::vector<Variant>& Values) {
    DoInsertAppendRecord(Values, false);
}

void TDataSet::AppendRecord(const std::vector<Variant>& Values) {
    DoInsertAppendRecord(Values, true);
}

} // namespace quorda
