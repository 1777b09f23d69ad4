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

TEST(FaultScript, DiagnosticsKeepOrderEscapesAndDefaults) {
    auto script = Script::Parse("fail:SQLPrepare|diag:SQLPrepare:42000/5/a%7Cb/c%3Bd|diag:SQLPrepare:01000/0/"
                                "two|info:SQLExecute|fail:SQLRowCount|diag:SQLRowCount:-");
    auto prepare = script.Decide("SQLPrepare");
    ASSERT_EQ(prepare.Diags.size(), 2u);
    EXPECT_EQ(prepare.Diags[0].State, "42000");
    EXPECT_EQ(prepare.Diags[0].Native, 5);
    EXPECT_EQ(prepare.Diags[0].Message, "a|b/c;d");
    EXPECT_EQ(prepare.Diags[1].Message, "two");

    auto execute = script.Decide("SQLExecute");
    ASSERT_EQ(execute.Diags.size(), 1u);
    EXPECT_EQ(execute.Diags[0].State, "01000");
    EXPECT_EQ(execute.Diags[0].Message, "[Quorda][Fault] SQLExecute returned info");
    EXPECT_TRUE(script.Decide("SQLRowCount").Diags.empty());
}

TEST(FaultScript, ResultValuesNullsRepeatsAndGeneratedRows) {
    auto script = Script::Parse("row:%2C,~,^5:ab|result:id/4,name/12/20/0/orders,day/9");
    ASSERT_EQ(script.Columns().size(), 3u);
    EXPECT_EQ(script.Columns()[1].Size, 20);
    EXPECT_EQ(script.Columns()[1].Table, "orders");
    EXPECT_EQ(script.Columns()[2].Size, 10); // the default size of a date
    ASSERT_EQ(script.Rows().size(), 1u);
    EXPECT_EQ(script.Rows()[0], (std::vector<Value>{",", std::nullopt, "ababa"}));

    auto generated = Script::Parse("rows:2|result:id/4,name/12,day/9");
    EXPECT_EQ(generated.Rows(),
              (std::vector<std::vector<Value>>{{"1", "r1", "2001-02-03"}, {"2", "r2", "2001-02-03"}}));
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
