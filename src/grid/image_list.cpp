#include "quorda/grid/image_list.h"

#include <QPainter>
#include <QPolygon>

namespace quorda {

TImageList::TImageList(int Width, int Height, QObject* Parent)
    : QObject(Parent), FWidth(Width), FHeight(Height) {}

int TImageList::Add(const QPixmap& Image) {
    if (Image.width() != FWidth || Image.height() != FHeight) {
        FImages.push_back(Image.scaled(FWidth, FHeight, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    } else {
        FImages.push_back(Image);
    }
    return Count() - 1;
}

void TImageList::Draw(QPainter& Canvas, int X, int Y, int Index) const {
    if (Index < 0 || Index >= Count()) {
        return;
    }
    if (FBkColor.alpha() != 0) {
        Canvas.fillRect(X, Y, FWidth, FHeight, FBkColor);
    }
    Canvas.drawPixmap(X, Y, FImages[static_cast<std::size_t>(Index)]);
}

namespace {

// One indicator image drawn by Paint on a transparent square.
template <typename F>
QPixmap Indicator(int Size, F Paint) {
    QPixmap image(Size, Size);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    Paint(painter, Size);
    return image;
}

void Arrow(QPainter& P, int Size) {
    const int mid = Size / 2;
    P.drawPolygon(QPolygon({QPoint(2, 1), QPoint(mid + 2, mid), QPoint(2, Size - 1)}));
}

void Dot(QPainter& P, int Size) {
    P.setBrush(QColor(0, 0, 160));
    P.drawEllipse(QRect(Size / 2 - 2, Size / 2 - 2, 5, 5));
}

} // namespace

std::unique_ptr<TImageList> TImageList::CreateIndicatorImages(QObject* Parent) {
    constexpr int size = 10;
    auto list = std::make_unique<TImageList>(size, size, Parent);
    list->Add(Indicator(size, Arrow));
    list->Add(Indicator(size, [](QPainter& P, int Size) {
        // An I-beam: the record is being edited.
        P.drawRect(4, 1, 2, Size - 2);
        P.drawRect(2, 1, 6, 1);
        P.drawRect(2, Size - 2, 6, 1);
    }));
    list->Add(Indicator(size, [](QPainter& P, int Size) {
        // An asterisk: a new record.
        P.setPen(QPen(Qt::black, 1.5));
        const QPointF c(Size / 2.0, Size / 2.0);
        for (const QPointF& d : {QPointF(0, 4), QPointF(3.5, 2), QPointF(3.5, -2)}) {
            P.drawLine(c - d, c + d);
        }
    }));
    list->Add(Indicator(size, Dot));
    list->Add(Indicator(size, [](QPainter& P, int Size) {
        Arrow(P, Size);
        P.setBrush(QColor(0, 0, 160));
        P.drawEllipse(QRect(Size - 4, Size / 2 - 2, 4, 4));
    }));
    return list;
}

} // namespace quorda
