#pragma once

#include "quorda/db/dataset.h"

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace quorda {

class TMemBlobStream;

// A table kept in memory. The structure comes from FieldDefs (or, when there are none, from the
// persistent fields); CreateDataSet builds an empty table and opens it. Rows survive Close and Open
// as long as the structure stays the same. Every edit operation is supported; bookmarks identify
// rows, not positions, so they stay valid while other rows are inserted or deleted. Blob and memo
// values are read and written through blob streams. Filtered with OnFilterRecord hides rows.
class QUORDA_API TMemDataSet : public TDataSet {
public:
    explicit TMemDataSet(TComponent* AOwner);
    ~TMemDataSet() override;

    std::string ClassName() const override { return "TMemDataSet"; }

    // Builds the table from the field definitions (rows are discarded) and opens it. Raises when the
    // dataset is open or there is nothing to build it from.
    void CreateDataSet();
    // Removes every row.
    void EmptyDataSet();
    bool ReadOnly() const { return FReadOnly; }
    void SetReadOnly(bool Value) { FReadOnly = Value; }

    void SetFiltered(bool Value) override;
    bool BookmarkValid(const TBookmark& ABookmark) override;
    int CompareBookmarks(const TBookmark& Bookmark1, const TBookmark& Bookmark2) override;
    using TDataSet::GetFieldData;
    using TDataSet::SetFieldData;
    bool GetFieldData(TField* Field, void* Buffer) override;
    void SetFieldData(TField* Field, const void* Buffer) override;
    std::unique_ptr<TStream> CreateBlobStream(TField* Field, TBlobStreamMode Mode) override;
    bool IsSequenced() override { return !Filtered(); }

protected:
    TRecordBuffer AllocRecordBuffer() override;
    void FreeRecordBuffer(TRecordBuffer& Buffer) override;
    void GetBookmarkData(TRecordBuffer Buffer, void* Data) override;
    TBookmarkFlag GetBookmarkFlag(TRecordBuffer Buffer) override;
    void SetBookmarkData(TRecordBuffer Buffer, const void* Data) override;
    void SetBookmarkFlag(TRecordBuffer Buffer, TBookmarkFlag Value) override;
    int GetRecordSize() override { return FRecordSize; }
    bool GetCanModify() override { return !FReadOnly && TDataSet::GetCanModify(); }
    int GetRecordCount() override;
    int GetRecNo() override;
    void DoSetRecNo(int Value) override;
    void ClearCalcFields(TRecordBuffer Buffer) override;
    void InternalAddRecord(const void* Buffer, bool Append) override;
    void InternalCancel() override;
    void InternalDelete() override;
    void InternalEdit() override;
    void InternalFirst() override { FCursor = -1; }
    void InternalGotoBookmark(const void* ABookmark) override;
    void InternalInitRecord(TRecordBuffer Buffer) override;
    void InternalLast() override { FCursor = static_cast<int>(FRows.size()); }
    void InternalPost() override;
    void InternalSetToRecord(TRecordBuffer Buffer) override;
    TGetResult GetRecord(TRecordBuffer Buffer, TGetMode GetMode, bool DoCheck) override;
    void InternalClose() override;
    void InternalOpen() override;
    void InternalInitFieldDefs() override {}
    bool IsCursorOpen() override { return FCursorOpen; }

private:
    friend class TMemBlobStream;

    // One column's place in the data area: a null flag byte followed by Size bytes.
    struct TSlot {
        int Offset = -1;
        int Size = 0;
        bool Blob = false;
    };
    struct TRow {
        std::uint64_t Id;
        std::unique_ptr<std::byte[]> Data;
    };

    void BuildLayout();
    bool LayoutMatches() const;
    void ClearRows() noexcept;
    int IndexOfId(std::uint64_t Id);
    void InsertRow(int Index, TRow Row);
    bool RecordAccepted(int Index);
    void FillBuffer(TRecordBuffer Buffer, const TRow& Row);
    // The buffer field reads and writes use in the current state; null when there is none.
    TRecordBuffer GetActiveRecBuf();
    std::byte* FieldSlot(TRecordBuffer Record, TField* Field, int& Size);
    const TSlot* SlotOf(TField* Field) const;

    std::uint32_t AllocBlob(std::string Data);
    void FreeBlob(std::uint32_t Handle) noexcept;
    const std::string& BlobData(std::uint32_t Handle) const;
    void FreeRowBlobs(const TRow& Row) noexcept;
    void ReleasePendingBlobs() noexcept;
    // Stores a blob value written through a stream into the record being edited.
    void StoreBlob(TField* Field, TRecordBuffer Record, std::string Data);

    std::vector<TRow> FRows;
    std::unordered_map<std::uint64_t, int> FIndexOfId;
    bool FIndexDirty = false;
    std::uint64_t FNextId = 0;
    int FCursor = -1;
    bool FCursorOpen = false;
    bool FReadOnly = false;

    // Layout, by definition index and by FieldNo.
    std::vector<TSlot> FSlots;
    std::vector<int> FSlotOfFieldNo;
    struct TColumnShape {
        std::string Name;
        TFieldType DataType;
        int Size;
        bool operator==(const TColumnShape&) const = default;
    };
    std::vector<TColumnShape> FShape;
    bool FLayoutBuilt = false;
    int FDataSize = 0;
    int FRecordSize = 0;

    TRecordBuffer FFilterBuffer = nullptr;
    TRecordBuffer FOldBuffer = nullptr;
    bool FOldValid = false;

    std::vector<std::string> FBlobs;
    std::vector<std::uint32_t> FFreeBlobs;
    std::vector<std::uint32_t> FPendingBlobs;
    std::vector<TMemBlobStream*> FStreams;
};

} // namespace quorda
