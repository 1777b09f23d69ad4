#include "quorda/core/odbc_connect.h"

#include "quorda/core/odbc_database.h"

namespace quorda {

std::unique_ptr<TODBCDatabase> ODBCConnect(const std::string& ConnectStr) {
    auto database = std::make_unique<TODBCDatabase>(nullptr);
    database->SetConnectStyle(csDriverConnect);
    database->SetDriverConnectOption(dcoDriverNoPrompt);
    database->SetConnectStr(ConnectStr);
    database->Open();
    return database;
}

} // namespace quorda
