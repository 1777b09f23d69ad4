#include "quorda/db.h"

#include <gtest/gtest.h>

using namespace quorda;

TEST(FieldDefs, NamesAreUniqueWithoutRegardToCase) {
    TFieldDefs defs(nullptr);
    defs.Add("ID", ftInteger);
    EXPECT_EQ(defs.MakeNameUnique("id"), "id_1");
    defs.Add("ID_1", ftInteger);
    EXPECT_EQ(defs.MakeNameUnique("Id"), "Id_2");
    EXPECT_EQ(defs.IndexOf("id_1"), 1);
    EXPECT_EQ(defs.Find("iD")->FieldNo(), 1);
    EXPECT_THROW(defs.Find("missing"), EDatabaseError);
    EXPECT_THROW(defs.Add("", ftString, 10), EDatabaseError);
}
