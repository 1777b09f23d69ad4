#include "quorda/core/odbc_published.h"
#include "quorda/ext/odbc_ext_dataset.h"

namespace quorda {

std::string TODBCExtQuery::ClassName() const {
    return "TODBCExtQuery";
}

const TPropertyList& ODBCExtQueryProperties() {
    static const TPropertyList list = TPublished<TODBCExtDataSet>(&ODBCQueryProperties())
                                          .Event("OnUpdateRec")
                                          .Event("OnInsertRec")
                                          .Event("OnDeleteRec")
                                          .Build();
    return list;
}

void RegisterODBCExtClasses() {
    RegisterODBCClasses();
    RegisterClass<TODBCExtQuery>("TODBCExtQuery", ODBCExtQueryProperties());
}

namespace {

const bool kRegistered = [] {
    RegisterODBCExtClasses();
    return true;
}();

} // namespace

} // namespace quorda
