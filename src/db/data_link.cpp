#include "quorda/db/data_link.h"

#include "quorda/db/data_source.h"
#include "quorda/db/dataset.h"

#include <algorithm>

namespace quorda {

TDataLink::~TDataLink() {
    FActive = false;
    FEditing = false;
    FDataSourceFixed = false;
    try {
        SetDataSource(nullptr);
    } catch (...) {
    }
}

TDataSet* TDataLink::DataSet() const {
    return FDataSource ? FDataSource->DataSet() : nullptr;
}

int TDataLink::ActiveRecord() const {
    TDataSet* dataSet = DataSet();
    return dataSet ? dataSet->FActiveRecord - FFirstRecord : 0;
}

void TDataLink::SetActiveRecord(int Value) {
    if (TDataSet* dataSet = DataSet()) {
        dataSet->FActiveRecord = Value + FFirstRecord;
    }
}

void TDataLink::SetBufferCount(int Value) {
    if (FBufferCount == Value) {
        return;
    }
    FBufferCount = Value;
    if (FActive && DataSet()) {
        DataSet()->RecalcBufListSize();
        CalcRange();
    }
}

int TDataLink::RecordCount() const {
    TDataSet* dataSet = DataSet();
    if (!dataSet) {
        return 0;
    }
    return dataSet->FRecordCount > FBufferCount ? FBufferCount : dataSet->FRecordCount;
}

bool TDataLink::Bof() const {
    return DataSet() ? DataSet()->Bof() : true;
}

bool TDataLink::Eof() const {
    return DataSet() ? DataSet()->Eof() : true;
}

void TDataLink::SetReadOnly(bool Value) {
    if (FReadOnly != Value) {
        FReadOnly = Value;
        CheckActiveAndEditing();
    }
}

void TDataLink::SetDataSource(TDataSource* Value) {
    if (FDataSource == Value || FDataSourceFixed) {
        return;
    }
    if (FDataSource) {
        FDataSource->UnregisterDataLink(this);
        FDataSource = nullptr;
        CheckActiveAndEditing();
    }
    FDataSource = Value;
    if (FDataSource) {
        FDataSource->RegisterDataLink(this);
        CheckActiveAndEditing();
    }
}

bool TDataLink::Edit() {
    if (!FReadOnly && FDataSource) {
        FDataSource->Edit();
    }
    // The state event sent by the edit has updated FEditing.
    return FEditing;
}

void TDataLink::UpdateRecord() {
    FUpdatingRecord = true;
    try {
        UpdateData();
    } catch (...) {
        FUpdatingRecord = false;
        throw;
    }
    FUpdatingRecord = false;
}

int TDataLink::MoveBy(int Distance) {
    return DataSet() ? DataSet()->MoveBy(Distance) : 0;
}

void TDataLink::SetActive(bool Value) {
    if (FActive != Value) {
        FActive = Value;
        ActiveChanged();
    }
}

void TDataLink::CheckActiveAndEditing() {
    TDataSetState state = FDataSource ? FDataSource->State() : dsInactive;
    SetActive(state != dsInactive && state != dsOpening);
    bool editing = IsEditMode(state) && !FReadOnly;
    if (editing != FEditing) {
        FEditing = editing;
        EditingChanged();
    }
}

int TDataLink::CalcFirstRecord(int Index) {
    // Follow the records by Index, then move the window just enough to keep the active record in it.
    const int active = DataSet()->FActiveRecord;
    int result = 0;
    if (active > FFirstRecord + Index + FBufferCount - 1) {
        result = active - (FFirstRecord + Index + FBufferCount - 1);
    } else if (active < FFirstRecord + Index) {
        result = active - (FFirstRecord + Index);
    }
    FFirstRecord += Index + result;
    return result;
}

void TDataLink::CalcRange() {
    TDataSet* dataSet = DataSet();
    if (!dataSet) {
        FFirstRecord = 0;
        return;
    }
    const int active = dataSet->FActiveRecord;
    int lowest = std::max(active - FBufferCount + 1, 0);
    int highest = std::max(dataSet->FBufferCount - FBufferCount, 0);
    highest = std::min(highest, active);
    if (FFirstRecord < lowest) {
        FFirstRecord = lowest;
    }
    if (FFirstRecord > highest) {
        FFirstRecord = highest;
    }
    if (FFirstRecord != 0 && active - FFirstRecord < FBufferCount - 1) {
        --FFirstRecord;
    }
}

void TDataLink::DataEvent(TDataEvent Event, std::intptr_t Info) {
    switch (Event) {
    case deFieldChange:
    case deRecordChange:
        if (!FUpdatingRecord) {
            RecordChanged(reinterpret_cast<TField*>(Info));
        }
        break;
    case deDataSetChange:
        SetActive(DataSet()->Active());
        CalcRange();
        CalcFirstRecord(static_cast<int>(Info));
        DataSetChanged();
        break;
    case deDataSetScroll:
        DataSetScrolled(CalcFirstRecord(static_cast<int>(Info)));
        break;
    case deLayoutChange:
        CalcFirstRecord(static_cast<int>(Info));
        LayoutChanged();
        break;
    case deUpdateRecord:
        UpdateRecord();
        break;
    case deUpdateState:
        CheckActiveAndEditing();
        break;
    case deCheckBrowseMode:
        CheckBrowseMode();
        break;
    case deFocusControl:
        FocusControl(reinterpret_cast<TField**>(Info));
        break;
    default:
        break;
    }
}

} // namespace quorda
