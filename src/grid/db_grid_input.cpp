#include "quorda/db/dataset.h"
#include "quorda/grid/confirm.h"
#include "quorda/grid/db_grid.h"
#include "quorda/rtl/application.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>

namespace quorda {

namespace {

// Keys the in-place editor hands to the grid.
bool IsGridKey(int Key) {
    switch (Key) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Escape:
        return true;
    default:
        return false;
    }
}

// Runs an input handler for Qt: an error of the dataset (moving, posting, deleting) goes to the
// application's exception display, never through Qt's event loop.
template <typename F>
bool Guarded(F Handler) {
    try {
        Handler();
        return true;
    } catch (const std::exception& E) {
        Application::HandleException(E);
        return false;
    }
}

} // namespace

void TCustomDBGrid::KeyDown(int& Key, Qt::KeyboardModifiers Shift) {
    if (OnKeyDown) {
        OnKeyDown(this, Key, Shift);
    }
    if (Key != 0) {
        GridKeyDown(Key, Shift);
    }
}

void TCustomDBGrid::GridKeyDown(int& Key, Qt::KeyboardModifiers Shift) {
    TDataSet* dataSet = DataSet();
    if (!FDataLink->Active() || !dataSet) {
        return;
    }
    const bool ctrl = Shift & Qt::ControlModifier;
    const bool shift = Shift & Qt::ShiftModifier;
    const bool rowSelect = HasOption(dgRowSelect);
    auto nextCol = [this](int From, int Direction) {
        for (int c = From + Direction; c >= IndicatorOffset() && c < ColCount(); c += Direction) {
            if (ColWidths(c) > 0) {
                return c;
            }
        }
        return -1;
    };
    switch (Key) {
    case Qt::Key_Up:
        MoveRowBy(-1);
        break;
    case Qt::Key_Down:
        MoveRowBy(1);
        break;
    case Qt::Key_PageUp:
        dataSet->MoveBy(-VisibleRowCount());
        break;
    case Qt::Key_PageDown:
        dataSet->MoveBy(VisibleRowCount());
        break;
    case Qt::Key_Home:
        if (ctrl || rowSelect) {
            dataSet->First();
        } else {
            MoveCol(nextCol(IndicatorOffset() - 1, 1));
        }
        break;
    case Qt::Key_End:
        if (ctrl || rowSelect) {
            dataSet->Last();
        } else {
            MoveCol(nextCol(ColCount(), -1));
        }
        break;
    case Qt::Key_Left:
    case Qt::Key_Right: {
        const int direction = Key == Qt::Key_Left ? -1 : 1;
        if (rowSelect) {
            MoveRowBy(direction);
        } else if (int c = nextCol(FCol, direction); c >= 0) {
            MoveCol(c);
        }
        break;
    }
    case Qt::Key_Tab:
    case Qt::Key_Backtab: {
        if (!HasOption(dgTabs) || (Shift & Qt::AltModifier)) {
            return;
        }
        const int direction = (shift || Key == Qt::Key_Backtab) ? -1 : 1;
        if (int c = nextCol(FCol, direction); c >= 0) {
            MoveCol(c);
        } else {
            MoveRowBy(direction);
            MoveCol(direction > 0 ? nextCol(IndicatorOffset() - 1, 1) : nextCol(ColCount(), -1));
        }
        break;
    }
    case Qt::Key_Insert:
        if (ctrl || !CanModifyData() || !HasOption(dgEditing)) {
            return;
        }
        dataSet->Insert();
        break;
    case Qt::Key_Delete:
        if (!ctrl) {
            return;
        }
        DeleteWithConfirmation();
        break;
    case Qt::Key_Escape:
        if (IsEditMode(dataSet->State())) {
            dataSet->Cancel();
        }
        FEditorModified = false;
        LoadEditorText();
        if (!HasOption(dgAlwaysShowEditor)) {
            HideEditor();
        }
        break;
    case Qt::Key_F2:
        ShowEditor();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (FEditorMode) {
            FDataLink->UpdateRecord();
            dataSet->CheckBrowseMode();
            if (!HasOption(dgAlwaysShowEditor)) {
                HideEditor();
            }
        } else {
            ShowEditor();
        }
        break;
    default:
        return;
    }
    Key = 0;
}

void TCustomDBGrid::DeleteWithConfirmation() {
    TDataSet* dataSet = DataSet();
    if (!CanModifyData() || dataSet->IsEmpty()) {
        return;
    }
    const bool several = FSelectedRows->Count() >= 2;
    if (HasOption(dgConfirmDelete) &&
        !Dialogs::Confirm(this, several ? SDeleteMultipleRecordsQuestion : SDeleteRecordQuestion)) {
        return;
    }
    if (FSelectedRows->Count() > 0) {
        FSelectedRows->Delete();
    } else {
        dataSet->Delete();
    }
}

