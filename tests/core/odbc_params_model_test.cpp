#include "quorda/core/odbc_params.h"
#include "quorda/rtl/messages.h"
#include "quorda/rtl/stream.h"

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace quorda {
namespace {

std::string ErrorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const EDatabaseError& e) {
        return e.Message();
    }
    return "<no EDatabaseError>";
}

TEST(ODBCParams, OwnershipFollowsTheCollection) {
    TODBCParams params;
    auto* a = params.CreateParam(ftInteger, "a");
    auto* b = new TODBCParam(&params);
    ASSERT_EQ(params.Count(), 2);
    EXPECT_EQ(params.Items(1), b);
    EXPECT_EQ(a->ParamList(), &params);

    // A parameter freed by its user leaves the collection.
    delete a;
    ASSERT_EQ(params.Count(), 1);
    EXPECT_EQ(params.GetParam(0), b);

    // Moving a parameter to another collection takes it out of the first one.
    TODBCParams other;
    other.AddParam(b);
    EXPECT_EQ(params.Count(), 0);
    EXPECT_EQ(other.Count(), 1);
    EXPECT_EQ(b->ParamList(), &other);

    // A removed parameter belongs to the caller.
    other.RemoveParam(b);
    EXPECT_EQ(other.Count(), 0);
    EXPECT_EQ(b->ParamList(), nullptr);
    delete b;

    EXPECT_EQ(ErrorOf([&] { params.GetParam(0); }), "List index (0) out of bounds");

    // Clear and the destructor free the rest (ASan reports leaks or double frees).
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
    EXPECT_EQ(params.FindParam("Id"), id);
    EXPECT_NE(params.FindParam("GRÖßE"), nullptr);
    EXPECT_EQ(params.FindParam("idx"), nullptr);
    EXPECT_EQ(ErrorOf([&] { params.ParamByName("nope"); }), "ODBC Parameter nope not found");

    // Names compare exactly in IsEqual.
    second->SetName("id");
    EXPECT_TRUE(id->IsEqual(second));
    second->SetName("ID");
    EXPECT_FALSE(id->IsEqual(second));
}

TEST(ODBCParams, TypedSettersChooseTheType) {
    TODBCParams params;
    auto* p = params.CreateParam(ftUnknown, "p");
    EXPECT_FALSE(p->Bound());
    EXPECT_FALSE(p->IsNull());
    EXPECT_EQ(p->GetAsInteger(), 0);

    p->SetAsSmallInt(-7);
    EXPECT_EQ(p->DataType(), ftSmallint);
    EXPECT_EQ(p->AsInteger(), -7);
    EXPECT_TRUE(p->Bound());

    p->SetAsWord(65535);
    EXPECT_EQ(p->DataType(), ftWord);
    EXPECT_EQ(p->AsInteger(), 65535);

    p->SetAsCurrency(12.5);
    EXPECT_EQ(p->DataType(), ftCurrency);
    EXPECT_DOUBLE_EQ(p->AsFloat(), 12.5);

    p->SetAsBCD(Currency::FromRaw(123456789));
    EXPECT_EQ(p->DataType(), ftBCD);
    EXPECT_EQ(p->GetAsVariant().VarType(), varCurrency);
    EXPECT_EQ(p->AsBCD(), Currency::FromRaw(123456789));

    const TDateTime moment = EncodeDateTime(2021, 3, 4, 5, 6, 7, 8);
    p->SetAsTime(moment);
    EXPECT_EQ(p->DataType(), ftTime);
    EXPECT_EQ(p->GetAsVariant().VarType(), varDate);
    p->SetAsDateTime(moment);
    EXPECT_EQ(p->DataType(), ftDateTime);
    EXPECT_DOUBLE_EQ(p->AsDateTime(), moment);

    // SetAsString keeps a memo a memo and turns anything else into a string.
    p->SetAsMemo("long text");
    p->SetAsString("short");
    EXPECT_EQ(p->DataType(), ftMemo);
    p->SetAsInteger(5);
    p->SetAsString("five");
    EXPECT_EQ(p->DataType(), ftString);
    EXPECT_EQ(p->AsString(), "five");

    // The blob type is set after the value, which therefore survives.
    const char bytes[] = {'a', '\0', 'b'};
    p->SetBlobData(bytes, sizeof bytes);
    EXPECT_EQ(p->DataType(), ftBlob);
    EXPECT_EQ(p->AsString(), std::string(bytes, 3));
}

