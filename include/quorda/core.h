#pragma once

// Session, database connection and the statement engine.
#include "quorda/core/database_client.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/session.h"
