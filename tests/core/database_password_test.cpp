#include "quorda/core/odbc_database.h"
#include "quorda/odbc/odbc_error.h"

#include <gtest/gtest.h>
#include <quorda_test/profiles.h>

namespace quorda {
namespace {

// The private cluster checks the password of one role; both connect styles must report a refused
// login as the server's diagnostics and leave the database closed, and accept the right password.
class DatabasePassword : public testing::TestWithParam<TConnectStyle> {
protected:
    quorda_test::DataSourceProfile Profile = quorda_test::PostgresProfile();

    void Configure(TODBCDatabase& db, const std::string& password) {
        db.SetConnectStyle(GetParam());
        db.SetDriverConnectOption(dcoDriverNoPrompt);
        db.SetDSNName(Profile.Dsn);
        db.SetUserID(Profile.PasswordUser);
        db.SetPassword(password);
        // The driver string names the role and password explicitly; the profile's string names
        // the trusted superuser, which a later key overrides.
        db.SetConnectStr(Profile.ConnectionString + ";Username=" + Profile.PasswordUser +
                         ";Password=" + password);
    }
};

TEST_P(DatabasePassword, WrongPasswordRaisesTheServersDiagnosticsAndStaysClosed) {
    TODBCDatabase db(nullptr);
    Configure(db, "not-the-password");
    bool afterConnect = false;
    db.OnAfterConnect = [&](TObject*) { afterConnect = true; };
    try {
        db.Open();
        FAIL() << "a wrong password connected";
    } catch (const EODBCError& e) {
        // psqlODBC reports a refused login as 08001 with the server's message, which names the role.
        EXPECT_EQ(e.SQLState().substr(0, 5), "08001") << e.SQLState();
        EXPECT_NE(e.NativeMessage().find("password authentication failed"), std::string::npos)
            << e.NativeMessage();
        EXPECT_NE(e.NativeMessage().find("quorda_pw"), std::string::npos) << e.NativeMessage();
        EXPECT_EQ(e.Message().rfind(e.NativeMessage(), 0), 0u) << e.Message();
        EXPECT_NE(e.Message().find(" ODBC State = 08001"), std::string::npos) << e.Message();
        EXPECT_EQ(e.Hstmt(), nullptr);
        EXPECT_NE(e.Hdbc(), nullptr);
    }
    EXPECT_FALSE(db.Connected());
    EXPECT_FALSE(afterConnect);

    // The same database connects once the password is right.
    Configure(db, Profile.CheckedPassword);
    db.Open();
    EXPECT_TRUE(db.Connected());
    EXPECT_TRUE(afterConnect);
    db.Close();
}

INSTANTIATE_TEST_SUITE_P(ConnectStyles, DatabasePassword, testing::Values(csConnect, csDriverConnect),
                         [](const testing::TestParamInfo<TConnectStyle>& style) {
                             return style.param == csConnect ? std::string("DataSourceName")
                                                             : std::string("DriverString");
                         });

} // namespace
} // namespace quorda
