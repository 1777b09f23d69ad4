#pragma once

#include "quorda/db/types.h"
#include "quorda/rtl/component.h"
#include "quorda/rtl/object.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace quorda {

class TDataLink;
class TDataSet;
class TField;

using TDataChangeEvent = std::function<void(TObject* Sender, TField* Field)>;

// Connects data links to a dataset and relays the dataset's data events to them. A disabled data
// source shows its links an inactive dataset.
class QUORDA_API TDataSource : public TComponent {
public:
    explicit TDataSource(TComponent* AOwner);
    ~TDataSource() override;

    std::string ClassName() const override { return "TDataSource"; }

    TDataSet* DataSet() const { return FDataSet; }
    // A dataset that is linked back to this data source raises "Circular datasource references ...".
    void SetDataSet(TDataSet* Value);
    bool Enabled() const { return FEnabled; }
    void SetEnabled(bool Value);
    // Whether Edit may put a browsing dataset in edit mode.
    bool AutoEdit() const { return FAutoEdit; }
    void SetAutoEdit(bool Value) { FAutoEdit = Value; }
    // The dataset's state as the links see it (dsInactive when disabled or without a dataset).
    TDataSetState State() const { return FState; }

    void Edit();
    bool IsLinkedTo(TDataSet* ADataSet) const;
    int DataLinkCount() const { return static_cast<int>(FDataLinks.size()); }
    TDataLink* DataLinks(int Index) const { return FDataLinks[Index]; }

    // Field is null except for field changes.
    TDataChangeEvent OnDataChange;
    TNotifyEvent OnStateChange;
    TNotifyEvent OnUpdateData;

protected:
    virtual void DoDataChange(TField* Field);
    virtual void DoStateChange();
    virtual void DoUpdateData();

private:
    friend class TDataLink;
    friend class TDataSet;

    void RegisterDataLink(TDataLink* DataLink);
    void UnregisterDataLink(TDataLink* DataLink);
    void ProcessEvent(TDataEvent Event, std::intptr_t Info);
    void DistributeEvent(TDataEvent Event, std::intptr_t Info);

    TDataSet* FDataSet = nullptr;
    std::vector<TDataLink*> FDataLinks;
    TDataSetState FState = dsInactive;
    bool FEnabled = true;
    bool FAutoEdit = true;
};

} // namespace quorda
