#include "connection.h"

#include "quorda/rtl/string_utils.h"

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

// A local stand-in until the library offers one: masks every PWD= or Password= value, braced
// values included, keeping the rest of the string as it was.
std::string MaskPassword(const std::string& ConnectionString) {
    std::string result;
    std::size_t pos = 0;
    while (pos < ConnectionString.size()) {
        const std::size_t end = [&] {
            if (ConnectionString.find('=', pos) == std::string::npos) {
                return ConnectionString.size();
            }
            const std::size_t equals = ConnectionString.find('=', pos);
            std::size_t valueEnd = equals + 1;
            if (valueEnd < ConnectionString.size() && ConnectionString[valueEnd] == '{') {
                const std::size_t close = ConnectionString.find('}', valueEnd);
                valueEnd = close == std::string::npos ? ConnectionString.size() : close + 1;
            }
            const std::size_t semicolon = ConnectionString.find(';', valueEnd);
            return semicolon == std::string::npos ? ConnectionString.size() : semicolon;
        }();
        const std::string pair = ConnectionString.substr(pos, end - pos);
        const std::size_t equals = pair.find('=');
        const std::string key = UpperCase(Trim(pair.substr(0, equals)));
        if (equals != std::string::npos && (key == "PWD" || key == "PASSWORD")) {
            result += pair.substr(0, equals + 1) + "***";
        } else {
            result += pair;
        }
        if (end < ConnectionString.size()) {
            result += ';';
        }
        pos = end + 1;
    }
    return result;
}

} // namespace quorda::cli
