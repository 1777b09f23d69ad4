#include "quorda/core/odbc_query.h"

namespace quorda {

TODBCQuery::TODBCQuery(TODBCDatabase& Database, const std::string& SQLText) : TODBCDataSet(nullptr) {
    SetODBCDatabase(&Database);
    SQL().SetText(SQLText);
}

} // namespace quorda
