#include "quorda/rtl/application.h"
#include "quorda/rtl/critical_section.h"
#include "quorda/rtl/exception.h"

#include <future>
#include <gtest/gtest.h>
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
    const auto otherThreadEnters = [&] {
        return std::async(std::launch::async,
                          [&] {
                              const bool entered = section.TryEnter();
                              if (entered) {
                                  section.Leave();
                              }
                              return entered;
                          })
            .get();
    };
    {
        TCriticalSectionGuard outer(section);
        EXPECT_TRUE(section.TryEnter()); // same thread enters again
        section.Leave();
        EXPECT_FALSE(otherThreadEnters());
    }
    EXPECT_TRUE(otherThreadEnters());
}

} // namespace
} // namespace quorda
