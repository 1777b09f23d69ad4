#include "query_bodies_p.h"
#include "quorda/tools/query_helpers.h"

namespace quorda {

TCursor ExecCursor = crDefault;

namespace {
// The cursor that was in force when the wait cursor was last put up.
TCursor SavedCursor = crDefault;
} // namespace

TExecCursorScope::TExecCursorScope() {
    if (Screen::Cursor() != ExecCursor) {
        SavedCursor = Screen::Cursor();
        Screen::SetCursor(ExecCursor);
    }
}

TExecCursorScope::~TExecCursorScope() {
    try {
        if (Screen::Cursor() != SavedCursor) {
            Screen::SetCursor(SavedCursor);
        }
    } catch (...) {
        // A cursor hook that fails must not replace the error the helper is passing on.
    }
}

} // namespace quorda
