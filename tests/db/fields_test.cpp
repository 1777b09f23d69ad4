// Field values: conversions and their errors, null handling, text events and validation.

#include "db_test_support.h"

#include <gtest/gtest.h>

using namespace quorda;

namespace {

class FieldsTest : public ::testing::Test {
protected:
    void SetUp() override {
        TFieldDefs& defs = DataSet.FieldDefs();
        defs.Add("S", ftString, 5);
        defs.Add("SI", ftSmallint);
        defs.Add("I", ftInteger);
        defs.Add("W", ftWord);
        defs.Add("L", ftLargeint);
        defs.Add("F", ftFloat);
        defs.Add("B", ftBoolean);
        defs.Add("C", ftBCD);
        defs.Add("BY", ftBytes, 4);
        defs.Add("VB", ftVarBytes, 4);
        DataSet.CreateDataSet();
        DataSet.Append();
    }

    TField* F(const std::string& Name) { return DataSet.FieldByName(Name); }

    TMemDataSet DataSet{nullptr};
};

TEST_F(FieldsTest, NullReadsAsEmptyAndZeroAndEverySetterCanClear) {
    for (TField* field : DataSet.Fields()) {
        SCOPED_TRACE(field->FieldName());
        EXPECT_TRUE(field->IsNull());
        EXPECT_TRUE(VarIsNull(field->Value()));
        EXPECT_EQ(field->AsString(), "");
    }
    EXPECT_EQ(F("I")->AsInteger(), 0);
    EXPECT_EQ(F("F")->AsFloat(), 0.0);
    EXPECT_FALSE(F("B")->AsBoolean());

    F("I")->SetAsInteger(5);
    F("I")->SetValue(Variant::Null());
    EXPECT_TRUE(F("I")->IsNull());
    F("F")->SetAsFloat(1.5);
    F("F")->SetAsString("");
    EXPECT_TRUE(F("F")->IsNull());
    F("S")->SetAsString("");
    EXPECT_FALSE(F("S")->IsNull()) << "an empty string is a value";
    F("S")->Clear();
    EXPECT_TRUE(F("S")->IsNull());
}

TEST_F(FieldsTest, IntegersCheckTextAndRange) {
    F("I")->SetAsString(" 42 ");
    EXPECT_EQ(F("I")->AsInteger(), 42);
    EXPECT_EQ(F("I")->Value().VarType(), varInteger);
    EXPECT_EQ(dbtest::MessageOf([&] { F("I")->SetAsString("4x"); }),
              "Field \"I\" error: \"4x\" is not a valid integer");
    EXPECT_EQ(dbtest::MessageOf([&] { F("SI")->SetAsInteger(40000); }),
              "Field \"SI\" error: 40000 is not between -32768 and 32767.");
    EXPECT_EQ(dbtest::MessageOf([&] { F("W")->SetAsInteger(-1); }),
              "Field \"W\" error: -1 is not between 0 and 65535.");
    F("SI")->SetAsInteger(-32768);
    EXPECT_EQ(F("SI")->AsInteger(), -32768);
    F("W")->SetAsInteger(65535);
    EXPECT_EQ(F("W")->AsString(), "65535");
    // Floats round half to even on the way in.
    F("I")->SetAsFloat(2.5);
    EXPECT_EQ(F("I")->AsInteger(), 2);
    F("I")->SetAsFloat(3.5);
    EXPECT_EQ(F("I")->AsInteger(), 4);
    EXPECT_THROW(F("I")->SetAsFloat(1e12), EDatabaseError);
    F("L")->SetAsString("9000000000");
    EXPECT_EQ(F("L")->AsLargeInt(), 9000000000LL);
    EXPECT_THROW(F("L")->AsInteger(), EDatabaseError) << "no silent cut to 32 bits";
    auto* bounded = static_cast<TIntegerField*>(F("I"));
    bounded->SetMinValue(1);
    bounded->SetMaxValue(10);
    EXPECT_THROW(F("I")->SetAsInteger(11), EDatabaseError);
    F("I")->SetAsInteger(10);
}

TEST_F(FieldsTest, FloatsBooleansAndBcdConvertTextBothWays) {
    F("F")->SetAsString("1.25");
    EXPECT_EQ(F("F")->AsFloat(), 1.25);
    EXPECT_EQ(F("F")->AsString(), "1.25");
    EXPECT_EQ(dbtest::MessageOf([&] { F("F")->SetAsString("1,2.3"); }),
              "Field \"F\" error: \"1,2.3\" is not a valid float");
    static_cast<TFloatField*>(F("F"))->SetDisplayFormat("0.000");
    EXPECT_EQ(F("F")->DisplayText(), "1.250");
    EXPECT_EQ(F("F")->Text(), "1.250");

    auto* flag = static_cast<TBooleanField*>(F("B"));
    flag->SetDisplayValues("Yes;No");
    F("B")->SetAsString("n");
    EXPECT_FALSE(F("B")->AsBoolean());
    EXPECT_EQ(F("B")->AsString(), "No");
    F("B")->SetText("YE");
    EXPECT_TRUE(F("B")->AsBoolean());
    EXPECT_EQ(F("B")->AsInteger(), 1);
    EXPECT_EQ(dbtest::MessageOf([&] { F("B")->SetAsString("maybe"); }), "\"maybe\" is not a valid boolean");
    EXPECT_EQ(dbtest::MessageOf([&] { flag->SetDisplayValues("Yes"); }),
              "Field \"B\" error: \"Yes\" are not valid boolean displayvalues");

    F("C")->SetAsString("12.3456");
    EXPECT_EQ(F("C")->AsCurrency(), Currency::FromRaw(123456));
    EXPECT_EQ(F("C")->AsString(), "12.3456");
    EXPECT_EQ(F("C")->Value().VarType(), varCurrency);
    F("C")->SetAsFloat(0.1);
    EXPECT_EQ(F("C")->AsString(), "0.1");
}

TEST_F(FieldsTest, StringsAreCutAtTheSizeWithoutSplittingACharacter) {
    F("S")->SetAsString("abcdefgh");
    EXPECT_EQ(F("S")->AsString(), "abcde");
    F("S")->SetAsString("ééé");
    EXPECT_EQ(F("S")->AsString(), "éé");
    F("S")->SetAsInteger(12);
    EXPECT_EQ(F("S")->AsInteger(), 12);
    F("S")->SetAsBoolean(true);
    EXPECT_TRUE(F("S")->AsBoolean());
    EXPECT_EQ(F("S")->AsString(), "T");
}

TEST_F(FieldsTest, BinaryFieldsKeepTheirBytes) {
    F("BY")->SetAsBytes({1, 2});
    EXPECT_EQ(F("BY")->AsBytes(), (TBytes{1, 2, 0, 0}));
    F("VB")->SetAsBytes({9, 0, 7, 6, 5, 4});
    EXPECT_EQ(F("VB")->AsBytes(), (TBytes{9, 0, 7, 6}));
    Variant array = F("VB")->Value();
    ASSERT_TRUE(VarIsArray(array));
    EXPECT_EQ(VarArrayHighBound(array), 3);
    F("BY")->SetValue(array);
    EXPECT_EQ(F("BY")->AsBytes(), (TBytes{9, 0, 7, 6}));
}

TEST_F(FieldsTest, UnsupportedConversionsNameTheTargetAndTheField) {
    EXPECT_EQ(dbtest::MessageOf([&] { F("B")->AsDateTime(); }),
              "Invalid type conversion to TDateTime in field B");
    EXPECT_EQ(dbtest::MessageOf([&] { F("BY")->SetAsFloat(1); }),
              "Invalid type conversion to Float in field BY");
    EXPECT_EQ(dbtest::MessageOf([&] {
                  F("I")->SetValue(VarArrayOf({1, 2}));
              }),
              "Field \"I\" error: Invalid variant value");
}

TEST_F(FieldsTest, TextEventsReplaceTheFieldsOwnConversion) {
    TField* field = F("I");
    field->OnGetText = [](TField* Sender, std::string& Text, bool Display) {
        Text = (Display ? "#" : "") + std::to_string(Sender->AsInteger());
    };
    field->OnSetText = [](TField* Sender, const std::string& Text) {
        Sender->SetAsInteger(std::stoi(Text) * 2);
    };
    field->SetText("21");
    EXPECT_EQ(field->AsInteger(), 42);
    EXPECT_EQ(field->Text(), "42");
    EXPECT_EQ(field->DisplayText(), "#42");
}

TEST_F(FieldsTest, ValidateSeesTheNewValueAndCanRefuseIt) {
    TField* field = F("I");
    field->SetAsInteger(1);
    std::vector<int> seen;
    field->OnValidate = [&](TField* Sender) {
        seen.push_back(Sender->AsInteger());
        if (Sender->AsInteger() < 0) {
            throw EDatabaseError("negative");
        }
    };
    field->SetAsInteger(7);
    EXPECT_THROW(field->SetAsInteger(-7), EDatabaseError);
    EXPECT_EQ(seen, (std::vector<int>{7, -7}));
    EXPECT_EQ(field->AsInteger(), 7);
}

TEST(FieldClasses, EveryTypeWithAClassCreatesAFieldOfThatType) {
    TMemDataSet dataSet(nullptr);
    for (int type = ftUnknown; type <= ftWideMemo; ++type) {
        auto fieldType = static_cast<TFieldType>(type);
        TFieldClass fieldClass = DefaultFieldClass(fieldType);
        if (!fieldClass) {
            continue;
        }
        std::unique_ptr<TField> field(fieldClass(nullptr));
        field->SetFieldType(fieldType);
        EXPECT_EQ(field->DataType(), fieldType) << FieldTypeName(fieldType);
        EXPECT_EQ(field->IsBlob(), IsBlobType(fieldType)) << FieldTypeName(fieldType);
    }
    TFieldDef* cursor = dataSet.FieldDefs().Add("CUR", ftCursor);
    EXPECT_EQ(dbtest::MessageOf([&] { cursor->CreateField(&dataSet); }), "Unknown field type : CUR");
    EXPECT_EQ(dataSet.FieldCount(), 0);
}

TEST(FieldClasses, NamesAreUniqueInADataset) {
    TMemDataSet dataSet(nullptr);
    auto* first = new TIntegerField(&dataSet);
    first->SetFieldName("A");
    first->SetDataSet(&dataSet);
    auto* second = new TIntegerField(&dataSet);
    second->SetFieldName("a");
    EXPECT_THROW(second->SetDataSet(&dataSet), EDatabaseError);
    second->SetFieldName("B");
    second->SetDataSet(&dataSet);
    EXPECT_THROW(second->SetFieldName("A"), EDatabaseError);
    second->SetIndex(0);
    EXPECT_EQ(dataSet.Fields()[0], second);
    delete first;
    EXPECT_EQ(dataSet.FieldCount(), 1);
}

} // namespace
