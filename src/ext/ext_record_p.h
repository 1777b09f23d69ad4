// The one place where the editable dataset knows the engine's record buffer header and bookmark
// layout: it stamps new records and reads bookmarks the way the engine writes them.
#pragma once

#include "quorda/core/odbc_dataset.h"
#include "quorda/db/bookmark.h"

#include <algorithm>
#include <cstring>

namespace quorda::ext_detail {

inline void StoreBookmarkFlag(TRecordBuffer Buffer, TBookmarkFlag Flag) {
    Buffer[kRecordFlagOffset] = static_cast<std::byte>(Flag);
}

inline void StoreRowNumber(TRecordBuffer Buffer, std::int32_t RowNumber) {
    std::memcpy(Buffer + kRecordRowNumberOffset, &RowNumber, sizeof RowNumber);
}

// The origin and row number of an engine bookmark (missing bytes read as zero).
inline TODBCBookmark ReadBookmark(const void* Data, std::size_t Size) {
    TODBCBookmark bookmark{0, 0};
    std::memcpy(&bookmark, Data, std::min(Size, sizeof bookmark));
    return bookmark;
}

} // namespace quorda::ext_detail
