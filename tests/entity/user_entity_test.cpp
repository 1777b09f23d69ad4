#include "entity_test_support.h"
#include "quorda/rtl/filer.h"

#include <gtest/gtest.h>

namespace quorda {
namespace {

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
