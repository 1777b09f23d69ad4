#pragma once

#include "quorda/db/types.h"
#include "quorda/rtl/stream.h"

#include <cstdint>

namespace quorda {

class TBlobField;
class TField;
class TODBCDataSet;

// Reads a memo, blob or string column of the current row whole, with SQLGetData, when it is created, so
// values longer than the bound column buffer arrive complete. Writes stay in memory: the plain dataset is
// read-only, editable descendants store what was written.
class QUORDA_API TODBCBlobStream : public TMemoryStream {
public:
    // Raises SODBCFieldReadOnly for a write mode on a read-only field or outside dsEdit/dsInsert.
    // Field is a blob field or a string field (read as text).
    TODBCBlobStream(TField* Field, TBlobStreamMode Mode);
    ~TODBCBlobStream() override = default;

    std::int64_t Write(const void* Buffer, std::int64_t Count) override;
    // Empties the stream and marks the field modified.
    void Truncate() override;

protected:
    // For descendants: remembers the field and checks the mode, but leaves the first read or the
    // truncation to Start, which the descendant's constructor calls once its overrides are in place.
    struct TDeferStart {};
    TODBCBlobStream(TField* Field, TBlobStreamMode Mode, TDeferStart);
    // Truncates for bmWrite, reads the value for the other modes.
    void Start(TBlobStreamMode Mode);

    virtual void ReadBlobData();
    // A rowset row's value that fits its bound buffer, taken from there; false when it must be read
    // from the driver.
    bool ReadFromRowset(bool Text);
    // Forward-only, one row at a time: the current row's value, read from the driver once.
    void ReadCurrentRowOnce(bool Text);
    // The value of the current row read from the driver, whole.
    void ReadWithGetData(bool Text);

    TField* FField;
    TODBCDataSet* FDataSet;
    TRecordBuffer FBuffer = nullptr;
    int FFieldNo = 0;
    bool FModified = false;
};

} // namespace quorda
