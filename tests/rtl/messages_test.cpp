#include "quorda/rtl/exception.h"
#include "quorda/rtl/messages.h"

#include <gtest/gtest.h>
#include <string_view>

namespace quorda {
namespace {

TEST(MessageTable, TextsAreFoundByIdAndFormatWithTheirPlaceholders) {
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
}

TEST(MessageTable, IdsWithoutMessageAreEmptyAndCannotBeTranslated) {
    for (int id = 65513; id <= 65519; ++id) {
        EXPECT_TRUE(LoadStr(id).empty()) << id;
        EXPECT_FALSE(SetMessageText(id, "x")) << id;
    }
    EXPECT_TRUE(LoadStr(1).empty());

    // A reset brings the built-in text back.
    ASSERT_TRUE(SetMessageText(SODBCTextTrue, "Wahr"));
    ResetMessageTexts();
    EXPECT_EQ(LoadStr(SODBCTextTrue), "True");
}

TEST(DatabaseErrors, RaiseEDatabaseErrorWithTheFormattedText) {
    try {
        DatabaseErrorFmt("name %s", std::string("A"));
        FAIL() << "no exception";
    } catch (const EDatabaseError& e) {
        EXPECT_EQ(e.Message(), "name A");
        EXPECT_STREQ(e.what(), "name A");
    }
    // A format the arguments do not fit keeps its raw text instead of failing differently.
    EXPECT_EQ(FormatMessage("value %d", std::string("text")), "value %d");
}

// The arguments travel to the compiled formatter packed; each keeps the width and signedness that
// its conversion depends on, as a direct printf call would see it.
TEST(DatabaseErrors, FormattedArgumentsKeepTheirOwnTypes) {
    EXPECT_EQ(FormatMessage("%x|%d|%u", -5, -5, 7u), "fffffffb|-5|7");
    EXPECT_EQ(FormatMessage("%x %lx", -5L, 5LL), "fffffffffffffffb 5");
    EXPECT_EQ(FormatMessage("%d %d", static_cast<short>(-3), static_cast<unsigned char>(250)), "-3 250");
    EXPECT_EQ(FormatMessage("%c%c %d %s", 'a', 66, true, false), "aB 1 false");
    EXPECT_EQ(FormatMessage("%f %g %s", 1.5, 2.25f, std::string_view("view")), "1.500000 2.25 view");
    EXPECT_EQ(FormatMessage("[%s]", static_cast<const char*>(nullptr)), "[(null)]");
}

} // namespace
} // namespace quorda
