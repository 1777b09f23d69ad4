#include "driver_quirks_p.h"
#include "quorda/odbc/odbc_error.h"

#include <array>
#include <string_view>

namespace quorda {

TDriverQuirks ProbeDriverQuirks(SQLHDBC Connection) {
    TDriverQuirks quirks;
    SQLUINTEGER rowCounts = 0;
    quirks.ParamArrays = quorda::RetCodeIsSuccessful(
        SQLGetInfo(Connection, SQL_PARAM_ARRAY_ROW_COUNTS, &rowCounts, sizeof rowCounts, nullptr));
    std::array<SQLCHAR, 128> name{};
    SQLSMALLINT length = 0;
    if (quorda::RetCodeIsSuccessful(SQLGetInfo(Connection, SQL_DRIVER_NAME, name.data(),
                                               static_cast<SQLSMALLINT>(name.size()), &length))) {
        const std::string_view driver(reinterpret_cast<const char*>(name.data()));
        quirks.ParamArraysSlowerThanSingleExecutes = driver.find("sqlite3odbc") != std::string_view::npos;
    }
    return quirks;
}

} // namespace quorda
