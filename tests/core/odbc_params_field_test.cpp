// Parameters exchanging values with the dataset framework's fields.
#include "quorda/core/odbc_params.h"
#include "quorda/db/field.h"
#include "quorda/db/field_def.h"
#include "quorda/db/mem_dataset.h"

#include <gtest/gtest.h>

namespace quorda {
namespace {

class ODBCParamsField : public ::testing::Test {
protected:
    void SetUp() override {
        DataSet.FieldDefs().Add("ID", ftInteger);
        DataSet.FieldDefs().Add("NAME", ftString, 20);
        DataSet.FieldDefs().Add("SHORTNOTE", ftMemo, 255);
        DataSet.FieldDefs().Add("LONGNOTE", ftMemo, 256);
        DataSet.CreateDataSet();
        DataSet.AppendRecord({7, "seven", "short", "long"});
        DataSet.AppendRecord({Variant::Null(), Variant::Null()});
        DataSet.First();
    }

    TField* Field(const char* name) { return DataSet.FieldByName(name); }

    TMemDataSet DataSet{nullptr};
    TODBCParams Params;
};

TEST_F(ODBCParamsField, TakesTypeValueAndNameFromAField) {
    auto* p = Params.CreateParam(ftUnknown, "x");
    p->Assign(Field("ID"));
    EXPECT_EQ(p->Name() + " " + p->AsString(), "ID 7");
    EXPECT_EQ(p->DataType(), ftInteger);
    EXPECT_TRUE(p->Bound());

    // A null field gives a bound null parameter of the field's type.
    DataSet.Next();
    p->AssignField(Field("NAME"));
    EXPECT_EQ(p->Name(), "NAME");
    EXPECT_EQ(p->DataType(), ftString);
    EXPECT_TRUE(p->IsNull() && p->Bound());

    // Memos longer than 255 become strings; the given value counts, not the field's own; the name stays.
    auto* q = Params.CreateParam(ftUnknown, "q");
    q->AssignFieldValue(Field("SHORTNOTE"), "text");
    EXPECT_EQ(q->DataType(), ftMemo);
    q->AssignFieldValue(Field("LONGNOTE"), "text");
    EXPECT_EQ(q->DataType(), ftString);
    EXPECT_EQ(q->AsString(), "text");
    q->AssignFieldValue(Field("ID"), Variant::Null());
    EXPECT_EQ(q->DataType(), ftInteger);
    EXPECT_TRUE(q->IsNull());
    EXPECT_EQ(q->Name(), "q");
}

TEST_F(ODBCParamsField, SetsAFieldFromItsValue) {
    auto* p = Params.CreateParam(ftUnknown, "p");
    DataSet.Edit();
    p->SetAsInteger(42);
    Field("ID")->Assign(p);
    p->SetAsString("named");
    Field("NAME")->Assign(p);
    EXPECT_EQ(Field("ID")->AsString() + " " + Field("NAME")->AsString(), "42 named");
    // A null parameter makes the field null rather than 0.
    p->SetDataType(ftInteger);
    p->Clear();
    Field("ID")->Assign(p);
    EXPECT_TRUE(Field("ID")->IsNull());
    DataSet.Post();
}

} // namespace
} // namespace quorda
