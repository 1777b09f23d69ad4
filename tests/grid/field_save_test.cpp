// Saved column layouts: capture from a grid, restore into a grid whose columns were rebuilt.
#include "grid_test_support.h"

namespace quorda::gridtest {
namespace {

// A grid over a table with the fields A, B and C (and D for the tests that need an extra one).
class FieldSaveTest : public ::testing::Test {
protected:
    FieldSaveTest() {
        for (const char* name : {"A", "B", "C", "D"}) {
            DataSet.FieldDefs().Add(name, ftInteger);
        }
        DataSet.CreateDataSet();
        Source.SetDataSet(&DataSet);
        Grid.SetDataSource(&Source);
    }
    // Customized columns for the given fields ("" for an unbound column), widths 10, 20, 30, ...
    void Layout(const std::vector<std::string>& Names) {
        Grid.Columns().Clear();
        int width = 10;
        for (const std::string& name : Names) {
            TColumn* column = Grid.Columns().Add();
            column->SetFieldName(name);
            column->SetWidth(width);
            width += 10;
        }
    }
    std::vector<std::string> GridOrder() {
        std::vector<std::string> names;
        for (const auto& column : Grid.Columns()) {
            names.push_back(column->FieldName() + ":" + std::to_string(column->Width()));
        }
        return names;
    }
    std::vector<std::string> SavedOrder() {
        std::vector<std::string> names;
        for (int i = 0; i < Save.FieldCount(); ++i) {
            const TFieldSaveItem* item = Save.Fields(i);
            names.push_back(item->FieldName + "@" + std::to_string(item->Index) + ":" +
                            std::to_string(item->Width));
        }
        return names;
    }

    TMemDataSet DataSet{nullptr};
    TDataSource Source{nullptr};
    TExtDBGrid Grid;
    TFieldSave Save;
};

TEST_F(FieldSaveTest, CapturingFollowsTheGridAndRestoringMovesSavedColumns) {
    Layout({"A", "B", "C"});
    Save.GetInfoGrid(Grid);
    EXPECT_EQ(SavedOrder(), (std::vector<std::string>{"A@0:10", "B@1:20", "C@2:30"}));
    Grid.Columns()[2]->SetIndex(0);
    Grid.Columns()[0]->Title().SetCaption("Sea");
    Save.GetInfoGrid(Grid);
    EXPECT_EQ(SavedOrder(), (std::vector<std::string>{"C@0:30", "A@1:10", "B@2:20"}));
    EXPECT_EQ(Save.FieldByName("c")->Caption, "Sea");
    // The shown columns come in the grid's order among themselves; C, no longer shown, keeps its entry.
    Layout({"B", "A"});
    Save.GetInfoGrid(Grid);
    EXPECT_EQ(SavedOrder(), (std::vector<std::string>{"C@0:30", "B@0:10", "A@1:20"}));
    Save.Clear();
    EXPECT_EQ(Save.FieldCount(), 0);
    EXPECT_EQ(Save.FieldByName("A"), nullptr);
    Layout({"C", "A", "B"});
    Grid.Columns()[0]->SetWidth(33);
    Save.GetInfoGrid(Grid);
    Layout({"A", "B", "C"});
    Save.SetInfoGrid(Grid);
    EXPECT_EQ(GridOrder(), (std::vector<std::string>{"C:33", "A:20", "B:30"}));
    // A layout kept elsewhere and read back item by item restores the same way. Columns without an
    // entry (D, and an unbound one standing first) keep their width and let the saved ones pass.
    TFieldSave readBack;
    readBack.Add("B", "", 0, 44);
    readBack.Add("a", "", 1, 55);
    readBack.Add("B", "", 0, 66); // the same name again updates the entry
    Layout({"", "D", "A", "B"});
    readBack.SetInfoGrid(Grid);
    EXPECT_EQ(readBack.FieldCount(), 2);
    EXPECT_EQ(GridOrder(), (std::vector<std::string>{"B:66", "a:55", ":10", "D:20"}));
}

} // namespace
} // namespace quorda::gridtest
