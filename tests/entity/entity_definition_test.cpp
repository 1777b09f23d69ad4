// What entities are made of: the statements generated from their declared fields, and the stored
// field list of the user entity.
#include "entity_test_support.h"
#include "quorda/db/mem_dataset.h"
#include "quorda/rtl/filer.h"

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

// One field of the stored list, value by value in the order of the stored form; Commands holds the
// seven membership strings, each ended by ";".
struct TStoredField {
    std::string FactName, SelectStr, DisplayName, ViewTable;
    bool View, Visible, Sort, Ident, BookMark;
    std::int32_t Width;
    TFieldType Type;
    std::string Commands, FactQuote, SelectQuote;
};

// The stored properties as the reader meets them: "Fields", the list, the end of the properties.
std::string StoredForm(const std::vector<TStoredField>& Fields) {
    TMemoryStream Stream;
    TWriter Writer(Stream);
    Writer.WritePropName("Fields");
    Writer.WriteListBegin();
    for (const TStoredField& F : Fields) {
        for (const std::string* Text : {&F.FactName, &F.SelectStr, &F.DisplayName, &F.ViewTable}) {
            Writer.WriteString(*Text);
        }
        for (const bool Flag : {F.View, F.Visible, F.Sort, F.Ident, F.BookMark}) {
            Writer.WriteBoolean(Flag);
        }
        Writer.WriteInteger(F.Width);
        Writer.WriteInteger(F.Type);
        for (std::size_t Start = 0, End; (End = F.Commands.find(';', Start)) != std::string::npos;
             Start = End + 1) {
            Writer.WriteString(F.Commands.substr(Start, End - Start));
        }
        Writer.WriteString(F.FactQuote);
        Writer.WriteString(F.SelectQuote);
    }
    Writer.WriteListEnd();
    Writer.WriteValue(vaNull);
    return Stream.DataString();
}

// The stored field list: what follows the published properties.
std::string Stored(TUserEntity& Entity) {
    TMemoryStream Stream;
    TWriter(Stream).WriteProperties(&Entity);
    const std::string Bytes = Stream.DataString();
    return Bytes.substr(Bytes.find("\x06"
                                   "Fields"));
}

void Load(TUserEntity& Entity, const std::string& Bytes) {
    TStringStream Stream(Bytes);
    TReader(Stream).ReadProperties(&Entity);
}

// The stored form value by value; read back, it gives the same fields and the same bytes again.
TEST(UserEntity, FieldsKeepTheirStoredFormProceduresAndCheckUpdate) {
    TUserEntity Designed(nullptr);
    EXPECT_EQ(Stored(Designed), StoredForm({}));
    TFieldItem* Id = Designed.CreateField("ID", "Id", "", 6, true, false, true, false, ftInteger, cnstETPK);
    Id->SetFactQuote("\"");
    TFieldItem* Name = Designed.CreateField("Name", "Customer", " c ", 30, true, true, false, true,
                                            ftWideMemo, TSetExecType{fetUpdate, fetClose});
    Name->SetSelectStr("upper(name)");
    Name->SetSelectQuote("`");
    Name->SetIsBookMark(false);
    const std::string Bytes = Stored(Designed);
    const TStoredField StoredId{
        "id", "id", "Id", "", true, false, false, true, true, 6, ftInteger, "Y;Y;N;N;Y;Y;N;", "\"", ""};
    const TStoredField StoredName{
        "name", "upper(name)", "Customer",       "c", true, true, true, false, false,
        30,     ftWideMemo,    "N;N;Y;N;N;N;Y;", "",  "`"};
    EXPECT_EQ(Bytes, StoredForm({StoredId, StoredName}));

    TUserEntity Loaded(nullptr);
    Loaded.CreateField("old", "", "", 1, false, false, false, false, ftString, cnstETView);
    Load(Loaded, Bytes);
    EXPECT_EQ(Loaded.lstFields().ToVector(), (std::vector<std::string>{"id", "name"}));
    EXPECT_EQ(Loaded.GetFields(1)->ExecSet(), (TSetExecType{fetUpdate, fetClose}));
    EXPECT_EQ(Stored(Loaded), Bytes);

    // An empty list empties the entity.
    Load(Loaded, StoredForm({}));
    EXPECT_EQ(Loaded.FieldCount(), 0);
    // A streamed name keeps its case; only "Y" itself makes a field take part in a command.
    TUserEntity Entity(nullptr);
    Load(Entity, StoredForm({{"OrderID", "OrderID", "", "", true, true, false, true, true, 10, ftInteger,
                              "y;Y;yes;;Y ;N;Y;", "", ""}}));
    EXPECT_EQ(Entity.lstFields()[0], "OrderID");
    EXPECT_EQ(Entity.GetFields(0)->FactName(), "OrderID");
    EXPECT_EQ(Entity.FieldByName("orderid"), Entity.GetFields(0));
    EXPECT_EQ(Entity.GetFields(0)->ExecSet(), (TSetExecType{fetInsert, fetClose}));
    // A stream that breaks off or holds a type no field has raises the reader's error and leaves the
    // fields as they were.
    TStoredField Field{"a", "a", "", "", true, true, true, true, true, 1, ftString, "Y;N;N;N;N;N;N;", "", ""};
    const std::string Good = StoredForm({Field});
    Field.Type = static_cast<TFieldType>(ftWideMemo + 1);
    const std::string BadType = StoredForm({Field});
    for (const std::string& Broken : {Good.substr(0, Good.size() - 8), BadType}) {
        TUserEntity Kept(nullptr);
        Kept.CreateField("kept", "", "", 1, true, true, false, false, ftString, cnstETField);
        EXPECT_THROW(Load(Kept, Broken), EReadError);
        EXPECT_EQ(Kept.lstFields().ToVector(), std::vector<std::string>{"kept"});
    }
    // Stored procedures are seven names, each ended by ";".
    const struct {
        const char* Text;
        std::array<const char*, ExecTypeCount> Names;
    } Cases[] = {{"a;b", {"a", "", "", "", "", "", ""}},
                 {"1;2;3;4;5;6;7;8;9;10;", {"1", "2", "3", "4", "5", "6", "7"}},
                 {" s ;;u;", {" s ", "", "u", "", "", "", ""}},
                 {"", {"", "", "", "", "", "", ""}}};
    for (const auto& Case : Cases) {
        SCOPED_TRACE(Case.Text);
        TUserEntity Stored(nullptr);
        Stored.SetSP(fetClose, "stale");
        Stored.SetStroredProcedures(Case.Text);
        for (int Command = fetSelect; Command <= fetClose; ++Command) {
            EXPECT_EQ(Stored.GetSP(static_cast<TExecType>(Command)), Case.Names[Command]);
        }
        // No close procedure to run without a connection.
        Stored.SetSP(fetClose, {});
    }
    EXPECT_EQ(Entity.GetStroredProcedures(), ";;;;;;;");
    Entity.SetSP(fetLock, "p");
    EXPECT_EQ(Entity.GetStroredProcedures(), ";;;;p;;;");
    Entity.SetSP(fetLock, {});
    // CheckUpdate asks the event with a false flag.
    EXPECT_FALSE(Entity.CheckUpdate());
    Entity.OnCheckUpdate = [&](TUserEntity* Sender, bool& Update) { Update = !Update && Sender == &Entity; };
    EXPECT_TRUE(Entity.CheckUpdate());
}

} // namespace
} // namespace quorda