TEST(ODBCParams, DataTypeChangeResetsTheValueButNotTheFlags) {
    TODBCParams params;
    auto* p = params.CreateParam(ftString, "p");
    p->SetAsString("value");
    p->SetDataType(ftInteger);
    EXPECT_EQ(p->GetAsVariant().VarType(), varInteger);
    EXPECT_EQ(p->AsInteger(), 0);
    EXPECT_TRUE(p->Bound());
    EXPECT_FALSE(p->IsNull());

    p->Clear();
    p->SetDataType(ftFloat);
    EXPECT_TRUE(p->IsNull());
    EXPECT_TRUE(p->Bound());
}

TEST(ODBCParams, AsStringByTypeAndNullState) {
    TODBCParams params;
    auto* p = params.CreateParam(ftUnknown, "p");
    p->SetAsBoolean(true);
    EXPECT_EQ(p->AsString(), "True");
    p->SetAsBoolean(false);
    EXPECT_EQ(p->AsString(), "False");

    // The boolean texts come from the message table.
    SetMessageText(SODBCTextTrue, "Wahr");
    p->SetAsBoolean(true);
    EXPECT_EQ(p->AsString(), "Wahr");
    ResetMessageTexts();

    // A null parameter reads as empty text whatever its type or stored value.
    for (TFieldType type : {ftInteger, ftBoolean, ftString, ftDate}) {
        p->SetDataType(type);
        p->Clear();
        EXPECT_EQ(p->AsString(), "") << int(type);
    }

    // Dates, times and date-times read as date-time text, whatever variant kind holds them.
    p->SetAsDate(EncodeDate(2020, 2, 29));
    EXPECT_EQ(p->AsString(), "2020-02-29");
    p->SetAsTime(EncodeTime(12, 34, 56, 0));
    EXPECT_EQ(p->AsString(), "12:34:56");
    p->SetAsVariant(Variant::FromDateTime(EncodeDate(2020, 2, 29) + 0.5));
    EXPECT_EQ(p->DataType(), ftDateTime);
    EXPECT_EQ(p->AsString(), "2020-02-29 12:00:00");
}

TEST(ODBCParams, SetTextConvertsByType) {
    TODBCParams params;
    auto* p = params.CreateParam(ftUnknown, "p");
    p->SetText("12");
    EXPECT_EQ(p->DataType(), ftString);
    EXPECT_EQ(p->GetAsVariant().VarType(), varString);
    EXPECT_TRUE(p->Bound());

    p->SetDataType(ftInteger);
    p->SetText("12");
    EXPECT_EQ(p->GetAsVariant().VarType(), varInteger);
    EXPECT_EQ(p->AsInteger(), 12);

    p->SetDataType(ftBoolean);
    p->SetText("true");
    EXPECT_EQ(p->GetAsVariant().VarType(), varBoolean);
    EXPECT_TRUE(p->AsBoolean());

    p->SetDataType(ftCurrency);
    p->SetText("2.25");
    EXPECT_EQ(p->GetAsVariant().VarType(), varDouble);

    p->SetDataType(ftBCD);
    p->SetText("2.25");
    EXPECT_EQ(p->GetAsVariant().VarType(), varCurrency);
    EXPECT_EQ(p->AsBCD(), Currency::FromRaw(22500));

    p->SetDataType(ftDate);
    p->SetText(DateToStr(EncodeDate(1999, 12, 31)));
    EXPECT_EQ(p->GetAsVariant().VarType(), varDate);
    EXPECT_DOUBLE_EQ(p->AsDateTime(), EncodeDate(1999, 12, 31));

    p->SetDataType(ftMemo);
    p->SetText("12");
    EXPECT_EQ(p->GetAsVariant().VarType(), varString);

    // A text that the type refuses raises the variant conversion error; the text stays.
    p->SetDataType(ftInteger);
    EXPECT_THROW(p->SetText("twelve"), EVariantError);
    EXPECT_EQ(p->GetAsVariant().VarType(), varString);
}

