// Anchor-based row selection of the multi-select grid, key by key and click by click.
#include "grid_test_support.h"

#include <QKeySequence>

namespace quorda::gridtest {
namespace {

struct SelectionCase {
    const char* Name;
    int Start;
    // Key sequences ("Shift+Down") and left clicks on the row showing an ID ("Ctrl+5"), in turn.
    const char* Steps;
    std::vector<int> Selected;
    int Current;
};

const SelectionCase kCases[] = {
    {"ShiftUpAfterwardsDropsTheLastRow", 5, "Shift+Down Shift+Down Shift+Down Shift+Up", Range(5, 7), 7},
    {"ShiftUpExtendsAboveTheAnchor", 5, "Shift+Up Shift+Up", Range(3, 5), 3},
    {"BackAcrossTheAnchor", 5, "Shift+Down Shift+Up Shift+Up", Range(4, 5), 4},
    {"ShiftClickAfterPlainClick", 1, "3 Shift+9", Range(3, 9), 9},
    {"ShiftClickOnAnEmptySelectionStartsOne", 4, "Shift+7 Shift+9", Range(7, 9), 9},
    {"CtrlClickUnselectsASelectedRow", 1, "3 Shift+6 Ctrl+5", {3, 4, 6}, 5},
    {"CtrlClickKeepsTheAnchor", 1, "3 Shift+6 Ctrl+5 Shift+7", Range(3, 7), 7},
    {"CtrlSpaceUnselectsTheCurrentRow", 1, "3 Shift+6 Ctrl+Space", Range(3, 5), 6},
    {"PageDownSelectsOnlyTheNewRow", 1, "3 Shift+6 PgDown", {16}, 16},
    {"PlainDownSelectsOnlyTheNewRow", 1, "3 Shift+6 Down", {7}, 7},
    {"CtrlDownLeavesTheSelection", 1, "3 Ctrl+Down Ctrl+Down", {3}, 5},
    {"EscapeStartsAgainAtTheCurrentRow", 1, "3 Shift+5 Esc", {5}, 5},
    {"CtrlEndMovesWithoutSelecting", 1, "2 Ctrl+End", {2}, 40}};

class Selection : public GridTest, public ::testing::WithParamInterface<SelectionCase> {};

TEST_P(Selection, FollowsTheAnchorRules) {
    const SelectionCase& c = GetParam();
    GoTo(c.Start);
    int changes = 0;
    Grid.OnSelectionChange = [&changes](TObject*) { ++changes; };
    for (const QString& step : QString(c.Steps).split(' ')) {
        SCOPED_TRACE(step.toStdString());
        const int before = changes;
        const QString target = step.section('+', -1);
        const QKeyCombination key = QKeySequence(step.chopped(target.size()) + "A")[0];
        bool isRow = false;
        const int id = target.toInt(&isRow);
        if (isRow) {
            Click(id, key.keyboardModifiers());
        } else {
            QTest::keySequence(&Grid, QKeySequence(step));
        }
        // Ctrl with a moving key leaves the selection alone, so it reports nothing.
        const bool quietKey = !isRow && (key.keyboardModifiers() & Qt::ControlModifier) && target != "Space";
        EXPECT_EQ(changes > before, !quietKey);
    }
    EXPECT_EQ(SelectedIds(), c.Selected);
    EXPECT_EQ(CurrentId(), c.Current);
}

INSTANTIATE_TEST_SUITE_P(Grid, Selection, ::testing::ValuesIn(kCases),
                         [](const auto& Info) { return std::string(Info.param.Name); });

TEST_F(GridTest,
       ShiftSelectionKeepsTheRowsOnScreenAddSelectSortsKeysAndWithoutMultiSelectOnlyTheAnchorMoves) {
    GoTo(20);
    const int top = TopId();
    const int place = Grid.DataLink()->ActiveRecord();
    Click(14);
    Click(18, Qt::ShiftModifier);
    EXPECT_EQ(TopId(), top);
    EXPECT_EQ(CurrentId(), 18);
    // A range reaching far beyond the screen on both sides, set directly.
    GoTo(2);
    const TBookmarkStr from = Grid.CurrentRow();
    GoTo(35);
    const TBookmarkStr to = Grid.CurrentRow();
    GoTo(20);
    EXPECT_EQ(TopId(), top);
    Grid.SelectedRows().Clear();
    Grid.SetShiftSelection(to, from);
    EXPECT_EQ(TopId(), top);
    EXPECT_EQ(CurrentId(), 20);
    EXPECT_EQ(Grid.DataLink()->ActiveRecord(), place);
    EXPECT_EQ(SelectedIds(), Range(2, 35));
    EXPECT_EQ(Grid.DoAddSelect(true), "");
    Grid.OnGetDataSetKey = [](const TDataSet* Sender, std::string& Key) {
        Key = const_cast<TDataSet*>(Sender)->FieldByName("NAME")->AsString();
    };
    for (int id : {7, 3, 7, 12}) {
        GoTo(id);
        Grid.DoAddSelect(true);
    }
    GoTo(9);
    EXPECT_EQ(Grid.DoAddSelect(false), "name9");
    EXPECT_EQ(Grid.SelectedKeys().Text(), "name12\nname3\nname7\n");
    TDBGridOptions options = Grid.Options();
    options.erase(dgMultiSelect);
    Grid.SetOptions(options);
    GoTo(3);
    Key(Qt::Key_Down, Qt::ShiftModifier);
    Key(Qt::Key_Down);
    EXPECT_EQ(Grid.SelectedRows().Count(), 0);
    EXPECT_TRUE(Grid.Selecting());
    EXPECT_EQ(Grid.Anchor(), Grid.CurrentRow());
    Grid.ClearSelection(); // only with multi-select
    EXPECT_TRUE(Grid.Selecting());
}

} // namespace
} // namespace quorda::gridtest
