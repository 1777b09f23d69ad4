#pragma once

#include "quorda/db/mem_dataset.h"
#include "quorda/rtl/stream.h"

#include <cstdint>
#include <string>

namespace quorda {

// The head of every record buffer of a TMemDataSet; the data area follows at MemHeaderSize, then the
// calculated-field area.
struct TMemRecordHeader {
    // The row the buffer shows (for an inserted record: the row it goes before).
    std::uint64_t RowId;
    std::uint8_t Flag;
};

inline constexpr int MemHeaderSize = 16;
static_assert(sizeof(TMemRecordHeader) <= MemHeaderSize);

inline TMemRecordHeader& MemHeader(TRecordBuffer Buffer) {
    return *reinterpret_cast<TMemRecordHeader*>(Buffer);
}

// A blob value as a memory stream. Reading streams hold a copy of the value; writing streams store
// their content into the record being edited when they are destroyed.
class TMemBlobStream : public TMemoryStream {
public:
    TMemBlobStream(TMemDataSet* DataSet, TField* Field, TBlobStreamMode Mode);
    ~TMemBlobStream() override;

    std::int64_t Write(const void* Buffer, std::int64_t Count) override;
    void SetSize(std::int64_t NewSize) override;

private:
    friend class TMemDataSet;

    void Commit() noexcept;

    TMemDataSet* FDataSet;
    TField* FField;
    TBlobStreamMode FMode;
    TRecordBuffer FRecord = nullptr;
    bool FModified = false;
    bool FLoading = false;
};

} // namespace quorda
