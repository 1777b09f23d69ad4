// Cursor side of TODBCDataSet: field definitions and column bindings, fetching, record buffers,
// bookmarks, locate, refresh and the blob stream.
//
// Placeholders only: every definition below raises until the cursor engine replaces this file, so
// that the statement side links and can be used on its own (ExecSQL) in the meantime.

#include "quorda/core/odbc_blob_stream.h"
#include "quorda/core/odbc_dataset.h"
#include "quorda/rtl/exception.h"

namespace quorda {

namespace {

[[noreturn]] void CursorNotBuilt() {
    throw EDatabaseError("cursor not built yet");
}

} // namespace

int TODBCDataSet::GetRecordCountExt() {
    CursorNotBuilt();
}

bool TODBCDataSet::LocateRecord(const std::string& KeyFields, const Variant& KeyValues,
                                const TLocateOptions& Options) {
    CursorNotBuilt();
}

bool TODBCDataSet::LocateFindRecord(const std::vector<TField*>& Fields, const Variant& KeyValues,
                                    bool CaseInsensitive, bool PartialKey) {
    CursorNotBuilt();
}

bool TODBCDataSet::FindRecordByValues(const std::vector<std::string>& FieldNames,
                                      const std::vector<Variant>& Values, bool FromFirst) {
    CursorNotBuilt();
}

bool TODBCDataSet::GetActiveRecBuf(TRecordBuffer& RecBuf) {
    CursorNotBuilt();
}

void TODBCDataSet::ImmediatelyOpen() {
    CursorNotBuilt();
}

TBookmark TODBCDataSet::SilentClose() {
    CursorNotBuilt();
}

void TODBCDataSet::SilentOpen(const TBookmark& Bookmark) {
    CursorNotBuilt();
}

bool TODBCDataSet::IsDataSet() {
    CursorNotBuilt();
}

bool TODBCDataSet::GetFieldData(TField* Field, void* Buffer) {
    CursorNotBuilt();
}

std::unique_ptr<TStream> TODBCDataSet::CreateBlobStream(TField* Field, TBlobStreamMode Mode) {
    CursorNotBuilt();
}

bool TODBCDataSet::Locate(const std::string& KeyFields, const Variant& KeyValues,
                          const TLocateOptions& Options) {
    CursorNotBuilt();
}

bool TODBCDataSet::DoFilter(TRecordBuffer Buffer) {
    CursorNotBuilt();
}

void TODBCDataSet::DestroyFields() {
    TDataSet::DestroyFields();
}

int TODBCDataSet::GetRecordCount() {
    CursorNotBuilt();
}

int TODBCDataSet::GetRecNo() {
    CursorNotBuilt();
}

void TODBCDataSet::InternalRefresh() {
    CursorNotBuilt();
}

void TODBCDataSet::OpenCursor(bool InfoQuery) {
    TDataSet::OpenCursor(false);
}

TRecordBuffer TODBCDataSet::AllocRecordBuffer() {
    CursorNotBuilt();
}

void TODBCDataSet::FreeRecordBuffer(TRecordBuffer& Buffer) {
    Buffer = nullptr;
}

void TODBCDataSet::GetBookmarkData(TRecordBuffer Buffer, void* Data) {
    CursorNotBuilt();
}

TBookmarkFlag TODBCDataSet::GetBookmarkFlag(TRecordBuffer Buffer) {
    CursorNotBuilt();
}

void TODBCDataSet::InternalFirst() {
    CursorNotBuilt();
}

void TODBCDataSet::InternalLast() {
    CursorNotBuilt();
}

void TODBCDataSet::InternalGotoBookmark(const void* ABookmark) {
    CursorNotBuilt();
}

void TODBCDataSet::InternalSetToRecord(TRecordBuffer Buffer) {
    CursorNotBuilt();
}

TGetResult TODBCDataSet::GetRecord(TRecordBuffer Buffer, TGetMode GetMode, bool DoCheck) {
    CursorNotBuilt();
}

void TODBCDataSet::InternalHandleException() {
    TDataSet::InternalHandleException();
}

void TODBCDataSet::InternalInitFieldDefs() {
    CursorNotBuilt();
}

void TODBCDataSet::InternalOpen() {
    CursorNotBuilt();
}

int TODBCDataSet::GetSpecialDataSize(TFieldType FieldType, int Size) {
    CursorNotBuilt();
}

int TODBCDataSet::GetDefDataSize(const TFieldDef& FieldDef) const {
    CursorNotBuilt();
}

void TODBCDataSet::SetOrigin() {
    CursorNotBuilt();
}

TGetResult TODBCDataSet::FetchStep(TRecordBuffer Buffer, SQLUSMALLINT Orientation) {
    CursorNotBuilt();
}

void TODBCDataSet::CopyRowToBuffer(TRecordBuffer Buffer) {
    CursorNotBuilt();
}

SQLRETURN TODBCDataSet::ExtendedFetch(SQLUSMALLINT Orientation, SQLLEN Offset) {
    CursorNotBuilt();
}

void TODBCDataSet::RestorePositionAfterCount() {
    CursorNotBuilt();
}

TODBCBlobStream::TODBCBlobStream(TBlobField* Field, TBlobStreamMode Mode) : FField(Field), FDataSet(nullptr) {
    CursorNotBuilt();
}

std::int64_t TODBCBlobStream::Write(const void* Buffer, std::int64_t Count) {
    return TMemoryStream::Write(Buffer, Count);
}

void TODBCBlobStream::Truncate() {
    CursorNotBuilt();
}

void TODBCBlobStream::ReadBlobData() {
    CursorNotBuilt();
}

} // namespace quorda
