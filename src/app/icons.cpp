#include "app/icons.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <functional>

namespace tandrel {
namespace {

// Drawings are made on a square of this many units and scaled.
constexpr double kUnits = 32;

QPixmap draw(int size, double ratio, const std::function<void(QPainter&)>& drawing) {
    QPixmap result(QSize(size, size) * ratio);
    result.setDevicePixelRatio(ratio);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / kUnits, size / kUnits);
    drawing(painter);
    return result;
}

QPen roundPen(const QColor& color, double width) {
    return {QBrush(color), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

void drawTick(QPainter& painter, QPointF middle, double reach) {
    painter.drawPolyline(QPolygonF({middle + QPointF(-reach, 0.1 * reach),
                                    middle + QPointF(-0.25 * reach, 0.8 * reach),
                                    middle + QPointF(reach, -0.75 * reach)}));
}

void drawExclamation(QPainter& painter, QPointF middle, double reach) {
    painter.drawLine(middle + QPointF(0, -reach), middle + QPointF(0, 0.25 * reach));
    painter.drawPoint(middle + QPointF(0, reach));
}

void drawDots(QPainter& painter, QPointF middle, double reach) {
    for (const double step : {-1.0, 0.0, 1.0}) painter.drawPoint(middle + QPointF(0, step * reach));
}

void drawBars(QPainter& painter, QPointF middle, double reach) {
    for (const double side : {-0.5, 0.5}) {
        painter.drawLine(middle + QPointF(side * reach, -0.9 * reach),
                         middle + QPointF(side * reach, 0.9 * reach));
    }
}

struct HealthLook {
    Health health;
    const char* body;
    void (*sign)(QPainter&, QPointF middle, double reach);
};

// clang-format off
constexpr HealthLook kHealthLooks[] = {
    {Health::setup,     "#3f5f8a", drawDots},
    {Health::ready,     "#0a5bd3", drawTick},
    {Health::attention, "#b3420e", drawExclamation},
    {Health::paused,    "#55555a", drawBars},
};
// clang-format on

const HealthLook& lookOf(Health health) {
    return *std::ranges::find(kHealthLooks, health, &HealthLook::health);
}

}  // namespace

QPixmap productMark(int size) {
    return draw(size, qGuiApp->devicePixelRatio(), [](QPainter& painter) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor("#0a5bd3"));
        painter.drawRoundedRect(QRectF(0, 0, kUnits, kUnits), 7.5, 7.5);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(roundPen(Qt::white, 2.4));
        painter.drawRoundedRect(QRectF(6.5, 5, 12, 22), 3.2, 3.2);
        // The arrow that reaches into the phone from outside.
        QPainterPath arrow;
        arrow.moveTo(14.5, 12);
        arrow.lineTo(26.5, 17.2);
        arrow.lineTo(21.2, 18.9);
        arrow.lineTo(19.2, 24.2);
        arrow.closeSubpath();
        painter.setPen(roundPen(QColor("#0a5bd3"), 2.4));
        painter.setBrush(Qt::white);
        painter.drawPath(arrow);
    });
}

QIcon productIcon() {
    QIcon icon;
    for (const int size : {16, 32, 48, 128}) icon.addPixmap(productMark(size));
    return icon;
}

QPixmap healthPixmap(Health health, int pixels) {
    const HealthLook& look = lookOf(health);
    return draw(pixels, 1, [&](QPainter& painter) {
        painter.setPen(roundPen(Qt::white, 2));
        painter.setBrush(QColor(look.body));
        painter.drawRoundedRect(QRectF(4.5, 1, 23, 30), 5.5, 5.5);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(roundPen(Qt::white, 3.4));
        look.sign(painter, {16, 16}, 7.5);
    });
}

QIcon healthIcon(Health health) {
    QIcon icon;
    for (const int pixels : {16, 22, 24, 32, 48, 64}) {
        const QPixmap pixmap = healthPixmap(health, pixels);
        icon.addPixmap(pixmap);
        icon.addPixmap(pixmap, QIcon::Disabled);  // the headline in the menu is not for clicking
    }
    return icon;
}

QPixmap markPixmap(Mark mark, int size, const QColor& ink) {
    return draw(size, qGuiApp->devicePixelRatio(), [&](QPainter& painter) {
        const QPointF middle(kUnits / 2, kUnits / 2);
        const QRectF circle(2, 2, kUnits - 4, kUnits - 4);
        painter.setPen(roundPen(ink, 2.6));
        if (mark == Mark::none) {
            painter.drawEllipse(circle);
        } else if (mark == Mark::running) {
            painter.drawArc(circle, 90 * 16, -270 * 16);
        } else {
            painter.setBrush(ink);
            painter.drawEllipse(circle);
            painter.setPen(roundPen(ink.lightnessF() > 0.5 ? Qt::black : Qt::white, 3.4));
            if (mark == Mark::passed) drawTick(painter, middle, 7);
            if (mark == Mark::warning) drawExclamation(painter, middle, 7.5);
            if (mark == Mark::failed) {
                painter.drawLine(middle - QPointF(5.5, 5.5), middle + QPointF(5.5, 5.5));
                painter.drawLine(middle + QPointF(-5.5, 5.5), middle + QPointF(5.5, -5.5));
            }
        }
    });
}

}  // namespace tandrel
