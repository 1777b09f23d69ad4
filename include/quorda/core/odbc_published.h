#pragma once

#include "quorda/rtl/published.h"

namespace quorda {

// The published properties of the database and of the query (for descendants of the dataset that
// publish the same list and more).
QUORDA_API const TPropertyList& ODBCDatabaseProperties();
QUORDA_API const TPropertyList& ODBCQueryProperties();

// Registers TODBCDatabase and TODBCQuery with the component reader. A program that uses the database
// class has them registered at start; one that only loads modules calls this first.
QUORDA_API void RegisterODBCClasses();

} // namespace quorda
