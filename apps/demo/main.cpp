// Quorda demo: connects to the embedded SQLite demo database through a driver connection string,
// lists what the driver manager knows, reads the catalog, runs one committed and one rolled-back
// transaction, writing through parameterised queries, browses a query back and forth, edits order lines
// through update events, adds, locks, edits and deletes an order through an entity and reads through a
// pool of connections from several threads.
//
//   quorda_demo [--database <file>] [--fresh]
//
// scripts/run-demo points the driver manager at the build tree's private configuration.

#include "demo_cursor.h"
#include "demo_editor.h"
#include "demo_entity.h"
#include "demo_schema.h"
#include "demo_sql.h"
#include "quorda/core/connection_string.h"
#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_query.h"
#include "quorda/core/session.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/datetime.h"
#include "quorda/rtl/strings.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#ifndef QUORDA_DEMO_DATABASE
#define QUORDA_DEMO_DATABASE "quorda-demo.db"
#endif

namespace {

using namespace quorda;
using Rows = std::vector<std::vector<std::string>>;

void Heading(const std::string& title) {
    std::cout << "\n== " << title << " ==\n";
}

// Prints rows under a header, each column as wide as its widest value.
void PrintTable(const std::vector<std::string>& header, const Rows& rows) {
    std::vector<size_t> widths;
    for (const auto& name : header) {
        widths.push_back(name.size());
    }
    for (const auto& row : rows) {
        for (size_t i = 0; i < row.size() && i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    auto line = [&](const std::vector<std::string>& values) {
        std::string text = "  ";
        for (size_t i = 0; i < widths.size(); ++i) {
            std::string value = i < values.size() ? values[i] : "";
            value.resize(widths[i], ' ');
            text += value + (i + 1 < widths.size() ? "  " : "");
        }
        while (!text.empty() && text.back() == ' ') {
            text.pop_back();
        }
        std::cout << text << '\n';
    };
    line(header);
    std::vector<std::string> rule;
    for (size_t width : widths) {
        rule.emplace_back(width, '-');
    }
    line(rule);
    for (const auto& row : rows) {
        line(row);
    }
}

Rows Columns(std::initializer_list<const TStrings*> lists) {
    Rows rows;
    const int count = (*lists.begin())->Count();
    for (int i = 0; i < count; ++i) {
        std::vector<std::string> row;
        for (const TStrings* list : lists) {
            row.push_back(list->Get(i));
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

void ShowDriverManager() {
    Heading("Data sources known to the driver manager");
    TStringList names, drivers;
    ODBCSession()->GetDSNNames(&names, &drivers);
    PrintTable({"data source", "driver"}, Columns({&names, &drivers}));

    Heading("Installed drivers (the first one, as the session lists it)");
    ODBCSession()->GetDriverNames(&names, &drivers);
    PrintTable({"driver", "first attribute"}, Columns({&names, &drivers}));
}

void ShowCatalog(TODBCDatabase& db) {
    Heading("Tables");
    TStringList names, owners, types, remarks;
    db.GetTables(&names, &owners, &types, &remarks);
    PrintTable({"table", "owner", "type", "remarks"}, Columns({&names, &owners, &types, &remarks}));

    Heading("Columns of order_lines");
    TStringList columns;
    db.GetColumns("order_lines", &columns);
    for (int i = 0; i < columns.Count(); ++i) {
        std::cout << "  " << i + 1 << ". " << columns[i] << '\n';
    }
}

struct Counts {
    long long Orders;
    long long Lines;
};

Counts Count(TODBCDatabase& db) {
    return {demo::Scalar(db, "select count(*) from orders"),
            demo::Scalar(db, "select count(*) from order_lines")};
}

void PrintCounts(const std::string& moment, const Counts& counts) {
    std::printf("  %-28s orders: %3lld   order lines: %3lld\n", moment.c_str(), counts.Orders, counts.Lines);
}

// A query on the demo connection; its statements run inside the database's transactions.
std::unique_ptr<TODBCQuery> Statement(TODBCDatabase& db, const std::string& text) {
    auto query = std::make_unique<TODBCQuery>(nullptr);
    query->SetODBCDatabase(&db);
    query->SQL().SetText(text);
    return query;
}

void CommittedTransaction(TODBCDatabase& db) {
    Heading("Transaction 1: a new order for Novak Stavebniny, committed");
    const long long id = demo::Scalar(db, "select max(id) + 1 from orders");
    PrintCounts("before:", Count(db));
    // Named parameters: the text is prepared once with "?" markers, each execution binds the values.
    auto order = Statement(db, "insert into orders values (:id, :customer, :order_date, :status)");
    auto line = Statement(db, "insert into order_lines values (:order_id, :line_no, :product_id, :quantity, "
                              ":unit_price)");
    db.StartTransaction();
    order->ParamByName("id")->SetAsInteger(static_cast<std::int32_t>(id));
    order->ParamByName("customer")->SetAsInteger(5);
    order->ParamByName("order_date")->SetAsDate(EncodeDate(2024, 3, 18));
    order->ParamByName("status")->SetAsString("open");
    order->ExecSQL();
    struct Line {
        int Product;
        int Quantity;
        double UnitPrice;
    };
    int number = 0;
    for (const Line& item : {Line{3, 3, 79.00}, Line{4, 6, 6.75}}) {
        line->ParamByName("order_id")->SetAsInteger(static_cast<std::int32_t>(id));
        line->ParamByName("line_no")->SetAsInteger(++number);
        line->ParamByName("product_id")->SetAsInteger(item.Product);
        line->ParamByName("quantity")->SetAsInteger(item.Quantity);
        line->ParamByName("unit_price")->SetAsCurrency(item.UnitPrice);
        line->ExecSQL();
    }
    PrintCounts("inside the transaction:", Count(db));
    db.Commit();
    PrintCounts("after commit:", Count(db));
    const std::string key = std::to_string(id);
    PrintTable(
        {"order", "customer", "date", "total"},
        demo::Query(db, "select order_id, customer, order_date, printf('%.2f', total) from order_totals "
                        "where order_id = " +
                            key));
}

void RolledBackTransaction(TODBCDatabase& db) {
    Heading("Transaction 2: every order line deleted, then rolled back");
    PrintCounts("before:", Count(db));
    auto removal = Statement(db, "delete from order_lines");
    db.StartTransaction();
    removal->ExecSQL();
    std::cout << "  deleted " << removal->RowsAffected() << " order lines\n";
    PrintCounts("inside the transaction:", Count(db));
    db.Rollback();
    PrintCounts("after rollback:", Count(db));
}

int Run(const std::string& file, bool fresh) {
    if (fresh) {
        std::filesystem::remove(file);
    }
    if (const auto folder = std::filesystem::path(file).parent_path(); !folder.empty()) {
        std::filesystem::create_directories(folder);
    }

    TODBCDatabase db(nullptr);
    db.SetDatabaseName("Demo");
    db.SetDriverConnectOption(dcoDriverNoPrompt);
    db.SetConnectStr("Driver=SQLite3;Database=" + file);
    db.OnAfterConnect = [](TObject*) { std::cout << "Connected.\n"; };
    std::cout << "Quorda demo\nDatabase file: " << file << '\n';
    db.Open();
    std::cout << "Connection string after connecting: " << MaskConnectionPassword(db.ConnectStr()) << '\n';

    if (!demo::SchemaExists(db)) {
        demo::CreateSchema(db);
        std::cout << "Created the demo tables and their rows.\n";
    }

    ShowDriverManager();
    ShowCatalog(db);

    Heading("Customers");
    PrintTable({"id", "name", "city", "email"},
               demo::Query(db, "select id, name, city, email from customers"));

    CommittedTransaction(db);
    RolledBackTransaction(db);
    demo::ShowCursor(db);
    demo::EditOrderLines(db);
    demo::ShowOrdersEntity(db);
    demo::ReadThroughPool(file, db);

    db.Close();
    std::cout << "\nClosed. The committed order stays; the deleted lines came back.\n";
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    std::string file = QUORDA_DEMO_DATABASE;
    bool fresh = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--database" && i + 1 < argc) {
            file = argv[++i];
        } else if (arg == "--fresh") {
            fresh = true;
        } else {
            std::cerr << "usage: quorda_demo [--database <file>] [--fresh]\n";
            return 2;
        }
    }
    try {
        return Run(file, fresh);
    } catch (const quorda::EODBCError& e) {
        std::cerr << "ODBC error: " << e.Message() << "\n  SQLSTATE " << e.SQLState() << ", native "
                  << e.NativeError() << '\n';
    } catch (const std::exception& e) {
        std::cerr << "error: " << e.what() << '\n';
    }
    return 1;
}
