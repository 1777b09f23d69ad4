#pragma once

#include "quorda/entity.h"
#include "rtl_test_support.h"

#include <string>
#include <vector>

namespace quorda::entitytest {

// An entity whose CheckUpdate answers as told and counts how often it was asked.
class TTestEntity : public TEntity {
public:
    explicit TTestEntity(const std::string& ViewEntity = {}, bool Answer = false)
        : TEntity(nullptr), FAnswer(Answer) {
        SetviewEntity(ViewEntity);
    }

    bool CheckUpdate() override {
        ++CheckUpdateCalls;
        return FAnswer;
    }

    int CheckUpdateCalls = 0;

private:
    bool FAnswer;
};

// The orders entity of the documentation: fact table orders, view v_orders, a key, a customer name
// from the view's alias c, a customer number and a total. ViewFull, when given, is set before the
// fields are declared so that they load their saved values.
class TOrdersEntity : public TTestEntity {
public:
    explicit TOrdersEntity(const std::string& ViewFull = {}) {
        SetFactTable("orders");
        SetViewTable("v_orders");
        SetViewFull(ViewFull);
        CreateField("id", "Id", "", 6, true, true, true, false, ftInteger, cnstETPK);
        CreateField("custname", "Customer", "c", 20, true, true, false, true, ftString, cnstETView);
        CreateField("customer", "Customer no", "", 6, true, false, false, false, ftInteger, cnstETField);
        CreateField("total", "Total", "", 10, true, true, false, true, ftFloat, cnstETField);
    }
};

using testing_support::MessageOf;

using testing_support::TShownErrors;

} // namespace quorda::entitytest
