#pragma once

#include "quorda/db.h"
#include "rtl_test_support.h"

#include <memory>
#include <string>
#include <vector>

namespace quorda::dbtest {

// An in-memory dataset that shows its ring and counts the cursor operations the framework asks for.
class TProbeDataSet : public TMemDataSet {
public:
    using TDataSet::ActiveRecord;
    using TDataSet::BufferCount;
    using TMemDataSet::TMemDataSet;

    int GetRecordCalls = 0;
    int SetToRecordCalls = 0;

protected:
    TGetResult GetRecord(TRecordBuffer Buffer, TGetMode GetMode, bool DoCheck) override {
        ++GetRecordCalls;
        return TMemDataSet::GetRecord(Buffer, GetMode, DoCheck);
    }
    void InternalSetToRecord(TRecordBuffer Buffer) override {
        ++SetToRecordCalls;
        TMemDataSet::InternalSetToRecord(Buffer);
    }
};

// A data link that writes every notification it receives into a shared log.
class TRecordingLink : public TDataLink {
public:
    TRecordingLink(std::vector<std::string>& Log, std::string Name, int Buffers = 1,
                   TDataSource* Source = nullptr)
        : FLog(Log), FName(std::move(Name)) {
        SetBufferCount(Buffers);
        SetDataSource(Source);
    }
    // The value of Field in each record of the link's window, in order.
    std::vector<std::string> Window(const std::string& FieldName) {
        std::vector<std::string> values;
        int saved = ActiveRecord();
        for (int i = 0; i < RecordCount(); ++i) {
            SetActiveRecord(i);
            values.push_back(DataSet()->FieldByName(FieldName)->AsString());
        }
        SetActiveRecord(saved);
        return values;
    }
    // The value of Field in the link's active record.
    std::string ActiveValue(const std::string& FieldName) {
        return Window(FieldName)[static_cast<std::size_t>(ActiveRecord())];
    }
    // Text that UpdateData writes into the NAME field when the dataset asks for pending values.
    std::string PendingName;

protected:
    void ActiveChanged() override {
        TDataLink::ActiveChanged();
        Add(Active() ? "ActiveChanged(on)" : "ActiveChanged(off)");
    }
    void CheckBrowseMode() override { Add("CheckBrowseMode"); }
    void DataSetChanged() override { Add("DataSetChanged"); }
    void DataSetScrolled(int Distance) override { Add("DataSetScrolled(" + std::to_string(Distance) + ")"); }
    void EditingChanged() override { Add(Editing() ? "EditingChanged(on)" : "EditingChanged(off)"); }
    void LayoutChanged() override { Add("LayoutChanged"); }
    void RecordChanged(TField* Field) override {
        Add("RecordChanged(" + (Field ? Field->FieldName() : "nil") + ")");
    }
    void UpdateData() override {
        Add("UpdateData");
        if (!PendingName.empty()) {
            DataSet()->FieldByName("NAME")->SetAsString(PendingName);
            PendingName.clear();
        }
    }
    void FocusControl(TField** Field) override { Add("FocusControl(" + (*Field)->FieldName() + ")"); }

private:
    void Add(const std::string& Text) { FLog.push_back(FName.empty() ? Text : FName + ":" + Text); }

    std::vector<std::string>& FLog;
    std::string FName;
};

// ID (integer) and NAME (string of 20) with rows 1..Count named "name1", "name2", ...
inline void FillNumbers(TMemDataSet& DataSet, int Count) {
    DataSet.FieldDefs().Add("ID", ftInteger);
    DataSet.FieldDefs().Add("NAME", ftString, 20);
    DataSet.CreateDataSet();
    for (int i = 1; i <= Count; ++i) {
        DataSet.AppendRecord({i, "name" + std::to_string(i)});
    }
    DataSet.First();
}

// Logs the dataset's own events (BeforeScroll, AfterPost, ...) by name.
inline void LogDataSetEvents(TDataSet& DataSet, std::vector<std::string>& Log) {
    const std::pair<const char*, TDataSetNotifyEvent TDataSet::*> events[] = {
        {"BeforeOpen", &TDataSet::BeforeOpen},     {"AfterOpen", &TDataSet::AfterOpen},
        {"BeforeClose", &TDataSet::BeforeClose},   {"AfterClose", &TDataSet::AfterClose},
        {"BeforeInsert", &TDataSet::BeforeInsert}, {"AfterInsert", &TDataSet::AfterInsert},
        {"BeforeEdit", &TDataSet::BeforeEdit},     {"AfterEdit", &TDataSet::AfterEdit},
        {"BeforePost", &TDataSet::BeforePost},     {"AfterPost", &TDataSet::AfterPost},
        {"BeforeCancel", &TDataSet::BeforeCancel}, {"AfterCancel", &TDataSet::AfterCancel},
        {"BeforeDelete", &TDataSet::BeforeDelete}, {"AfterDelete", &TDataSet::AfterDelete},
        {"BeforeScroll", &TDataSet::BeforeScroll}, {"AfterScroll", &TDataSet::AfterScroll}};
    for (const auto& [name, event] : events) {
        DataSet.*event = [&Log, name](TDataSet*) { Log.emplace_back(name); };
    }
}

inline int CurrentId(TDataSet& DataSet) {
    return DataSet.FieldByName("ID")->AsInteger();
}

// The current ID with the ends the dataset is at: "bof 1", "3", "3 eof", "bof eof" when empty.
inline std::string Position(TDataSet& DataSet) {
    std::string text = DataSet.Bof() ? "bof" : "";
    if (!DataSet.IsEmpty()) {
        text += (text.empty() ? "" : " ") + DataSet.FieldByName("ID")->AsString();
    }
    return DataSet.Eof() ? text + (text.empty() ? "eof" : " eof") : text;
}

using testing_support::MessageOf;
using Names = std::vector<std::string>;

} // namespace quorda::dbtest
