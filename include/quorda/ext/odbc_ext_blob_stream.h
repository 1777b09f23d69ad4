#pragma once

#include "quorda/core/odbc_blob_stream.h"

namespace quorda {

class TODBCExtDataSet;

// The blob stream of the editable dataset. Reading prefers the value written in the current edit;
// writing records the old value, keeps the bytes of the latest Write call as the field's new value
// and marks an update pending.
class QUORDA_API TODBCExtBlobStream : public TODBCBlobStream {
public:
    TODBCExtBlobStream(TBlobField* Field, TBlobStreamMode Mode);

    std::int64_t Write(const void* Buffer, std::int64_t Count) override;
    void Truncate() override;

protected:
    void ReadBlobData() override;

private:
    // The field's current value recorded as its old value, once per edit.
    void RememberOldText();

    TODBCExtDataSet* FExtDataSet;
    // While the stream fills itself, its own writes are not edits.
    bool FReading = false;
};

} // namespace quorda
