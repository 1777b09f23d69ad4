// Bookmarks: taking one from the active record and going back to it.

#include "quorda/db/dataset.h"

namespace quorda {

bool TDataSet::BookmarkAvailable() {
    return !IsEmpty() && !FIsUniDirectional &&
           (FState == dsBrowse || FState == dsEdit || FState == dsInsert) &&
           GetBookmarkFlag(ActiveBuffer()) == bfCurrent;
}

TBookmark TDataSet::GetBookmark() {
    if (!BookmarkAvailable() || FBookmarkSize <= 0) {
        return {};
    }
    TBookmark bookmark(static_cast<std::size_t>(FBookmarkSize));
    GetBookmarkData(ActiveBuffer(), bookmark.Data());
    return bookmark;
}

void TDataSet::GotoBookmark(const TBookmark& ABookmark) {
    if (ABookmark.IsNil()) {
        return;
    }
    CheckBrowseMode();
    DoBeforeScroll();
    InternalGotoBookmark(ABookmark.Data());
    Resync({rmExact, rmCenter});
    DoAfterScroll();
}

TBookmarkStr TDataSet::GetBookmarkStr() {
    return GetBookmark().ToString();
}

void TDataSet::SetBookmarkStr(const TBookmarkStr& Value) {
    GotoBookmark(TBookmark(Value));
}

} // namespace quorda
