// The idiomatic reads: As<T> and As<std::optional<T>> over NULL and a value of every supported type,
// and name lookups through string views that are not zero-terminated.

#include "db_test_support.h"

#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string_view>

using namespace quorda;

namespace {

const TBytes kBytes{1, 0, 255};
const TDateTime kLeapNoon = EncodeDate(2024, 2, 29) + 0.5;

// Row 1 holds a value in every column, row 2 is all NULL: As<std::optional<T>> must tell them apart
// where the classic accessors read NULL as the type's zero, and a plain As<T> must refuse the NULL.
template <typename T>
std::function<void(TDataSet&)> Reads(const char* Column, T Expected) {
    return [Column, Expected](TDataSet& DataSet) {
        SCOPED_TRACE(Column);
        DataSet.First();
        TField* field = DataSet.FieldByName(Column);
        EXPECT_EQ(field->As<T>(), Expected);
        EXPECT_EQ(field->As<std::optional<T>>(), std::optional<T>(Expected));
        DataSet.Next();
        EXPECT_EQ(field->As<std::optional<T>>(), std::nullopt);
        try {
            (void)field->As<T>();
            ADD_FAILURE() << "NULL read as a plain value";
        } catch (const EDatabaseError& e) {
            EXPECT_EQ(e.Message(), FormatMessage(SFieldIsNull, Column));
        }
    };
}

class TypedReads : public ::testing::Test {
protected:
    void SetUp() override {
        TFieldDefs& defs = DataSet.FieldDefs();
        defs.Add("S", ftString, 10);
        defs.Add("I", ftInteger);
        defs.Add("L", ftLargeint);
        defs.Add("F", ftFloat);
        defs.Add("B", ftBoolean);
        defs.Add("D", ftDateTime);
        defs.Add("C", ftBCD);
        defs.Add("Y", ftVarBytes, 4);
        DataSet.CreateDataSet();
        DataSet.Append();
        DataSet.FieldByName("S")->SetAsString("");
        DataSet.FieldByName("I")->SetAsInteger(-7);
        DataSet.FieldByName("L")->SetAsLargeInt(std::int64_t(1) << 40);
        DataSet.FieldByName("F")->SetAsFloat(2.5);
        DataSet.FieldByName("B")->SetAsBoolean(false);
        DataSet.FieldByName("D")->SetAsDateTime(kLeapNoon);
        DataSet.FieldByName("C")->SetAsCurrency(Currency(12.34));
        DataSet.FieldByName("Y")->SetAsBytes(kBytes);
        DataSet.Post();
        DataSet.Append();
        DataSet.Post();
    }

    TMemDataSet DataSet{nullptr};
};

TEST_F(TypedReads, NullAndValueOfEveryType) {
    // The values are the ones a NULL would read as classically where a type has such a zero.
    const std::function<void(TDataSet&)> cases[] = {
        Reads<std::string>("S", ""),
        Reads<std::int32_t>("I", -7),
        Reads<std::int64_t>("L", std::int64_t(1) << 40),
        Reads<double>("F", 2.5),
        Reads<bool>("B", false),
        Reads<TDateTime>("D", kLeapNoon),
        Reads<Currency>("C", Currency(12.34)),
        Reads<TBytes>("Y", kBytes),
    };
    for (const auto& check : cases) {
        check(DataSet);
    }
}

TEST_F(TypedReads, LookupsTakeViewsThatAreNotZeroTerminated) {
    const std::string text = "I;L";
    const std::string_view first = std::string_view(text).substr(0, 1);
    EXPECT_EQ(DataSet.FieldByName(first)->FieldName(), "I");
    EXPECT_EQ(DataSet.FindField(std::string_view(text).substr(2)), DataSet.FieldByName("L"));
    EXPECT_EQ(DataSet.FindField(std::string_view(text).substr(0, 2)), nullptr);
    EXPECT_EQ(DataSet.FieldDefs().IndexOf(first), 1);
}

} // namespace
