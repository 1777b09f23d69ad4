#pragma once

#include "quorda/export.h"

#include <QColor>
#include <QObject>
#include <QPixmap>
#include <memory>
#include <vector>

class QPainter;

namespace quorda {

// Images of one size, drawn by index; transparent parts show the background colour.
class QUORDA_API TImageList : public QObject {
public:
    TImageList(int Width, int Height, QObject* Parent = nullptr);

    int Width() const { return FWidth; }
    int Height() const { return FHeight; }
    int Count() const { return static_cast<int>(FImages.size()); }
    // Scaled to the list's size when it differs; returns the new index.
    int Add(const QPixmap& Image);
    QColor BkColor() const { return FBkColor; }
    void SetBkColor(const QColor& Value) { FBkColor = Value; }
    // An index out of range draws nothing.
    void Draw(QPainter& Canvas, int X, int Y, int Index) const;

    // The application's indicator images, in the order a data grid uses them: current row, editing,
    // inserting, selected row, selected current row.
    static std::unique_ptr<TImageList> CreateIndicatorImages(QObject* Parent = nullptr);

private:
    int FWidth;
    int FHeight;
    QColor FBkColor = Qt::transparent;
    std::vector<QPixmap> FImages;
};

} // namespace quorda
