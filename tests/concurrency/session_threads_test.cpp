// Databases created, named, opened and freed on several threads at once: the session's list of
// databases is shared by all of them.

#include "concurrency_support.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/session.h"
#include "quorda/rtl/exception.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <quorda_test/environment.h>
#include <quorda_test/profiles.h>
#include <string>

namespace quorda {
namespace {

class SessionThreads : public quorda_test::ProfileTest {};

TEST_P(SessionThreads, DatabasesComeAndGoOnTwoThreads) {
    const std::string shared = quorda_test::UniqueTableName("shared_name");
    std::atomic<int> sharedHolds{0};
    auto work = [&](int Thread) {
        for (int i = 0; i < 60; ++i) {
            auto db = std::make_unique<TODBCDatabase>(nullptr);
            const std::string own = shared + "_" + std::to_string(Thread) + "_" + std::to_string(i);
            db->SetDatabaseName(own);
            db->SetDriverConnectOption(dcoDriverNoPrompt);
            db->SetConnectStr(Profile.ConnectionString);
            db->Open();
            if (ODBCSession()->FindDatabase(own) != db.get()) {
                throw std::runtime_error("the session lost " + own);
            }
            // One name for both threads: whoever holds it keeps it until giving it back.
            try {
                db->Close();
                db->SetDatabaseName(shared);
                ++sharedHolds;
                if (ODBCSession()->FindDatabase(shared) != db.get()) {
                    throw std::runtime_error("two databases named " + shared);
                }
            } catch (const EDatabaseError&) {
                // The other thread holds it.
            }
            db.reset();
        }
    };
    testing::RunThreads({[&] { work(0); }, [&] { work(1); }}, std::chrono::seconds(120 * testing::kSlowdown));
    EXPECT_GT(sharedHolds.load(), 0);
    EXPECT_EQ(ODBCSession()->FindDatabase(shared), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Drivers, SessionThreads, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda
