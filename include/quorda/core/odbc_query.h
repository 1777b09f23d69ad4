#pragma once

#include "quorda/core/odbc_dataset.h"

namespace quorda {

// The query component: an ODBC dataset whose SQL text, parameters, cursor settings and dataset
// events are published to the designer and to form streaming.
class QUORDA_API TODBCQuery : public TODBCDataSet {
public:
    explicit TODBCQuery(TComponent* AOwner) : TODBCDataSet(AOwner) {}
    std::string ClassName() const override { return "TODBCQuery"; }
};

} // namespace quorda
