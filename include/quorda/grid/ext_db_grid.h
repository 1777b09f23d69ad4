#pragma once

#include "quorda/grid/db_grid.h"
#include "quorda/grid/image_list.h"
#include "quorda/rtl/strings.h"

#include <QPointer>
#include <functional>
#include <string>

namespace quorda {

class TDataSet;

using TEventGetDataSetKey = std::function<void(const TDataSet* Sender, std::string& Key)>;

// Indicator images, by index into Indicators.
enum TIndicatorImage {
    iiCurrent = 0,         // the current row while browsing, not selected
    iiEdit = 1,            // the current row while editing
    iiInsert = 2,          // the current row while inserting
    iiSelected = 3,        // a selected row that is not the current one
    iiSelectedCurrent = 4, // the current row when selected
};

// A data grid whose rows are selected from an anchor: Shift extends the selection from the anchor
// row, Ctrl toggles one row, a plain click or move selects only the current row. The indicator
// column is painted from an image list, selected rows change colour when the grid loses the focus,
// a dotted frame marks the current row in row-select mode, and every change of the selection is
// reported through OnSelectionChange.
class QUORDA_API TExtCustomDBGrid : public TCustomDBGrid {
public:
    explicit TExtCustomDBGrid(QWidget* Parent = nullptr);
    ~TExtCustomDBGrid() override;

    int IndicatorSize() const { return FIndicatorSize; }
    // Values outside 1 to 49 are ignored.
    void SetIndicatorSize(int Value);
    TImageList* Indicators() const { return FIndicators.data(); }
    void SetIndicators(TImageList* Value);
    // The application keys added through DoAddSelect, sorted.
    TStringList& SelectedKeys() { return FSelectedKeys; }

    // The current record's application key (from OnGetDataSetKey), added to SelectedKeys when Add is
    // set and the key is not empty.
    std::string DoAddSelect(bool Add);
    void DoSelectedChange();
    // Empties the selection (multi-select grids only).
    void ClearSelection();
    // The bookmark of the grid's current record.
    TBookmarkStr CurrentRow();
    // Selects every row from FromRow to ToRow, both included, keeping the rows on screen as they were.
    void SetShiftSelection(const TBookmarkStr& FromRow, const TBookmarkStr& ToRow);
    // One row up (-1) or down (+1); with Select the selection follows from the anchor.
    void MoveRowWithSelection(int Direction, bool Select);
    // Whether an anchor exists for range selection, and which row it is.
    bool Selecting() const { return FSelecting; }
    const TBookmarkStr& Anchor() const { return FAnchor; }
    // The indicator image for a data row of the window (-1: none).
    int IndicatorImageFor(int DataRow);
    // Whether a drag began since the last button press.
    bool Dragging() const { return FDragging; }

    void KeyDown(int& Key, Qt::KeyboardModifiers Shift) override;
    void MouseDown(Qt::MouseButton Button, Qt::KeyboardModifiers Shift, int X, int Y,
                   bool DoubleClick = false) override;
    void MouseMove(Qt::MouseButtons Buttons, Qt::KeyboardModifiers Shift, int X, int Y) override;
    void MouseUp(Qt::MouseButton Button, Qt::KeyboardModifiers Shift, int X, int Y) override;

    TEventGetDataSetKey OnGetDataSetKey;
    TNotifyEvent OnSelectionChange;
    // Called after a fixed cell is drawn, with its state.
    TDrawColumnCellEvent OnDrawFixedCell;

protected:
    void SetColumnAttributes() override;
    void DrawCell(int ACol, int ARow, const QRect& ARect, const TGridDrawState& AState) override;
    bool HighlightCell(int DataCol, int DataRow, const std::string& Value,
                       const TGridDrawState& AState) override;

private:
    void DrawIndicatorCell(int ARow, QRect ARect);
    void DrawCurrentRowFrame(int ACol, const QRect& ARect);
    void SelectWithMouse(Qt::KeyboardModifiers Shift);
    // The bookmark order of two rows (-1, 0, 1).
    int CompareRows(const TBookmarkStr& A, const TBookmarkStr& B);

    TStringList FSelectedKeys;
    int FIndicatorSize = 10;
    QPointer<TImageList> FIndicators;
    QPoint FMouseDownPoint{-1, -1};
    bool FHighlighted = false;
    bool FSelecting = false;
    bool FDragging = false;
    TBookmarkStr FAnchor;
};

// The grid as an application places it on a form.
class QUORDA_API TExtDBGrid : public TExtCustomDBGrid {
public:
    using TExtCustomDBGrid::TExtCustomDBGrid;
};

} // namespace quorda
