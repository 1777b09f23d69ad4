// TODBCDataSet, positions: bookmarks and the records of the ring brought back under the ODBC
// cursor, the two record counts, refresh and the result-set probe.
//
// The number of rows is unknown until they have been read, so no absolute position is kept: a row is
// its number relative to the numbering origin (first or last row), and every repositioning is a fetch
// to that origin followed by a relative fetch.

#include "odbc_dataset_p.h"
#include "quorda/core/odbc_dataset.h"
#include "quorda/rtl/messages.h"

#include <cstring>

namespace quorda {
namespace {

std::int32_t RowNumberOf(const std::byte* Buffer) {
    std::int32_t row = 0;
    std::memcpy(&row, Buffer + kRecordRowNumberOffset, sizeof row);
    return row;
}

} // namespace

int TODBCDataSet::CompareBookmarks(const TBookmark& Bookmark1, const TBookmark& Bookmark2) {
    if (Bookmark1.Size() != sizeof(TODBCBookmark) || Bookmark2.Size() != sizeof(TODBCBookmark)) {
        const bool nil1 = Bookmark1.Size() != sizeof(TODBCBookmark);
        const bool nil2 = Bookmark2.Size() != sizeof(TODBCBookmark);
        return nil1 == nil2 ? 0 : (nil1 ? 1 : -1);
    }
    TODBCBookmark first{};
    TODBCBookmark second{};
    std::memcpy(&first, Bookmark1.Data(), sizeof first);
    std::memcpy(&second, Bookmark2.Data(), sizeof second);
    // Either way of numbering counts upwards toward the last row (0, 1, 2 ... or ..., -2, -1, 0).
    std::int64_t place1 = first.RowNumber;
    std::int64_t place2 = second.RowNumber;
    if (first.Origin != second.Origin) {
        const std::int64_t count = GetRecordCount();
        place1 = first.Origin == -1 ? count - 1 + place1 : place1;
        place2 = second.Origin == -1 ? count - 1 + place2 : place2;
    }
    return place1 < place2 ? -1 : (place1 > place2 ? 1 : 0);
}

void TODBCDataSet::GetBookmarkData(TRecordBuffer Buffer, void* Data) {
    const TODBCBookmark bookmark{FOrigin, RowNumberOf(Buffer)};
    std::memcpy(Data, &bookmark, sizeof bookmark);
}

TBookmarkFlag TODBCDataSet::GetBookmarkFlag(TRecordBuffer Buffer) {
    const auto flag = static_cast<std::uint8_t>(Buffer[kRecordFlagOffset]);
    if (flag > bfInserted) {
        // 816 shows as 330 in the message's hexadecimal placeholder.
        DatabaseErrorFmt(LoadStr(SODBCInternalComponentError), 816);
    }
    return static_cast<TBookmarkFlag>(flag);
}

void TODBCDataSet::InternalGotoBookmark(const void* ABookmark) {
    if (ABookmark == nullptr) {
        return;
    }
    TODBCBookmark bookmark;
    std::memcpy(&bookmark, ABookmark, sizeof bookmark);
    SQLRETURN ret = SQL_SUCCESS;
    if (bookmark.Origin == 1) {
        ret = ExtendedFetch(SQL_FETCH_FIRST, 0);
        if (bookmark.RowNumber != 0) {
            ret = ExtendedFetch(SQL_FETCH_RELATIVE, bookmark.RowNumber);
        }
        if (ret == SQL_NO_DATA_FOUND) {
            // The row is gone: stand on the last row instead.
            FCrack = 1;
            bookmark = {-1, 0};
            ret = ExtendedFetch(SQL_FETCH_LAST, 0);
        }
    } else {
        ExtendedFetch(SQL_FETCH_LAST, 0);
        ret = ExtendedFetch(SQL_FETCH_RELATIVE, bookmark.RowNumber);
        if (ret == SQL_NO_DATA_FOUND) {
            FCrack = -1;
            bookmark = {1, 0};
            ret = ExtendedFetch(SQL_FETCH_FIRST, 0);
        }
    }
    if (ret != SQL_NO_DATA_FOUND) {
        FCrack = 0;
    }
    FCurrentRow = bookmark.RowNumber;
    FRowNumbered = true;
    FOrigin = bookmark.Origin;
}

void TODBCDataSet::InternalSetToRecord(TRecordBuffer Buffer) {
    if (FForwardOnlyCursor) {
        return;
    }
    const std::int32_t row = RowNumberOf(Buffer);
    const auto distance = static_cast<SQLLEN>(row) - FCurrentRow - FCrack;
    if (FOrigin != 0) {
        ExtendedFetch(SQL_FETCH_RELATIVE, distance);
    }
    FCrack = 0;
    FCurrentRow = row;
    FRowNumbered = true;
}

void TODBCDataSet::RestorePositionAfterCount() {
    if (FOrigin == -1) {
        ExtendedFetch(SQL_FETCH_LAST, 0);
        if (FCurrentRow == 0) {
            // On the last row, but marked after it: the next step back finds the last row again.
            FCrack = 1;
            return;
        }
        ExtendedFetch(SQL_FETCH_RELATIVE, FCurrentRow);
    } else {
        ExtendedFetch(SQL_FETCH_ABSOLUTE, static_cast<SQLLEN>(FCurrentRow) + 1);
    }
    FCrack = 0;
}

int TODBCDataSet::GetRecordCount() {
    CheckActive();
    if (FRecordCountCache != -1) {
        return FRecordCountCache;
    }
    std::int32_t count = 0;
    if (ExtendedFetch(SQL_FETCH_FIRST, 0) != SQL_NO_DATA_FOUND) {
        do {
            ++count;
        } while (ExtendedFetch(SQL_FETCH_NEXT, 0) != SQL_NO_DATA_FOUND);
    }
    RestorePositionAfterCount();
    FRecordCountCache = count;
    return count;
}

int TODBCDataSet::GetRecordCountExt() {
    CheckActive();
    if (FRecordCountCache != -1) {
        return FRecordCountCache;
    }
    // Double the probe until it passes the end, then halve the gap between the last row found and
    // the first position without one.
    std::int64_t low = 0;
    std::int64_t high = 100;
    while (ExtendedFetch(SQL_FETCH_ABSOLUTE, static_cast<SQLLEN>(high)) != SQL_NO_DATA_FOUND) {
        low = high;
        high *= 2;
    }
    while (high > low + 1) {
        const std::int64_t middle = low + (high - low) / 2;
        if (ExtendedFetch(SQL_FETCH_ABSOLUTE, static_cast<SQLLEN>(middle)) != SQL_NO_DATA_FOUND) {
            low = middle;
        } else {
            high = middle;
        }
    }
    RestorePositionAfterCount();
    FRecordCountCache = static_cast<std::int32_t>(low);
    return FRecordCountCache;
}

void TODBCDataSet::InternalRefresh() {
    // Refused before the statement runs again: the bookmark could not be found after it.
    CheckScrollable();
    TBookmark bookmark = GetBookmark();
    // The rows may have changed: they are counted again when asked.
    ExecuteAgain();
    InternalGotoBookmark(bookmark.Data());
    FreeBookmark(bookmark);
}

bool TODBCDataSet::IsDataSet() {
    CheckDBOpenError();
    CreateHandle();
    SQLSMALLINT columns = 0;
    CheckCall(SQLNumResultCols(FEngine->Stmt.Get(), &columns), "SQLNumResultCols");
    return columns > 0;
}

} // namespace quorda
