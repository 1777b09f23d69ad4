#include "demo_schema.h"

#include "demo_sql.h"
#include "quorda/rtl/strings.h"

#include <array>
#include <string>

namespace quorda::demo {
namespace {

constexpr std::array kTables{
    "create table customers (id integer primary key, name varchar(60) not null, city varchar(40), "
    "email varchar(80))",
    "create table products (id integer primary key, name varchar(60) not null, unit_price numeric(10,2) "
    "not null, stock integer not null)",
    "create table orders (id integer primary key, customer_id integer not null references customers(id), "
    "order_date date not null, status varchar(12) not null)",
    "create table order_lines (order_id integer not null references orders(id), line_no integer not null, "
    "product_id integer not null references products(id), quantity integer not null, "
    "unit_price numeric(10,2) not null, primary key (order_id, line_no))",
    "create view order_totals as select o.id as order_id, c.name as customer, o.order_date, "
    "sum(l.quantity * l.unit_price) as total from orders o join customers c on c.id = o.customer_id "
    "join order_lines l on l.order_id = o.id group by o.id, c.name, o.order_date",
};

constexpr std::array kRows{
    "insert into customers values (1, 'Hartmann Werkzeuge GmbH', 'Stuttgart', 'einkauf@hartmann.example')",
    "insert into customers values (2, 'Lindqvist & Berg AB', 'Goteborg', 'orders@lindqvist.example')",
    "insert into customers values (3, 'Moreau Fournitures', 'Lyon', 'contact@moreau.example')",
    "insert into customers values (4, 'Brennan Hardware Ltd', 'Cork', 'sales@brennan.example')",
    "insert into customers values (5, 'Novak Stavebniny', 'Brno', NULL)",
    "insert into customers values (6, 'De Vries Techniek', 'Utrecht', 'inkoop@devries.example')",
    "insert into products values (1, 'Cordless drill 18 V', 129.90, 42)",
    "insert into products values (2, 'Drill bit set, 25 pieces', 24.50, 180)",
    "insert into products values (3, 'Angle grinder 125 mm', 79.00, 35)",
    "insert into products values (4, 'Safety goggles', 6.75, 400)",
    "insert into products values (5, 'Work gloves, size 9', 4.20, 650)",
    "insert into products values (6, 'Spirit level 80 cm', 18.90, 120)",
    "insert into products values (7, 'Wood screws 4x40, box of 500', 11.30, 300)",
    "insert into products values (8, 'Folding ruler 2 m', 7.95, 210)",
    "insert into orders values (1001, 1, '2024-03-04', 'shipped')",
    "insert into orders values (1002, 3, '2024-03-05', 'shipped')",
    "insert into orders values (1003, 2, '2024-03-07', 'shipped')",
    "insert into orders values (1004, 4, '2024-03-11', 'invoiced')",
    "insert into orders values (1005, 1, '2024-03-12', 'open')",
    "insert into orders values (1006, 6, '2024-03-14', 'open')",
    "insert into order_lines values (1001, 1, 1, 4, 129.90)",
    "insert into order_lines values (1001, 2, 2, 4, 24.50)",
    "insert into order_lines values (1001, 3, 4, 10, 6.75)",
    "insert into order_lines values (1002, 1, 3, 2, 79.00)",
    "insert into order_lines values (1002, 2, 5, 50, 4.20)",
    "insert into order_lines values (1003, 1, 6, 12, 18.90)",
    "insert into order_lines values (1003, 2, 8, 24, 7.95)",
    "insert into order_lines values (1004, 1, 7, 20, 11.30)",
    "insert into order_lines values (1004, 2, 2, 6, 24.50)",
    "insert into order_lines values (1005, 1, 1, 2, 129.90)",
    "insert into order_lines values (1005, 2, 3, 1, 79.00)",
    "insert into order_lines values (1006, 1, 5, 100, 4.20)",
    "insert into order_lines values (1006, 2, 4, 40, 6.75)",
};

} // namespace

bool SchemaExists(TODBCDatabase& db) {
    TStringList tables;
    db.GetTables(&tables, nullptr, nullptr, nullptr);
    return tables.IndexOf("order_lines") >= 0;
}

void CreateSchema(TODBCDatabase& db) {
    db.StartTransaction();
    try {
        for (const char* sql : kTables) {
            Exec(db, sql);
        }
        for (const char* sql : kRows) {
            Exec(db, sql);
        }
        db.Commit();
    } catch (...) {
        db.Rollback();
        throw;
    }
}

} // namespace quorda::demo
