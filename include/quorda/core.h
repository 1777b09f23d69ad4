#pragma once

// Session, database connection, parameters and the statement engine.
#include "quorda/core/database_client.h"
#include "quorda/core/odbc_blob_stream.h"
#include "quorda/core/odbc_connect.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_dataset.h"
#include "quorda/core/odbc_params.h"
#include "quorda/core/odbc_query.h"
#include "quorda/core/odbc_transaction.h"
#include "quorda/core/param_markers.h"
#include "quorda/core/session.h"
