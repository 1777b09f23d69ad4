#include "entity_commands_support.h"
#include "quorda/db/field.h"
#include "quorda/entity/user_entity.h"

namespace quorda::entitytest {
namespace {

// A user entity over a view of the items (table I, view V).
class EntityOpen : public CommandsTest {
protected:
    void SetUp() override {
        CommandsTest::SetUp();
        I = quorda_test::UniqueTableName("items");
        V = quorda_test::UniqueTableName("v_items");
        Raw.Exec(
            "create table " + I +
            " (id integer primary key, name varchar(20), price double precision, qty integer, made date, "
            "memo text)");
        // Row 3 fails the WherePhrase (qty > 0), row 5 the filter (price >= 3). The names are plain
        // ASCII, so every data source sorts them alike.
        Raw.Exec(
            "insert into " + I +
            " values (1, 'delta', 4.5, 3, '2024-03-05', 'long text'), (2, 'alpha', 12.25, 1, '2024-01-15', "
            "'long text'), (3, 'echo', 1234.5, 0, '2024-02-01', 'long text'), (4, 'charlie', 7, 5, "
            "'2024-03-20', 'long text'), (5, 'bravo', 2, 2, '2024-04-02', 'long text'), (6, 'foxtrot', "
            "1500.75, 2500, '2023-12-31', null)");
        Raw.Exec("create view " + V + " as select id, name, price, qty, made, memo from " + I);
        Items = std::make_unique<TUserEntity>(nullptr);
        Items->CreateField("id", "Id", "", 4, true, false, true, false, ftInteger, cnstETPK);
        Items->CreateField("name", "Name", "", 12, true, true, false, true, ftString, cnstETField);
        Items->CreateField("price", "Price", "", 9, true, true, false, true, ftFloat, cnstETField);
        Items->CreateField("qty", "Quantity", "", 5, true, true, false, true, ftInteger, cnstETField);
        Items->CreateField("made", "Made", "", 10, true, true, false, false, ftDate, cnstETField);
        Items->CreateField("memo", "Memo", "", 10, true, true, false, false, ftMemo, cnstETField);
        Items->SetFactTable(I);
        Items->SetViewTable(V);
        Items->SetWherePhrase("qty > 0");
        Items->SetFilterStr("price >= :price");
        Items->SetFieldFilter("price", 3.0);
        Items->SetPrecision(15);
        Items->SetDigits(2);
    }
    void TearDown() override {
        Items.reset();
        Raw.Exec("drop view " + V);
        Raw.Exec("drop table " + I);
        CommandsTest::TearDown();
    }

    // The ids of the selection from its first row; the current row is left on the last.
    std::vector<int> Ids() {
        std::vector<int> Result;
        TDataSet& Query = *Items->DataQuery();
        for (Query.First(); !Query.Eof(); Query.Next()) {
            Result.push_back(Query.FieldByName("id")->AsInteger());
        }
        return Result;
    }
    int CurrentId() { return Items->DataQuery()->FieldByName("id")->AsInteger(); }
    void GoTo(int Id) {
        TDataSet& Query = *Items->DataQuery();
        for (Query.First(); !Query.Eof() && CurrentId() != Id; Query.Next()) {
        }
    }

