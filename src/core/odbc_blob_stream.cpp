// TODBCBlobStream: a memo or blob column of the current row read whole with SQLGetData, beyond the
// bound buffer's cap; and CreateBlobStream, which hands one out.

#include "quorda/core/odbc_blob_stream.h"

#include "odbc_dataset_p.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_dataset.h"
#include "quorda/core/session.h"
#include "quorda/db/blob_field.h"
#include "quorda/odbc/odbc_check.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/messages.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace quorda {

std::unique_ptr<TStream> TODBCDataSet::CreateBlobStream(TField* Field, TBlobStreamMode Mode) {
    // Memo and blob fields, and string fields, whose value the stream reads as text.
    if (dynamic_cast<TBlobField*>(Field) == nullptr && (Field == nullptr || Field->DataType() != ftString)) {
        DatabaseError(LoadStr(SODBCInvalidBLOB));
    }
    return std::make_unique<TODBCBlobStream>(Field, Mode);
}

TODBCBlobStream::TODBCBlobStream(TField* Field, TBlobStreamMode Mode)
    : TODBCBlobStream(Field, Mode, TDeferStart{}) {
    Start(Mode);
}

TODBCBlobStream::TODBCBlobStream(TField* Field, TBlobStreamMode Mode, TDeferStart)
    : FField(Field), FDataSet(dynamic_cast<TODBCDataSet*>(Field->DataSet())), FFieldNo(Field->FieldNo()) {
    if (FDataSet == nullptr) {
        DatabaseError(LoadStr(SODBCInvalidBLOB));
    }
    FDataSet->GetActiveRecBuf(FBuffer);
    if (Mode != bmRead) {
        // Outside an edit the message is the read-only one too.
        if (Field->ReadOnly() || (FDataSet->State() != dsEdit && FDataSet->State() != dsInsert)) {
            DatabaseErrorFmt(LoadStr(SODBCFieldReadOnly), Field->DisplayName());
        }
    }
}

void TODBCBlobStream::Start(TBlobStreamMode Mode) {
    if (Mode == bmWrite) {
        Truncate();
    } else if (FBuffer != nullptr) {
        ReadBlobData();
    }
}

std::int64_t TODBCBlobStream::Write(const void* Buffer, std::int64_t Count) {
    return TMemoryStream::Write(Buffer, Count);
}

void TODBCBlobStream::Truncate() {
    Clear();
    FModified = true;
    if (auto* blob = dynamic_cast<TBlobField*>(FField)) {
        blob->SetModified(true);
    }
}

void TODBCBlobStream::ReadBlobData() {
    const bool text = FField->DataType() == ftString || FField->DataType() == ftMemo;
    if (!FDataSet->FForwardOnlyCursor) {
        FDataSet->InternalSetToRecord(FBuffer);
    }
    const bool rowset = FDataSet->BlockMode() && FDataSet->FRowsFetched > 1;
    if (rowset && ReadFromRowset(text)) {
        // Taken from the bound rowset.
    } else if (FDataSet->FForwardOnlyCursor && !rowset) {
        ReadCurrentRowOnce(text);
    } else {
        ReadWithGetData(text);
    }
    if (text && FDataSet->ODBCDatabase() != nullptr && FDataSet->ODBCDatabase()->StringTrimRight()) {
        std::string value = DataString();
        std::size_t keep = value.size();
        while (keep > 0 && static_cast<unsigned char>(value[keep - 1]) <= ' ') {
            --keep;
        }
        Clear();
        WriteBuffer(value.data(), static_cast<std::int64_t>(keep));
        SetSize(static_cast<std::int64_t>(keep));
    }
    SetPosition(0);
}

void TODBCBlobStream::ReadCurrentRowOnce(bool Text) {
    // A forward-only cursor cannot go back to a row, and the driver gives a column's data only once
    // per row: the first read keeps it for the ones after it.
    std::int32_t row = 0;
    std::memcpy(&row, FBuffer + kRecordRowNumberOffset, sizeof row);
    auto& blobs = FDataSet->FEngine->CurrentRowBlobs;
    const auto column = static_cast<SQLUSMALLINT>(FField->Index() + 1);
    if (blobs.Row != row) {
        blobs.Values.clear();
        blobs.Row = row;
    }
    if (const auto kept = blobs.Values.find(column); kept != blobs.Values.end()) {
        WriteBuffer(kept->second.data(), static_cast<std::int64_t>(kept->second.size()));
        return;
    }
    // Only the row the cursor stands on can still be read from the driver.
    if (!FDataSet->FRowNumbered || row != FDataSet->FCurrentRow || FDataSet->FCrack != 0) {
        DatabaseError(LoadStr(SODBCBlobRowLeft));
    }
    ReadWithGetData(Text);
    blobs.Values.emplace(column,
                         std::string(static_cast<const char*>(Memory()), static_cast<std::size_t>(Size())));
}

