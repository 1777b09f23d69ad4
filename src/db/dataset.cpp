// TDataSet: construction, opening and closing, states and the data-event broadcast.

#include "quorda/db/dataset.h"

#include "dataset_p.h"
#include "quorda/db/data_link.h"
#include "quorda/db/data_source.h"
#include "quorda/db/db_consts.h"
#include "quorda/rtl/application.h"

#include <cassert>
#include <exception>

namespace quorda {

TDataSet::TDataSet(TComponent* AOwner)
    : TComponent(AOwner), FFieldDefs(std::make_unique<TFieldDefs>(this)),
      FFields(std::make_unique<TFields>(this)) {}

TDataSet::~TDataSet() {
    Destroying();
    // A descendant closes in its own destructor (CloseForDestroy); here its overrides are gone.
    assert(!Active() && FBuffers.empty() &&
           "a dataset descendant must call CloseForDestroy() in its destructor");
    FState = dsInactive;
    // The data sources forget this dataset without asking it to resize its ring.
    while (!FDataSources.empty()) {
        TDataSource* source = FDataSources.back();
        FDataSources.pop_back();
        source->FDataSet = nullptr;
        try {
            source->ProcessEvent(deUpdateState, 0);
        } catch (...) {
        }
    }
    FFields->Clear();
}

void TDataSet::CloseForDestroy() noexcept {
    Destroying();
    try {
        SetActive(false);
    } catch (...) {
    }
    // A close that failed half-way still gives back the record buffers.
    FState = dsInactive;
    FreeAllBuffers();
}

void TDataSet::FreeAllBuffers() noexcept {
    for (TRecordBuffer& buffer : FBuffers) {
        try {
            FreeRecordBuffer(buffer);
        } catch (...) {
        }
    }
    FBuffers.clear();
    FBufferCount = -1;
    FRecordCount = 0;
    FActiveRecord = 0;
    FCurrentRecord = -1;
}

void TDataSet::Loaded() {
    TComponent::Loaded();
    try {
        if (FOpenAfterRead) {
            FOpenAfterRead = false;
            SetActive(true);
        }
    } catch (...) {
        if (!IsDesigning()) {
            throw;
        }
        InternalHandleException();
    }
}

// ---- opening and closing

void TDataSet::SetActive(bool Value) {
    if (Value && FState == dsInactive) {
        if (ComponentState().Contains(csLoading)) {
            FOpenAfterRead = true;
            return;
        }
        DoBeforeOpen();
        FEnableControlsEvent = deLayoutChange;
        FInternalCalcFields = false;
        FDefaultFields = FieldCount() == 0;
        try {
            OpenCursor(false);
        } catch (...) {
            // Whatever part of the cursor was opened is closed again; the dataset stays inactive.
            FInternalOpenComplete = false;
            if (FState != dsOpening) {
                try {
                    OpenCursorComplete();
                } catch (...) {
                }
            }
            throw;
        }
        if (FState != dsOpening) {
            OpenCursorComplete();
        }
        FModified = false;
    } else if (!Value && FState != dsInactive) {
        DoBeforeClose();
        SetState(dsInactive);
        CloseCursor();
        DoAfterClose();
        FModified = false;
    }
}

void TDataSet::OpenCursor(bool InfoQuery) {
    if (InfoQuery) {
        InternalInitFieldDefs();
    } else if (FState != dsOpening) {
        DoInternalOpen();
    }
}

void TDataSet::DoInternalOpen() {
    InternalOpen();
    FInternalOpenComplete = true;
    FRecordCount = 0;
    RecalcBufListSize();
    FBOF = true;
    FEOF = FRecordCount == 0;
}

void TDataSet::OpenCursorComplete() {
    try {
        if (FState == dsOpening) {
            DoInternalOpen();
        }
    } catch (...) {
        FInternalOpenComplete = false;
        SetState(dsInactive);
        try {
            CloseCursor();
        } catch (...) {
        }
        throw;
    }
    if (FInternalOpenComplete) {
        SetState(dsBrowse);
        DoAfterOpen();
        if (!IsEmpty()) {
            DoAfterScroll();
        }
    } else {
        SetState(dsInactive);
        CloseCursor();
    }
}

void TDataSet::CloseCursor() {
    FreeFieldBuffers();
    ClearBuffers();
    SetBufListSize(0);
    FFields->ClearFieldDefs();
    FInternalOpenComplete = false;
    InternalClose();
}

void TDataSet::DoBeforeClose() {
    if (!ComponentState().Contains(csDestroying)) {
        Fire(BeforeClose);
    }
}

void TDataSet::DoAfterClose() {
    if (!ComponentState().Contains(csDestroying)) {
        Fire(AfterClose);
    }
}

// ---- states and checks

void TDataSet::SetState(TDataSetState Value) {
    if (Value != FState) {
        FState = Value;
        if (Value == dsBrowse) {
            FModified = false;
        }
        DataEvent(deUpdateState, 0);
    }
}

TDataSetState TDataSet::SetTempState(TDataSetState Value) {
    TDataSetState result = FState;
    FState = Value;
    ++FDisableControlsCount;
    return result;
}

void TDataSet::RestoreState(TDataSetState Value) {
    FState = Value;
    --FDisableControlsCount;
}

bool TDataSet::FilterRecord() {
    if (!OnFilterRecord) {
        return true;
    }
    const TDataSetState saved = SetTempState(dsFilter);
    bool accept = true;
    detail::TryFinally([&] { OnFilterRecord(this, accept); }, [&] { RestoreState(saved); });
    return accept;
}

void TDataSet::RaiseInactive() {
    DatabaseError(SInactiveDataset);
}

void TDataSet::CheckInactive() {
    if (Active()) {
        DatabaseError(SActiveDataset);
    }
}

void TDataSet::RaiseUniDirectional() {
    DatabaseError(SUniDirectional);
}

void TDataSet::SetFiltered(bool Value) {
    if (Value) {
        CheckBiDirectional();
    }
    FFiltered = Value;
}

void TDataSet::InternalHandleException() {
    std::exception_ptr current = std::current_exception();
    if (!current) {
        return;
    }
    try {
        std::rethrow_exception(current);
    } catch (const std::exception& e) {
        Application::HandleException(e);
    } catch (...) {
    }
}

void TDataSet::InternalPost() {
    for (TField* field : *FFields) {
        // An autoincrement value comes from the data source, so it may be empty here.
        if (field->Required() && !field->ReadOnly() && field->FieldKind() == fkData &&
            field->DataType() != ftAutoInc && field->IsNull()) {
            DatabaseErrorFmt(SNeedField, field->DisplayName());
        }
    }
}

// ---- data events

void TDataSet::HandleDataEvent(TDataEvent Event, std::intptr_t Info) {
    switch (Event) {
    case deFieldChange: {
        auto* field = reinterpret_cast<TField*>(Info);
        if (field->FieldKind() == fkData || field->FieldKind() == fkInternalCalc) {
            SetModified(true);
        }
        if (FState != dsSetKey) {
            if (field->FieldKind() == fkData) {
                if (FInternalCalcFields) {
                    RefreshInternalCalcFields(ActiveBuffer());
                } else if (FAutoCalcFields && FCalcFieldsSize != 0) {
                    CalculateFields(ActiveBuffer());
                }
            }
            field->Change();
        }
        break;
    }
    case deLayoutChange:
        FEnableControlsEvent = deLayoutChange;
        break;
    default:
        break;
    }
    if (!ControlsDisabled() && FState != dsBlockRead) {
        // A data source may detach itself while it handles the event.
        for (std::size_t i = 0; i < FDataSources.size(); ++i) {
            FDataSources[i]->ProcessEvent(Event, Info);
        }
    }
}

void TDataSet::DisableControls() {
    if (FDisableControlsCount == 0) {
        // Remembered to tell at EnableControls whether the state changed meanwhile.
        FDisableControlsState = FState;
        FEnableControlsEvent = deDataSetChange;
    }
    ++FDisableControlsCount;
}

void TDataSet::EnableControls() {
    if (FDisableControlsCount > 0) {
        --FDisableControlsCount;
    }
    if (FDisableControlsCount == 0) {
        if (FState != FDisableControlsState) {
            DataEvent(deUpdateState, 0);
        }
        if (FState != dsInactive && FDisableControlsState != dsInactive) {
            DataEvent(FEnableControlsEvent, 0);
        }
    }
}

void TDataSet::RegisterDataSource(TDataSource* DataSource) {
    FDataSources.push_back(DataSource);
    RecalcBufListSize();
}

void TDataSet::UnregisterDataSource(TDataSource* DataSource) {
    std::erase(FDataSources, DataSource);
}

} // namespace quorda
