// The fault driver's script language, parsed and decided without a driver manager.
#include "fault_script.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace quorda_fault {
namespace {

std::vector<Effect> Decisions(Script& script, const char* call, int count) {
    std::vector<Effect> effects;
    for (int i = 0; i < count; ++i) {
        effects.push_back(script.Decide(call).What);
    }
    return effects;
}

TEST(FaultScript, SelectorsCountCallsPerFunction) {
    auto script = Script::Parse("fail:SQLFetch@2|info:SQLFetch@4+|nodata:SQLDriverConnect|fail:SQLFetch");
    // The first rule that matches a call decides it.
    EXPECT_EQ(Decisions(script, "SQLFetch", 5),
              (std::vector<Effect>{Effect::Fail, Effect::Fail, Effect::Fail, Effect::Info, Effect::Info}));
    auto counted = Script::Parse("fail:SQLFetch@2|info:SQLFetch@4+");
    EXPECT_EQ(counted.Decide("SQLExecute").What, Effect::None); // other calls do not advance the count
    EXPECT_EQ(Decisions(counted, "SQLFetch", 5),
              (std::vector<Effect>{Effect::None, Effect::Fail, Effect::None, Effect::Info, Effect::Info}));
    EXPECT_EQ(counted.Decide("SQLDriverConnect").What, Effect::None);
}

TEST(FaultScript, MalformedRulesAreRejected) {
    for (const char* text : {"fail", "fail:", "diag:SQLFetch:08001", "rows:many", "cursor:dynamic",
                             "rowset:0", "frobnicate:1", "fail:SQLFetch@0", "result:id", "row:^x:ab"}) {
        EXPECT_THROW(Script::Parse(text), std::invalid_argument) << text;
    }
    EXPECT_NO_THROW(Script::Parse(" | fail:SQLFetch | "));
}

} // namespace
} // namespace quorda_fault
