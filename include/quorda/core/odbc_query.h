#pragma once

#include "quorda/core/odbc_dataset.h"

#include <string>

namespace quorda {

// The query component: an ODBC dataset whose SQL text, parameters, cursor settings and dataset
// events are published to the designer and to form streaming.
class QUORDA_API TODBCQuery : public TODBCDataSet {
public:
    explicit TODBCQuery(TComponent* AOwner) : TODBCDataSet(AOwner) {}
    // A query without owner on Database with the SQL text (its :name parameters ready to set).
    TODBCQuery(TODBCDatabase& Database, const std::string& SQLText);
    std::string ClassName() const override { return "TODBCQuery"; }
};

} // namespace quorda
