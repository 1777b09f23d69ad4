#include "quorda/db/dataset.h"
#include "quorda/db/field.h"
#include "quorda/grid/db_grid.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPolygon>

namespace quorda {

namespace {

Qt::Alignment AlignmentOf(TAlignment Value) {
    switch (Value) {
    case taRightJustify:
        return Qt::AlignRight | Qt::AlignVCenter;
    case taCenter:
        return Qt::AlignHCenter | Qt::AlignVCenter;
    default:
        return Qt::AlignLeft | Qt::AlignVCenter;
    }
}

// Puts the data link's active record back when painting ends, however it ends.
class TActiveRecordGuard {
public:
    explicit TActiveRecordGuard(TDataLink& Link) : FLink(Link), FSaved(Link.ActiveRecord()) {}
    ~TActiveRecordGuard() { FLink.SetActiveRecord(FSaved); }
    int Saved() const { return FSaved; }

private:
    TDataLink& FLink;
    int FSaved;
};

} // namespace

void TCustomDBGrid::SetCellColors(const QColor& Brush, const QColor& Font) {
    FCellBrush = Brush;
    FCellFont = Font;
}

void TCustomDBGrid::paintEvent(QPaintEvent* Event) {
    QPainter painter(viewport());
    FCanvas = &painter;
    painter.fillRect(Event->rect(), palette().color(QPalette::Base));
    const int fixedWidth = HasOption(dgIndicator) ? FIndicatorWidth : 0;
    const QRect dataArea(fixedWidth, 0, viewport()->width() - fixedWidth, viewport()->height());
    auto drawCell = [&](int ACol, int ARow, const TGridDrawState& State) {
        const QRect rect = CellRect(ACol, ARow);
        if (rect.width() <= 0 || !rect.intersects(Event->rect())) {
            return;
        }
        painter.save();
        painter.setClipRect(ACol < IndicatorOffset() ? rect : rect.intersected(dataArea));
        DrawCell(ACol, ARow, rect, State);
        painter.restore();
    };
    if (HasOption(dgTitles)) {
        for (int c = 0; c < ColCount(); ++c) {
            drawCell(c, 0, {gdFixed});
        }
    }
    if (FDataLink->Active()) {
        TActiveRecordGuard guard(*FDataLink);
        FPaintActiveRecord = guard.Saved();
        const bool focused = Focused();
        for (int r = 0; r < FDataLink->RecordCount(); ++r) {
            FDataLink->SetActiveRecord(r);
            const bool current = r == guard.Saved();
            for (int c = 0; c < ColCount(); ++c) {
                TGridDrawState state;
                if (c < IndicatorOffset()) {
                    state.insert(gdFixed);
                } else if (current && (HasOption(dgRowSelect) || c == FCol)) {
                    state.insert(gdSelected);
                    if (focused && c == FCol) {
                        state.insert(gdFocused);
                    }
                }
                drawCell(c, TitleOffset() + r, state);
            }
        }
        FPaintActiveRecord = -1;
    }
    if (FGridState == gsColMoving && FMoveTo >= IndicatorOffset()) {
        // Where the moved column will land.
        const int x =
            FMoveTo > FMoveFrom ? DataColumnLeft(FMoveTo) + ColWidths(FMoveTo) : DataColumnLeft(FMoveTo);
        painter.fillRect(QRect(x - 1, 0, 3, viewport()->height()), palette().color(QPalette::Highlight));
    }
    FCanvas = nullptr;
}

void TCustomDBGrid::DrawRaisedFrame(const QRect& Rect) {
    QPainter& p = *FCanvas;
    p.setPen(palette().color(QPalette::Dark));
    p.drawLine(Rect.bottomLeft(), Rect.bottomRight());
    p.drawLine(Rect.topRight(), Rect.bottomRight());
    p.setPen(palette().color(QPalette::Light));
    p.drawLine(Rect.topLeft(), Rect.topRight());
    p.drawLine(Rect.topLeft(), Rect.bottomLeft());
}

void TCustomDBGrid::DrawTitleCell(const QRect& Rect, TColumn* Column) {
    QPainter& p = *FCanvas;
    p.fillRect(Rect, FFixedColor);
    if (Column) {
        p.setPen(palette().color(QPalette::ButtonText));
        const QString caption = QString::fromStdString(Column->Title().Caption());
        const QRect text = Rect.adjusted(3, 0, -3, 0);
        p.drawText(text, AlignmentOf(Column->Title().Alignment()),
                   p.fontMetrics().elidedText(caption, Qt::ElideRight, text.width()));
    }
    DrawRaisedFrame(Rect);
}

void TCustomDBGrid::DefaultDrawDataCell(const QRect& Rect, TColumn* Column, const TGridDrawState& State) {
    QPainter& p = *FCanvas;
    TField* field = Column->Field();
    const QString value = field ? QString::fromStdString(field->DisplayText()) : QString();
    p.fillRect(Rect, FCellBrush);
    p.setPen(FCellFont);
    const QRect text = Rect.adjusted(3, 0, -3, 0);
    p.drawText(text, AlignmentOf(Column->Alignment()),
               p.fontMetrics().elidedText(value, Qt::ElideRight, text.width()));
}

void TCustomDBGrid::DrawCell(int ACol, int ARow, const QRect& ARect, const TGridDrawState& AState) {
    QPainter& p = *FCanvas;
    if (ARow < TitleOffset()) {
        DrawTitleCell(ARect, ACol < IndicatorOffset() ? nullptr : FColumns->Items(ACol - IndicatorOffset()));
        return;
    }
    if (ACol < IndicatorOffset()) {
        p.fillRect(ARect, FFixedColor);
        if (ARow - TitleOffset() == CurrentActiveRecord()) {
            // The host's own mark: an arrow while browsing, a bar while editing.
            p.setPen(Qt::NoPen);
            p.setBrush(palette().color(QPalette::ButtonText));
            const QPoint c = ARect.center();
            if (FDataLink->Editing()) {
                p.drawRect(c.x() - 1, ARect.top() + 3, 2, ARect.height() - 6);
            } else {
                p.drawPolygon(QPolygon(
                    {QPoint(c.x() - 2, c.y() - 4), QPoint(c.x() + 2, c.y()), QPoint(c.x() - 2, c.y() + 4)}));
            }
        }
        DrawRaisedFrame(ARect);
        return;
    }
    TColumn* column = FColumns->Items(ACol - IndicatorOffset());
    TField* field = column->Field();
    SetCellColors(palette().color(QPalette::Base), palette().color(QPalette::Text));
    if (HighlightCell(ACol - IndicatorOffset(), ARow - TitleOffset(),
                      field ? field->DisplayText() : std::string(), AState)) {
        SetCellColors(palette().color(QPalette::Highlight), palette().color(QPalette::HighlightedText));
    }
    const QRect inner = ARect.adjusted(0, 0, HasOption(dgColLines) ? -1 : 0, HasOption(dgRowLines) ? -1 : 0);
    DefaultDrawDataCell(inner, column, AState);
    if (AState.count(gdFocused) && !HasOption(dgRowSelect)) {
        p.setPen(QPen(palette().color(QPalette::Text), 1, Qt::DotLine));
        p.setBrush(Qt::NoBrush);
        p.drawRect(inner.adjusted(0, 0, -1, -1));
    }
    p.setPen(palette().color(QPalette::Mid));
    if (HasOption(dgColLines)) {
        p.drawLine(ARect.topRight(), ARect.bottomRight());
    }
    if (HasOption(dgRowLines)) {
        p.drawLine(ARect.bottomLeft(), ARect.bottomRight());
    }
    if (OnDrawColumnCell) {
        OnDrawColumnCell(this, inner, ACol - IndicatorOffset(), column, AState);
    }
}

bool TCustomDBGrid::HighlightCell(int DataCol, int DataRow, const std::string& Value,
                                  const TGridDrawState& AState) {
    bool result = HasOption(dgMultiSelect) && FDataLink->Active() && FSelectedRows->CurrentRowSelected();
    if (!result) {
        result = AState.count(gdSelected) && (HasOption(dgAlwaysShowSelection) || Focused()) &&
                 (FUpdateLock == 0 || HasOption(dgRowSelect));
    }
    return result;
}

} // namespace quorda
