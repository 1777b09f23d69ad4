// Compiled by the header_hygiene test: every public header, as a user's file includes them, leaves
// the ODBC and fmt names free.
#include "all_public_headers.h"

#if defined(SQL_SUCCESS) || defined(SQL_NTS) || defined(ODBCVER) || defined(SQL_API)
#error "an ODBC macro is visible through the public headers"
#endif
#ifdef FMT_VERSION
#error "fmt is visible through the public headers"
#endif

// Each declaration fails to compile when a header already declared the name at global scope (the
// driver manager's typedefs, fmt's namespace): the user's own declarations must stay possible.
int DWORD = 0;
int BOOL = 0;
int HWND = 0;
int SQLHSTMT = 0;
int SQLLEN = 0;
int SQLRETURN = 0;
int fmt = 0;
