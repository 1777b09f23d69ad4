#include "quorda/odbc/odbc_error.h"

#include "diagnostics_p.h"
#include "odbc/odbc_api_p.h"

#include <cstring>
#include <string_view>
#include <utility>

namespace quorda {

EODBCError::EODBCError(std::string message, SQLHENV henv, SQLHDBC hdbc, SQLHSTMT hstmt,
                       SQLINTEGER nativeError, std::string sqlState, std::string nativeMessage)
    : EDatabaseError(std::move(message)), FHenv(henv), FHdbc(hdbc), FHstmt(hstmt), FNativeError(nativeError),
      FSQLState(std::move(sqlState)), FNativeMessage(std::move(nativeMessage)) {}

namespace detail {
namespace {

// A driver that forgets the terminator must not make us read past the buffer.
template <size_t N>
std::string_view BufferText(const SQLCHAR (&buffer)[N]) {
    const char* text = reinterpret_cast<const char*>(buffer);
    return {text, strnlen(text, N)};
}

// A driver manager always ends the queue; the bound only protects against one that never does.
constexpr int kMaxDiagnosticCalls = 1024;

} // namespace

EODBCError BuildODBCError(const TDiagnosticReader& read, SQLHENV henv, SQLHDBC hdbc, SQLHSTMT hstmt) {
    TDiagnosticBuffers buffers;
    SQLINTEGER nativeError = 0;

    SQLRETURN ret = read(buffers);
    if (buffers.Native != 0) {
        nativeError = buffers.Native;
    }
    std::string states(BufferText(buffers.State));
    std::string text(BufferText(buffers.Message));
    std::string nativeMessage = text;

    // Each appended text carries the states of the records before it; the call that ends the queue
    // appends too, with whatever it left in the buffers.
    for (int calls = 1; ret != SQL_NO_DATA_FOUND && RetCodeIsSuccessful(ret) && calls < kMaxDiagnosticCalls;
         ++calls) {
        ret = read(buffers);
        if (buffers.Native != 0 && nativeError == 0) {
            nativeError = buffers.Native;
            nativeMessage = BufferText(buffers.Message);
        }
        text += ' ';
        text += BufferText(buffers.Message);
        text += " ODBC State = ";
        text += states;
        states += ';';
        states += BufferText(buffers.State);
    }
    return EODBCError(std::move(text), henv, hdbc, hstmt, nativeError, std::move(states),
                      std::move(nativeMessage));
}

} // namespace detail

EODBCError CreateODBCError(SQLHENV henv, SQLHDBC hdbc, SQLHSTMT hstmt) {
    return detail::BuildODBCError(
        [&](detail::TDiagnosticBuffers& b) {
            return SQLError(henv, hdbc, hstmt, b.State, &b.Native, b.Message,
                            static_cast<SQLSMALLINT>(sizeof b.Message), &b.Length);
        },
        henv, hdbc, hstmt);
}

} // namespace quorda
