#pragma once

#include "quorda/db/types.h"
#include "quorda/rtl/persistent.h"

#include <cstdint>

namespace quorda {

class TDataSet;
class TDataSource;
class TField;

// The connection of one data-aware object to a data source. The link sees a window of BufferCount
// records of the dataset's ring; ActiveRecord is the active record's position inside that window,
// kept following the records as the ring scrolls. Descendants override the notification methods.
class QUORDA_API TDataLink : public TPersistent {
public:
    TDataLink() = default;
    ~TDataLink() override;

    std::string ClassName() const override { return "TDataLink"; }

    // True while the data source's dataset is open.
    bool Active() const { return FActive; }
    int ActiveRecord() const;
    void SetActiveRecord(int Value);
    int BufferCount() const { return FBufferCount; }
    // A larger count makes the dataset's ring grow to hold it.
    void SetBufferCount(int Value);
    // Records of the window that hold data (at most BufferCount).
    int RecordCount() const;
    bool Bof() const;
    bool Eof() const;
    // True while the dataset edits a record and the link is not read-only.
    bool Editing() const { return FEditing; }
    bool ReadOnly() const { return FReadOnly; }
    void SetReadOnly(bool Value);
    TDataSource* DataSource() const { return FDataSource; }
    void SetDataSource(TDataSource* Value);
    bool DataSourceFixed() const { return FDataSourceFixed; }
    void SetDataSourceFixed(bool Value) { FDataSourceFixed = Value; }
    TDataSet* DataSet() const;

    // Puts the dataset in edit mode through the data source (unless read-only); returns Editing.
    bool Edit();
    // Runs UpdateData with RecordChanged suppressed.
    void UpdateRecord();
    int MoveBy(int Distance);

protected:
    virtual void ActiveChanged() { FFirstRecord = 0; }
    virtual void CheckBrowseMode() {}
    // Reacts to one data event from the data source.
    virtual void DataEvent(TDataEvent Event, std::intptr_t Info);
    virtual void DataSetChanged() { RecordChanged(nullptr); }
    // Distance is how far the link's window moved (in records).
    virtual void DataSetScrolled(int Distance) { DataSetChanged(); }
    virtual void EditingChanged() {}
    virtual void FocusControl(TField** Field) {}
    virtual void LayoutChanged() { DataSetChanged(); }
    virtual void RecordChanged(TField* Field) {}
    virtual void UpdateData() {}

    // Non-visual links hear every event before the visual ones.
    bool VisualControl() const { return FVisualControl; }
    void SetVisualControl(bool Value) { FVisualControl = Value; }
    int FirstRecord() const { return FFirstRecord; }

private:
    friend class TDataSource;
    friend class TDataSet;

    int CalcFirstRecord(int Index);
    void CalcRange();
    void CheckActiveAndEditing();
    void SetActive(bool Value);

    TDataSource* FDataSource = nullptr;
    int FFirstRecord = 0;
    int FBufferCount = 1;
    bool FActive = false;
    bool FDataSourceFixed = false;
    bool FEditing = false;
    bool FReadOnly = false;
    bool FUpdatingRecord = false;
    bool FVisualControl = false;
};

} // namespace quorda
