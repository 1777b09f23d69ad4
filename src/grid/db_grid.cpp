#include "quorda/grid/db_grid.h"

#include "quorda/db/data_source.h"
#include "quorda/db/dataset.h"
#include "quorda/db/field.h"
#include "quorda/rtl/application.h"

#include <QEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <algorithm>

namespace quorda {

// ---- data link

TGridDataLink::TGridDataLink(TCustomDBGrid* Grid) : FGrid(Grid) {
    SetVisualControl(true);
}

void TGridDataLink::ActiveChanged() {
    TDataLink::ActiveChanged();
    FGrid->LinkActive(Active());
}

void TGridDataLink::DataSetChanged() {
    FGrid->DataChanged();
}

void TGridDataLink::DataSetScrolled(int Distance) {
    FGrid->Scroll(Distance);
}

void TGridDataLink::EditingChanged() {
    FGrid->EditingChanged();
}

void TGridDataLink::LayoutChanged() {
    FGrid->LayoutChanged();
}

void TGridDataLink::RecordChanged(TField* Field) {
    FGrid->RecordChanged(Field);
}

void TGridDataLink::UpdateData() {
    FGrid->UpdateData();
}

// ---- grid

TCustomDBGrid::TCustomDBGrid(QWidget* Parent)
    : QAbstractScrollArea(Parent), FDataLink(std::make_unique<TGridDataLink>(this)),
      FColumns(std::make_unique<TDBGridColumns>(this)), FSelectedRows(std::make_unique<TBookmarkList>(this)) {
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setMouseTracking(true);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    FFixedColor = palette().color(QPalette::Button);
    FDefaultRowHeight = fontMetrics().height() + 4;
    FTitleRowHeight = FDefaultRowHeight;
    connect(verticalScrollBar(), &QScrollBar::actionTriggered, this,
            [this](int Action) { VerticalAction(Action); });
    UpdateScrollBars();
}

TCustomDBGrid::~TCustomDBGrid() {
    // The link is gone before the members it calls back into.
    FDataLink.reset();
}

TDataSource* TCustomDBGrid::DataSource() const {
    return FDataLink->DataSource();
}

void TCustomDBGrid::SetDataSource(TDataSource* Value) {
    FSelectedRows->Clear();
    FDataLink->SetDataSource(Value);
    LayoutChanged();
}

TDataSet* TCustomDBGrid::DataSet() const {
    return FDataLink->DataSet();
}

TField* TCustomDBGrid::SelectedField() const {
    const int index = SelectedIndex();
    if (index < 0 || index >= FColumns->Count()) {
        return nullptr;
    }
    return FColumns->Items(index)->Field();
}

void TCustomDBGrid::SetOptions(const TDBGridOptions& Value) {
    if (FOptions == Value) {
        return;
    }
    TDBGridOptions options = Value;
    if (options.count(dgRowSelect)) {
        options.erase(dgEditing);
        options.erase(dgAlwaysShowEditor);
    }
    const bool wasMulti = HasOption(dgMultiSelect);
    FOptions = options;
    if (wasMulti && !HasOption(dgMultiSelect)) {
        FSelectedRows->Clear();
    }
    if (!HasOption(dgEditing) || HasOption(dgRowSelect)) {
        HideEditor();
    }
    LayoutChanged();
    if (HasOption(dgAlwaysShowEditor)) {
        ShowEditor();
    }
}

void TCustomDBGrid::SetReadOnly(bool Value) {
    FReadOnly = Value;
    FDataLink->SetReadOnly(Value);
    if (Value) {
        HideEditor();
    }
}

void TCustomDBGrid::SetFixedColor(const QColor& Value) {
    FFixedColor = Value;
    Invalidate();
}

void TCustomDBGrid::SetIndicatorWidth(int Value) {
    FIndicatorWidth = Value;
    ColumnsChanged();
}

void TCustomDBGrid::SetColumnAttributes() {}

// ---- geometry

int TCustomDBGrid::VisibleRowCount() const {
    const int titles = HasOption(dgTitles) ? FTitleRowHeight : 0;
    return std::max(1, (viewport()->height() - titles) / FDefaultRowHeight);
}

int TCustomDBGrid::ColWidths(int ACol) const {
    if (ACol < IndicatorOffset()) {
        return FIndicatorWidth;
    }
    const int index = ACol - IndicatorOffset();
    if (index >= FColumns->Count()) {
        return 0;
    }
    TColumn* column = FColumns->Items(index);
    return column->Visible() ? column->Width() : 0;
}

void TCustomDBGrid::SetColWidths(int ACol, int Value) {
    if (ACol < IndicatorOffset()) {
        SetIndicatorWidth(Value);
    } else if (ACol - IndicatorOffset() < FColumns->Count()) {
        FColumns->Items(ACol - IndicatorOffset())->SetWidth(Value);
    }
}

int TCustomDBGrid::DataColumnLeft(int ACol) const {
    int x = (HasOption(dgIndicator) ? FIndicatorWidth : 0) - FHorzOffset;
    for (int c = IndicatorOffset(); c < ACol; ++c) {
        x += ColWidths(c);
    }
    return x;
}

QRect TCustomDBGrid::CellRect(int ACol, int ARow) const {
    const int x = ACol < IndicatorOffset() ? 0 : DataColumnLeft(ACol);
    if (ARow < TitleOffset()) {
        return QRect(x, 0, ColWidths(ACol), FTitleRowHeight);
    }
    const int top = (HasOption(dgTitles) ? FTitleRowHeight : 0) + (ARow - TitleOffset()) * FDefaultRowHeight;
    return QRect(x, top, ColWidths(ACol), FDefaultRowHeight);
}

QPoint TCustomDBGrid::MouseCoord(int X, int Y) const {
    int row = -1;
    const int titles = HasOption(dgTitles) ? FTitleRowHeight : 0;
    if (Y >= 0 && Y < titles) {
        row = 0;
    } else if (Y >= titles) {
        const int dataRow = (Y - titles) / FDefaultRowHeight;
        row = dataRow <= VisibleRowCount() ? TitleOffset() + dataRow : -1;
    }
    int col = -1;
    const int fixed = HasOption(dgIndicator) ? FIndicatorWidth : 0;
    if (X >= 0 && X < fixed) {
        col = 0;
    } else if (X >= fixed) {
        for (int c = IndicatorOffset(); c < ColCount(); ++c) {
            const int left = DataColumnLeft(c);
            const int width = ColWidths(c);
            if (width > 0 && X >= left && X < left + width) {
                col = c;
                break;
            }
        }
    }
    if (row < 0 || col < 0) {
        return QPoint(-1, -1);
    }
    return QPoint(col, row);
}

int TCustomDBGrid::SizingColumnAt(int X, int Y) const {
    if (!HasOption(dgColumnResize) || (HasOption(dgTitles) && Y >= FTitleRowHeight)) {
        return -1;
    }
    const int fixed = HasOption(dgIndicator) ? FIndicatorWidth : 0;
    for (int c = IndicatorOffset(); c < ColCount(); ++c) {
        const int right = DataColumnLeft(c) + ColWidths(c);
        if (ColWidths(c) > 0 && right > fixed && std::abs(X - right) <= 2) {
            return c;
        }
    }
    return -1;
}

int TCustomDBGrid::CurrentActiveRecord() const {
    return FPaintActiveRecord >= 0 ? FPaintActiveRecord : FDataLink->ActiveRecord();
}

int TCustomDBGrid::Row() const {
    return TitleOffset() + (FDataLink->Active() ? CurrentActiveRecord() : 0);
}

// ---- updates

void TCustomDBGrid::Invalidate() {
    if (FUpdateLock == 0) {
        viewport()->update();
    }
}

void TCustomDBGrid::EndUpdate() {
    if (FUpdateLock > 0 && --FUpdateLock == 0) {
        viewport()->update();
    }
}

void TCustomDBGrid::InvalidateRow(int ARow) {
    const QRect cell = CellRect(0, ARow);
    viewport()->update(QRect(0, cell.top(), viewport()->width(), cell.height()));
}

void TCustomDBGrid::InvalidateCell(int ACol, int ARow) {
    viewport()->update(CellRect(ACol, ARow));
}

bool TCustomDBGrid::Focused() const {
    return hasFocus() || (FEditor && FEditor->hasFocus());
}

void TCustomDBGrid::UpdateRowCount() {
    const int rows = VisibleRowCount();
    if (FDataLink->BufferCount() != rows) {
        FDataLink->SetBufferCount(rows);
    }
}

void TCustomDBGrid::LayoutChanged() {
    if (FColumns->State() == csDefault) {
        FColumns->RebuildColumns();
    }
    SetColumnAttributes();
    UpdateRowCount();
    ColumnsChanged();
}

void TCustomDBGrid::ColumnsChanged() {
    const int last = std::max(ColCount() - 1, IndicatorOffset());
    FCol = std::clamp(FCol, IndicatorOffset(), last);
    UpdateScrollBars();
    PlaceEditor();
    Invalidate();
}

void TCustomDBGrid::UpdateScrollBars() {
    FSettingScrollBar = true;
    QScrollBar* bar = verticalScrollBar();
    TDataSet* dataSet = DataSet();
    if (!FDataLink->Active() || !dataSet || dataSet->IsEmpty()) {
        // Nothing to scroll: no thumb, rather than one that suggests rows below.
        bar->setRange(0, 0);
    } else if (dataSet->IsSequenced()) {
        // One position per record.
        const int count = std::max(dataSet->RecordCount(), 1);
        bar->setRange(0, count - 1);
        bar->setPageStep(VisibleRowCount());
        bar->setValue(std::max(dataSet->RecNo(), 1) - 1);
    } else {
        // Only the ends are known: top, somewhere in between, bottom.
        bar->setRange(0, 2);
        bar->setPageStep(1);
        bar->setValue(dataSet->Bof() ? 0 : (dataSet->Eof() ? 2 : 1));
    }
    int width = 0;
    for (int c = IndicatorOffset(); c < ColCount(); ++c) {
        width += ColWidths(c);
    }
    const int room = viewport()->width() - (HasOption(dgIndicator) ? FIndicatorWidth : 0);
    horizontalScrollBar()->setRange(0, std::max(0, width - room));
    horizontalScrollBar()->setPageStep(std::max(room, 1));
    FHorzOffset = horizontalScrollBar()->value();
    FSettingScrollBar = false;
}

void TCustomDBGrid::VerticalAction(int Action) {
    TDataSet* dataSet = DataSet();
    if (!FDataLink->Active() || !dataSet) {
        return;
    }
    QScrollBar* bar = verticalScrollBar();
    const int wanted = bar->sliderPosition();
    switch (Action) {
    case QAbstractSlider::SliderSingleStepAdd:
        dataSet->Next();
        break;
    case QAbstractSlider::SliderSingleStepSub:
        dataSet->Prior();
        break;
    case QAbstractSlider::SliderPageStepAdd:
        dataSet->MoveBy(VisibleRowCount());
        break;
    case QAbstractSlider::SliderPageStepSub:
        dataSet->MoveBy(-VisibleRowCount());
        break;
    case QAbstractSlider::SliderToMinimum:
        dataSet->First();
        break;
    case QAbstractSlider::SliderToMaximum:
        dataSet->Last();
        break;
    case QAbstractSlider::SliderMove:
        if (dataSet->IsSequenced()) {
            dataSet->SetRecNo(wanted + 1);
        } else if (wanted <= bar->minimum()) {
            dataSet->First();
        } else if (wanted >= bar->maximum()) {
            dataSet->Last();
        }
        break;
    default:
        break;
    }
    // The bar shows where the dataset went, not where the slider was pushed.
    UpdateScrollBars();
    bar->setSliderPosition(bar->value());
}

void TCustomDBGrid::ScrollToCurrentCol() {
    if (FCol < IndicatorOffset()) {
        return;
    }
    const int fixed = HasOption(dgIndicator) ? FIndicatorWidth : 0;
    const int left = DataColumnLeft(FCol) + FHorzOffset - fixed;
    const int right = left + ColWidths(FCol);
    const int room = viewport()->width() - fixed;
    int offset = FHorzOffset;
    if (left < offset) {
        offset = left;
    } else if (right > offset + room) {
        offset = std::min(left, right - room);
    }
    if (offset != FHorzOffset) {
        horizontalScrollBar()->setValue(offset);
    }
}

void TCustomDBGrid::scrollContentsBy(int Dx, int Dy) {
    if (Dx != 0 && !FSettingScrollBar) {
        FHorzOffset = horizontalScrollBar()->value();
        PlaceEditor();
        viewport()->update();
    }
}

void TCustomDBGrid::resizeEvent(QResizeEvent* Event) {
    QAbstractScrollArea::resizeEvent(Event);
    UpdateRowCount();
    UpdateScrollBars();
    PlaceEditor();
}

void TCustomDBGrid::changeEvent(QEvent* Event) {
    QAbstractScrollArea::changeEvent(Event);
    if (Event->type() == QEvent::FontChange) {
        FDefaultRowHeight = fontMetrics().height() + 4;
        FTitleRowHeight = FDefaultRowHeight;
        LayoutChanged();
    }
}

// ---- data link notifications

void TCustomDBGrid::LinkActive(bool Value) {
    if (!Value) {
        HideEditor();
        FSelectedRows->Clear();
    }
    LayoutChanged();
    if (Value && HasOption(dgAlwaysShowEditor)) {
        ShowEditor();
    }
}

void TCustomDBGrid::DataChanged() {
    UpdateScrollBars();
    LoadEditorText();
    PlaceEditor();
    Invalidate();
}

void TCustomDBGrid::Scroll(int Distance) {
    DataChanged();
}

void TCustomDBGrid::EditingChanged() {
    if (!FDataLink->Editing()) {
        FEditorModified = false;
        LoadEditorText();
    }
    Invalidate();
}

void TCustomDBGrid::RecordChanged(TField* Field) {
    if (!Field || Field == SelectedField()) {
        LoadEditorText();
    }
    Invalidate();
}

// ---- moving

void TCustomDBGrid::MoveCol(int ACol) {
    if (ColCount() <= IndicatorOffset()) {
        return;
    }
    ACol = std::clamp(ACol, IndicatorOffset(), ColCount() - 1);
    if (ACol == FCol) {
        return;
    }
    if (!FInColExit && FEditorModified) {
        // The pending text goes into the field first; that may move the grid itself.
        const int before = FCol;
        FInColExit = true;
        try {
            UpdateData();
        } catch (...) {
            FInColExit = false;
            throw;
        }
        FInColExit = false;
        if (FCol != before) {
            return;
        }
    }
    if (OnColExit) {
        OnColExit(this);
    }
    if (!HasOption(dgAlwaysShowEditor)) {
        HideEditor();
    }
    FCol = ACol;
    ScrollToCurrentCol();
    if (OnColEnter) {
        OnColEnter(this);
    }
    if (FEditorMode) {
        LoadEditorText();
        PlaceEditor();
    } else if (HasOption(dgAlwaysShowEditor)) {
        ShowEditor();
    }
    Invalidate();
}

bool TCustomDBGrid::CanModifyData() {
    TDataSet* dataSet = DataSet();
    return FDataLink->Active() && dataSet && !FReadOnly && dataSet->CanModify();
}

void TCustomDBGrid::MoveRowBy(int Direction) {
    TDataSet* dataSet = DataSet();
    if (!dataSet) {
        return;
    }
    if (dataSet->State() == dsInsert && !dataSet->Modified() && !FEditorModified) {
        if (Direction > 0 && dataSet->Eof()) {
            return;
        }
        dataSet->Cancel();
        return;
    }
    dataSet->MoveBy(Direction);
    if (Direction > 0 && dataSet->Eof() && CanModifyData() && HasOption(dgEditing)) {
        dataSet->Append();
    }
}

// ---- editing

bool TCustomDBGrid::CanEditShow() const {
    if (!HasOption(dgEditing) || HasOption(dgRowSelect) || FReadOnly || !FDataLink->Active()) {
        return false;
    }
    const int index = SelectedIndex();
    if (index < 0 || index >= FColumns->Count() || FColumns->Items(index)->ReadOnly()) {
        return false;
    }
    TField* field = SelectedField();
    return field && field->CanModify() && !IsBlobType(field->DataType());
}

void TCustomDBGrid::SetEditorMode(bool Value) {
    if (Value) {
        ShowEditor();
    } else {
        HideEditor();
    }
}

void TCustomDBGrid::ShowEditor() {
    if (!CanEditShow()) {
        return;
    }
    if (!FEditor) {
        FEditor = new QLineEdit(viewport());
        FEditor->setObjectName("InplaceEditor");
        FEditor->setFrame(false);
        FEditor->installEventFilter(this);
        connect(FEditor, &QLineEdit::textEdited, this, [this](const QString&) {
            if (FLoadingEditor) {
                return;
            }
            try {
                EditorTextEdited();
            } catch (const std::exception& E) {
                Application::HandleException(E);
            }
        });
    }
    FEditorMode = true;
    LoadEditorText();
    PlaceEditor();
    FEditor->show();
    FEditor->setFocus();
}

void TCustomDBGrid::EditorTextEdited() {
    // The first keystroke puts the dataset in edit mode; a dataset that refuses gets its text back.
    const QString typed = FEditor->text();
    FEditorModified = true;
    if (!FDataLink->Editing() && !FDataLink->Edit()) {
        FEditorModified = false;
        LoadEditorText();
        return;
    }
    if (FEditor->text() != typed) {
        FEditor->setText(typed);
    }
}

void TCustomDBGrid::HideEditor() {
    FEditorMode = false;
    if (FEditor && FEditor->isVisible()) {
        const bool hadFocus = FEditor->hasFocus();
        FEditor->hide();
        if (hadFocus) {
            setFocus();
        }
    }
}

void TCustomDBGrid::LoadEditorText() {
    if (!FEditor || !FEditorMode || FEditorModified) {
        return;
    }
    TField* field = SelectedField();
    FLoadingEditor = true;
    FEditor->setText(field && FDataLink->Active() ? QString::fromStdString(field->Text()) : QString());
    FEditor->selectAll();
    FLoadingEditor = false;
}

void TCustomDBGrid::PlaceEditor() {
    if (!FEditor || !FEditorMode) {
        return;
    }
    if (!FDataLink->Active() || FCol < IndicatorOffset()) {
        HideEditor();
        return;
    }
    FEditor->setGeometry(CellRect(FCol, Row()).adjusted(0, 0, -1, -1));
}

void TCustomDBGrid::UpdateData() {
    if (!FEditorModified || !FEditor) {
        return;
    }
    if (TField* field = SelectedField()) {
        FEditorModified = false;
        try {
            field->SetText(FEditor->text().toStdString());
        } catch (...) {
            FEditorModified = true;
            throw;
        }
    }
}

} // namespace quorda
