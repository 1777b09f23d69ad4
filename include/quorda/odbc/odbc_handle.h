#pragma once

#include "quorda/odbc/odbc_check.h"
#include "quorda/odbc/odbc_types.h"

#include <utility>

namespace quorda {

// Move-only owner of one ODBC handle. The release function is the ODBC 2 call for the handle kind
// (SQLFreeConnect, SQLFreeStmt with SQL_DROP). A release that fails keeps the handle, so the owner
// can report the failure and still own what the driver did not let go.
template <typename Traits>
class TODBCHandle {
public:
    using Handle = typename Traits::Handle;

    TODBCHandle() noexcept = default;
    explicit TODBCHandle(Handle handle) noexcept : FHandle(handle) {}
    TODBCHandle(const TODBCHandle&) = delete;
    TODBCHandle& operator=(const TODBCHandle&) = delete;
    TODBCHandle(TODBCHandle&& other) noexcept : FHandle(std::exchange(other.FHandle, nullptr)) {}
    TODBCHandle& operator=(TODBCHandle&& other) noexcept {
        if (this != &other) {
            Reset();
            FHandle = std::exchange(other.FHandle, nullptr);
        }
        return *this;
    }
    ~TODBCHandle() { Reset(); }

    Handle Get() const noexcept { return FHandle; }
    explicit operator bool() const noexcept { return FHandle != nullptr; }

    // The address to pass to an allocation call; only valid while empty.
    Handle* Receive() noexcept { return &FHandle; }

    // Releases the handle; on success the wrapper becomes empty. Returns the ODBC code (SQL_SUCCESS
    // when empty) without raising or tracing: the caller passes it to CheckODBC.
    SQLRETURN Free() noexcept {
        if (FHandle == nullptr) {
            return kSQLSuccess;
        }
        const SQLRETURN ret = Traits::Free(FHandle);
        if (ret == kSQLSuccess || ret == kSQLSuccessWithInfo) {
            FHandle = nullptr;
        }
        return ret;
    }

    // Releases the handle whatever the driver answers (destructor semantics) and takes `handle`.
    void Reset(Handle handle = nullptr) noexcept {
        if (FHandle != nullptr && FHandle != handle) {
            TraceODBC(Traits::Free(FHandle), Traits::FreeCall);
        }
        FHandle = handle;
    }

    // Gives the handle up without releasing it.
    Handle Detach() noexcept { return std::exchange(FHandle, nullptr); }

private:
    Handle FHandle = nullptr;
};

struct QUORDA_API TODBCConnectionTraits {
    using Handle = SQLHDBC;
    static constexpr const char* FreeCall = "SQLFreeConnect";
    static SQLRETURN Free(SQLHDBC handle) noexcept;
};

struct QUORDA_API TODBCStatementTraits {
    using Handle = SQLHSTMT;
    static constexpr const char* FreeCall = "SQLFreeStmt(SQL_DROP)";
    static SQLRETURN Free(SQLHSTMT handle) noexcept;
};

using TODBCConnectionHandle = TODBCHandle<TODBCConnectionTraits>;
using TODBCStatementHandle = TODBCHandle<TODBCStatementTraits>;

} // namespace quorda
