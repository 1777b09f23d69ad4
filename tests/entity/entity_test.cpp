// Entities without a data source: the statements generated from their declared fields, the stored
// field list of the user entity, the registry of open entities and its reread marks, the close
// procedure, and the settings read at creation and written at destruction.
#include "entity_test_support.h"
#include "quorda/db/mem_dataset.h"
#include "quorda/rtl/filer.h"
#include "quorda/rtl/reg_ini_file.h"
#include "quorda_test/config_home.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <sstream>
#include <tuple>

namespace quorda {
namespace {

namespace fs = std::filesystem;
using entitytest::TOrdersEntity;
using entitytest::TTestEntity;
using namespace testing_support;
using TLines = std::vector<std::string>;
using TEntities = std::vector<std::unique_ptr<TTestEntity>>;

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
TEST(EntityDefinition, StoredFormAndGeneratedStatements) {
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
    } Procedures[] = {{"a;b", {"a", "", "", "", "", "", ""}},
                      {"1;2;3;4;5;6;7;8;9;10;", {"1", "2", "3", "4", "5", "6", "7"}},
                      {" s ;;u;", {" s ", "", "u", "", "", "", ""}},
                      {"", {"", "", "", "", "", "", ""}}};
    for (const auto& Procedure : Procedures) {
        SCOPED_TRACE(Procedure.Text);
        TUserEntity Stored(nullptr);
        Stored.SetSP(fetClose, "stale");
        Stored.SetStroredProcedures(Procedure.Text);
        for (int Command = fetSelect; Command <= fetClose; ++Command) {
            EXPECT_EQ(Stored.GetSP(static_cast<TExecType>(Command)), Procedure.Names[Command]);
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
    // Every generator line by line: "update" compares the Values with the locked row and generates
    // nothing when none differs; "order N [desc]" orders by sortable field N first.
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
        const auto Declaration = Declared(Case.Entity);
        for (const auto& [Column, Value] : Case.Values) {
            Declaration->SetFieldValue(Column, Value);
        }
        TStringList SQL;
        if (What == "update") {
            SQL.Add("stale");
            EXPECT_EQ(Declaration->GenerateSQLUpdate(SQL, Locked), !Case.Expected.empty());
        } else if (What.starts_with("order")) {
            Declaration->SetOrderingDesc(What.ends_with("desc"));
            SQL.Add(Declaration->GenerateOrder(std::stoi(What.substr(6))));
        } else {
            kGenerators.at(What)(*Declaration, SQL);
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

// The registry as "name:index" entries, the index being the entity's position in Entities (the
// registry may hold entities of other tests only when those leak, which is a failure too).
std::string Registry(const TEntities& Entities) {
    std::string Result;
    const TStringList& Open = lstOpenEntity();
    for (int I = 0; I < Open.Count(); ++I) {
        std::string Index = "?";
        for (std::size_t J = 0; J < Entities.size(); ++J) {
            if (Open.Objects(I) == Entities[J].get()) {
                Index = std::to_string(J);
            }
        }
        Result += (I > 0 ? " " : "") + Open[I] + ":" + Index;
    }
    return Result;
}

// Entities from words of a name, "+" or "-" for the answer of CheckUpdate and "*" for an entity
// already marked ("a+ a-* -": two a, the second marked, and one unnamed); the others are undecided,
// as after opening.
TEntities Make(const std::string& Words) {
    TEntities Entities;
    std::istringstream In(Words);
    for (std::string Word; In >> Word;) {
        const bool Marked = Word.back() == '*';
        if (Marked) {
            Word.pop_back();
        }
        Entities.push_back(
            std::make_unique<TTestEntity>(Word.substr(0, Word.size() - 1), Word.back() == '+'));
        Entities.back()->SetFlgReread(Marked);
    }
    return Entities;
}

// Each entity's CheckUpdate calls and its reread mark ("x" marked, "." not): "1x0x" for two entities.
std::string State(const TEntities& Entities) {
    std::string Result;
    for (const auto& Entity : Entities) {
        Result += std::to_string(Entity->CheckUpdateCalls) + (Entity->flgReread() ? 'x' : '.');
    }
    return Result;
}

constexpr char kKeyPath[] = "Software\\Quorda Tests\\Entities";

// Destruction erases the entity's section and writes the current values in its place: keys of
// removed fields and values cleared since never survive, values read and left stay, empty strings
// are not kept, numbers and dates are written as their text, other sections stay. Without a section name
// nothing is read or written; without SaveFindIni and SaveFilterIni only the options are.
TEST(EntityLifetime, RegistryRereadMarksCloseProcedureAndSettings) {
    TTemporaryConfigHome Home;
    EntityINIFileName = kKeyPath;
    struct TForget {
        ~TForget() { EntityINIFileName.clear(); }
    } Forget;
    const fs::path SettingsPath = TRegIniFile::PathOfKey(kKeyPath);
    const TDateTime Date = EncodeDateTime(2024, 2, 29, 13, 5, 0, 0);
    const struct {
        const char* Name;
        const char* ViewFull;
        std::string Before; // empty: no settings file
        std::function<void(TOrdersEntity&)> Use;
        std::string After; // empty: no settings file
    } Cases[] = {
        {"replaced", "orders",
         "[other]\nk=v\n[orders]\ngone-find=x\nid-find=5\ntotal-filter=9\nFindSensitive=1\nFindOption=2\n"
         "FindDown=1\n",
         [&](TOrdersEntity& Orders) {
             EXPECT_EQ(Orders.FieldByName("id")->findStr(), Variant("5"));
             EXPECT_EQ(std::tuple(Orders.FindSensitive(), Orders.FindOption(), Orders.FindDown()),
                       std::tuple(true, efoSubConCur, dfPrior));
             Orders.SetFieldFind("id", NullValue);
             Orders.SetFieldFind("custname", "A");
             Orders.SetFieldFilter("customer", 42);
             Orders.SetFieldFind("total", Variant::FromDateTime(Date));
             Orders.SetFieldFilter("custname", "");
         },
         "[other]\nk=v\n[orders]\ncustname-find=A\ncustomer-filter=42\ntotal-find=" + DateTimeToStr(Date) +
             "\ntotal-filter=9\nFindSensitive=1\nFindOption=2\nFindDown=1\n"},
        {"no section name, no file", "", "",
         [](TOrdersEntity& Orders) {
             Orders.SetFieldFind("id", "1");
             Orders.SetFindSensitive(true);
         },
         ""},
        {"no section name", "", "[]\nid-find=1\nFindSensitive=1\n",
         [](TOrdersEntity& Orders) {
             EXPECT_TRUE(Orders.FieldByName("id")->findStr().IsNull());
             EXPECT_FALSE(Orders.FindSensitive());
         },
         "[]\nid-find=1\nFindSensitive=1\n"},
        {"save flags off", "orders", "",
         [](TOrdersEntity& Orders) {
             Orders.SetSaveFindIni(false);
             Orders.SetSaveFilterIni(false);
             Orders.SetFieldFind("id", "1");
             Orders.SetFieldFilter("id", "2");
             Orders.SetFindDown(dfPrior);
         },
         "[orders]\nFindSensitive=0\nFindOption=1\nFindDown=1\n"},
        // Damaged text is the settings file's own business; options no enumerator has read as defaults.
        {"options out of range", "orders", "[orders]\nFindOption=7\nFindDown=-1\n",
         [](TOrdersEntity& Orders) {
             EXPECT_EQ(std::tuple(Orders.FindOption(), Orders.FindDown()),
                       std::tuple(efoFirstConCur, dfNext));
         },
         "[orders]\nFindSensitive=0\nFindOption=1\nFindDown=0\n"}};
    for (const auto& Case : Cases) {
        SCOPED_TRACE(Case.Name);
        fs::remove(SettingsPath);
        if (!Case.Before.empty()) {
            WriteFile(SettingsPath, Case.Before);
        }
        {
            TOrdersEntity Orders(Case.ViewFull);
            Case.Use(Orders);
        }
        EXPECT_EQ(fs::exists(SettingsPath), !Case.After.empty());
        EXPECT_EQ(ReadFile(SettingsPath), Case.After);
    }
    // A missing find key gives Null, a missing filter key leaves the absent marker in the filter slot:
    // the filter is cleared only when the find value is still the marker.
    WriteFile(SettingsPath, "[orders]\nid-find=7\ncustname-filter=B\n");
    const Variant Marker(EntityAbsentMarker);
    const struct {
        const char* Field;
        bool SaveFind;
        bool SaveFilter;
        Variant Find;
        Variant Filter;
    } Reads[] = {{"customer", true, true, NullValue, Marker},
                 {"id", true, true, Variant("7"), Marker},
                 {"custname", true, true, NullValue, Variant("B")},
                 {"id", false, true, NullValue, Marker},
                 {"custname", true, false, NullValue, NullValue}};
    for (const auto& Read : Reads) {
        SCOPED_TRACE(std::string(Read.Field) + (Read.SaveFind ? " find" : "") +
                     (Read.SaveFilter ? " filter" : ""));
        TOrdersEntity Orders;
        Orders.SetViewFull("orders");
        Orders.SetSaveFindIni(Read.SaveFind);
        Orders.SetSaveFilterIni(Read.SaveFilter);
        TFieldItem* Field = Orders.FieldByName(Read.Field);
        Orders.ReadFromINIField(Field, Read.Field);
        EXPECT_EQ(Field->findStr(), Read.Find);
        EXPECT_EQ(Field->filterStr(), Read.Filter);
        Orders.SetViewFull({});
    }
    // A failed write at destruction is shown, not thrown.
    const std::string TooLarge = "[orders]\n" + std::string(17 * 1024 * 1024, ';');
    WriteFile(SettingsPath, TooLarge);
    entitytest::TShownErrors Errors;
    {
        TOrdersEntity Orders("orders");
        Orders.SetFieldFind("id", "1");
    }
    ASSERT_EQ(Errors.Shown.size(), 1u);
    EXPECT_NE(Errors.Shown[0].find("Cannot write settings file"), std::string::npos);
    EXPECT_EQ(fs::file_size(SettingsPath), TooLarge.size());
    TEntities Entities = Make("A- -");
    EXPECT_EQ(Registry(Entities), "A:0 :1");
    Entities[1]->SetviewEntity("B");
    EXPECT_EQ(Registry(Entities), "A:0 B:1");
    Entities[0].reset();
    EXPECT_EQ(Registry(Entities), "B:1");
    // A write through the second of two ORDERS marks both and makes the writer the group's leader; the
    // next pass asks neither.
    Entities = Make("ORDERS+ X- ORDERS+");
    SetUpdateEntity("ORDERS", Entities[2].get());
    EXPECT_EQ(State(Entities), "0x0.0x");
    EXPECT_EQ(Registry(Entities), "ORDERS:2 X:1 ORDERS:0");
    StartRereadAllUpdate();
    EXPECT_EQ(State(Entities), "0x1.0x");
    // Opening the first again makes it the leader without marking anything.
    Entities[0]->SetFlgReread(false);
    FirstNumber("ORDERS", Entities[0].get());
    EXPECT_EQ(Registry(Entities), "ORDERS:0 X:1 ORDERS:2");
    EXPECT_EQ(State(Entities), "0.1.0x");

    SetRereadFlag("ORDERS");
    EXPECT_EQ(State(Entities), "0x1.0x");
    // Marking looks for the group under the upper-cased name: only upper-case names move.
    // SetUpdateEntity compares the name as given and moves the writer whatever its case.
    for (const auto& [Name, Expected] : {std::pair{"ORDERS", "ORDERS:1 ORDERS:0"},
                                         {"orders", "orders:0 orders:1"},
                                         {"Orders", "Orders:0 Orders:1"}}) {
        Entities = Make(std::string(Name) + "- " + Name + "-");
        Entities[1]->SetFlgReread(true);
        EXPECT_EQ(Registry(Entities), Expected);
    }
    Entities = Make("orders- orders-");
    SetUpdateEntity("orders", Entities[1].get());
    EXPECT_EQ(Registry(Entities), "orders:1 orders:0");
    EXPECT_EQ(State(Entities), "0x0x");
    // Each run of consecutive undecided namesakes is decided once, by its first member; marked
    // entities and unnamed ones are skipped and do not end a run. Upper-case names are exchanged while
    // the pass marks them; each member is still decided once.
    const std::pair<const char*, const char*> Runs[] = {
        {"a+ a- a-", "1x0x0x"}, {"A+ A- A-", "1x0x0x"},  {"a- a+", "1.0."},  {"a+ a- b- a-", "1x0x1.1."},
        {"+ a-", "0.1."},       {"a+ a-* a-", "1x0x0x"}, {"a-* a-*", "0x0x"}};
    for (const auto& [Words, Expected] : Runs) {
        Entities = Make(Words);
        StartRereadAllUpdate();
        EXPECT_EQ(State(Entities), Expected) << Words;
    }
    // The close procedure runs for the last entity of a name only, and never at design time. Without a
    // connection the call fails, and the failure reaches the application instead of the destructor's caller.
    entitytest::TShownErrors CloseErrors;
    Entities = Make("ORDERS- ORDERS- ORDERS-");
    for (const auto& Entity : Entities) {
        Entity->SetSP(fetClose, "close_orders");
    }
    Entities[2]->SetDesigning(true);
    Entities[2].reset();
    Entities[0].reset();
    EXPECT_TRUE(CloseErrors.Shown.empty());
    Entities[1].reset();
    EXPECT_EQ(CloseErrors.Shown.size(), 1u);
}

} // namespace
} // namespace quorda
