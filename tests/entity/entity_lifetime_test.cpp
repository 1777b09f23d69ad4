// Entity lifetimes: the registry of open entities and its reread marks, the close procedure, and
// the settings read at creation and written at destruction.
#include "entity_test_support.h"
#include "quorda/rtl/reg_ini_file.h"
#include "quorda_test/config_home.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <tuple>

namespace quorda {
namespace {

namespace fs = std::filesystem;
using entitytest::TOrdersEntity;
using entitytest::TTestEntity;
using namespace testing_support;
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

constexpr char kKeyPath[] = "Software\\Quorda Tests\\Entities";

// Destruction erases the entity's section and writes the current values in its place: keys of
// removed fields and values cleared since never survive, values read and left stay, empty strings
// are not kept, numbers and dates are written as their text, other sections stay. Without a section name
// nothing is read or written; without SaveFindIni and SaveFilterIni only the options are.
TEST(EntitySettings, DestructionLeavesTheCurrentValuesReadingKeepsTheAbsentMarkerAndFailuresAreShown) {
    TTemporaryConfigHome Home;
    EntityINIFileName = kKeyPath;
    struct TForget {
        ~TForget() { EntityINIFileName.clear(); }
    } Forget;
    const fs::path SettingsPath = TRegIniFile::PathOfKey(kKeyPath);
    const TDateTime Date = EncodeDateTime(2024, 2, 29, 13, 5, 0, 0);
    const struct {
        const char* Name;
        const char* ViewFull;
        std::string Before; // empty: no settings file
        std::function<void(TOrdersEntity&)> Use;
        std::string After; // empty: no settings file
    } Cases[] = {
        {"replaced", "orders",
         "[other]\nk=v\n[orders]\ngone-find=x\nid-find=5\ntotal-filter=9\nFindSensitive=1\nFindOption=2\n"
         "FindDown=1\n",
         [&](TOrdersEntity& Orders) {
             EXPECT_EQ(Orders.FieldByName("id")->findStr(), Variant("5"));
             EXPECT_EQ(std::tuple(Orders.FindSensitive(), Orders.FindOption(), Orders.FindDown()),
                       std::tuple(true, efoSubConCur, dfPrior));
             Orders.SetFieldFind("id", NullValue);
             Orders.SetFieldFind("custname", "A");
             Orders.SetFieldFilter("customer", 42);
             Orders.SetFieldFind("total", Variant::FromDateTime(Date));
             Orders.SetFieldFilter("custname", "");
         },
         "[other]\nk=v\n[orders]\ncustname-find=A\ncustomer-filter=42\ntotal-find=" + DateTimeToStr(Date) +
             "\ntotal-filter=9\nFindSensitive=1\nFindOption=2\nFindDown=1\n"},
        {"no section name, no file", "", "",
         [](TOrdersEntity& Orders) {
             Orders.SetFieldFind("id", "1");
             Orders.SetFindSensitive(true);
         },
         ""},
        {"no section name", "", "[]\nid-find=1\nFindSensitive=1\n",
         [](TOrdersEntity& Orders) {
             EXPECT_TRUE(Orders.FieldByName("id")->findStr().IsNull());
             EXPECT_FALSE(Orders.FindSensitive());
         },
         "[]\nid-find=1\nFindSensitive=1\n"},
        {"save flags off", "orders", "",
         [](TOrdersEntity& Orders) {
             Orders.SetSaveFindIni(false);
             Orders.SetSaveFilterIni(false);
             Orders.SetFieldFind("id", "1");
             Orders.SetFieldFilter("id", "2");
             Orders.SetFindDown(dfPrior);
         },
         "[orders]\nFindSensitive=0\nFindOption=1\nFindDown=1\n"},
        // Damaged text is the settings file's own business; options no enumerator has read as defaults.
        {"options out of range", "orders", "[orders]\nFindOption=7\nFindDown=-1\n",
         [](TOrdersEntity& Orders) {
             EXPECT_EQ(std::tuple(Orders.FindOption(), Orders.FindDown()),
                       std::tuple(efoFirstConCur, dfNext));
         },
         "[orders]\nFindSensitive=0\nFindOption=1\nFindDown=0\n"}};
    for (const auto& Case : Cases) {
        SCOPED_TRACE(Case.Name);
        fs::remove(SettingsPath);
        if (!Case.Before.empty()) {
            WriteFile(SettingsPath, Case.Before);
        }
        {
            TOrdersEntity Orders(Case.ViewFull);
            Case.Use(Orders);
        }
        EXPECT_EQ(fs::exists(SettingsPath), !Case.After.empty());
        EXPECT_EQ(ReadFile(SettingsPath), Case.After);
    }
    // A missing find key gives Null, a missing filter key leaves the absent marker in the filter slot:
    // the filter is cleared only when the find value is still the marker.
    WriteFile(SettingsPath, "[orders]\nid-find=7\ncustname-filter=B\n");
    const Variant Marker(EntityAbsentMarker);
    const struct {
        const char* Field;
        bool SaveFind;
        bool SaveFilter;
        Variant Find;
        Variant Filter;
    } Reads[] = {{"customer", true, true, NullValue, Marker},
                 {"id", true, true, Variant("7"), Marker},
                 {"custname", true, true, NullValue, Variant("B")},
                 {"id", false, true, NullValue, Marker},
                 {"custname", true, false, NullValue, NullValue}};
    for (const auto& Read : Reads) {
        SCOPED_TRACE(std::string(Read.Field) + (Read.SaveFind ? " find" : "") +
                     (Read.SaveFilter ? " filter" : ""));
        TOrdersEntity Orders;
        Orders.SetViewFull("orders");
        Orders.SetSaveFindIni(Read.SaveFind);
        Orders.SetSaveFilterIni(Read.SaveFilter);
        TFieldItem* Field = Orders.FieldByName(Read.Field);
        Orders.ReadFromINIField(Field, Read.Field);
        EXPECT_EQ(Field->findStr(), Read.Find);
        EXPECT_EQ(Field->filterStr(), Read.Filter);
        Orders.SetViewFull({});
    }
    // A failed write at destruction is shown, not thrown.
    const std::string TooLarge = "[orders]\n" + std::string(17 * 1024 * 1024, ';');
    WriteFile(SettingsPath, TooLarge);
    entitytest::TShownErrors Errors;
    {
        TOrdersEntity Orders("orders");
        Orders.SetFieldFind("id", "1");
    }
    ASSERT_EQ(Errors.Shown.size(), 1u);
    EXPECT_NE(Errors.Shown[0].find("Cannot write settings file"), std::string::npos);
    EXPECT_EQ(fs::file_size(SettingsPath), TooLarge.size());
}

} // namespace
} // namespace quorda
