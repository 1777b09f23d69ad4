#include "entity_test_support.h"

#include <gtest/gtest.h>

namespace quorda {
namespace {

using entitytest::TTestEntity;

// Names are kept lower case and found ignoring case; a view table loses its blanks; a new field has
// no find, filter or value and allows bookmarks.
TEST(EntityModel, FieldNamesAndSlots) {
    TTestEntity Entity;
    TFieldItem* Field =
        Entity.CreateField("CustID", "Customer", "  c ", 8, true, true, false, true, ftInteger, cnstETPK);
    EXPECT_EQ(Entity.lstFields()[0], "custid");
    EXPECT_EQ(Entity.FieldByName("CUSTID"), Field);
    EXPECT_EQ(Entity.FieldByName("cust"), nullptr);
    EXPECT_EQ(Field->FactName(), "custid");
    EXPECT_EQ(Field->SelectStr(), "custid");
    EXPECT_EQ(Field->viewTable(), "c");
    EXPECT_EQ(Field->Entity(), &Entity);
    EXPECT_TRUE(Field->IsBookMark());
    EXPECT_TRUE(Field->findStr().IsNull() && Field->filterStr().IsNull() && Field->Value().IsNull());

    // Unknown names change nothing and raise nothing.
    Entity.SetFieldFind("nosuch", "x");
    Entity.SetFieldValue("CUSTID", 5);
    EXPECT_EQ(Field->Value(), Variant(5));
    Entity.ClearFieldsValue();
    EXPECT_TRUE(Field->Value().IsNull());
}

// A new entity orders by nothing, runs no procedure and is registered under its (empty) name.
TEST(EntityModel, NewEntityDefaults) {
    TTestEntity Entity;
    EXPECT_EQ(Entity.Ordering(), -1);
    EXPECT_EQ(Entity.FindOption(), efoFirstConCur);
    EXPECT_TRUE(Entity.flgReread());
    for (int Type = fetSelect; Type <= fetClose; ++Type) {
        EXPECT_EQ(Entity.GetSP(static_cast<TExecType>(Type)), "");
        EXPECT_FALSE(Entity.GetSPOpen(static_cast<TExecType>(Type)));
    }
    const TStringList& Open = lstOpenEntity();
    const int Index = Open.IndexOfObject(&Entity);
    ASSERT_GE(Index, 0);
    EXPECT_EQ(Open[Index], "");
}

} // namespace
} // namespace quorda
