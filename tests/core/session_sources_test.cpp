#include "quorda/core/session.h"
#include "quorda/rtl/strings.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <quorda_test/environment.h>
#include <string>

namespace quorda {
namespace {

// The private configuration of the build tree (docs/testing.md) registers the data sources
// QuordaDemo, QuordaTestSQLite and QuordaTestFault, and the drivers SQLite3 first.
TEST(ODBCSessionSources, DataSourcesInTheDriverManagersOrderWithAlignedDescriptionsAndTheFirstDriver) {
    TStringList names, descriptions;
    names.Add("left over");
    ODBCSession()->GetDSNNames(&names, &descriptions);
    ASSERT_EQ(descriptions.Count(), names.Count());
    const int demo = names.IndexOf("QuordaDemo");
    const int shared = names.IndexOf("QuordaTestSQLite");
    ASSERT_GE(demo, 0) << names.Text();
    ASSERT_GE(shared, 0) << names.Text();
    const int fault = names.IndexOf("QuordaTestFault");
    ASSERT_GE(fault, 0);
    EXPECT_LT(demo, shared);
    EXPECT_EQ(names.IndexOf("left over"), -1);
    // The driver manager describes a data source by the name of its driver.
    EXPECT_EQ(descriptions[demo], "SQLite3");
    EXPECT_EQ(descriptions[shared], "SQLite3");
    EXPECT_EQ(descriptions[fault], "QuordaFault");

    TStringList namesOnly;
    ODBCSession()->GetDSNNames(&namesOnly, nullptr);
    EXPECT_EQ(namesOnly.ToVector(), names.ToVector());
    EXPECT_NO_THROW(ODBCSession()->GetDSNNames(nullptr, nullptr));

    // Driver names hold only the first driver and its first attribute.
    TStringList drivers, attributes;
    ODBCSession()->GetDriverNames(&drivers, &attributes);
    EXPECT_EQ(drivers.ToVector(), std::vector<std::string>{"SQLite3"});
    EXPECT_EQ(attributes.ToVector(), std::vector<std::string>{"Description=SQLite3 ODBC driver"});
    EXPECT_NO_THROW(ODBCSession()->GetDriverNames(nullptr, nullptr));
}

TEST(ODBCSessionSources, WithoutAnyDriverTheListsStayEmpty) {
    const auto empty = quorda_test::UniquePath("no-drivers", "d");
    std::filesystem::create_directories(empty);
    // The suite always runs with these set (by ctest or the support library).
    const std::vector<std::pair<const char*, std::string>> settings = {
        {"ODBCSYSINI", empty.string()},
        {"ODBCINSTINI", "odbcinst.ini"},
        {"ODBCINI", (empty / "odbc.ini").string()}};
    std::vector<std::string> saved;
    for (const auto& [name, value] : settings) {
        saved.emplace_back(std::getenv(name));
        ::setenv(name, value.c_str(), 1);
    }
    TStringList names, attributes;
    names.Add("left over");
    ODBCSession()->GetDriverNames(&names, &attributes);
    EXPECT_EQ(names.Count(), 0);
    EXPECT_EQ(attributes.Count(), 0);
    ODBCSession()->GetDSNNames(&names, &attributes);
    EXPECT_EQ(names.Count(), 0);
    for (std::size_t i = 0; i < settings.size(); ++i) {
        ::setenv(settings[i].first, saved[i].c_str(), 1);
    }
    std::filesystem::remove_all(empty);
}

} // namespace
} // namespace quorda
