#include "quorda/core/odbc_database.h"
#include "quorda/core/session.h"
#include "quorda/rtl/strings.h"

#include <gtest/gtest.h>
#include <memory>

namespace quorda {
namespace {

// Other tests of the process may leave databases registered; the session is checked relative to
// what was there before.
TEST(ODBCSession, DatabasesRegisterInOrderLeaveWithoutGapsAndAreFoundByExactName) {
    TODBCSession* session = ODBCSession();
    const int before = session->GetDatabaseCount();
    auto first = std::make_unique<TODBCDatabase>(nullptr);
    auto sales = std::make_unique<TODBCDatabase>(nullptr);
    sales->SetDatabaseName("Sales");
    auto unnamed = std::make_unique<TODBCDatabase>(nullptr);
    ASSERT_EQ(session->GetDatabaseCount(), before + 3);
    EXPECT_EQ(session->GetDatabase(before + 1), sales.get());
    EXPECT_EQ(session->FindDatabase("Sales"), sales.get());
    EXPECT_EQ(session->FindDatabase("sales"), nullptr);
    EXPECT_EQ(session->FindDatabase("Sales "), nullptr);
    // Databases left by other tests may be unnamed too; the first unnamed one comes first.
    TODBCDatabase* firstUnnamed = session->FindDatabase("");
    ASSERT_NE(firstUnnamed, nullptr);
    EXPECT_TRUE(firstUnnamed->DatabaseName().empty());
    EXPECT_NE(firstUnnamed, unnamed.get());

    first.reset();
    ASSERT_EQ(session->GetDatabaseCount(), before + 2);
    EXPECT_EQ(session->GetDatabase(before), sales.get());
    EXPECT_THROW(session->GetDatabase(before + 2), Exception);
    EXPECT_EQ(session->GetEnv(), odbcEnv());
}

TEST(ClearLst, FreesEveryItemSkipsNullsAndEmptiesTheList) {
    static int destroyed = 0;
    struct Counted : TObject {
        ~Counted() override { ++destroyed; }
    };
    std::vector<Counted*> list{new Counted, nullptr, new Counted};
    ClearLst(&list);
    EXPECT_EQ(destroyed, 2);
    EXPECT_TRUE(list.empty());
    ClearLst<Counted>(nullptr);
}

} // namespace
} // namespace quorda
