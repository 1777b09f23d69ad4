#include "quorda/rtl/exception.h"
#include "quorda/rtl/messages.h"

#include <gtest/gtest.h>

namespace quorda {
namespace {

TEST(MessageTable, TextsAreFoundByIdAndFormatWithTheirPlaceholders) {
    EXPECT_EQ(LoadStr(SODBCParameterNotFound), "ODBC Parameter %s not found");
    EXPECT_EQ(MessageName(SODBCDatabaseExists), "SODBCDatabaseExists");
    EXPECT_EQ(FormatMessage(LoadStr(SODBCInternalComponentError), 816),
              "ODBC Internal component error 330. Contact programmers team.");
    EXPECT_EQ(FormatMessage(LoadStr(SODBCMaxStringSize), 8193),
              "ODBC Not correct BlobBufferSize=8193 (0 < BlobBufferSize <= 8192)");
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
}

TEST(MessageTable, TranslationReplacesTextByIdUntilReset) {
    ASSERT_TRUE(SetMessageText(SODBCTextTrue, "Wahr"));
    EXPECT_EQ(LoadStr(SODBCTextTrue), "Wahr");
    EXPECT_EQ(LoadStr(SODBCTextFalse), "False");
    ResetMessageTexts();
    EXPECT_EQ(LoadStr(SODBCTextTrue), "True");
}

TEST(DatabaseErrors, RaiseEDatabaseErrorWithTheFormattedText) {
    try {
        DatabaseErrorFmt(LoadStr(SODBCDatabaseExists), std::string("A"));
        FAIL() << "no exception";
    } catch (const EDatabaseError& e) {
        EXPECT_EQ(e.Message(), "ODBC Database with name A allready exists");
        EXPECT_STREQ(e.what(), "ODBC Database with name A allready exists");
    }
    // A format the arguments do not fit keeps its raw text instead of failing differently.
    EXPECT_EQ(FormatMessage("value %d", std::string("text")), "value %d");
}

} // namespace
} // namespace quorda