    std::string I;
    std::string V;
    std::unique_ptr<TUserEntity> Items;
};

// The selection holds the rows that pass WherePhrase and the filter, in the order of the sorting
// field. Re-opening and re-reading stay on the row the selection stood on; the entity leads its
// namesakes, unmarked. The columns show as the fields say.
TEST_P(EntityOpen, ReopeningKeepsTheRowColumnsShowAsTheFieldsSayAndFindMovesToTheNextMatch) {
    Items->SetviewEntity("ITEMS");
    TTestEntity Other("ITEMS");
    Items->SetOrdering(Items->lstFields().IndexOf("name"));
    Items->EntityOpen();
    GoTo(1);
    Items->EntityOpenOnly();
    EXPECT_EQ(CurrentId(), 1);
    EXPECT_FALSE(Items->flgReread());
    EXPECT_EQ(lstOpenEntity().IndexOfObject(Items.get()), lstOpenEntity().IndexOf("ITEMS"));

    Raw.Exec("insert into " + I + " values (7, 'golf', 8, 8, '2024-05-05', null)");
    Items->SetFlgReread(true);
    Items->ReOpenSql();
    EXPECT_EQ(CurrentId(), 1);
    EXPECT_FALSE(Items->flgReread());
    EXPECT_EQ(Ids(), (std::vector<int>{2, 4, 1, 6, 7}));

    TDataSet& Query = *Items->DataQuery();
    EXPECT_FALSE(Query.FieldByName("id")->Visible());
    EXPECT_EQ(Query.FieldByName("qty")->DisplayLabel(), "Quantity");
    EXPECT_EQ(Query.FieldByName("price")->DisplayWidth(), 9);
    GoTo(6);
    EXPECT_EQ(Query.FieldByName("price")->DisplayText(), "1,500.75");
    EXPECT_EQ(Query.FieldByName("qty")->DisplayText(), "2,500");
    EXPECT_EQ(Query.FieldByName("qty")->Text(), "2500");
    EXPECT_EQ(Query.FieldByName("memo")->DisplayText(), "");
    GoTo(4);
    EXPECT_EQ(Query.FieldByName("price")->DisplayText(), "7.00");
    EXPECT_EQ(Query.FieldByName("memo")->DisplayText(), "(Blob)");
    // Find over the selection ordered by name: alpha (2), charlie (4), delta (1), foxtrot (6).
    const struct {
        const char* Name;
        int Start;
        std::vector<std::pair<const char*, Variant>> Finds;
        bool Sensitive;
        TDirectionFind Direction;
        int Expected; // the row found, 0 for none
    } Cases[] = {
        {"text by prefix, ignoring case", 2, {{"name", "CH"}}, false, dfNext, 4},
        {"text by prefix, case sensitive", 2, {{"name", "CH"}}, true, dfNext, 0},
        {"case sensitive, same case", 2, {{"name", "ch"}}, true, dfNext, 4},
        {"never the current row", 4, {{"name", "charlie"}}, false, dfNext, 0},
        {"backwards", 6, {{"name", "a"}}, false, dfPrior, 2},
        {"backwards from the first row", 2, {{"name", "a"}}, false, dfPrior, 0},
        {"numbers match whole values only", 2, {{"qty", "250"}}, false, dfNext, 0},
        {"a whole number", 2, {{"qty", "2500"}}, false, dfNext, 6},
        {"a whole float", 2, {{"price", "4.5"}}, false, dfNext, 1},
        {"dates contain", 2, {{"made", Variant::FromDateTime(EncodeDate(2024, 3, 20))}}, false, dfNext, 4},
        {"every field must match", 2, {{"name", "c"}, {"qty", "3"}}, false, dfNext, 0},
        {"two fields matching", 2, {{"name", "d"}, {"qty", "3"}}, false, dfNext, 1},
        {"blank text and numbers take no part", 4, {{"name", "  "}, {"qty", 5}}, false, dfNext, 0}};
    Items->SetOrdering(Items->lstFields().IndexOf("name"));
    Items->EntityOpen();
    for (const auto& Case : Cases) {
        SCOPED_TRACE(Case.Name);
        Items->ClearFieldsFind();
        for (const auto& [Field, Value] : Case.Finds) {
            Items->SetFieldFind(Field, Value);
        }
        Items->SetFindSensitive(Case.Sensitive);
        Items->SetFindDown(Case.Direction);
        GoTo(Case.Start);
        EXPECT_EQ(Items->Find(), Case.Expected != 0);
        EXPECT_EQ(CurrentId(), Case.Expected != 0 ? Case.Expected : Case.Start);
    }
}

INSTANTIATE_TEST_SUITE_P(Drivers, EntityOpen, ::testing::Values("sqlite", "pgsql", "mariadb"),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda::entitytest
