#include "quorda/rtl/application.h"

#include <cstdio>
#include <mutex>

namespace quorda {

namespace {

// Hooks may be installed and used from any thread (pooled queries run on worker threads).
std::mutex hookLock;
TExceptionHandler exceptionHandler;
void* mainWindowHandle = nullptr;
TCursor currentCursor = crDefault;
TCursorHook cursorHook;

} // namespace

namespace Application {

void HandleException(const std::exception& E) {
    TExceptionHandler handler;
    {
        std::lock_guard guard(hookLock);
        handler = exceptionHandler;
    }
    if (handler) {
        handler(E);
    } else {
        std::fprintf(stderr, "%s\n", E.what());
        std::fflush(stderr);
    }
}

TExceptionHandler SetExceptionHandler(TExceptionHandler Handler) {
    std::lock_guard guard(hookLock);
    TExceptionHandler previous = std::move(exceptionHandler);
    exceptionHandler = std::move(Handler);
    return previous;
}

void* MainWindowHandle() {
    std::lock_guard guard(hookLock);
    return mainWindowHandle;
}

void SetMainWindowHandle(void* Handle) {
    std::lock_guard guard(hookLock);
    mainWindowHandle = Handle;
}

} // namespace Application

namespace Screen {

TCursor Cursor() {
    std::lock_guard guard(hookLock);
    return currentCursor;
}

void SetCursor(TCursor Value) {
    TCursorHook hook;
    {
        std::lock_guard guard(hookLock);
        if (currentCursor == Value) {
            return;
        }
        currentCursor = Value;
        hook = cursorHook;
    }
    // Called outside the lock so that the hook may read the cursor.
    if (hook) {
        hook(Value);
    }
}

TCursorHook SetCursorHook(TCursorHook Hook) {
    std::lock_guard guard(hookLock);
    TCursorHook previous = std::move(cursorHook);
    cursorHook = std::move(Hook);
    return previous;
}

} // namespace Screen

TScreenCursorGuard::TScreenCursorGuard(TCursor Value) : FSaved(Screen::Cursor()) {
    Screen::SetCursor(Value);
}

TScreenCursorGuard::~TScreenCursorGuard() {
    try {
        Screen::SetCursor(FSaved);
    } catch (...) {
    }
}

} // namespace quorda
