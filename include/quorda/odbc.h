#pragma once

// The ODBC call layer: handle and length types, the return-code test, diagnostics, handles and the
// call check.
#include "quorda/odbc/odbc_check.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/odbc/odbc_handle.h"
#include "quorda/odbc/odbc_types.h"
