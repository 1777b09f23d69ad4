// TODBCDataSet is read-only: the framework's editing entry points refuse with the operation's
// prefix before the common message. The prefixes are kept exactly as they have always read,
// irregular spacing included, because applications match on them.

#include "odbc_dataset_p.h"
#include "quorda/core/odbc_dataset.h"
#include "quorda/rtl/messages.h"

namespace quorda {
namespace {

[[noreturn]] void NotImplemented(const char* Prefix) {
    DatabaseError(Prefix + LoadStr(SODBCNotImplemented));
}

} // namespace

int TODBCDataSet::GetRecordSize() {
    NotImplemented("TODBCDataSet.GetRecordSize: ");
}

void TODBCDataSet::InternalAddRecord(const void* Buffer, bool Append) {
    NotImplemented("TODBCDataSet.InternalAddRecord:");
}

void TODBCDataSet::InternalDelete() {
    NotImplemented("TODBCDataSet.InternalDelete: ");
}

void TODBCDataSet::InternalInitRecord(TRecordBuffer Buffer) {
    NotImplemented("TODBCDataSet.InternalInitRecord: ");
}

void TODBCDataSet::InternalPost() {
    NotImplemented("TODBCDataSet.InternalPost :");
}

void TODBCDataSet::SetBookmarkFlag(TRecordBuffer Buffer, TBookmarkFlag Value) {
    NotImplemented("TODBCDataSet.SetBookmarkFlag: ");
}

void TODBCDataSet::SetBookmarkData(TRecordBuffer Buffer, const void* Data) {
    NotImplemented("TODBCDataSet.SetBookmarkData: ");
}

void TODBCDataSet::SetFieldData(TField* Field, const void* Buffer) {
    NotImplemented("TODBCDataSet.SetFieldData: ");
}

} // namespace quorda
