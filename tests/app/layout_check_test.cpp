#include "app/layout_check.h"

#include <QAbstractButton>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QTableView>
#include <QVBoxLayout>

#include <gmock/gmock.h>

#include "app/brand.h"
#include "app/offscreen.h"
#include "app/running_program.h"
#include "app/sample_windows.h"
#include "app/wrapped_label.h"

namespace tandrel {
namespace {

using testing::SizeIs;

bool isInScrollArea(const QWidget& widget) {
    for (const QWidget* above = widget.parentWidget(); above; above = above->parentWidget()) {
        if (qobject_cast<const QScrollArea*>(above)) return true;
    }
    return false;
}

class LayoutCheck : public Offscreen {
 protected:
    LayoutCheck() {
        window.setFixedSize(300, 200);
        Brand::dress(window, ColorScheme::light, "QWidget { background: #ffffff; }");
    }

    QLabel& label(const QString& text, const QRect& place) {
        QLabel* made = makeWrappedLabel("", text);
        made->setParent(&window);
        made->setGeometry(place);
        made->show();
        return *made;
    }
    QImage shown() {
        window.show();
        return window.grab().toImage();
    }

    QWidget window;
};

TEST_F(LayoutCheck, FindsWhatIsClippedOutsideOrOnTopOfAnother) {
    const std::tuple<const char*, std::vector<QRect>, int> rows[] = {
        {"side by side", {{0, 0, 150, 60}, {150, 0, 150, 60}}, 0},
        {"too low for its text", {{0, 0, 150, 10}}, 1},
        {"too narrow for a word", {{0, 0, 12, 190}}, 1},
        {"reaches beyond the window", {{200, 0, 150, 60}}, 1},
        {"overlap", {{0, 0, 150, 60}, {140, 20, 150, 60}}, 1},
    };
    for (const auto& [name, places, faults] : rows) {
        SCOPED_TRACE(name);
        qDeleteAll(window.findChildren<QLabel*>());
        for (const QRect& place : places) label("Two words", place);
        shown();
        EXPECT_THAT(layoutFaults(window), SizeIs(faults))
            << layoutFaults(window).join("; ").toStdString();
    }
}

TEST_F(LayoutCheck, FindsTextThatIsHardToRead) {
    label("Black on white", {0, 0, 300, 60});
    EXPECT_THAT(contrastFaults(window, shown()), testing::IsEmpty());
    QLabel& pale = label("Grey on white", {0, 60, 300, 60});
    pale.setStyleSheet("color: #8a8a8a;");
    pale.show();
    EXPECT_THAT(contrastFaults(window, shown()), SizeIs(1));
}

TEST_F(LayoutCheck, LeavesTextAloneThatIsScrolledAway) {
    QScrollArea area(&window);
    area.setFrameShape(QFrame::NoFrame);
    area.setGeometry(0, 0, 300, 100);
    auto* content = new QWidget;
    content->resize(280, 400);
    area.setWidget(content);
    QLabel& pale = label("Grey on white", {0, 97, 280, 60});
    pale.setStyleSheet("color: #8a8a8a;");
    pale.setParent(content);
    pale.show();
    EXPECT_THAT(contrastFaults(window, shown()), testing::IsEmpty()) << "three rows of it";
    pale.move(0, 30);
    EXPECT_THAT(contrastFaults(window, shown()), SizeIs(1));
}

TEST_F(LayoutCheck, LetsWordsBreakThatAreLongerThanALine) {
    label(QString(400, 'W'), {0, 0, 300, 190});
    shown();
    const QStringList faults = layoutFaults(window);
    ASSERT_THAT(faults, SizeIs(1)) << "too low, but not too wide";
    EXPECT_LE(window.findChild<QLabel*>()->minimumSizeHint().width(), 300);
}

// What the Tab key reaches, in its order.
std::vector<QWidget*> tabStops(QWidget& window) {
    std::vector<QWidget*> stops;
    for (QWidget* at = window.nextInFocusChain(); at != &window; at = at->nextInFocusChain()) {
        if (at->isVisible() && at->isEnabled() && (at->focusPolicy() & Qt::TabFocus)) {
            stops.push_back(at);
        }
    }
    return stops;
}

// All but Approve, which wants the mouse; in the setup first down the side, then down the page,
// then along the bottom.
TEST_F(LayoutCheck, EveryButtonIsReachedByKeyboardAndTheSetupsInReadingOrder) {
    const auto samples = makeSampleWindows(ColorScheme::light, builtApp()).value();
    int buttons = 0;
    for (const SampleWindow& sample : samples) {
        SCOPED_TRACE(sample.name);
        QWidget& window = *sample.widget;
        if (qobject_cast<QMenu*>(&window) != nullptr) continue;  // walked with the arrow keys
        window.show();
        const auto stops = tabStops(window);
        for (auto* button : window.findChildren<QAbstractButton*>()) {
            if (!button->isVisible() || !button->isEnabled()) continue;
            EXPECT_TRUE(std::ranges::count(stops, button) == 1 || button->text().isEmpty())
                << button->text().toStdString();
            ++buttons;
        }
        for (auto* table : window.findChildren<QTableView*>()) {
            EXPECT_EQ(std::ranges::count(stops, table), 1);
        }
        std::tuple<int, int, int> last;
        for (const QWidget* at : stops) {
            if (!sample.name.starts_with("setup-")) break;
            const QPoint place = at->mapTo(&window, QPoint(0, at->height()));
            const bool atSide = place.x() <= window.width() / 4;
            const std::tuple now(atSide ? 0 : isInScrollArea(*at) ? 1 : 2, place.y(), place.x());
            EXPECT_LT(last, now);
            last = now;
        }
    }
    EXPECT_GT(buttons, 15 * 8);
}

TEST(Brand, EveryTextStandsOutFromItsGround) {
    EXPECT_NEAR(Brand::contrast(Qt::black, Qt::white), 21, 0.001);
    EXPECT_NEAR(Brand::contrast(QColor("#767676"), Qt::white), 4.54, 0.01);
    for (const ColorScheme appearance : {ColorScheme::light, ColorScheme::dark}) {
        for (const auto& [text, ground] : Brand::pairs()) {
            EXPECT_GE(
                Brand::contrast(Brand::color(text, appearance), Brand::color(ground, appearance)),
                4.5)
                << text << " on " << ground << " " << static_cast<int>(appearance);
        }
    }
}

}  // namespace
}  // namespace tandrel
