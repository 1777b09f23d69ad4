#include "entity_test_support.h"
#include "quorda/db/mem_dataset.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>

namespace quorda {
namespace {

using entitytest::TOrdersEntity;
using entitytest::TTestEntity;
using TLines = std::vector<std::string>;

// The row a later edit compares against, as a lock leaves it: id 7, customer 3, total 10.5.
struct TLockedRow : TMemDataSet {
    TLockedRow() : TMemDataSet(nullptr) {
        FieldDefs().Add("id", ftInteger);
        FieldDefs().Add("customer", ftInteger);
        FieldDefs().Add("total", ftFloat);
        FieldDefs().Add("note", ftString, 20);
        CreateDataSet();
        AppendRecord({7, 3, 10.5});
    }
};

// The entities the statements are generated for: the documented orders entity, and entities over
// fact table t and view v with quoted names, without a key, of integers only, with a column outside
// the select list, and with a key not in view.
std::unique_ptr<TTestEntity> Declared(const std::string& Kind) {
    if (Kind == "orders") {
        return std::make_unique<TOrdersEntity>();
    }
    auto E = std::make_unique<TTestEntity>();
    E->SetFactTable("t");
    E->SetViewTable("v");
    if (Kind == "quoted") {
        for (TFieldItem* Field :
             {E->CreateField("id", "", "", 0, true, true, true, false, ftInteger, cnstETPK),
              E->CreateField("name", "", " c ", 0, true, true, false, true, ftString, cnstETField)}) {
            Field->SetFactQuote("\"");
        }
        E->CreateField("Total", "", "", 0, true, true, false, false, ftFloat, cnstETView)
            ->SetSelectQuote("`");
    } else if (Kind == "keyless") {
        E->CreateField("customer", "", "", 0, true, true, false, false, ftInteger, cnstETField);
        E->CreateField("note", "", "", 0, true, true, false, false, ftString, cnstETField);
    } else if (Kind == "integers") {
        E->CreateField("id", "", "", 0, true, true, true, false, ftInteger, cnstETPK);
        E->CreateField("qty", "", "", 0, true, true, false, false, ftInteger, cnstETField);
    } else if (Kind == "hidden") {
        E->CreateField("code", "", "", 0, false, true, true, false, ftString, cnstETPK);
        E->CreateField("name", "", "", 0, true, true, false, false, ftString, cnstETField);
        E->CreateField("hidden", "", "", 0, false, true, false, false, ftString, cnstETField);
        E->CreateField("qty", "", "", 0, true, true, false, false, ftInteger, cnstETField);
    } else if (Kind == "key not in view") {
        E->CreateField("id", "", "", 0, false, true, true, false, ftInteger, cnstETPK);
        E->CreateField("name", "", "", 0, true, true, false, false, ftString, cnstETField);
    }
    return E;
}

const std::map<std::string, std::function<void(TEntity&, TStringList&)>> kGenerators{
    {"select", [](TEntity& E, TStringList& S) { E.GenerateSQLSelect(S, false); }},
    {"select fact", [](TEntity& E, TStringList& S) { E.GenerateSQLSelect(S, true); }},
    {"lock-where", [](TEntity& E, TStringList& S) { E.GenerateSQLLockWhere(S); }},
    {"insert", [](TEntity& E, TStringList& S) { E.GenerateSQLInsert(S); }},
    {"lock", [](TEntity& E, TStringList& S) { E.GenerateSQLLock(S); }},
    {"delete", [](TEntity& E, TStringList& S) { E.GenerateSQLDelete(S); }}};

// Every generator line by line: "update" compares the Values with the locked row and generates
// nothing when none differs; "order N [desc]" orders by sortable field N first.
TEST(EntitySql, GeneratedStatementsAndTheSelection) {
    TLockedRow Locked;
    const struct {
        const char* Entity;
        const char* What;
        TLines Expected;
        std::vector<std::pair<const char*, Variant>> Values = {};
    } Cases[] = {
        {"orders", "select", {"SELECT ", "id,c.custname,customer,total FROM v_orders"}},
        {"orders", "select fact", {"SELECT ", "id,customer,total FROM orders"}},
        {"orders", "lock-where", {"WHERE id=:id"}},
        {"orders", "insert", {"INSERT INTO orders", "(id,customer,total)", "VALUES(:id,:customer,:total)"}},
        {"orders", "lock", {"UPDATE orders SET total=total WHERE id=:id"}},
        {"orders",
         "update",
         {"UPDATE orders SET ", "total=:total", "WHERE id=:id"},
         {{"customer", 3}, {"total", 12.25}}},
        {"orders", "update", {}, {{"customer", 3}, {"total", 10.5}}},
        {"orders", "delete", {"DELETE FROM orders WHERE id=:id"}},
        {"orders", "order 3", {"ORDER BY total,c.custname"}},
        {"orders", "order 1", {"ORDER BY c.custname,total"}},
        {"orders", "order 3 desc", {"ORDER BY total DESC,c.custname DESC"}},
        {"orders", "order -1", {""}},
        // Beyond the last field: the tail only; a field that does not sort: the next one that does.
        {"orders", "order 9", {"ORDER BY c.custname,total"}},
        {"orders", "order 2", {"ORDER BY total,c.custname"}},
        // A quoted key names its parameter quoted too; the select list quotes with SelectQuote, except
        // for columns of a view table of their own.
        {"quoted", "lock-where", {"WHERE \"id\"=:\"id\""}},
        {"quoted", "select", {"SELECT ", "id,\"c.name\",`total` FROM v"}},
        {"quoted", "insert", {"INSERT INTO t", "(\"id\",\"name\")", "VALUES(:\"id\",:\"name\")"}},
        {"quoted", "order 0", {"ORDER BY \"c.name\""}},
        // Without a key the WHERE stays open; a null replacing a value and an empty string replacing
        // a null are changes.
        {"keyless", "delete", {"DELETE FROM t WHERE "}},
        {"keyless", "lock", {"UPDATE t SET note=note WHERE "}},
        {"keyless", "update", {"UPDATE t SET ", "customer=:customer", ""}, {{"customer", 4}, {"note", ""}}},
        {"keyless",
         "update",
         {"UPDATE t SET ", "customer=:customer", ""},
         {{"customer", NullValue}, {"note", NullValue}}},
        {"keyless", "order 0", {""}},
        // The lock column is never one outside the select list; with integers only it is the first field.
        {"integers", "lock", {"UPDATE t SET id=id WHERE id=:id"}},
        {"hidden", "lock", {"UPDATE t SET name=name WHERE code=:code"}},
        {"key not in view", "select fact", {"SELECT ", "name FROM t"}}};
    for (const auto& Case : Cases) {
        const std::string What = Case.What;
        SCOPED_TRACE(Case.Entity + (" " + What));
        const auto Entity = Declared(Case.Entity);
        for (const auto& [Field, Value] : Case.Values) {
            Entity->SetFieldValue(Field, Value);
        }
        TStringList SQL;
        if (What == "update") {
            SQL.Add("stale");
            EXPECT_EQ(Entity->GenerateSQLUpdate(SQL, Locked), !Case.Expected.empty());
        } else if (What.starts_with("order")) {
            Entity->SetOrderingDesc(What.ends_with("desc"));
            SQL.Add(Entity->GenerateOrder(std::stoi(What.substr(6))));
        } else {
            kGenerators.at(What)(*Entity, SQL);
        }
        EXPECT_EQ(SQL.ToVector(), Case.Expected);
    }

    TTestEntity Empty;
    TStringList SQL;
    EXPECT_EQ(entitytest::MessageOf<EEntityException>([&] { Empty.GenerateSQLLock(SQL); }),
              "Can not create select lock query");
    // The lines of the open selection for each combination of WherePhrase and FilterStr (the ORDER BY
    // line comes from GenerateOrder above, empty here), and filter values reaching the parameters they name.
    const struct {
        const char* Where;
        const char* Filter;
        TLines Expected;
    } Selections[] = {{"status=1", "customer=:customer", {"WHERE status=1", "AND customer=:customer", ""}},
                      {"", "customer=:customer", {"WHERE ", "customer=:customer", ""}},
                      {"status=1", "", {"WHERE status=1", ""}},
                      {"", "", {""}}};
    for (const auto& Selection : Selections) {
        SCOPED_TRACE(Selection.Filter);
        TOrdersEntity Orders;
        Orders.SetWherePhrase(Selection.Where);
        Orders.SetFilterStr(Selection.Filter);
        Orders.SetFieldFilter("customer", 42);
        Orders.SetFieldFilter("total", 9.5);
        Orders.GenerateSQLSelection(Orders.DataQuery()->SQL());
        TLines Expected{"SELECT ", "id,c.custname,customer,total FROM v_orders"};
        Expected.insert(Expected.end(), Selection.Expected.begin(), Selection.Expected.end());
        EXPECT_EQ(Orders.DataQuery()->SQL().ToVector(), Expected);
        // Only a field whose name is a parameter of the selection takes its filter value.
        EXPECT_EQ(Orders.FieldByName("customer")->Value().IsNull(), *Selection.Filter == '\0');
        EXPECT_TRUE(Orders.FieldByName("total")->Value().IsNull());
    }

    // Empty strings and the marker of a missing filter setting are no filter values.
    TOrdersEntity Orders;
    Orders.SetFilterStr("customer=:customer AND id=:id");
    Orders.SetFieldFilter("customer", "");
    Orders.SetFieldFilter("id", EntityAbsentMarker);
    Orders.GenerateSQLSelection(Orders.DataQuery()->SQL());
    EXPECT_TRUE(Orders.FieldByName("customer")->Value().IsNull());
    EXPECT_TRUE(Orders.FieldByName("id")->Value().IsNull());
}

} // namespace
} // namespace quorda
