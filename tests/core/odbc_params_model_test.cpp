#include "core_test_support.h"
#include "quorda/core/odbc_params.h"
#include "quorda/rtl/messages.h"
#include "quorda/rtl/stream.h"

#include <cstdio>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace quorda {
namespace {

using testing::DatabaseErrorOf;

// The parameter's type and the kind of variant holding its value.
#define EXPECT_HOLDS(param, type, varType)                                                                   \
    do {                                                                                                     \
        EXPECT_EQ((param)->DataType(), type);                                                                \
        EXPECT_EQ((param)->GetAsVariant().VarType(), varType);                                               \
    } while (false)

TEST(ODBCParams, OwnershipFollowsTheCollection) {
    TODBCParams params;
    auto* a = params.CreateParam(ftInteger, "a");
    auto* b = new TODBCParam(&params);
    delete a; // a parameter freed by its user leaves the collection
    ASSERT_EQ(params.Count(), 1);
    EXPECT_EQ(params.GetParam(0), b);

    TODBCParams other;
    other.AddParam(b); // moves: never listed twice
    EXPECT_EQ(params.Count(), 0);
    EXPECT_EQ(b->ParamList(), &other);
    other.RemoveParam(b); // the caller owns it now
    EXPECT_EQ(other.Count(), 0);
    delete b;

    EXPECT_EQ(DatabaseErrorOf([&] { params.GetParam(0); }), "List index (0) out of bounds");
    // Clear and the destructor free the rest (ASan reports leaks and double frees).
    params.CreateParam(ftString, "x");
    params.CreateParam(ftString, "x");
    params.Clear();
    EXPECT_EQ(params.Count(), 0);
    params.CreateParam(ftString, "y");
}

TEST(ODBCParams, LookupByName) {
    TODBCParams params;
    auto* id = params.CreateParam(ftInteger, "id");
    auto* second = params.CreateParam(ftInteger, "ID");
    params.CreateParam(ftString, "Größe");

    EXPECT_EQ(params.ParamByName("ID"), id);
    EXPECT_NE(params.FindParam("GRÖßE"), nullptr);
    EXPECT_EQ(params.FindParam("idx"), nullptr);
    EXPECT_EQ(DatabaseErrorOf([&] { params.ParamByName("nope"); }), "ODBC Parameter nope not found");

    // IsEqual compares names exactly.
    EXPECT_FALSE(id->IsEqual(second));
    second->SetName("id");
    EXPECT_TRUE(id->IsEqual(second));
}

struct SetterCase {
    std::function<void(TODBCParam&)> Set;
    TFieldType Type;
    TVarType VarType; // the kind of variant behind the value, which decides equality
    std::optional<std::string> Shown;
};

SetterCase Setting(TFieldType Type, std::string Text, TVarType VarType, std::string Shown) {
    return {[=](TODBCParam& P) {
                P.SetDataType(Type);
                P.SetText(Text);
            },
            Type, VarType, Shown};
}

SetterCase Setting(const Variant& Value, TFieldType Type) {
    return {[=](TODBCParam& P) { P.SetAsVariant(Value); }, Type, Value.VarType(), std::nullopt};
}

// The type each typed setter chooses is pinned by the stored layouts (ODBCParamsData); here the
// variant kinds behind them, texts by type, and the setters with rules of their own.
TEST(ODBCParams, SettersChooseTypeAndVariantKindAndReadAsText) {
    TODBCParams params;
    auto* p = params.CreateParam(ftUnknown, "p");
    EXPECT_FALSE(p->Bound());
    p->SetText("12");
    EXPECT_HOLDS(p, ftString, varString);
    EXPECT_TRUE(p->Bound());

    for (const SetterCase& c : {
             SetterCase{[](TODBCParam& P) { P.SetAsSmallInt(-7); }, ftSmallint, varInteger, "-7"},
             SetterCase{[](TODBCParam& P) { P.SetAsCurrency(12.5); }, ftCurrency, varDouble, std::nullopt},
             SetterCase{[](TODBCParam& P) { P.SetAsTime(EncodeTime(12, 34, 56, 0)); }, ftTime, varDate,
                        "12:34:56"},
             SetterCase{[](TODBCParam& P) { P.SetAsDate(EncodeDate(2020, 2, 29)); }, ftDate, varDate,
                        "2020-02-29"},
             SetterCase{[](TODBCParam& P) { P.SetAsBCD(Currency::FromRaw(123456789)); }, ftBCD, varCurrency,
                        std::nullopt},
             SetterCase{[](TODBCParam& P) { P.SetAsBoolean(true); }, ftBoolean, varBoolean, "True"},
             SetterCase{[](TODBCParam& P) { P.SetAsBoolean(false); }, ftBoolean, varBoolean, "False"},
             Setting(ftInteger, "12", varInteger, "12"),
             Setting(ftWord, "12", varInteger, "12"),
             Setting(ftBoolean, "true", varBoolean, "True"),
             Setting(ftCurrency, "2.25", varDouble, "2.25"),
             Setting(ftBCD, "2.25", varCurrency, "2.25"),
             Setting(ftDate, "1999-12-31", varDate, "1999-12-31"),
             Setting(ftMemo, "12", varString, "12"),
             Setting(ftBlob, "12", varString, "12"),
             Setting(Variant(short(1)), ftInteger),
             Setting(Variant(std::int64_t(1) << 40), ftInteger),
             Setting(Variant(1.5f), ftFloat),
             Setting(Variant(Currency(2)), ftCurrency),
             Setting(Variant::FromDateTime(2.5), ftDateTime),
             Setting(Variant(true), ftBoolean),
             Setting(Variant("x"), ftString),
             Setting(VarArrayOf({1, 2}), ftUnknown),
         }) {
        c.Set(*p);
        EXPECT_HOLDS(p, c.Type, c.VarType);
        EXPECT_FALSE(p->IsNull());
        if (c.Shown) {
            EXPECT_EQ(p->AsString(), *c.Shown);
        }
    }
    // The boolean texts come from the message table.
    SetMessageText(SODBCTextTrue, "Wahr");
    p->SetAsBoolean(true);
    EXPECT_EQ(p->AsString(), "Wahr");
    ResetMessageTexts();

    // A text the type refuses raises the variant conversion error; the text stays.
    p->SetDataType(ftInteger);
    EXPECT_THROW(p->SetText("twelve"), EVariantError);
    EXPECT_HOLDS(p, ftInteger, varString);

    // SetAsString keeps a memo a memo and turns anything else into a string.
    p->SetAsMemo("long text");
    p->SetAsString("short");
    EXPECT_EQ(p->DataType(), ftMemo);
    p->SetAsInteger(5);
    p->SetAsString("five");
    EXPECT_HOLDS(p, ftString, varString);

    // A type change resets the value to integer 0 but leaves the flags.
    p->SetDataType(ftFloat);
    EXPECT_HOLDS(p, ftFloat, varInteger);
    EXPECT_EQ(p->AsInteger(), 0);
    EXPECT_TRUE(p->Bound());
    EXPECT_FALSE(p->IsNull());

    // A null parameter reads as empty text whatever its type and stored value.
    for (TFieldType type : {ftInteger, ftBoolean, ftString, ftDate}) {
        p->SetDataType(type);
        p->Clear();
        EXPECT_EQ(p->AsString(), "") << int(type);
    }
    p->SetDataType(ftInteger);
    EXPECT_TRUE(p->IsNull());

    // Null and Empty variants keep the type and make the parameter a bound null.
    p->SetAsString("s");
    p->SetBound(false);
    p->SetAsVariant(Variant::Null());
    EXPECT_EQ(p->DataType(), ftString);
    EXPECT_TRUE(p->IsNull());
    EXPECT_TRUE(p->Bound());
    p->SetAsInteger(3);
    p->SetAsVariant(Variant());
    EXPECT_EQ(p->DataType(), ftInteger);
    EXPECT_TRUE(p->IsNull());
}

TEST(ODBCParams, ValuesByNameLists) {
    TODBCParams params;
    auto* a = params.CreateParam(ftUnknown, "a");
    auto* b = params.CreateParam(ftUnknown, "b");

    params.SetParamValue("a;b", VarArrayOf({10, "ten"}));
    EXPECT_EQ(a->AsInteger(), 10);
    EXPECT_EQ(b->AsString(), "ten");

    Variant both = params.GetParamValue(" B ; a ");
    ASSERT_TRUE(both.IsArray());
    EXPECT_EQ(VarArrayLowBound(both), 0);
    EXPECT_EQ(VarArrayHighBound(both), 1);
    EXPECT_EQ(both[0].AsString(), "ten");
    EXPECT_EQ(both[1].AsInteger(), 10);

    params.SetParamValue("A", 11);
    EXPECT_EQ(params.GetParamValue("a").AsInteger(), 11);

    // Every name is resolved before anything is set.
    EXPECT_EQ(DatabaseErrorOf([&] {
                  params.SetParamValue("a;x", VarArrayOf({1, 2}));
              }),
              "ODBC Parameter x not found");
    EXPECT_EQ(a->AsInteger(), 11);
    // A list needs an array with an element per name.
    EXPECT_THROW(params.SetParamValue("a;b", 1), EVariantError);
    EXPECT_THROW(params.SetParamValue("a;b", VarArrayOf({1})), EVariantError);

    std::vector<TODBCParam*> list;
    params.GetParamList(list, "b;a;b");
    EXPECT_EQ(list, (std::vector<TODBCParam*>{b, a, b}));
}

TEST(ODBCParams, AssignAndCompare) {
    TODBCParams source;
    auto* s1 = source.CreateParam(ftUnknown, "s1");
    s1->SetAsFloat(1.25);
    auto* s2 = source.CreateParam(ftDate, "s2");
    s2->SetAsDate(1.0);
    s2->Clear();
    source.CreateParam(ftString, "s3");

    TODBCParams copy;
    copy.CreateParam(ftInteger, "old");
    copy.Assign(&source);
    ASSERT_EQ(copy.Count(), 3);
    EXPECT_TRUE(copy.IsEqual(&source));
    EXPECT_TRUE(copy[1]->IsNull());
    EXPECT_TRUE(copy[1]->Bound());
    EXPECT_FALSE(copy[2]->Bound());
    copy.Assign(&copy); // keeps the collection
    EXPECT_EQ(copy.Count(), 3);

    // Equal values of different variant kinds differ; values that cannot be compared differ.
    copy[0]->SetAsInteger(1);
    s1->SetAsFloat(1.0);
    EXPECT_FALSE(copy.IsEqual(&source));
    copy[0]->SetAsVariant(VarArrayOf({"a"}));
    s1->SetAsVariant(VarArrayOf({1}));
    EXPECT_FALSE(copy[0]->IsEqual(s1));

    // The translate flag is the target's own.
    TODBCParams target;
    auto* t = target.CreateParam(ftUnknown, "t");
    t->SetTranslate(false);
    t->Assign(s2);
    EXPECT_EQ(t->Name(), "s2");
    EXPECT_FALSE(t->Translate());
    EXPECT_THROW(t->Assign(&target), EAssignError);
}

TEST(ODBCParams, LoadsBlobsFromStreamsAndFiles) {
    TODBCParams params;
    auto* p = params.CreateParam(ftString, "p");
    p->Clear();
    TStringStream stream(std::string("\x01\x00\x02", 3));
    stream.SetPosition(2); // the whole stream counts, not the rest
    p->LoadFromStream(stream, ftGraphic);
    EXPECT_HOLDS(p, ftGraphic, varString);
    EXPECT_EQ(p->AsString(), std::string("\x01\x00\x02", 3));
    EXPECT_FALSE(p->IsNull());

    const std::string fileName = ::testing::TempDir() + "quorda_param_blob.bin";
    std::ofstream(fileName, std::ios::binary) << "file content";
    p->LoadFromFile(fileName, ftBlob);
    EXPECT_EQ(p->AsString(), "file content");
    std::remove(fileName.c_str());
    EXPECT_THROW(p->LoadFromFile(fileName, ftBlob), EFOpenError);
}

} // namespace
} // namespace quorda
