// Anchor-based row selection of the multi-select grid, key by key and click by click.
#include "grid_test_support.h"

#include <functional>

namespace quorda::gridtest {
namespace {

// One user action: a key with modifiers, or a left click on the row showing an ID.
struct Step {
    enum Kind { KeyPress, Click } What;
    int Code;
    Qt::KeyboardModifiers Modifiers = Qt::NoModifier;
};

Step K(int Code, Qt::KeyboardModifiers Modifiers = Qt::NoModifier) {
    return {Step::KeyPress, Code, Modifiers};
}
Step C(int Id, Qt::KeyboardModifiers Modifiers = Qt::NoModifier) {
    return {Step::Click, Id, Modifiers};
}

struct SelectionCase {
    const char* Name;
    int Start;
    std::vector<Step> Steps;
    std::vector<int> Selected;
    int Current;
};

const Qt::KeyboardModifiers kShift = Qt::ShiftModifier;
const Qt::KeyboardModifiers kCtrl = Qt::ControlModifier;

const SelectionCase kCases[] = {
    {"ShiftUpAfterwardsDropsTheLastRow",
     5,
     {K(Qt::Key_Down, kShift), K(Qt::Key_Down, kShift), K(Qt::Key_Down, kShift), K(Qt::Key_Up, kShift)},
     Range(5, 7),
     7},
    {"ShiftUpExtendsAboveTheAnchor", 5, {K(Qt::Key_Up, kShift), K(Qt::Key_Up, kShift)}, Range(3, 5), 3},
    {"BackAcrossTheAnchor",
     5,
     {K(Qt::Key_Down, kShift), K(Qt::Key_Up, kShift), K(Qt::Key_Up, kShift)},
     Range(4, 5),
     4},
    {"ShiftClickAfterPlainClick", 1, {C(3), C(9, kShift)}, Range(3, 9), 9},
    {"ShiftClickOnAnEmptySelectionStartsOne", 4, {C(7, kShift), C(9, kShift)}, Range(7, 9), 9},
    {"CtrlClickUnselectsASelectedRow", 1, {C(3), C(6, kShift), C(5, kCtrl)}, {3, 4, 6}, 5},
    {"CtrlClickKeepsTheAnchor", 1, {C(3), C(6, kShift), C(5, kCtrl), C(7, kShift)}, Range(3, 7), 7},
    {"CtrlSpaceUnselectsTheCurrentRow", 1, {C(3), C(6, kShift), K(Qt::Key_Space, kCtrl)}, Range(3, 5), 6},
    {"PageDownSelectsOnlyTheNewRow", 1, {C(3), C(6, kShift), K(Qt::Key_PageDown)}, {16}, 16},
    {"PlainDownSelectsOnlyTheNewRow", 1, {C(3), C(6, kShift), K(Qt::Key_Down)}, {7}, 7},
    {"CtrlDownLeavesTheSelection", 1, {C(3), K(Qt::Key_Down, kCtrl), K(Qt::Key_Down, kCtrl)}, {3}, 5},
    {"EscapeStartsAgainAtTheCurrentRow", 1, {C(3), C(5, kShift), K(Qt::Key_Escape)}, {5}, 5},
    {"CtrlEndMovesWithoutSelecting", 1, {C(2), K(Qt::Key_End, kCtrl)}, {2}, 40},
};

class Selection : public GridTest, public ::testing::WithParamInterface<SelectionCase> {};

TEST_P(Selection, FollowsTheAnchorRules) {
    const SelectionCase& c = GetParam();
    GoTo(c.Start);
    int changes = 0;
    Grid.OnSelectionChange = [&changes](TObject*) { ++changes; };
    for (const Step& step : c.Steps) {
        const int before = changes;
        if (step.What == Step::KeyPress) {
            Key(step.Code, step.Modifiers);
        } else {
            Click(step.Code, step.Modifiers);
        }
        // Ctrl with a moving key leaves the selection alone, so it reports nothing.
        const bool quietKey =
            step.What == Step::KeyPress && (step.Modifiers & kCtrl) && step.Code != Qt::Key_Space;
        EXPECT_EQ(changes > before, !quietKey);
    }
    EXPECT_EQ(SelectedIds(), c.Selected);
    EXPECT_EQ(CurrentId(), c.Current);
}

INSTANTIATE_TEST_SUITE_P(Grid, Selection, ::testing::ValuesIn(kCases),
                         [](const auto& Info) { return std::string(Info.param.Name); });

TEST_F(GridTest, ShiftSelectionKeepsTheRowsOnScreen) {
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
}

TEST_F(GridTest, KeyNavigationWithoutMultiSelectSelectsNothingButSetsTheAnchor) {
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

TEST_F(GridTest, AddSelectKeepsApplicationKeysSorted) {
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
}

} // namespace
} // namespace quorda::gridtest
