#include "entity_commands_support.h"
#include "quorda/db/field.h"

#include <functional>
#include <optional>

namespace quorda::entitytest {
namespace {

using quorda_test::Row;

class EntityCommands : public CommandsTest {};

// Bare and quoted names alike: a quoted name binds its parameter by the bare name.
TEST_P(EntityCommands, AddEditDeleteReachTheTableAndValueSourcesBindValuesNullsAndEmptyStrings) {
    if (!Profile.Sql.QuotedNames.empty()) {
        ExecuteQuery(Profile.Sql.QuotedNames);
    }
    for (const char* Quote : {"", "\""}) {
        SCOPED_TRACE(Quote);
        TNotesEntity Writer(T, "NOTES");
        TNotesEntity Reader(T, "NOTES");
        for (int I = 0; I < Writer.FieldCount(); ++I) {
            Writer.GetFields(I)->SetFactQuote(Quote);
        }
        auto Unmark = [&] {
            Writer.SetFlgReread(false);
            Reader.SetFlgReread(false);
        };

        Unmark();
        Writer.SetValues(1, 7, "first", "a long text");
        EXPECT_EQ(Writer.Add().AsInteger(), 1);
        EXPECT_EQ(Rows(), (std::vector<Row>{{"1", "7", "first", "a long text"}}));
        EXPECT_TRUE(Reader.flgReread());

        ASSERT_EQ(Writer.Lock(), lrOk);

        // Nothing differs from the locked row: nothing runs, nobody hears of it.
        Unmark();
        Raw.Exec("update " + T + " set customer = 8 where id = 1");
        EXPECT_EQ(Writer.Edit().AsInteger(), 0);
        EXPECT_FALSE(Reader.flgReread());
        EXPECT_EQ(Rows()[0][1], "8");

        // Only the changed column is written: the customer changed behind the entity's back stays.
        Writer.SetFieldValue("note", "second");
        EXPECT_EQ(Writer.Edit().AsInteger(), 1);
        EXPECT_EQ(Rows(), (std::vector<Row>{{"1", "8", "second", "a long text"}}));
        EXPECT_TRUE(Reader.flgReread());

        Unmark();
        EXPECT_EQ(Writer.Delete().AsInteger(), 1);
        EXPECT_TRUE(Rows().empty());
        EXPECT_TRUE(Reader.flgReread());
    }
    EXPECT_TRUE(Errors.Shown.empty());
    // Each value source inserts a row of values (a 64-bit number among them) and a row of nulls and
    // empty strings. An empty string is a null when it comes from an array or a field; a query's row
    // hands over what it holds.
    const std::string Source = quorda_test::UniqueTableName("source");
    Raw.Exec("create table " + Source + " (id integer, customer bigint, note varchar(20), memo text)");
    struct Case {
        const char* Name;
        std::function<void(TNotesEntity&, const std::vector<Variant>&)> Add;
        std::optional<std::string> EmptyNote;
    };
    const std::vector<Case> Cases{
        {"cdtArray", [](TNotesEntity& E, const std::vector<Variant>& V) { E.AddForArray(cdtArray, V); },
         std::nullopt},
        {"cdtField",
         [](TNotesEntity& E, const std::vector<Variant>& V) {
             E.SetValues(V[0], V[1], V[2], V[3]);
             E.AddForArray(cdtField, {});
         },
         std::nullopt},
        {"cdtQry",
         [&](TNotesEntity& E, const std::vector<Variant>& V) {
             Raw.Exec("delete from " + Source);
             Raw.Exec("insert into " + Source + " values (" + V[0].AsString() + ", " +
                      (VarIsNull(V[1]) ? "null" : V[1].AsString()) + ", '" + V[2].AsString() + "', " +
                      (VarIsNull(V[3]) ? "null" : "'" + V[3].AsString() + "'") + ")");
             E.DataQuery()->SQL().SetText("select id, customer, note, memo from " + Source);
             OpenQry(E.DataQuery());
             E.AddForArray(cdtQry, {});
             E.DataQuery()->Close();
         },
         ""},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        Raw.Exec("delete from " + T);
        TNotesEntity Notes(T, "");
        C.Add(Notes, {1, Variant(std::int64_t{5000000000}), "x", "long"});
        C.Add(Notes, {2, Variant::Null(), "", Variant::Null()});
        EXPECT_EQ(Rows(), (std::vector<Row>{{"1", "5000000000", "x", "long"},
                                            {"2", std::nullopt, C.EmptyNote, std::nullopt}}));
    }
    Raw.Exec("drop table " + Source);

    // A field binding needs a field for every parameter.
    TNotesEntity Notes(T, "");
    const auto Query = CreateQuery();
    Query->SQL().SetText("select * from " + T + " where id = :id and customer = :nosuch");
    EXPECT_EQ(MessageOf<EEntityException>([&] { Notes.SetParam(*Query, cdtField, nullptr, {}); }),
              "Field nosuch not found");
}

INSTANTIATE_TEST_SUITE_P(Drivers, EntityCommands, ::testing::Values("sqlite", "pgsql", "mariadb"),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda::entitytest