TEST(ODBCParams, SetAsVariantMapsVariantKinds) {
    TODBCParams params;
    auto* p = params.CreateParam(ftUnknown, "p");
    struct Case {
        Variant value;
        TFieldType type;
    };
    const std::vector<Case> cases = {
        {Variant(short(1)), ftInteger},
        {Variant(std::int64_t(1) << 40), ftInteger},
        {Variant(std::uint8_t(1)), ftInteger},
        {Variant(1.5f), ftFloat},
        {Variant(1.5), ftFloat},
        {Variant(Currency(2)), ftCurrency},
        {Variant::FromDateTime(2.5), ftDateTime},
        {Variant(true), ftBoolean},
        {Variant("x"), ftString},
        {VarArrayOf({1, 2}), ftUnknown},
    };
    for (const auto& c : cases) {
        p->SetAsVariant(c.value);
        EXPECT_EQ(p->DataType(), c.type) << VarTypeAsText(c.value.VarType());
        EXPECT_EQ(p->GetAsVariant().VarType(), c.value.VarType());
        EXPECT_FALSE(p->IsNull());
    }

    // Null and Empty keep the type and make the parameter a bound null.
    p->SetAsString("s");
    p->SetBound(false);
    p->SetAsVariant(Variant::Null());
    EXPECT_EQ(p->DataType(), ftString);
    EXPECT_TRUE(p->IsNull());
    EXPECT_TRUE(p->Bound());
    EXPECT_EQ(p->AsString(), "");
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
    EXPECT_EQ(a->DataType(), ftInteger);
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
    EXPECT_EQ(ErrorOf([&] {
                  params.SetParamValue("a;x", VarArrayOf({1, 2}));
              }),
              "ODBC Parameter x not found");
    EXPECT_EQ(a->AsInteger(), 11);
    EXPECT_EQ(ErrorOf([&] { params.GetParamValue("x"); }), "ODBC Parameter x not found");

    // A list needs an array with an element per name.
    EXPECT_THROW(params.SetParamValue("a;b", 1), EVariantError);
    EXPECT_THROW(params.SetParamValue("a;b", VarArrayOf({1})), EVariantError);

    std::vector<TODBCParam*> list;
    params.GetParamList(list, "b;a;b");
    EXPECT_EQ(list, (std::vector<TODBCParam*>{b, a, b}));
}

TEST(ODBCParams, AssignCopiesParametersAndCollections) {
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
    EXPECT_EQ(copy[1]->DataType(), ftDate);
    EXPECT_TRUE(copy[1]->IsNull());
    EXPECT_FALSE(copy[2]->Bound());

    // Self-assignment keeps the collection.
    copy.Assign(&copy);
    EXPECT_EQ(copy.Count(), 3);

    // A change anywhere makes the collections differ.
    copy[0]->SetAsFloat(1.5);
    EXPECT_FALSE(copy.IsEqual(&source));
    copy[0]->SetAsInteger(1);
    s1->SetAsFloat(1.0);
    EXPECT_FALSE(copy.IsEqual(&source)); // same value, other variant type

    // Values that cannot be compared are simply different.
    TODBCParams arrays;
    auto* text = arrays.CreateParam(ftUnknown, "v");
    auto* number = arrays.CreateParam(ftUnknown, "v");
    text->SetAsVariant(VarArrayOf({"a"}));
    number->SetAsVariant(VarArrayOf({1}));
    EXPECT_FALSE(text->IsEqual(number));
    number->SetAsVariant(VarArrayOf({"a"}));
    EXPECT_TRUE(text->IsEqual(number));

    // Assigning a parameter copies its null state and bound flag; the translate flag stays.
    TODBCParams target;
    auto* t = target.CreateParam(ftUnknown, "t");
    t->SetTranslate(false);
    t->Assign(s2);
    EXPECT_EQ(t->Name(), "s2");
    EXPECT_TRUE(t->IsNull());
    EXPECT_TRUE(t->Bound());
    EXPECT_FALSE(t->Translate());

    EXPECT_THROW(t->Assign(&target), EAssignError);
}

TEST(ODBCParams, LoadsBlobsFromStreamsAndFiles) {
    TODBCParams params;
    auto* p = params.CreateParam(ftString, "p");
    p->Clear();
    TStringStream stream(std::string("\x01\x00\x02", 3));
    stream.SetPosition(2);
    p->LoadFromStream(stream, ftGraphic);
    EXPECT_EQ(p->DataType(), ftGraphic);
    EXPECT_EQ(p->AsString(), std::string("\x01\x00\x02", 3));
    EXPECT_FALSE(p->IsNull());

    const std::string fileName = ::testing::TempDir() + "quorda_param_blob.bin";
    {
        std::ofstream out(fileName, std::ios::binary);
        out << "file content";
    }
    p->LoadFromFile(fileName, ftBlob);
    EXPECT_EQ(p->AsString(), "file content");
    std::remove(fileName.c_str());
    EXPECT_THROW(p->LoadFromFile(fileName, ftBlob), EFOpenError);
}

} // namespace
} // namespace quorda
