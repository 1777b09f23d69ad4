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

    // Unknown names change nothing and raise nothing; known ones are found in any case.
    Entity.SetFieldFind("nosuch", "x");
    Entity.SetFieldFind("CUSTID", "y");
    EXPECT_EQ(Field->findStr(), Variant("y"));
}

} // namespace
} // namespace quorda
