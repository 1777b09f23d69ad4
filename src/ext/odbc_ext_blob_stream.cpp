// TODBCExtBlobStream: memo and blob values of the editable dataset, read from the current edit when
// it wrote one, and written into the dataset's new-value list.

#include "quorda/ext/odbc_ext_blob_stream.h"

#include "quorda/db/blob_field.h"
#include "quorda/ext/odbc_ext_dataset.h"
#include "quorda/rtl/messages.h"

namespace quorda {

TODBCExtBlobStream::TODBCExtBlobStream(TBlobField* Field, TBlobStreamMode Mode)
    : TODBCBlobStream(Field, Mode, TDeferStart{}), FExtDataSet(dynamic_cast<TODBCExtDataSet*>(FDataSet)) {
    if (FExtDataSet == nullptr) {
        DatabaseError(LoadStr(SODBCInvalidBLOB));
    }
    Start(Mode);
}

void TODBCExtBlobStream::ReadBlobData() {
    FReading = true;
    try {
        if (const TFieldValue* written = TODBCExtDataSet::Entry(*FExtDataSet->FNewValues, FField)) {
            Clear();
            const std::string text = written->Value.AsString();
            WriteBuffer(text.data(), static_cast<std::int64_t>(text.size()));
            SetPosition(0);
        } else if (TODBCExtDataSet::Entry(*FExtDataSet->FOldValues, FField) == nullptr &&
                   FExtDataSet->State() != dsInsert) {
            TODBCBlobStream::ReadBlobData();
        }
        // A field changed without a value written through a stream (cleared) stays empty.
    } catch (...) {
        FReading = false;
        throw;
    }
    FReading = false;
}

void TODBCExtBlobStream::RememberOldText() {
    FExtDataSet->RememberOldValue(FField, [this] { return Variant(FField->AsString()); });
}

void TODBCExtBlobStream::Truncate() {
    if (FReading) {
        TODBCBlobStream::Truncate();
        return;
    }
    RememberOldText();
    TODBCBlobStream::Truncate();
    FExtDataSet->SetNewValueEntry(FField, nullptr);
    FExtDataSet->MarkPending();
}

std::int64_t TODBCExtBlobStream::Write(const void* Buffer, std::int64_t Count) {
    if (!FReading) {
        RememberOldText();
        // Only the bytes of this call become the new value: a value written in several calls keeps
        // its last piece there, while the stream holds all of them.
        const auto* bytes = static_cast<const char*>(Buffer);
        FExtDataSet->SetNewValueEntry(FField, std::make_unique<TFieldValue>(Variant(
                                                  std::string(bytes, static_cast<std::size_t>(Count)))));
    }
    return TODBCBlobStream::Write(Buffer, Count);
}

} // namespace quorda