void TCustomDBGrid::BeginDrag() {
    if (OnStartDrag) {
        OnStartDrag(this);
    }
}

void TCustomDBGrid::MouseDown(Qt::MouseButton Button, Qt::KeyboardModifiers Shift, int X, int Y,
                              bool DoubleClick) {
    if (isEnabled() && focusPolicy() != Qt::NoFocus) {
        setFocus(Qt::MouseFocusReason);
    }
    if (DoubleClick && Button == Qt::LeftButton) {
        if (OnDblClick) {
            OnDblClick(this);
        }
        return;
    }
    TDataSet* dataSet = DataSet();
    if (!FDataLink->Active() || !dataSet) {
        return;
    }
    if (Button == Qt::LeftButton) {
        if (int sizing = SizingColumnAt(X, Y); sizing >= 0) {
            dataSet->CheckBrowseMode();
            FGridState = gsColSizing;
            FSizingIndex = sizing;
            FSizingOrigin = X - ColWidths(sizing);
            return;
        }
    }
    const QPoint cell = MouseCoord(X, Y);
    if (cell.x() < 0) {
        return;
    }
    if (cell.y() < TitleOffset()) {
        if (Button == Qt::LeftButton && cell.x() >= IndicatorOffset()) {
            dataSet->CheckBrowseMode();
            FPressCol = cell.x();
            FPressX = X;
        }
        return;
    }
    const int dataRow = cell.y() - TitleOffset();
    if (dataRow >= FDataLink->RecordCount()) {
        return;
    }
    const bool wasCurrent = cell.x() == FCol && dataRow == FDataLink->ActiveRecord();
    BeginUpdate();
    try {
        HideEditor();
        if (dataRow != FDataLink->ActiveRecord()) {
            dataSet->MoveBy(dataRow - FDataLink->ActiveRecord());
        }
        if (cell.x() >= IndicatorOffset()) {
            MoveCol(cell.x());
        }
        if (HasOption(dgMultiSelect)) {
            if (Shift & Qt::ControlModifier) {
                FSelectedRows->SetCurrentRowSelected(!FSelectedRows->CurrentRowSelected());
            } else {
                FSelectedRows->Clear();
            }
        }
        if (Button == Qt::LeftButton && (wasCurrent || HasOption(dgAlwaysShowEditor))) {
            ShowEditor();
        }
    } catch (...) {
        EndUpdate();
        throw;
    }
    EndUpdate();
}

void TCustomDBGrid::MouseMove(Qt::MouseButtons Buttons, Qt::KeyboardModifiers Shift, int X, int Y) {
    switch (FGridState) {
    case gsColSizing:
        SetColWidths(FSizingIndex, std::max(X - FSizingOrigin, 4));
        return;
    case gsColMoving: {
        const QPoint cell = MouseCoord(X, std::max(Y, 0));
        if (cell.x() >= IndicatorOffset() && cell.x() != FMoveTo) {
            FMoveTo = cell.x();
            viewport()->update();
        }
        return;
    }
    case gsNormal:
        break;
    }
    if (FPressCol >= 0 && (Buttons & Qt::LeftButton) && std::abs(X - FPressX) > 3) {
        FGridState = gsColMoving;
        FMoveFrom = FPressCol;
        FMoveTo = FPressCol;
        viewport()->update();
        return;
    }
    viewport()->setCursor(SizingColumnAt(X, Y) >= 0 ? Qt::SplitHCursor : Qt::ArrowCursor);
}

void TCustomDBGrid::EndColumnMove(int X) {
    const int from = FMoveFrom;
    const int to = FMoveTo;
    FGridState = gsNormal;
    FMoveFrom = FMoveTo = -1;
    if (to < IndicatorOffset() || to == from) {
        viewport()->update();
        return;
    }
    const bool current = FCol == from;
    FColumns->Move(from - IndicatorOffset(), to - IndicatorOffset());
    if (current) {
        FCol = to;
    }
    if (OnColumnMoved) {
        OnColumnMoved(this, from, to);
    }
    ColumnsChanged();
}

