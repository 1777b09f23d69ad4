#pragma once

// Shared connections: a pool of connections and queries that lock the one they use.
#include "quorda/multidb/multi_databases.h"
#include "quorda/multidb/multi_odbc_database.h"
#include "quorda/multidb/odbc_multi_query.h"
