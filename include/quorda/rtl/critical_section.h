#pragma once

#include "quorda/export.h"

#include <mutex>

namespace quorda {

// A recursive lock: the thread that holds it may enter again and must leave as often.
class QUORDA_API TCriticalSection {
public:
    TCriticalSection() = default;
    TCriticalSection(const TCriticalSection&) = delete;
    TCriticalSection& operator=(const TCriticalSection&) = delete;
    virtual ~TCriticalSection() = default;

    void Acquire() { FMutex.lock(); }
    void Release() { FMutex.unlock(); }
    void Enter() { Acquire(); }
    void Leave() { Release(); }
    bool TryEnter() { return FMutex.try_lock(); }

private:
    std::recursive_mutex FMutex;
};

// Holds a critical section for its lifetime.
class QUORDA_API TCriticalSectionGuard {
public:
    explicit TCriticalSectionGuard(TCriticalSection& Section) : FSection(Section) { FSection.Enter(); }
    ~TCriticalSectionGuard() { FSection.Leave(); }
    TCriticalSectionGuard(const TCriticalSectionGuard&) = delete;
    TCriticalSectionGuard& operator=(const TCriticalSectionGuard&) = delete;

private:
    TCriticalSection& FSection;
};

} // namespace quorda
