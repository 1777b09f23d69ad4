// Connection inputs the driver manager would misread are refused before it sees them; passwords
// never show in what the library prints.
#include "core_test_support.h"
#include "quorda/core/connection_string.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/exception.h"
#include "quorda/rtl/messages.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <quorda_test/profiles.h>

namespace quorda {
namespace {

using testing::Raised;
using namespace std::string_literals;

std::string RefusalOf(TODBCDatabase& db) {
    const auto e = Raised<EDatabaseError>([&] { db.Open(); });
    EXPECT_FALSE(db.Connected());
    return e ? e->Message() : std::string();
}

// psqlODBC took each input up to its first NUL byte: a password "<right one>\0anything" logged in.
TEST(ConnectInputs, ANulByteInAnyInputIsRefusedBeforeTheDriverManager) {
    const quorda_test::DataSourceProfile pg = quorda_test::PostgresProfile();
    const std::string secret = pg.CheckedPassword + "\0anything"s;
    struct Case {
        TConnectStyle Style;
        std::string Dsn, User, Password, ConnectStr, What;
    };
    for (const Case& c : std::vector<Case>{
             {csConnect, pg.Dsn, pg.PasswordUser, secret, "", "Password"},
             {csConnect, pg.Dsn, pg.PasswordUser + "\0postgres"s, pg.CheckedPassword, "", "User"},
             {csConnect, pg.Dsn + "\0x"s, pg.PasswordUser, pg.CheckedPassword, "", "Data source name"},
             {csDriverConnect, "", "", "",
              pg.ConnectionString + ";Username=" + pg.PasswordUser + ";Password=" + secret,
              "Connection string"},
         }) {
        const auto db = testing::ClosedDatabase(c.ConnectStr);
        db->SetConnectStyle(c.Style);
        db->SetDSNName(c.Dsn);
        db->SetUserID(c.User);
        db->SetPassword(c.Password);
        EXPECT_EQ(RefusalOf(*db), FormatMessage(LoadStr(SODBCConnectInputNul), c.What));
    }
}

// The driver manager filled an empty DRIVER= or DSN= in by itself: SQLite ODBC then created a
// database file called "Driver=" in the current folder.
TEST(ConnectInputs, AnEmptyDriverOrDataSourceNameIsRefused) {
    const quorda_test::DataSourceProfile sqlite = quorda_test::SqliteProfile();
    const std::string database = ";Database=" + sqlite.DatabaseFile->Path().string();
    const std::pair<std::string, std::string> refused[] = {{"Driver=" + database, "Driver="},
                                                           {"DSN=;", "DSN="},
                                                           {"driver= ;" + database, "driver="},
                                                           {" Driver = {}" + database, "Driver="},
                                                           {"dsn={ };Driver=SQLite3" + database, "dsn="},
                                                           {"Driver=SQLite3;DSN=" + database, "DSN="}};
    for (const auto& [text, key] : refused) {
        EXPECT_EQ(RefusalOf(*testing::ClosedDatabase(text)),
                  FormatMessage(LoadStr(SODBCEmptyConnectValue), key))
            << text;
    }
    EXPECT_FALSE(std::filesystem::exists("Driver="));
    // A braced name is a name.
    EXPECT_TRUE(testing::OpenDatabase("DRIVER={SQLite3}" + database)->Connected());
}

TEST(ConnectionPasswords, AreMaskedWhateverTheirSpelling) {
    for (const auto& [text, masked] : std::vector<std::pair<std::string, std::string>>{
             {"Driver=X;PWD=secret;UID=u", "Driver=X;PWD=****;UID=u"},
             {"pwd=secret", "pwd=****"},
             {"Password={se;c}}ret};Port=5", "Password=****;Port=5"},
             {"DSN=a; Pwd =x ;", "DSN=a; Pwd =****;"},
             {"PWD=;UID=pwd;PWDX=1;MyPassword=2", "PWD=;UID=pwd;PWDX=1;MyPassword=2"},
             {"Database={a;PWD=b};password=c;PWD={}}}", "Database={a;PWD=b};password=****;PWD=****"},
             {"", ""}}) {
        EXPECT_EQ(MaskConnectionPassword(text), masked) << text;
    }
}

// psqlODBC writes the password into the completed connection string; the call trace never shows it,
// not even for a refused login.
TEST(ConnectionPasswords, NeitherTheCompletedStringShownNorTheTraceCarriesThem) {
    const quorda_test::DataSourceProfile pg = quorda_test::PostgresProfile();
    std::vector<std::string> lines;
    const TODBCTraceSink previous =
        SetODBCTraceSink([&lines](std::string_view line) { lines.emplace_back(line); });
    SetODBCTraceEnabled(true);
    for (TConnectStyle style : {csDriverConnect, csConnect}) {
        TODBCDatabase db(nullptr);
        db.SetDriverConnectOption(dcoDriverNoPrompt);
        db.SetConnectStyle(style);
        db.SetDSNName(pg.Dsn);
        db.SetUserID(pg.PasswordUser);
        const auto withPassword = [&db, &pg](const std::string& password) {
            db.SetConnectStr(pg.ConnectionString + ";Username=" + pg.PasswordUser + ";Password=" + password);
            db.SetPassword(password);
        };
        bool afterConnect = false;
        db.OnAfterConnect = [&](TObject*) { afterConnect = true; };
        // A refused login leaves the database closed without its after-connect event; the same
        // database connects once the password is right.
        withPassword("not-the-password");
        EXPECT_THROW(db.Open(), EODBCError);
        EXPECT_FALSE(db.Connected() || afterConnect);
        withPassword(pg.CheckedPassword);
        db.Open();
        EXPECT_TRUE(afterConnect);
        if (style == csDriverConnect) {
            // psqlODBC writes the password percent-encoded: "PWD=quorda%2dsecret".
            EXPECT_NE(db.ConnectStr().find(";PWD=quorda"), std::string::npos) << db.ConnectStr();
            EXPECT_NE(MaskConnectionPassword(db.ConnectStr()).find(";PWD=****;"), std::string::npos);
        } else { // only a driver connection completes the string
            EXPECT_EQ(db.ConnectStr().find(";PWD="), std::string::npos) << db.ConnectStr();
        }
    }
    SetODBCTraceEnabled(false);
    SetODBCTraceSink(previous);
    int connects = 0;
    for (const std::string& line : lines) {
        EXPECT_EQ(line.find("quorda-secret"), std::string::npos) << line;
        EXPECT_EQ(line.find("quorda%2dsecret"), std::string::npos) << line;
        EXPECT_EQ(line.find("not-the-password"), std::string::npos) << line;
        connects += line.find("SQLDriverConnect Driver=") != std::string::npos ||
                    line.find("SQLConnect " + pg.Dsn + " " + pg.PasswordUser + " ****") != std::string::npos;
    }
    EXPECT_EQ(connects, 4);
}

} // namespace
} // namespace quorda
