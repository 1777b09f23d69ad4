#include "quorda/db/data_source.h"

#include "quorda/db/data_link.h"
#include "quorda/db/dataset.h"
#include "quorda/db/db_consts.h"

#include <algorithm>

namespace quorda {

TDataSource::TDataSource(TComponent* AOwner) : TComponent(AOwner) {}

TDataSource::~TDataSource() {
    OnStateChange = nullptr;
    OnDataChange = nullptr;
    OnUpdateData = nullptr;
    try {
        SetDataSet(nullptr);
    } catch (...) {
    }
    // Fixed links too: none may keep pointing here.
    while (!FDataLinks.empty()) {
        TDataLink* link = FDataLinks.back();
        FDataLinks.pop_back();
        link->FDataSource = nullptr;
        try {
            link->CheckActiveAndEditing();
        } catch (...) {
        }
    }
}

void TDataSource::SetDataSet(TDataSet* Value) {
    if (Value == FDataSet) {
        return;
    }
    if (Value && IsLinkedTo(Value)) {
        DatabaseError(SCircularDataLink);
    }
    if (FDataSet) {
        FDataSet->UnregisterDataSource(this);
        FDataSet = nullptr;
        ProcessEvent(deUpdateState, 0);
    }
    if (Value) {
        FDataSet = Value;
        Value->RegisterDataSource(this);
        ProcessEvent(deUpdateState, 0);
    }
}

void TDataSource::SetEnabled(bool Value) {
    if (FEnabled != Value) {
        FEnabled = Value;
        ProcessEvent(deUpdateState, 0);
    }
}

void TDataSource::Edit() {
    if (FState == dsBrowse && FAutoEdit && FDataSet) {
        FDataSet->Edit();
    }
}

bool TDataSource::IsLinkedTo(TDataSet* ADataSet) const {
    while (ADataSet) {
        TDataSource* source = ADataSet->GetDataSource();
        if (source == this) {
            return true;
        }
        ADataSet = source ? source->DataSet() : nullptr;
    }
    return false;
}

void TDataSource::RegisterDataLink(TDataLink* DataLink) {
    FDataLinks.push_back(DataLink);
    if (FDataSet) {
        FDataSet->RecalcBufListSize();
    }
}

void TDataSource::UnregisterDataLink(TDataLink* DataLink) {
    std::erase(FDataLinks, DataLink);
    if (FDataSet) {
        FDataSet->RecalcBufListSize();
    }
}

void TDataSource::ProcessEvent(TDataEvent Event, std::intptr_t Info) {
    bool needDataChange = true;
    if (Event == deUpdateState) {
        needDataChange = FState == dsInactive;
        TDataSetState last = FState;
        FState = (FDataSet && FEnabled) ? FDataSet->State() : dsInactive;
        if (FState == last) {
            return;
        }
    } else if (FState == dsInactive) {
        return;
    }
    DistributeEvent(Event, Info);
    if (ComponentState().Contains(csDestroying)) {
        return;
    }
    switch (Event) {
    case deUpdateState:
        DoStateChange();
        if (needDataChange) {
            DoDataChange(nullptr);
        }
        break;
    case deRecordChange:
    case deDataSetChange:
    case deDataSetScroll:
    case deLayoutChange:
        DoDataChange(nullptr);
        break;
    case deFieldChange:
        DoDataChange(reinterpret_cast<TField*>(Info));
        break;
    case deUpdateRecord:
        DoUpdateData();
        break;
    default:
        break;
    }
}

void TDataSource::DistributeEvent(TDataEvent Event, std::intptr_t Info) {
    // Non-visual links first, so that, for example, a detail dataset is ready before a grid paints.
    // Indexes are re-checked because a link may detach while it handles the event.
    for (std::size_t i = 0; i < FDataLinks.size(); ++i) {
        if (!FDataLinks[i]->VisualControl()) {
            FDataLinks[i]->DataEvent(Event, Info);
        }
    }
    for (std::size_t i = 0; i < FDataLinks.size(); ++i) {
        if (FDataLinks[i]->VisualControl()) {
            FDataLinks[i]->DataEvent(Event, Info);
        }
    }
}

void TDataSource::DoDataChange(TField* Field) {
    if (OnDataChange) {
        OnDataChange(this, Field);
    }
}

void TDataSource::DoStateChange() {
    if (OnStateChange) {
        OnStateChange(this);
    }
}

void TDataSource::DoUpdateData() {
    if (OnUpdateData) {
        OnUpdateData(this);
    }
}

} // namespace quorda
