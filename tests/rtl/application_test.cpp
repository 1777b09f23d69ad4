#include "quorda/rtl/application.h"
#include "quorda/rtl/critical_section.h"
#include "quorda/rtl/exception.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace quorda {
namespace {

TEST(Application, ExceptionHandlerIsReplaceableAndRestorable) {
    std::vector<std::string> shown;
    TExceptionHandler previous =
        Application::SetExceptionHandler([&](const std::exception& e) { shown.push_back(e.what()); });
    EXPECT_FALSE(previous); // the default is no handler: messages go to stderr
    Application::HandleException(EDatabaseError("boom"));
    EXPECT_EQ(shown, std::vector<std::string>{"boom"});
    TExceptionHandler mine = Application::SetExceptionHandler(previous);
    ASSERT_TRUE(mine);
    ::testing::internal::CaptureStderr();
    Application::HandleException(EDatabaseError("to stderr"));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "to stderr\n");
    EXPECT_EQ(shown.size(), 1u);
}

TEST(Application, CursorGuardsNestAndTheHookHearsOnlyChanges) {
    std::vector<TCursor> seen;
    TCursorHook previous = Screen::SetCursorHook([&](TCursor c) { seen.push_back(c); });
    ASSERT_EQ(Screen::Cursor(), crDefault);
    {
        TScreenCursorGuard wait;
        EXPECT_EQ(Screen::Cursor(), crHourGlass);
        {
            TScreenCursorGuard sql(crSQLWait);
            EXPECT_EQ(Screen::Cursor(), crSQLWait);
            TScreenCursorGuard same(crSQLWait);
        }
        EXPECT_EQ(Screen::Cursor(), crHourGlass);
    }
    EXPECT_EQ(Screen::Cursor(), crDefault);
    EXPECT_EQ(seen, (std::vector<TCursor>{crHourGlass, crSQLWait, crHourGlass, crDefault}));

    // A hook that throws while a guard restores does not escape the destructor.
    Screen::SetCursorHook([](TCursor c) {
        if (c == crDefault) {
            throw Exception("hook failed");
        }
    });
    EXPECT_NO_THROW({ TScreenCursorGuard guard(crArrow); });
    EXPECT_EQ(Screen::Cursor(), crDefault);
    Screen::SetCursorHook(previous);
}

TEST(CriticalSection, IsRecursiveForItsOwnerAndExclusiveForOthers) {
    TCriticalSection section;
    TCriticalSectionGuard outer(section);
    EXPECT_TRUE(section.TryEnter()); // same thread enters again
    section.Leave();
    std::atomic<bool> otherGotIt{true};
    std::thread([&] { otherGotIt = section.TryEnter(); }).join();
    EXPECT_FALSE(otherGotIt);

    TCriticalSection counterLock;
    long counter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 10000; ++i) {
                TCriticalSectionGuard guard(counterLock);
                ++counter;
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(counter, 40000);
}

} // namespace
} // namespace quorda
