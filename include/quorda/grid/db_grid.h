#pragma once

#include "quorda/db/data_link.h"
#include "quorda/grid/bookmark_list.h"
#include "quorda/grid/column.h"
#include "quorda/grid/grid_types.h"
#include "quorda/rtl/object.h"

#include <QAbstractScrollArea>
#include <QColor>
#include <QPoint>
#include <QRect>
#include <functional>
#include <memory>

class QLineEdit;
class QPainter;

namespace quorda {

class TCustomDBGrid;
class TDataSet;
class TDataSource;
class TField;

// The grid's link to its data source: a window of as many records as the grid shows rows.
class QUORDA_API TGridDataLink : public TDataLink {
public:
    explicit TGridDataLink(TCustomDBGrid* Grid);

    using TDataLink::FirstRecord;

protected:
    void ActiveChanged() override;
    void DataSetChanged() override;
    void DataSetScrolled(int Distance) override;
    void EditingChanged() override;
    void LayoutChanged() override;
    void RecordChanged(TField* Field) override;
    void UpdateData() override;

private:
    TCustomDBGrid* FGrid;
};

using TDBGridClickEvent = std::function<void(TColumn* Column)>;
using TMovedEvent = std::function<void(TObject* Sender, int FromIndex, int ToIndex)>;
using TDrawColumnCellEvent = std::function<void(TObject* Sender, const QRect& Rect, int DataCol,
                                                TColumn* Column, const TGridDrawState& State)>;
using TKeyEvent = std::function<void(TObject* Sender, int& Key, Qt::KeyboardModifiers Shift)>;
using TKeyPressEvent = std::function<void(TObject* Sender, QString& Text)>;

// A grid over a dataset that paints itself: a title row, an indicator column, one column per field
// (or per configured column), rows read through a data link whose window is the visible rows, inline
// editing through the fields' text, column sizing and moving with the mouse, and a bookmark list of
// selected rows.
//
// Grid coordinates count the indicator as column 0 (when shown) and the title as row 0 (when shown);
// data row r of the window is grid row TitleOffset() + r. The keyboard and mouse handlers call small
// public operations, so that behaviour can be driven without events.
class QUORDA_API TCustomDBGrid : public QAbstractScrollArea, public TObject {
public:
    explicit TCustomDBGrid(QWidget* Parent = nullptr);
    ~TCustomDBGrid() override;

    // --- data
    TDataSource* DataSource() const;
    void SetDataSource(TDataSource* Value);
    TGridDataLink* DataLink() const { return FDataLink.get(); }
    // The data link's dataset; null without a data source.
    TDataSet* DataSet() const;
    TDBGridColumns& Columns() { return *FColumns; }
    TBookmarkList& SelectedRows() { return *FSelectedRows; }
    // The field of the current column; null on the indicator or for an unbound column.
    TField* SelectedField() const;
    int SelectedIndex() const { return FCol - IndicatorOffset(); }

    // --- options and look
    const TDBGridOptions& Options() const { return FOptions; }
    virtual void SetOptions(const TDBGridOptions& Value);
    bool HasOption(TDBGridOption Option) const { return FOptions.count(Option) != 0; }
    bool ReadOnly() const { return FReadOnly; }
    void SetReadOnly(bool Value);
    QColor FixedColor() const { return FFixedColor; }
    void SetFixedColor(const QColor& Value);
    int DefaultRowHeight() const { return FDefaultRowHeight; }
    int TitleRowHeight() const { return FTitleRowHeight; }

    // --- geometry
    int IndicatorOffset() const { return HasOption(dgIndicator) ? 1 : 0; }
    int TitleOffset() const { return HasOption(dgTitles) ? 1 : 0; }
    int ColCount() const { return IndicatorOffset() + FColumns->Count(); }
    int FixedCols() const { return IndicatorOffset(); }
    // Data rows that fit in the view (at least one).
    int VisibleRowCount() const;
    // Width of grid column ACol (the indicator or a data column; 0 when hidden).
    int ColWidths(int ACol) const;
    void SetColWidths(int ACol, int Value);
    // The cell's rectangle in viewport coordinates.
    QRect CellRect(int ACol, int ARow) const;
    // The cell at a viewport point; (-1, -1) outside the cells.
    QPoint MouseCoord(int X, int Y) const;
    // The column whose right border is within a few pixels of X (for sizing); -1 when none.
    int SizingColumnAt(int X, int Y) const;
    int LeftOffset() const { return FHorzOffset; }

    // --- position
    int Col() const { return FCol; }
    // The grid row of the current record.
    int Row() const;
    void SetCol(int Value) { MoveCol(Value); }
    // Makes a data column current; clamped to the data columns.
    virtual void MoveCol(int ACol);
    TGridState GridState() const { return FGridState; }

    // --- editing
    bool EditorMode() const { return FEditorMode; }
    void SetEditorMode(bool Value);
    // Whether the current cell may be edited now.
    virtual bool CanEditShow() const;
    void ShowEditor();
    void HideEditor();
    QLineEdit* InplaceEditor() const { return FEditor; }
    // Writes a changed editor text into the field.
    void UpdateData();

    // --- updates
    void BeginUpdate() { ++FUpdateLock; }
    void EndUpdate();
    int UpdateLock() const { return FUpdateLock; }
    void InvalidateRow(int ARow);
    void InvalidateCell(int ACol, int ARow);
    // Reads the data link's dataset again: columns, scroll bars, window size.
    void LayoutChanged();
    // Whether the grid or its editor has the keyboard focus.
    bool Focused() const;
    // The grid's input handlers, callable without events. Key is set to 0 when handled.
    virtual void KeyDown(int& Key, Qt::KeyboardModifiers Shift);
    virtual void MouseDown(Qt::MouseButton Button, Qt::KeyboardModifiers Shift, int X, int Y,
                           bool DoubleClick = false);
    virtual void MouseMove(Qt::MouseButtons Buttons, Qt::KeyboardModifiers Shift, int X, int Y);
    virtual void MouseUp(Qt::MouseButton Button, Qt::KeyboardModifiers Shift, int X, int Y);
    // Asks about deleting (one record or the selected ones) and deletes on yes.
    void DeleteWithConfirmation();

