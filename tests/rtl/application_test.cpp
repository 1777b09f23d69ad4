#include "quorda/rtl/application.h"
#include "quorda/rtl/critical_section.h"
#include "quorda/rtl/exception.h"
#include "quorda/rtl/messages.h"
#include "rtl_test_support.h"

#include <future>
#include <gtest/gtest.h>
#include <string_view>
#include <vector>

namespace quorda {
namespace {

TEST(Application, HandlersCursorGuardsCriticalSectionsAndTheMessageTable) {
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
    std::vector<TCursor> seen;
    TCursorHook previousHook = Screen::SetCursorHook([&](TCursor c) { seen.push_back(c); });
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
    Screen::SetCursorHook(previousHook);
    TCriticalSection section;
    // Another thread tries to enter, and leaves at once when it could.
    const auto otherThreadEnters = [&] {
        return std::async(std::launch::async, [&] { return section.TryEnter() && (section.Leave(), true); })
            .get();
    };
    {
        TCriticalSectionGuard outer(section);
        EXPECT_TRUE(section.TryEnter()); // same thread enters again
        section.Leave();
        EXPECT_FALSE(otherThreadEnters());
    }
    EXPECT_TRUE(otherThreadEnters());
    EXPECT_EQ(LoadStr(SODBCParameterNotFound), "ODBC Parameter %s not found");
    EXPECT_EQ(MessageName(SODBCDatabaseExists), "SODBCDatabaseExists");
    EXPECT_EQ(FormatMessage(LoadStr(SODBCInternalComponentError), 816),
              "ODBC Internal component error 330. Contact programmers team.");
    // The unnamed twin of SDataTypes carries the same list.
    EXPECT_EQ(LoadStr(SDataTypesEntity), LoadStr(SDataTypes));
    EXPECT_TRUE(MessageName(SDataTypesEntity).empty());
    // The library's own refusals sit below the classic table.
    EXPECT_EQ(FormatMessage(LoadStr(SODBCTooManyParams), 32768, 32767),
              "ODBC The statement has 32768 parameters, more than the 32767 the driver takes");
    EXPECT_EQ(MessageName(SODBCConnectInputNul), "SODBCConnectInputNul");
    for (int id = 65513; id <= 65519; ++id) {
        EXPECT_TRUE(LoadStr(id).empty()) << id;
        EXPECT_FALSE(SetMessageText(id, "x")) << id;
    }
    EXPECT_TRUE(LoadStr(1).empty());
    // A reset brings the built-in text back.
    ASSERT_TRUE(SetMessageText(SODBCTextTrue, "Wahr"));
    ResetMessageTexts();
    EXPECT_EQ(LoadStr(SODBCTextTrue), "True");
    EXPECT_EQ(
        testing_support::MessageOf<EDatabaseError>([] { DatabaseErrorFmt("name %s", std::string("A")); }),
        "name A");
    // A format the arguments do not fit keeps its raw text instead of failing differently.
    EXPECT_EQ(FormatMessage("value %d", std::string("text")), "value %d");
    // The arguments travel to the compiled formatter packed; each keeps the width and signedness
    // that its conversion depends on, as a direct printf call would see it.
    EXPECT_EQ(FormatMessage("%x|%d|%u", -5, -5, 7u), "fffffffb|-5|7");
    EXPECT_EQ(FormatMessage("%x %lx", -5L, 5LL), "fffffffffffffffb 5");
    EXPECT_EQ(FormatMessage("%d %d", static_cast<short>(-3), static_cast<unsigned char>(250)), "-3 250");
    EXPECT_EQ(FormatMessage("%c%c %d %s", 'a', 66, true, false), "aB 1 false");
    EXPECT_EQ(FormatMessage("%f %g %s", 1.5, 2.25f, std::string_view("view")), "1.500000 2.25 view");
    EXPECT_EQ(FormatMessage("[%s]", static_cast<const char*>(nullptr)), "[(null)]");
}

} // namespace
} // namespace quorda