void TCustomDBGrid::MouseUp(Qt::MouseButton Button, Qt::KeyboardModifiers Shift, int X, int Y) {
    const TGridState state = FGridState;
    const int pressCol = FPressCol;
    FPressCol = -1;
    if (state == gsColSizing) {
        FGridState = gsNormal;
        FSizingIndex = -1;
        UpdateScrollBars();
        return;
    }
    if (state == gsColMoving) {
        EndColumnMove(X);
        return;
    }
    const QPoint cell = MouseCoord(X, Y);
    if (cell.x() < IndicatorOffset() || Button != Qt::LeftButton) {
        return;
    }
    TColumn* column = FColumns->Items(cell.x() - IndicatorOffset());
    if (cell.y() < TitleOffset()) {
        if (pressCol == cell.x() && OnTitleClick) {
            OnTitleClick(column);
        }
    } else if (OnCellClick) {
        OnCellClick(column);
    }
}

// ---- Qt events

void TCustomDBGrid::keyPressEvent(QKeyEvent* Event) {
    Guarded([&] { HandleKeyPress(Event); });
}

void TCustomDBGrid::HandleKeyPress(QKeyEvent* Event) {
    int key = Event->key();
    KeyDown(key, Event->modifiers());
    if (key == 0) {
        Event->accept();
        return;
    }
    QString text = Event->text();
    if (!text.isEmpty() && text.at(0).isPrint()) {
        if (OnKeyPress) {
            OnKeyPress(this, text);
        }
        if (!text.isEmpty() && CanEditShow()) {
            ShowEditor();
            if (FEditor && FEditorMode) {
                // The key starts the edit: it replaces the text, as typing into the cell would.
                QKeyEvent typed(QEvent::KeyPress, Event->key(), Event->modifiers(), text);
                QApplication::sendEvent(FEditor, &typed);
            }
        }
        Event->accept();
        return;
    }
    Event->ignore();
}

void TCustomDBGrid::keyReleaseEvent(QKeyEvent* Event) {
    if (OnKeyUp) {
        int key = Event->key();
        OnKeyUp(this, key, Event->modifiers());
    }
    QAbstractScrollArea::keyReleaseEvent(Event);
}

bool TCustomDBGrid::eventFilter(QObject* Watched, QEvent* Event) {
    if (Watched == FEditor && Event->type() == QEvent::KeyPress) {
        auto* keyEvent = static_cast<QKeyEvent*>(Event);
        if (IsGridKey(keyEvent->key())) {
            int key = keyEvent->key();
            const bool done = Guarded([&] { KeyDown(key, keyEvent->modifiers()); });
            // A key whose action failed is not handed on to be tried again.
            return key == 0 || !done;
        }
    }
    return QAbstractScrollArea::eventFilter(Watched, Event);
}

bool TCustomDBGrid::focusNextPrevChild(bool Next) {
    // Tab moves between the columns when the grid takes tabs.
    return HasOption(dgTabs) ? false : QAbstractScrollArea::focusNextPrevChild(Next);
}

void TCustomDBGrid::mousePressEvent(QMouseEvent* Event) {
    const QPoint p = Event->position().toPoint();
    Guarded([&] { MouseDown(Event->button(), Event->modifiers(), p.x(), p.y()); });
}

void TCustomDBGrid::mouseDoubleClickEvent(QMouseEvent* Event) {
    const QPoint p = Event->position().toPoint();
    Guarded([&] { MouseDown(Event->button(), Event->modifiers(), p.x(), p.y(), true); });
}

void TCustomDBGrid::mouseMoveEvent(QMouseEvent* Event) {
    const QPoint p = Event->position().toPoint();
    Guarded([&] { MouseMove(Event->buttons(), Event->modifiers(), p.x(), p.y()); });
}

void TCustomDBGrid::mouseReleaseEvent(QMouseEvent* Event) {
    const QPoint p = Event->position().toPoint();
    Guarded([&] { MouseUp(Event->button(), Event->modifiers(), p.x(), p.y()); });
}

void TCustomDBGrid::focusInEvent(QFocusEvent* Event) {
    QAbstractScrollArea::focusInEvent(Event);
    if (OnEnter && Event->reason() != Qt::OtherFocusReason) {
        OnEnter(this);
    }
    viewport()->update();
}

void TCustomDBGrid::focusOutEvent(QFocusEvent* Event) {
    QAbstractScrollArea::focusOutEvent(Event);
    if (FEditor && QApplication::focusWidget() == FEditor) {
        return;
    }
    TDataSet* dataSet = DataSet();
    if (HasOption(dgCancelOnExit) && dataSet && dataSet->State() == dsInsert && !dataSet->Modified() &&
        !FEditorModified) {
        Guarded([dataSet] { dataSet->Cancel(); });
    }
    if (OnExit) {
        OnExit(this);
    }
    viewport()->update();
}

} // namespace quorda
