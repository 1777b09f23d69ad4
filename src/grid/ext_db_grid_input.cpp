#include "quorda/db/dataset.h"
#include "quorda/grid/ext_db_grid.h"

#include <cstdlib>

namespace quorda {

namespace {

// How far the mouse moves with the button down before a drag begins.
constexpr int kDragThreshold = 6;

} // namespace

void TExtCustomDBGrid::KeyDown(int& Key, Qt::KeyboardModifiers Shift) {
    if (OnKeyDown) {
        OnKeyDown(this, Key, Shift);
    }
    TDataSet* dataSet = DataSet();
    if (Key == 0 || !DataLink()->Active() || !dataSet) {
        return;
    }
    const bool multi = HasOption(dgMultiSelect);
    if (Shift & Qt::ControlModifier) {
        switch (Key) {
        case Qt::Key_Space:
            if (multi) {
                SelectedRows().SetCurrentRowSelected(!SelectedRows().CurrentRowSelected());
            }
            DoSelectedChange();
            break;
        case Qt::Key_PageUp:
            dataSet->MoveBy(-DataLink()->ActiveRecord());
            break;
        case Qt::Key_PageDown:
            dataSet->MoveBy(DataLink()->RecordCount() - 1 - DataLink()->ActiveRecord());
            break;
        case Qt::Key_Home:
            dataSet->First();
            break;
        case Qt::Key_End:
            dataSet->Last();
            break;
        case Qt::Key_Left:
            MoveCol(IndicatorOffset());
            break;
        case Qt::Key_Right:
            MoveCol(ColCount() - 1);
            break;
        case Qt::Key_Up:
            dataSet->Prior();
            break;
        case Qt::Key_Down:
            dataSet->Next();
            break;
        case Qt::Key_Delete:
            DeleteWithConfirmation();
            // The anchor row may be gone with the others.
            FSelecting = SelectedRows().Count() > 0;
            DoSelectedChange();
            break;
        default:
            GridKeyDown(Key, Shift);
            return;
        }
        Key = 0;
        return;
    }
    const bool shift = Shift & Qt::ShiftModifier;
    const bool rowSelect = HasOption(dgRowSelect);
    switch (Key) {
    case Qt::Key_Up:
    case Qt::Key_Down:
        MoveRowWithSelection(Key == Qt::Key_Up ? -1 : 1, shift);
        break;
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (rowSelect) {
            MoveRowWithSelection(Key == Qt::Key_Left ? -1 : 1, shift);
        } else {
            GridKeyDown(Key, Shift);
        }
        break;
    case Qt::Key_Home:
    case Qt::Key_End:
        if (Columns().Count() == 1 || rowSelect) {
            ClearSelection();
            if (Key == Qt::Key_Home) {
                dataSet->First();
            } else {
                dataSet->Last();
            }
        } else {
            MoveCol(Key == Qt::Key_Home ? IndicatorOffset() : ColCount() - 1);
        }
        break;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        ClearSelection();
        dataSet->MoveBy(Key == Qt::Key_PageUp ? -VisibleRowCount() : VisibleRowCount());
        break;
    case Qt::Key_Insert:
        if (CanModifyData() && HasOption(dgEditing)) {
            ClearSelection();
            dataSet->Insert();
        }
        break;
    case Qt::Key_Tab:
    case Qt::Key_Backtab: {
        if (Shift & Qt::AltModifier) {
            return;
        }
        const int direction = (shift || Key == Qt::Key_Backtab) ? -1 : 1;
        const int next = Col() + direction;
        if (next >= IndicatorOffset() && next < ColCount()) {
            MoveCol(next);
        } else {
            MoveRowWithSelection(direction, false);
            MoveCol(direction > 0 ? IndicatorOffset() : ColCount() - 1);
        }
        break;
    }
    case Qt::Key_Escape: {
        int escape = Qt::Key_Escape;
        GridKeyDown(escape, {});
        ClearSelection();
        break;
    }
    case Qt::Key_F2:
        SetEditorMode(true);
        break;
    default:
        GridKeyDown(Key, Shift);
        return;
    }
    // Keyboard navigation always leaves an anchor, and in multi-select mode a selected row.
    if (SelectedRows().Count() == 0) {
        if (multi) {
            SelectedRows().SetCurrentRowSelected(true);
        }
        FAnchor = CurrentRow();
        FSelecting = true;
        DoSelectedChange();
    }
    Key = 0;
}

void TExtCustomDBGrid::MouseDown(Qt::MouseButton Button, Qt::KeyboardModifiers Shift, int X, int Y,
                                 bool DoubleClick) {
    FMouseDownPoint = QPoint(X, Y);
    FDragging = false;
    if (!isEnabled() || focusPolicy() == Qt::NoFocus) {
        return;
    }
    setFocus(Qt::MouseFocusReason);
    const bool onTitles = HasOption(dgTitles) && Y < TitleRowHeight();
    if ((DoubleClick && Button == Qt::LeftButton) || SizingColumnAt(X, Y) >= 0 || onTitles) {
        TCustomDBGrid::MouseDown(Button, Shift, X, Y, DoubleClick);
        return;
    }
    TDataSet* dataSet = DataSet();
    const QPoint cell = MouseCoord(X, Y);
    if (!DataLink()->Active() || !dataSet || cell.x() < 0) {
        return;
    }
    const int dataRow = cell.y() - TitleOffset();
    if (dataRow < 0 || dataRow >= DataLink()->RecordCount()) {
        return;
    }
    const bool wasCurrent = cell.x() == Col() && dataRow == DataLink()->ActiveRecord();
    BeginUpdate();
    try {
        HideEditor();
        if (dataRow != DataLink()->ActiveRecord()) {
            dataSet->MoveBy(dataRow - DataLink()->ActiveRecord());
        }
        if (cell.x() >= IndicatorOffset()) {
            MoveCol(cell.x());
        }
        if (HasOption(dgMultiSelect)) {
            SelectWithMouse(Shift);
        }
        if (Button == Qt::LeftButton && (wasCurrent || HasOption(dgAlwaysShowEditor))) {
            ShowEditor();
        } else {
            InvalidateCell(Col(), Row());
        }
    } catch (...) {
        EndUpdate();
        throw;
    }
    EndUpdate();
}

void TExtCustomDBGrid::SelectWithMouse(Qt::KeyboardModifiers Shift) {
    TBookmarkList& rows = SelectedRows();
    if (Shift & Qt::ControlModifier) {
        rows.SetCurrentRowSelected(!rows.CurrentRowSelected());
        FSelecting = rows.CurrentRowSelected() || rows.Count() > 0;
    } else if (Shift & Qt::ShiftModifier) {
        if (FSelecting) {
            rows.Clear();
            TDataSet* dataSet = DataSet();
            dataSet->DisableControls();
            try {
                SetShiftSelection(CurrentRow(), FAnchor);
            } catch (...) {
                dataSet->EnableControls();
                throw;
            }
            dataSet->EnableControls();
        } else {
            FAnchor = CurrentRow();
            rows.SetCurrentRowSelected(true);
            FSelecting = true;
        }
    } else {
        ClearSelection();
        rows.SetCurrentRowSelected(true);
        FAnchor = CurrentRow();
        FSelecting = true;
    }
    DoSelectedChange();
}

void TExtCustomDBGrid::MouseMove(Qt::MouseButtons Buttons, Qt::KeyboardModifiers Shift, int X, int Y) {
    if (FMouseDownPoint.x() >= 0 && GridState() == gsNormal && !TitlePressed() &&
        (std::abs(X - FMouseDownPoint.x()) >= kDragThreshold ||
         std::abs(Y - FMouseDownPoint.y()) >= kDragThreshold)) {
        FMouseDownPoint = QPoint(-1, -1);
        viewport()->releaseMouse();
        if (Buttons & Qt::LeftButton) {
            FDragging = true;
            BeginDrag();
        }
        return;
    }
    TCustomDBGrid::MouseMove(Buttons, Shift, X, Y);
}

void TExtCustomDBGrid::MouseUp(Qt::MouseButton Button, Qt::KeyboardModifiers Shift, int X, int Y) {
    FMouseDownPoint = QPoint(-1, -1);
    TCustomDBGrid::MouseUp(Button, Shift, X, Y);
}

} // namespace quorda
