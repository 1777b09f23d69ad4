// Lists the tables of a database given by an ODBC connection string, with their catalog types.
//
//   list_tables "Driver=SQLite3;Database=shop.db"

#include "quorda/core/odbc_database.h"
#include "quorda/rtl/exception.h"
#include "quorda/rtl/strings.h"
#include "quorda/version.h"

#include <iostream>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: list_tables <connection string>\n";
        return 2;
    }
    try {
        quorda::TODBCDatabase db(nullptr);
        db.SetDriverConnectOption(quorda::dcoDriverNoPrompt);
        db.SetConnectStr(argv[1]);
        db.Open();
        quorda::TStringList names, types;
        db.GetTables(&names, nullptr, &types, nullptr);
        std::cout << "Quorda " << QUORDA_VERSION_STRING << ": " << names.Count() << " tables\n";
        for (int i = 0; i < names.Count(); ++i)
            std::cout << "  " << names[i] << " (" << types[i] << ")\n";
    } catch (const quorda::Exception& e) {
        std::cerr << "list_tables: " << e.Message() << '\n';
        return 1;
    }
    return 0;
}