    // --- events
    TDBGridClickEvent OnCellClick;
    TNotifyEvent OnColEnter;
    TNotifyEvent OnColExit;
    TMovedEvent OnColumnMoved;
    TDrawColumnCellEvent OnDrawColumnCell;
    TNotifyEvent OnDblClick;
    TNotifyEvent OnEditButtonClick;
    TNotifyEvent OnEnter;
    TNotifyEvent OnExit;
    TKeyEvent OnKeyDown;
    TKeyPressEvent OnKeyPress;
    TKeyEvent OnKeyUp;
    // Raised when a drag begins from the grid; the application starts its drag there.
    TNotifyEvent OnStartDrag;
    TDBGridClickEvent OnTitleClick;

protected:
    friend class TGridDataLink;
    friend class TDBGridColumns;
    friend class TColumn;

    // The painter of the paint in progress (null outside painting).
    QPainter* Canvas() const { return FCanvas; }
    // The data link's active record while the grid was not painting (the current row).
    int CurrentActiveRecord() const;
    // Draws one cell; the data link's active record is the row's record for data rows.
    virtual void DrawCell(int ACol, int ARow, const QRect& ARect, const TGridDrawState& AState);
    // Whether a data cell is painted as selected.
    virtual bool HighlightCell(int DataCol, int DataRow, const std::string& Value,
                               const TGridDrawState& AState);
    // The colours the next data cell is painted with; HighlightCell may change them.
    void SetCellColors(const QColor& Brush, const QColor& Font);
    void DefaultDrawDataCell(const QRect& Rect, TColumn* Column, const TGridDrawState& State);
    void DrawTitleCell(const QRect& Rect, TColumn* Column);
    void DrawRaisedFrame(const QRect& Rect);
    virtual void SetColumnAttributes();
    // Sets the indicator width without further checks (the extended grid sizes it).
    void SetIndicatorWidth(int Value);
    int IndicatorWidth() const { return FIndicatorWidth; }
    // The host's handling of keys, after OnKeyDown.
    virtual void GridKeyDown(int& Key, Qt::KeyboardModifiers Shift);
    // Moves one record up or down; down past the last appends when allowed, moving off an unchanged
    // insert cancels it.
    void MoveRowBy(int Direction);
    // Deletes the selected rows or the current record after asking.
    bool CanModifyData();
    // A press on a title waits to become a click or a column move.
    bool TitlePressed() const { return FPressCol >= 0; }
    // Tells the application that dragging began.
    virtual void BeginDrag();

    // --- data link notifications
    virtual void LinkActive(bool Value);
    virtual void DataChanged();
    virtual void Scroll(int Distance);
    virtual void EditingChanged();
    virtual void RecordChanged(TField* Field);

    // --- Qt events
    void paintEvent(QPaintEvent* Event) override;
    void resizeEvent(QResizeEvent* Event) override;
    void keyPressEvent(QKeyEvent* Event) override;
    void keyReleaseEvent(QKeyEvent* Event) override;
    void mousePressEvent(QMouseEvent* Event) override;
    void mouseDoubleClickEvent(QMouseEvent* Event) override;
    void mouseMoveEvent(QMouseEvent* Event) override;
    void mouseReleaseEvent(QMouseEvent* Event) override;
    void focusInEvent(QFocusEvent* Event) override;
    void focusOutEvent(QFocusEvent* Event) override;
    void scrollContentsBy(int Dx, int Dy) override;
    bool eventFilter(QObject* Watched, QEvent* Event) override;
    void changeEvent(QEvent* Event) override;
    bool focusNextPrevChild(bool Next) override;

private:
    void HandleKeyPress(QKeyEvent* Event);
    void EditorTextEdited();
    void UpdateRowCount();
    void UpdateScrollBars();
    void VerticalAction(int Action);
    void ScrollToCurrentCol();
    void PlaceEditor();
    void LoadEditorText();
    void Invalidate();
    int DataColumnLeft(int ACol) const;
    void ColumnsChanged();
    void EndColumnMove(int X);

    std::unique_ptr<TGridDataLink> FDataLink;
    std::unique_ptr<TDBGridColumns> FColumns;
    std::unique_ptr<TBookmarkList> FSelectedRows;
    TDBGridOptions FOptions = DefaultDBGridOptions;
    QLineEdit* FEditor = nullptr;
    QPainter* FCanvas = nullptr;
    QColor FFixedColor;
    QColor FCellBrush;
    QColor FCellFont;
    TGridState FGridState = gsNormal;
    int FCol = 0;
    int FHorzOffset = 0;
    int FDefaultRowHeight = 0;
    int FTitleRowHeight = 0;
    int FIndicatorWidth = 11;
    int FUpdateLock = 0;
    int FPaintActiveRecord = -1;
    int FSizingIndex = -1;
    int FSizingOrigin = 0;
    int FMoveFrom = -1;
    int FMoveTo = -1;
    int FPressCol = -1;
    int FPressX = 0;
    bool FReadOnly = false;
    bool FEditorMode = false;
    bool FEditorModified = false;
    bool FLoadingEditor = false;
    bool FSettingScrollBar = false;
    bool FInColExit = false;
};

} // namespace quorda
