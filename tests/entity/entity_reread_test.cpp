#include "entity_test_support.h"

#include <gtest/gtest.h>
#include <memory>

namespace quorda {
namespace {

using entitytest::TTestEntity;
using TEntities = std::vector<std::unique_ptr<TTestEntity>>;

// The registry as "name:index" entries, the index being the entity's position in Entities (the
// registry may hold entities of other tests only when those leak, which is a failure too).
std::vector<std::string> Registry(const TEntities& Entities) {
    std::vector<std::string> Result;
    const TStringList& Open = lstOpenEntity();
    for (int I = 0; I < Open.Count(); ++I) {
        std::string Index = "?";
        for (std::size_t J = 0; J < Entities.size(); ++J) {
            if (Open.Objects(I) == Entities[J].get()) {
                Index = std::to_string(J);
            }
        }
        Result.push_back(Open[I] + ":" + Index);
    }
    return Result;
}

TEntities Make(const std::vector<std::pair<const char*, bool>>& NamesAndAnswers) {
    TEntities Entities;
    for (const auto& [Name, Answer] : NamesAndAnswers) {
        Entities.push_back(std::make_unique<TTestEntity>(Name, Answer));
        // Undecided, as after opening.
        Entities.back()->SetFlgReread(false);
    }
    return Entities;
}

std::vector<int> Calls(const TEntities& Entities) {
    std::vector<int> Result;
    for (const auto& Entity : Entities) {
        Result.push_back(Entity->CheckUpdateCalls);
    }
    return Result;
}

std::vector<bool> Flags(const TEntities& Entities) {
    std::vector<bool> Result;
    for (const auto& Entity : Entities) {
        Result.push_back(Entity->flgReread());
    }
    return Result;
}

TEST(EntityReread, RegistryFollowsNamesAndLifetimes) {
    TEntities Entities = Make({{"A", false}, {"", false}});
    EXPECT_EQ(Registry(Entities), (std::vector<std::string>{"A:0", ":1"}));
    Entities[1]->SetviewEntity("B");
    EXPECT_EQ(Registry(Entities), (std::vector<std::string>{"A:0", "B:1"}));
    Entities[0].reset();
    EXPECT_EQ(Registry(Entities), (std::vector<std::string>{"B:1"}));
}

// Each run of consecutive undecided namesakes is decided once, by its first member; marked
// entities and unnamed ones are skipped and do not end a run.
TEST(EntityReread, DecisionPassAsksOncePerRun) {
    const struct {
        const char* Name;
        std::vector<std::pair<const char*, bool>> Entities;
        std::vector<int> Marked;
        std::vector<int> ExpectedCalls;
        std::vector<bool> ExpectedFlags;
    } Cases[] = {
        {"three undecided A", {{"a", true}, {"a", false}, {"a", false}}, {}, {1, 0, 0}, {true, true, true}},
        // Upper-case names are exchanged while the pass marks them; each member is still decided once.
        {"three undecided A, upper case",
         {{"A", true}, {"A", false}, {"A", false}},
         {},
         {1, 0, 0},
         {true, true, true}},
        {"no answer spreads", {{"a", false}, {"a", true}}, {}, {1, 0}, {false, false}},
        {"groups and a new run of A",
         {{"a", true}, {"a", false}, {"b", false}, {"a", false}},
         {},
         {1, 0, 1, 1},
         {true, true, false, false}},
        {"unnamed never asked", {{"", true}, {"a", false}}, {}, {0, 1}, {false, false}},
        {"a marked member is skipped inside a run",
         {{"a", true}, {"a", false}, {"a", false}},
         {1},
         {1, 0, 0},
         {true, true, true}},
        {"marked entities keep their mark", {{"a", false}, {"a", false}}, {0, 1}, {0, 0}, {true, true}},
    };
    for (const auto& Case : Cases) {
        SCOPED_TRACE(Case.Name);
        TEntities Entities = Make(Case.Entities);
        for (const int Index : Case.Marked) {
            Entities[Index]->SetFlgReread(true);
        }
        StartRereadAllUpdate();
        EXPECT_EQ(Calls(Entities), Case.ExpectedCalls);
        EXPECT_EQ(Flags(Entities), Case.ExpectedFlags);
    }
}

// A write through the second of two ORDERS marks both and makes the writer the group's leader; the
// next pass asks neither.
TEST(EntityReread, WriterMarksNamesakesAndLeads) {
    TEntities Entities = Make({{"ORDERS", true}, {"X", false}, {"ORDERS", true}});
    SetUpdateEntity("ORDERS", Entities[2].get());
    EXPECT_EQ(Flags(Entities), (std::vector<bool>{true, false, true}));
    EXPECT_EQ(Registry(Entities), (std::vector<std::string>{"ORDERS:2", "X:1", "ORDERS:0"}));
    StartRereadAllUpdate();
    EXPECT_EQ(Calls(Entities), (std::vector<int>{0, 1, 0}));

    // Opening the first again makes it the leader without marking anything.
    Entities[0]->SetFlgReread(false);
    FirstNumber("ORDERS", Entities[0].get());
    EXPECT_EQ(Registry(Entities), (std::vector<std::string>{"ORDERS:0", "X:1", "ORDERS:2"}));
    EXPECT_EQ(Flags(Entities), (std::vector<bool>{false, false, true}));

    SetRereadFlag("ORDERS");
    EXPECT_EQ(Flags(Entities), (std::vector<bool>{true, false, true}));
}

// Marking looks for the group under the upper-cased name: only upper-case names move.
TEST(EntityReread, MarkingMovesOnlyUpperCaseNames) {
    const struct {
        const char* Name;
        std::vector<std::string> Expected;
    } Cases[] = {
        {"ORDERS", {"ORDERS:1", "ORDERS:0"}},
        {"orders", {"orders:0", "orders:1"}},
        {"Orders", {"Orders:0", "Orders:1"}},
    };
    for (const auto& Case : Cases) {
        SCOPED_TRACE(Case.Name);
        TEntities Entities = Make({{Case.Name, false}, {Case.Name, false}});
        Entities[1]->SetFlgReread(true);
        EXPECT_EQ(Registry(Entities), Case.Expected);
    }
    // SetUpdateEntity compares the name as given and moves the writer whatever its case.
    TEntities Lower = Make({{"orders", false}, {"orders", false}});
    SetUpdateEntity("orders", Lower[1].get());
    EXPECT_EQ(Registry(Lower), (std::vector<std::string>{"orders:1", "orders:0"}));
    EXPECT_EQ(Flags(Lower), (std::vector<bool>{true, true}));
}

// The close procedure runs for the last entity of a name only, and never at design time. Without a
// connection the call fails, and the failure reaches the application instead of the destructor's caller.
TEST(EntityReread, CloseProcedureRunsForTheLastOfItsName) {
    entitytest::TShownErrors Errors;
    TEntities Entities = Make({{"ORDERS", false}, {"ORDERS", false}, {"ORDERS", false}});
    for (const auto& Entity : Entities) {
        Entity->SetSP(fetClose, "close_orders");
    }
    Entities[2]->SetDesigning(true);
    Entities[2].reset();
    Entities[0].reset();
    EXPECT_TRUE(Errors.Shown.empty());
    Entities[1].reset();
    EXPECT_EQ(Errors.Shown.size(), 1u);
}

} // namespace
} // namespace quorda