bool TODBCBlobStream::ReadFromRowset(bool Text) {
    // SQLGetData reads the row a rowset is positioned on, and not every driver can position it
    // (SQLSetPos): a value that fits the bound buffer is taken from the rowset instead.
    const auto index = static_cast<std::size_t>(FField->Index());
    if (index >= FDataSet->FFieldValues.size()) {
        return false;
    }
    const TFieldValueItem& item = *FDataSet->FFieldValues[index];
    const std::byte* row = FDataSet->FEngine->Rows.Row(FDataSet->BoundRow());
    const SQLLEN indicator = TRowArea::Indicator(row, item.IndicatorOffset);
    if (indicator == SQL_NULL_DATA) {
        return true;
    }
    const std::size_t capacity = static_cast<std::size_t>(item.BindLength) - (Text ? 1 : 0);
    if (indicator < 0 || static_cast<std::size_t>(indicator) > capacity) {
        return false;
    }
    WriteBuffer(row + item.RecordOffset + 1, static_cast<std::int64_t>(indicator));
    return true;
}

void TODBCBlobStream::ReadWithGetData(bool Text) {
    const SQLSMALLINT cType = Text ? SQL_C_CHAR : SQL_C_BINARY;
    SQLHSTMT stmt = FDataSet->FEngine->Stmt.Get();
    const auto column = static_cast<SQLUSMALLINT>(FField->Index() + 1);
    auto raise = [&] { throw CreateODBCError(odbcEnv(), FDataSet->GetDBC(), stmt); };
    if (FDataSet->BlockMode() && FDataSet->FRowsFetched > 1) {
        FDataSet->CheckCall(SQLSetPos(stmt, static_cast<SQLSETPOSIROW>(FDataSet->FRowsetIndex + 1),
                                      SQL_POSITION, SQL_LOCK_NO_CHANGE),
                            "SQLSetPos");
    }

    // The total length first; drivers that cannot tell get the configured maximum.
    char probe[1] = {0};
    SQLLEN total = -1;
    TraceODBC(SQLGetData(stmt, column, cType, probe, 0, &total), "SQLGetData");
    if (total < 1) {
        total = FDataSet->MaxBlobBuffer();
    }
    const std::size_t size = static_cast<std::size_t>(total) + (Text ? 1 : 0);
    // Character data spends one byte of every buffer on the terminating zero.
    const std::size_t capacity = size - (Text ? 1 : 0);
    std::vector<char> buffer(size, '\0');
    SetPosition(0);
    SQLLEN length = 0;
    const SQLRETURN ret = TraceODBC(
        SQLGetData(stmt, column, cType, buffer.data(), static_cast<SQLLEN>(size), &length), "SQLGetData");
    if (!RetCodeIsSuccessful(ret)) {
        raise();
    }
    const bool truncated =
        length == SQL_NO_TOTAL || (length > 0 && static_cast<std::size_t>(length) > capacity);
    if (ret == SQL_NO_DATA_FOUND) {
        // The probe already delivered the whole (empty) value.
    } else if (truncated && ret != SQL_SUCCESS) {
        WriteBuffer(buffer.data(), static_cast<std::int64_t>(capacity));
        if (length == SQL_NO_TOTAL) {
            raise();
        }
        std::vector<char> rest(static_cast<std::size_t>(length) + 1, '\0');
        SQLLEN restLength = 0;
        const SQLRETURN more = TraceODBC(
            SQLGetData(stmt, column, cType, rest.data(), static_cast<SQLLEN>(rest.size()), &restLength),
            "SQLGetData");
        if (!RetCodeIsSuccessful(more)) {
            raise();
        }
        if (more != SQL_NO_DATA_FOUND && restLength != SQL_NULL_DATA) {
            // Binary data takes the reported length (within what was read); text ends at its zero.
            std::size_t count = Text ? strnlen(rest.data(), rest.size() - 1) : rest.size();
            if (!Text && restLength >= 0) {
                count = std::min(count, static_cast<std::size_t>(restLength));
            }
            WriteBuffer(rest.data(), static_cast<std::int64_t>(count));
        }
    } else if (length != SQL_NULL_DATA && length > 0) {
        const std::size_t count = std::min(static_cast<std::size_t>(length), capacity);
        WriteBuffer(buffer.data(), static_cast<std::int64_t>(count));
    }
}

} // namespace quorda
