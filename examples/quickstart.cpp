#include "quorda/core.h"

#include <iostream>
int main(int argc, char** argv) try {
    auto db = quorda::ODBCConnect(argc > 1 ? argv[1] : "DSN=QuordaDemo");
    quorda::TODBCQuery query(*db, "select name, email from customers where city <> :city");
    query.ParamByName("city")->SetAsString("Lyon");
    for (quorda::TDataSet& row : query.Rows())
        std::cout << row.FieldByName("name")->As<std::string>() << ": "
                  << row.FieldByName("email")->As<std::optional<std::string>>().value_or("(none)") << '\n';
} catch (const quorda::Exception& e) {
    std::cerr << e.Message() << '\n';
    return 1;
}
