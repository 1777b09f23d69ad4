#include "quorda/db/dataset.h"
#include "quorda/grid/ext_db_grid.h"

#include <QImage>
#include <QPainter>

namespace quorda {

namespace {

// A brush whose pixels alternate, by the parity of x + y, between Color and its inverse.
QBrush DottedBrush(const QColor& Color) {
    QImage pattern(2, 2, QImage::Format_RGB32);
    const QRgb inverse = qRgb(255 - Color.red(), 255 - Color.green(), 255 - Color.blue());
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 2; ++x) {
            pattern.setPixel(x, y, (x + y) % 2 == 0 ? Color.rgb() : inverse);
        }
    }
    return QBrush(pattern);
}

} // namespace

int TExtCustomDBGrid::IndicatorImageFor(int DataRow) {
    TDataSet* dataSet = DataSet();
    if (!DataLink()->Active() || !dataSet) {
        return DataRow == 0 ? iiCurrent : -1;
    }
    const bool current = DataRow == CurrentActiveRecord();
    const int saved = DataLink()->ActiveRecord();
    DataLink()->SetActiveRecord(DataRow);
    const bool selected = SelectedRows().CurrentRowSelected();
    DataLink()->SetActiveRecord(saved);
    const bool browsing = dataSet->State() == dsBrowse;
    if (current) {
        if (dataSet->State() == dsEdit) {
            return iiEdit;
        }
        if (dataSet->State() == dsInsert) {
            return iiInsert;
        }
        return selected ? iiSelectedCurrent : iiCurrent;
    }
    return selected && browsing ? iiSelected : -1;
}

void TExtCustomDBGrid::DrawIndicatorCell(int ARow, QRect ARect) {
    QPainter& p = *Canvas();
    const bool lines = HasOption(dgColLines) && HasOption(dgRowLines);
    if (lines) {
        ARect.adjust(1, 1, -1, -1);
    }
    p.fillRect(ARect, FixedColor());
    if (DataLink()->Active() && ARow >= TitleOffset()) {
        const int image = IndicatorImageFor(ARow - TitleOffset());
        if (image >= 0) {
            FIndicators->SetBkColor(FixedColor());
            FIndicators->Draw(p, ARect.left(), (ARect.top() + ARect.bottom() - FIndicators->Height()) / 2,
                              image);
        }
    }
    if (lines) {
        ARect.adjust(-1, -1, 1, 1);
        DrawRaisedFrame(ARect);
    }
}

void TExtCustomDBGrid::DrawCurrentRowFrame(int ACol, const QRect& ARect) {
    QPainter& p = *Canvas();
    p.save();
    p.setBrushOrigin(0, 0);
    const QBrush brush = DottedBrush(palette().color(QPalette::Active, QPalette::Highlight));
    p.fillRect(QRect(ARect.left(), ARect.top(), ARect.width(), 1), brush);
    p.fillRect(QRect(ARect.left(), ARect.bottom(), ARect.width(), 1), brush);
    if (ACol == ColCount() - 1) {
        p.fillRect(QRect(ARect.right(), ARect.top(), 1, ARect.height()), brush);
    }
    if (ACol == IndicatorOffset()) {
        p.fillRect(QRect(ARect.left(), ARect.top(), 1, ARect.height()), brush);
    }
    p.restore();
}

void TExtCustomDBGrid::DrawCell(int ACol, int ARow, const QRect& ARect, const TGridDrawState& AState) {
    if (ACol < IndicatorOffset() && FIndicators) {
        DrawIndicatorCell(ARow, ARect);
    } else {
        FHighlighted = false;
        TCustomDBGrid::DrawCell(ACol, ARow, ARect, AState);
        if (HasOption(dgRowSelect) && ACol >= IndicatorOffset() && ARow >= TitleOffset()) {
            if (AState.count(gdSelected) && Focused()) {
                DrawCurrentRowFrame(ACol, ARect);
            }
            if (FHighlighted && DataLink()->Active() && !Focused()) {
                QPainter& p = *Canvas();
                p.setPen(palette().color(QPalette::Mid));
                p.drawLine(ARect.topLeft(), ARect.topRight());
                p.drawLine(ARect.bottomLeft(), ARect.bottomRight());
                if (ACol == ColCount() - 1) {
                    p.drawLine(ARect.topRight(), ARect.bottomRight());
                }
                FHighlighted = false;
            }
        }
    }
    if (AState.count(gdFixed) && OnDrawFixedCell) {
        TColumn* column = ACol >= IndicatorOffset() ? Columns().Items(ACol - IndicatorOffset()) : nullptr;
        OnDrawFixedCell(this, ARect, ACol - IndicatorOffset(), column, AState);
    }
}

bool TExtCustomDBGrid::HighlightCell(int DataCol, int DataRow, const std::string& Value,
                                     const TGridDrawState& AState) {
    bool result = TCustomDBGrid::HighlightCell(DataCol, DataRow, Value, AState);
    if (HasOption(dgMultiSelect) && AState.count(gdSelected) && SelectedRows().Count() > 0 &&
        DataLink()->Active()) {
        result = SelectedRows().CurrentRowSelected();
    }
    FHighlighted = result;
    if (result && !Focused()) {
        // Without the focus the selection shows in the button colours.
        SetCellColors(palette().color(QPalette::Button), palette().color(QPalette::ButtonText));
        return false;
    }
    return result;
}

} // namespace quorda
