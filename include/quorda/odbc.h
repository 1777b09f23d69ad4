#pragma once

// The ODBC call layer: declarations, the return-code test, diagnostics, handles and the call check.
#include "quorda/odbc/odbc_api.h"
#include "quorda/odbc/odbc_check.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/odbc/odbc_handle.h"
