#include "connection.h"

#include <cstdlib>

#ifndef QUORDA_DEFAULT_DATABASE
#define QUORDA_DEFAULT_DATABASE "quorda-demo.db"
#endif

namespace quorda::cli {

std::string DefaultDatabaseFile() {
    const char* file = std::getenv("QUORDA_DATABASE");
    return file != nullptr && *file != '\0' ? file : QUORDA_DEFAULT_DATABASE;
}

std::unique_ptr<TODBCDatabase> Connect(const ConnectionOptions& Options) {
    auto db = std::make_unique<TODBCDatabase>(nullptr);
    db->SetDatabaseName("quorda");
    if (!Options.Dsn.empty()) {
        db->SetConnectStyle(csConnect);
        db->SetDSNName(Options.Dsn);
        db->SetUserID(Options.User);
        db->SetPassword(Options.Password);
    } else {
        db->SetDriverConnectOption(dcoDriverNoPrompt);
        db->SetConnectStr(Options.ConnectionString.empty()
                              ? "Driver=SQLite3;Database=" + DefaultDatabaseFile()
                              : Options.ConnectionString);
    }
    db->Open();
    return db;
}

} // namespace quorda::cli
