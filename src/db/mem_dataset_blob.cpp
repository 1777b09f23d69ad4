// TMemDataSet: blob streams.

#include "mem_dataset_p.h"
#include "quorda/db/blob_field.h"
#include "quorda/db/db_consts.h"
#include "quorda/rtl/application.h"

#include <algorithm>
#include <cstring>

namespace quorda {

std::unique_ptr<TStream> TMemDataSet::CreateBlobStream(TField* Field, TBlobStreamMode Mode) {
    return std::make_unique<TMemBlobStream>(this, Field, Mode);
}

TMemBlobStream::TMemBlobStream(TMemDataSet* DataSet, TField* Field, TBlobStreamMode Mode)
    : FDataSet(DataSet), FField(Field), FMode(Mode) {
    if (Mode != bmRead) {
        if (!IsEditMode(DataSet->State())) {
            DatabaseError(SNotEditing);
        }
        if (Field->ReadOnly()) {
            DatabaseErrorFmt(SReadOnlyField, Field->DisplayName());
        }
    }
    FRecord = DataSet->GetActiveRecBuf();
    if (Mode == bmWrite) {
        // Writing starts from an empty value.
        FModified = true;
    } else if (FRecord) {
        int size = 0;
        std::byte* slot = DataSet->FieldSlot(FRecord, Field, size);
        if (slot && slot[0] != std::byte{0}) {
            std::uint32_t handle;
            std::memcpy(&handle, slot + 1, sizeof(handle));
            const std::string& data = DataSet->BlobData(handle);
            FLoading = true;
            WriteBuffer(data.data(), static_cast<std::int64_t>(data.size()));
            FLoading = false;
            SetPosition(0);
        }
    }
    // Registered so that closing the dataset cuts the stream loose before its buffers go.
    DataSet->FStreams.push_back(this);
}

TMemBlobStream::~TMemBlobStream() {
    if (!FDataSet) {
        return;
    }
    std::erase(FDataSet->FStreams, this);
    if (FModified && FMode != bmRead) {
        Commit();
    }
}

std::int64_t TMemBlobStream::Write(const void* Buffer, std::int64_t Count) {
    if (!FLoading) {
        FModified = true;
    }
    return TMemoryStream::Write(Buffer, Count);
}

void TMemBlobStream::SetSize(std::int64_t NewSize) {
    if (!FLoading) {
        FModified = true;
    }
    TMemoryStream::SetSize(NewSize);
}

void TMemBlobStream::Commit() noexcept {
    // The record being edited must still be the one the stream was opened on.
    if (!IsEditMode(FDataSet->State()) || FRecord != FDataSet->ActiveBuffer()) {
        return;
    }
    try {
        FDataSet->StoreBlob(FField, FRecord, DataString());
        if (auto* blob = dynamic_cast<TBlobField*>(FField)) {
            blob->SetModified(true);
        }
        FDataSet->DataEvent(deFieldChange, reinterpret_cast<std::intptr_t>(FField));
    } catch (const std::exception& e) {
        // A destructor cannot raise: the application hears about it instead.
        Application::HandleException(e);
    } catch (...) {
    }
}

} // namespace quorda
