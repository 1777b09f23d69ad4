#include "entity_test_support.h"
#include "quorda/rtl/reg_ini_file.h"
#include "quorda_test/config_home.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <tuple>

namespace quorda {
namespace {

namespace fs = std::filesystem;
using entitytest::TOrdersEntity;
using namespace testing_support;

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
