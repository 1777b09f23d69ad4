#include "quorda/core/odbc_database.h"
#include "quorda/odbc/odbc_error.h"

#include <gtest/gtest.h>
#include <quorda_test/profiles.h>
#include <string>
#include <tuple>

namespace quorda {
namespace {

// The private servers check the password of one user; both connect styles must report a refused
// login as the server's diagnostics and leave the database closed, and accept the right password.
// psqlODBC reports a refused login as 08001; MariaDB's connector passes the server's 28000 on.
class DatabasePassword : public testing::TestWithParam<std::tuple<std::string, TConnectStyle>> {
protected:
    quorda_test::DataSourceProfile Profile = quorda_test::MakeProfile(std::get<0>(GetParam()));
    bool MariaDb = Profile.Name == "mariadb";

    void Configure(TODBCDatabase& db, const std::string& password) {
        db.SetConnectStyle(std::get<1>(GetParam()));
        db.SetDriverConnectOption(dcoDriverNoPrompt);
        db.SetDSNName(Profile.Dsn);
        db.SetUserID(Profile.PasswordUser);
        db.SetPassword(password);
        // The driver string names the user and password; a later key overrides the profile's own.
        db.SetConnectStr(Profile.ConnectionString + (MariaDb ? ";Uid=" : ";Username=") +
                         Profile.PasswordUser + (MariaDb ? ";Pwd=" : ";Password=") + password);
    }
};

TEST_P(DatabasePassword, WrongPasswordRaisesTheServersDiagnosticsAndStaysClosed) {
    TODBCDatabase db(nullptr);
    Configure(db, "not-the-password");
    bool afterConnect = false;
    db.OnAfterConnect = [&](TObject*) { afterConnect = true; };
    const std::string state = MariaDb ? "28000" : "08001";
    try {
        db.Open();
        FAIL() << "a wrong password connected";
    } catch (const EODBCError& e) {
        // The server's message names the user.
        EXPECT_EQ(e.SQLState().substr(0, 5), state) << e.SQLState();
        EXPECT_NE(
            e.NativeMessage().find(MariaDb ? "Access denied for user" : "password authentication failed"),
            std::string::npos)
            << e.NativeMessage();
        EXPECT_NE(e.NativeMessage().find(Profile.PasswordUser), std::string::npos) << e.NativeMessage();
        EXPECT_EQ(e.Message().rfind(e.NativeMessage(), 0), 0u) << e.Message();
        EXPECT_NE(e.Message().find(" ODBC State = " + state), std::string::npos) << e.Message();
        EXPECT_EQ(e.Hstmt(), nullptr);
        EXPECT_NE(e.Hdbc(), nullptr);
    }
    EXPECT_FALSE(db.Connected() || afterConnect);

    // The same database connects once the password is right.
    Configure(db, Profile.CheckedPassword);
    db.Open();
    EXPECT_TRUE(db.Connected() && afterConnect);
}

INSTANTIATE_TEST_SUITE_P(ConnectStyles, DatabasePassword,
                         testing::Combine(testing::Values("pgsql", "mariadb"),
                                          testing::Values(csConnect, csDriverConnect)),
                         [](const testing::TestParamInfo<std::tuple<std::string, TConnectStyle>>& param) {
                             return std::get<0>(param.param) + (std::get<1>(param.param) == csConnect
                                                                    ? "_DataSourceName"
                                                                    : "_DriverString");
                         });

} // namespace
} // namespace quorda
