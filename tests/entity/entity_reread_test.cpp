#include "entity_test_support.h"

#include <gtest/gtest.h>
#include <memory>
#include <sstream>

namespace quorda {
namespace {

using entitytest::TTestEntity;
using TEntities = std::vector<std::unique_ptr<TTestEntity>>;

// The registry as "name:index" entries, the index being the entity's position in Entities (the
// registry may hold entities of other tests only when those leak, which is a failure too).
std::string Registry(const TEntities& Entities) {
    std::string Result;
    const TStringList& Open = lstOpenEntity();
    for (int I = 0; I < Open.Count(); ++I) {
        std::string Index = "?";
        for (std::size_t J = 0; J < Entities.size(); ++J) {
            if (Open.Objects(I) == Entities[J].get()) {
                Index = std::to_string(J);
            }
        }
        Result += (I > 0 ? " " : "") + Open[I] + ":" + Index;
    }
    return Result;
}

// Entities from words of a name, "+" or "-" for the answer of CheckUpdate and "*" for an entity
// already marked ("a+ a-* -": two a, the second marked, and one unnamed); the others are undecided,
// as after opening.
TEntities Make(const std::string& Words) {
    TEntities Entities;
    std::istringstream In(Words);
    for (std::string Word; In >> Word;) {
        const bool Marked = Word.back() == '*';
        if (Marked) {
            Word.pop_back();
        }
        Entities.push_back(
            std::make_unique<TTestEntity>(Word.substr(0, Word.size() - 1), Word.back() == '+'));
        Entities.back()->SetFlgReread(Marked);
    }
    return Entities;
}

// Each entity's CheckUpdate calls and its reread mark ("x" marked, "." not): "1x0x" for two entities.
std::string State(const TEntities& Entities) {
    std::string Result;
    for (const auto& Entity : Entities) {
        Result += std::to_string(Entity->CheckUpdateCalls) + (Entity->flgReread() ? 'x' : '.');
    }
    return Result;
}

TEST(EntityReread, RegistryWritersMarkingAndTheDecisionPass) {
    TEntities Entities = Make("A- -");
    EXPECT_EQ(Registry(Entities), "A:0 :1");
    Entities[1]->SetviewEntity("B");
    EXPECT_EQ(Registry(Entities), "A:0 B:1");
    Entities[0].reset();
    EXPECT_EQ(Registry(Entities), "B:1");
    // A write through the second of two ORDERS marks both and makes the writer the group's leader; the
    // next pass asks neither.
    Entities = Make("ORDERS+ X- ORDERS+");
    SetUpdateEntity("ORDERS", Entities[2].get());
    EXPECT_EQ(State(Entities), "0x0.0x");
    EXPECT_EQ(Registry(Entities), "ORDERS:2 X:1 ORDERS:0");
    StartRereadAllUpdate();
    EXPECT_EQ(State(Entities), "0x1.0x");

    // Opening the first again makes it the leader without marking anything.
    Entities[0]->SetFlgReread(false);
    FirstNumber("ORDERS", Entities[0].get());
    EXPECT_EQ(Registry(Entities), "ORDERS:0 X:1 ORDERS:2");
    EXPECT_EQ(State(Entities), "0.1.0x");

    SetRereadFlag("ORDERS");
    EXPECT_EQ(State(Entities), "0x1.0x");
    // Marking looks for the group under the upper-cased name: only upper-case names move.
    // SetUpdateEntity compares the name as given and moves the writer whatever its case.
    for (const auto& [Name, Expected] : {std::pair{"ORDERS", "ORDERS:1 ORDERS:0"},
                                         {"orders", "orders:0 orders:1"},
                                         {"Orders", "Orders:0 Orders:1"}}) {
        Entities = Make(std::string(Name) + "- " + Name + "-");
        Entities[1]->SetFlgReread(true);
        EXPECT_EQ(Registry(Entities), Expected);
    }
    Entities = Make("orders- orders-");
    SetUpdateEntity("orders", Entities[1].get());
    EXPECT_EQ(Registry(Entities), "orders:1 orders:0");
    EXPECT_EQ(State(Entities), "0x0x");
    // Each run of consecutive undecided namesakes is decided once, by its first member; marked
    // entities and unnamed ones are skipped and do not end a run. Upper-case names are exchanged while
    // the pass marks them; each member is still decided once.
    for (const auto& [Words, Expected] : {std::pair{"a+ a- a-", "1x0x0x"},
                                          {"A+ A- A-", "1x0x0x"},
                                          {"a- a+", "1.0."},
                                          {"a+ a- b- a-", "1x0x1.1."},
                                          {"+ a-", "0.1."},
                                          {"a+ a-* a-", "1x0x0x"},
                                          {"a-* a-*", "0x0x"}}) {
        Entities = Make(Words);
        StartRereadAllUpdate();
        EXPECT_EQ(State(Entities), Expected) << Words;
    }
}

// The close procedure runs for the last entity of a name only, and never at design time. Without a
// connection the call fails, and the failure reaches the application instead of the destructor's caller.
TEST(EntityReread, CloseProcedureRunsForTheLastOfItsName) {
    entitytest::TShownErrors Errors;
    TEntities Entities = Make("ORDERS- ORDERS- ORDERS-");
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
