#include "entity_test_support.h"
#include "quorda/db/mem_dataset.h"

#include <functional>
#include <gtest/gtest.h>

namespace quorda {
namespace {

using entitytest::Lines;
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

struct TGeneratorCase {
    const char* Name;
    std::function<void(TEntity&, TStringList&)> Generate;
    TLines Expected;
};

// Every generator on the documented orders entity, line by line.
TEST(EntitySql, WorkedExampleLineByLine) {
    TLockedRow Locked;
    const TGeneratorCase Cases[] = {
        {"select, from view",
         [](TEntity& E, TStringList& S) { E.GenerateSQLSelect(S, false); },
         {"SELECT ", "id,c.custname,customer,total FROM v_orders"}},
        {"select, from fact",
         [](TEntity& E, TStringList& S) { E.GenerateSQLSelect(S, true); },
         {"SELECT ", "id,customer,total FROM orders"}},
        {"lock-where", [](TEntity& E, TStringList& S) { E.GenerateSQLLockWhere(S); }, {"WHERE id=:id"}},
        {"insert",
         [](TEntity& E, TStringList& S) { E.GenerateSQLInsert(S); },
         {"INSERT INTO orders", "(id,customer,total)", "VALUES(:id,:customer,:total)"}},
        {"lock",
         [](TEntity& E, TStringList& S) { E.GenerateSQLLock(S); },
         {"UPDATE orders SET total=total WHERE id=:id"}},
        {"update, only total changed",
         [&](TEntity& E, TStringList& S) {
             E.SetFieldValue("customer", 3);
             E.SetFieldValue("total", 12.25);
             EXPECT_TRUE(E.GenerateSQLUpdate(S, Locked));
         },
         {"UPDATE orders SET ", "total=:total", "WHERE id=:id"}},
        {"update, nothing changed",
         [&](TEntity& E, TStringList& S) {
             S.Add("stale");
             E.SetFieldValue("customer", 3);
             E.SetFieldValue("total", 10.5);
             EXPECT_FALSE(E.GenerateSQLUpdate(S, Locked));
         },
         {}},
        {"delete",
         [](TEntity& E, TStringList& S) { E.GenerateSQLDelete(S); },
         {"DELETE FROM orders WHERE id=:id"}},
        {"order, index 3",
         [](TEntity& E, TStringList& S) { S.Add(E.GenerateOrder(3)); },
         {"ORDER BY total,c.custname"}},
        {"order, index 1",
         [](TEntity& E, TStringList& S) { S.Add(E.GenerateOrder(1)); },
         {"ORDER BY c.custname,total"}},
        {"order, index 3, descending",
         [](TEntity& E, TStringList& S) {
             E.SetOrderingDesc(true);
             S.Add(E.GenerateOrder(3));
         },
         {"ORDER BY total DESC,c.custname DESC"}},
        {"order, index -1", [](TEntity& E, TStringList& S) { S.Add(E.GenerateOrder(-1)); }, {""}},
        {"order, index beyond the last field gives the tail only",
         [](TEntity& E, TStringList& S) { S.Add(E.GenerateOrder(9)); },
         {"ORDER BY c.custname,total"}},
        {"order, index 2 starts at the next sortable field",
         [](TEntity& E, TStringList& S) { S.Add(E.GenerateOrder(2)); },
         {"ORDER BY total,c.custname"}},
    };
    for (const TGeneratorCase& Case : Cases) {
        SCOPED_TRACE(Case.Name);
        TOrdersEntity Orders;
        TStringList SQL;
        Case.Generate(Orders, SQL);
        EXPECT_EQ(Lines(SQL), Case.Expected);
    }
}

struct TShapeCase {
    const char* Name;
    // Declares the fields of a fresh entity (fact table t, view v).
    std::function<void(TEntity&)> Declare;
    std::function<void(TEntity&, TStringList&)> Generate;
    TLines Expected;
};

// Quoted names, entities without a key, the choice of the lock column, columns left out of the
// SELECT, an empty string written over a null.
TEST(EntitySql, EdgeShapes) {
    TLockedRow Locked;
    const auto Quoted = [](TEntity& E) {
        for (TFieldItem* Field :
             {E.CreateField("id", "", "", 0, true, true, true, false, ftInteger, cnstETPK),
              E.CreateField("name", "", " c ", 0, true, true, false, true, ftString, cnstETField)}) {
            Field->SetFactQuote("\"");
        }
        E.CreateField("Total", "", "", 0, true, true, false, false, ftFloat, cnstETView)->SetSelectQuote("`");
    };
    const auto Keyless = [](TEntity& E) {
        E.CreateField("customer", "", "", 0, true, true, false, false, ftInteger, cnstETField);
        E.CreateField("note", "", "", 0, true, true, false, false, ftString, cnstETField);
    };
    const TShapeCase Cases[] = {
        {"quoted lock-where names the parameter quoted too",
         Quoted,
         [](TEntity& E, TStringList& S) { E.GenerateSQLLockWhere(S); },
         {"WHERE \"id\"=:\"id\""}},
        // The select list quotes with SelectQuote, except for columns of a view table of their own.
        {"quoted select",
         Quoted,
         [](TEntity& E, TStringList& S) { E.GenerateSQLSelect(S, false); },
         {"SELECT ", "id,\"c.name\",`total` FROM v"}},
        {"quoted insert",
         Quoted,
         [](TEntity& E, TStringList& S) { E.GenerateSQLInsert(S); },
         {"INSERT INTO t", "(\"id\",\"name\")", "VALUES(:\"id\",:\"name\")"}},
        {"quoted order",
         Quoted,
         [](TEntity& E, TStringList& S) { S.Add(E.GenerateOrder(0)); },
         {"ORDER BY \"c.name\""}},
        {"key-less delete ends in WHERE and a blank",
         Keyless,
         [](TEntity& E, TStringList& S) { E.GenerateSQLDelete(S); },
         {"DELETE FROM t WHERE "}},
        {"key-less lock",
         Keyless,
         [](TEntity& E, TStringList& S) { E.GenerateSQLLock(S); },
         {"UPDATE t SET note=note WHERE "}},
        {"key-less update has an empty WHERE line",
         Keyless,
         [&](TEntity& E, TStringList& S) {
             E.SetFieldValue("customer", 4);
             E.SetFieldValue("note", "");
             EXPECT_TRUE(E.GenerateSQLUpdate(S, Locked));
         },
         {"UPDATE t SET ", "customer=:customer", ""}},
        {"a null value replacing a value is a change",
         Keyless,
         [&](TEntity& E, TStringList& S) {
             E.SetFieldValue("customer", NullValue);
             E.SetFieldValue("note", NullValue);
             EXPECT_TRUE(E.GenerateSQLUpdate(S, Locked));
         },
         {"UPDATE t SET ", "customer=:customer", ""}},
        {"only integers: the first field is the lock column",
         [](TEntity& E) {
             E.CreateField("id", "", "", 0, true, true, true, false, ftInteger, cnstETPK);
             E.CreateField("qty", "", "", 0, true, true, false, false, ftInteger, cnstETField);
         },
         [](TEntity& E, TStringList& S) { E.GenerateSQLLock(S); },
         {"UPDATE t SET id=id WHERE id=:id"}},
        {"a column outside the select is never the lock column, the first one may be",
         [](TEntity& E) {
             E.CreateField("code", "", "", 0, false, true, true, false, ftString, cnstETPK);
             E.CreateField("name", "", "", 0, true, true, false, false, ftString, cnstETField);
             E.CreateField("hidden", "", "", 0, false, true, false, false, ftString, cnstETField);
             E.CreateField("qty", "", "", 0, true, true, false, false, ftInteger, cnstETField);
         },
         [](TEntity& E, TStringList& S) { E.GenerateSQLLock(S); },
         {"UPDATE t SET name=name WHERE code=:code"}},
        {"a column not in view is never selected, whatever its commands",
         [](TEntity& E) {
             E.CreateField("id", "", "", 0, false, true, true, false, ftInteger, cnstETPK);
             E.CreateField("name", "", "", 0, true, true, false, false, ftString, cnstETField);
         },
         [](TEntity& E, TStringList& S) { E.GenerateSQLSelect(S, true); },
         {"SELECT ", "name FROM t"}},
        {"no sortable column orders by nothing",
         Keyless,
         [](TEntity& E, TStringList& S) { S.Add(E.GenerateOrder(0)); },
         {""}},
    };
    for (const TShapeCase& Case : Cases) {
        SCOPED_TRACE(Case.Name);
        TTestEntity Entity;
        Entity.SetFactTable("t");
        Entity.SetViewTable("v");
        Case.Declare(Entity);
        TStringList SQL;
        Case.Generate(Entity, SQL);
        EXPECT_EQ(Lines(SQL), Case.Expected);
    }

    TTestEntity Empty;
    TStringList SQL;
    EXPECT_EQ(entitytest::MessageOf<EEntityException>([&] { Empty.GenerateSQLLock(SQL); }),
              "Can not create select lock query");
}

// The lines of the open selection for each combination of WherePhrase and FilterStr (the ORDER BY
// line comes from GenerateOrder above, empty here), and filter values reaching the parameters they name.
TEST(EntitySql, SelectionWithWherePhraseAndFilter) {
    const struct {
        const char* Where;
        const char* Filter;
        TLines Expected;
    } Cases[] = {
        {"status=1", "customer=:customer", {"WHERE status=1", "AND customer=:customer", ""}},
        {"", "customer=:customer", {"WHERE ", "customer=:customer", ""}},
        {"status=1", "", {"WHERE status=1", ""}},
        {"", "", {""}},
    };
    for (const auto& Case : Cases) {
        SCOPED_TRACE(Case.Filter);
        TOrdersEntity Orders;
        Orders.SetWherePhrase(Case.Where);
        Orders.SetFilterStr(Case.Filter);
        Orders.SetFieldFilter("customer", 42);
        Orders.SetFieldFilter("total", 9.5);
        Orders.GenerateSQLSelection(Orders.DataQuery()->SQL());
        TLines Expected{"SELECT ", "id,c.custname,customer,total FROM v_orders"};
        Expected.insert(Expected.end(), Case.Expected.begin(), Case.Expected.end());
        EXPECT_EQ(Lines(Orders.DataQuery()->SQL()), Expected);
        // Only a field whose name is a parameter of the selection takes its filter value.
        EXPECT_EQ(Orders.FieldByName("customer")->Value().IsNull(), *Case.Filter == '\0');
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
