#include "app/layout_check.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QHash>
#include <QLabel>
#include <QScrollBar>

#include "app/brand.h"

namespace tandrel {
namespace {

constexpr double kLeastContrast = 4.5;
constexpr int kFewPixels = 4;  // an edge's mixed colours are fewer

QString textOf(const QWidget& widget) {
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) return label->text();
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) return button->text();
    return {};
}

QString nameOf(const QWidget& widget) {
    const QString text = textOf(widget).left(40);
    const char* kind = widget.metaObject()->className();
    return text.isEmpty() ? QString(kind) : QString("%1 “%2”").arg(kind, text);
}

// Widgets that Qt arranges by itself and that hold no text of ours.
bool isQtsOwn(const QWidget& widget) {
    if (widget.objectName().startsWith("qt_") || qobject_cast<const QScrollBar*>(&widget)) {
        return true;
    }
    for (const QWidget* above = widget.parentWidget(); above; above = above->parentWidget()) {
        if (qobject_cast<const QAbstractItemView*>(above)) return true;
    }
    return false;
}

QList<QWidget*> shownChildren(const QWidget& window) {
    QList<QWidget*> shown;
    for (QWidget* child : window.findChildren<QWidget*>()) {
        if (child->isVisibleTo(&window) && !child->isWindow() && !isQtsOwn(*child)) {
            shown.push_back(child);
        }
    }
    return shown;
}

// What the widget needs at its width for its text to be whole.
QSize neededSize(const QWidget& widget) {
    const auto* label = qobject_cast<const QLabel*>(&widget);
    if (label == nullptr || !label->wordWrap()) return widget.sizeHint();
    return {widget.minimumSizeHint().width(), widget.heightForWidth(widget.width())};
}

bool isPageOfScrollArea(const QWidget& widget) {
    const QWidget* viewport = widget.parentWidget();
    return viewport != nullptr &&
           qobject_cast<const QAbstractScrollArea*>(viewport->parentWidget()) != nullptr;
}

void checkText(const QWidget& widget, QStringList& faults) {
    if (textOf(widget).isEmpty()) return;
    const QSize needed = neededSize(widget);
    if (needed.width() <= widget.width() && needed.height() <= widget.height()) return;
    faults << QString("%1 needs %2x%3 and has %4x%5")
                  .arg(nameOf(widget))
                  .arg(needed.width())
                  .arg(needed.height())
                  .arg(widget.width())
                  .arg(widget.height());
}

void checkPlace(const QWidget& widget, QStringList& faults) {
    QRect space = widget.parentWidget()->rect();
    if (isPageOfScrollArea(widget)) space.setHeight(std::max(space.height(), widget.height()));
    if (!space.contains(widget.geometry())) faults << nameOf(widget) + " leaves its parent";
}

// Text colours are those of its visible pixels: the commonest is the ground, and the one that
// differs most from it the ink.
double inkContrast(const QImage& picture) {
    QHash<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) ++counts[picture.pixel(x, y)];
    }
    QRgb ground = 0;
    int most = 0;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
        if (it.value() > most) std::tie(ground, most) = std::pair(it.key(), it.value());
    }
    double best = 1;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
        if (it.value() < kFewPixels) continue;
        best = std::max(best, Brand::contrast(QColor(it.key()), QColor(ground)));
    }
    return best;
}

}  // namespace

QStringList layoutFaults(const QWidget& window) {
    QStringList faults;
    const QList<QWidget*> shown = shownChildren(window);
    for (const QWidget* widget : shown) {
        checkText(*widget, faults);
        checkPlace(*widget, faults);
    }
    for (qsizetype i = 0; i < shown.size(); ++i) {
        for (qsizetype k = i + 1; k < shown.size(); ++k) {
            const QWidget& one = *shown[i];
            const QWidget& other = *shown[k];
            if (one.parentWidget() != other.parentWidget()) continue;
            if (!one.geometry().intersects(other.geometry())) continue;
            faults << nameOf(one) + " overlaps " + nameOf(other);
        }
    }
    return faults;
}

QStringList contrastFaults(const QWidget& window, const QImage& picture) {
    QStringList faults;
    for (const QWidget* widget : shownChildren(window)) {
        const QRect seen = widget->visibleRegion().boundingRect();
        if (textOf(*widget).isEmpty() || seen.isEmpty()) continue;
        // Scrolled away so far that no line of it is left to read.
        const int line = widget->fontMetrics().height();
        if (seen.height() < widget->height() && seen.height() < line) continue;
        const QRect place(widget->mapTo(&window, seen.topLeft()), seen.size());
        const double ratio = picture.devicePixelRatio();
        const QRect pixels(place.topLeft() * ratio, place.size() * ratio);
        const double contrast = inkContrast(picture.copy(pixels));
        if (contrast >= kLeastContrast) continue;
        faults
            << QString("%1 stands out by only %2:1").arg(nameOf(*widget)).arg(contrast, 0, 'f', 1);
    }
    return faults;
}

}  // namespace tandrel
