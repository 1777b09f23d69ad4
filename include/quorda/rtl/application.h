#pragma once

#include "quorda/export.h"

#include <exception>
#include <functional>

namespace quorda {

using TExceptionHandler = std::function<void(const std::exception& E)>;

// Hooks into the host application. The defaults suit a console program; a GUI replaces them.
namespace Application {

// Shows an exception to the user: the installed handler, by default the message on stderr.
QUORDA_API void HandleException(const std::exception& E);
// Installs Handler (empty restores the default) and returns the previous one (empty for the default).
QUORDA_API TExceptionHandler SetExceptionHandler(TExceptionHandler Handler);

// Parent window for dialogs opened on the application's behalf; null unless set.
QUORDA_API void* MainWindowHandle();
QUORDA_API void SetMainWindowHandle(void* Handle);

} // namespace Application

enum TCursor { crDefault, crHourGlass, crSQLWait, crArrow };

using TCursorHook = std::function<void(TCursor Cursor)>;

namespace Screen {

QUORDA_API TCursor Cursor();
// Changes the cursor; the hook hears every change (not a repeated value).
QUORDA_API void SetCursor(TCursor Value);
// Installs the hook called when the cursor changes; returns the previous one.
QUORDA_API TCursorHook SetCursorHook(TCursorHook Hook);

} // namespace Screen

// Shows a cursor for its lifetime and restores the previous one.
class QUORDA_API TScreenCursorGuard {
public:
    explicit TScreenCursorGuard(TCursor Value = crHourGlass);
    // A hook that throws while restoring is ignored here: destructors never throw.
    ~TScreenCursorGuard();
    TScreenCursorGuard(const TScreenCursorGuard&) = delete;
    TScreenCursorGuard& operator=(const TScreenCursorGuard&) = delete;

private:
    TCursor FSaved;
};

} // namespace quorda
