#include "app/setup_window.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QScreen>
#include <algorithm>
#include <utility>

#include "app/setup_apps_page.h"
#include "app/setup_connection_pages.h"
#include "app/setup_screen_pages.h"
#include "app/setup_test_page.h"
#include "app/wrapped_label.h"

namespace tandrel {
namespace {

constexpr QSize kUsualSetupSize(900, 640);
constexpr int kButtonMarkSize = 18;
constexpr int kSideWidth = 180;

QString stepName(SetupStep step) {
    switch (step) {
        case SetupStep::bluetooth:
            return SetupWindow::tr("Bluetooth");
        case SetupStep::screen:
            return SetupWindow::tr("Screen");
        case SetupStep::pairing:
            return SetupWindow::tr("Pairing");
        case SetupStep::pointer:
            return SetupWindow::tr("Pointer");
        case SetupStep::apps:
            return SetupWindow::tr("AI apps");
        case SetupStep::test:
            return SetupWindow::tr("Test");
    }
    return {};
}

}  // namespace

SetupWindow::SetupWindow(ColorScheme appearance, WindowActions& actions)
    : appearance_(appearance), actions_(actions) {
    setWindowTitle(tr("Tandrel Setup"));
    setWindowIcon(productIcon());
    setProperty("ground", "window");
    setAttribute(Qt::WA_StyledBackground);
    auto* columns = new QHBoxLayout(this);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(0);
    columns->addWidget(buildSide());
    auto* column = new QVBoxLayout;
    column->setSpacing(0);
    columns->addLayout(column, 1);
    pages_ = new QStackedWidget;
    column->addWidget(pages_, 1);
    addPages();
    column->addWidget(buildBottom());
    Brand::dress(*this, appearance);
    const QSize room = QGuiApplication::primaryScreen()->availableGeometry().size();
    resize(QSize(Brand::scaled(kUsualSetupSize.width()), Brand::scaled(kUsualSetupSize.height()))
               .boundedTo(room - QSize(20, 60)));
    openStep(SetupStep::bluetooth);
}

QWidget* SetupWindow::buildSide() {
    auto* side = new QWidget;
    side->setProperty("ground", "sidebar");
    side->setAttribute(Qt::WA_StyledBackground);
    side->setMinimumWidth(Brand::scaled(kSideWidth));
    auto* rows = new QVBoxLayout(side);
    rows->setContentsMargins(16, 24, 16, 16);
    rows->setSpacing(4);
    auto* heading = new QHBoxLayout;
    auto* mark = new QLabel;
    mark->setPixmap(productMark(Brand::scaled(28)));
    auto* product = new QLabel("Tandrel");
    product->setProperty("role", "product");
    heading->addWidget(mark);
    heading->addWidget(product, 1);
    rows->addLayout(heading);
    rows->addSpacing(16);
    for (int i = 0; i < kSetupSteps; ++i) {
        const auto step = static_cast<SetupStep>(i);
        auto* button = new QPushButton(stepName(step));
        button->setProperty("role", "step");
        button->setCheckable(true);
        button->setIconSize(QSize(1, 1) * Brand::scaled(kButtonMarkSize));
        QObject::connect(button, &QPushButton::clicked, this, [this, step] { openStep(step); });
        rows->addWidget(button);
        stepButtons_.push_back(button);
    }
    rows->addStretch(1);
    menuButton_ = new QPushButton(tr("Menu"));
    menuButton_->hide();
    rows->addWidget(menuButton_);
    return side;
}

void SetupWindow::addPages() {
    pageList_ = {new BluetoothPage(appearance_, actions_), new ScreenPage(appearance_, actions_),
                 new PairingPage(appearance_, actions_),   new PointerPage(appearance_, actions_),
                 new AppsPage(appearance_, actions_),      new TestPage(appearance_, actions_)};
    for (SetupPage* page : pageList_) pages_->addWidget(page);
}

QWidget* SetupWindow::buildBottom() {
    auto* bottom = new QWidget;
    auto* columns = new QHBoxLayout(bottom);
    columns->setContentsMargins(28, 12, 28, 20);
    columns->setSpacing(12);
    remark_ = makeWrappedLabel("secondary", {});
    back_ = new QPushButton(tr("Back"));
    next_ = new QPushButton(tr("Continue"));
    next_->setProperty("role", "primary");
    QObject::connect(back_, &QPushButton::clicked, this, [this] {
        openStep(static_cast<SetupStep>(std::max(0, static_cast<int>(step_) - 1)));
    });
    QObject::connect(next_, &QPushButton::clicked, this, [this] { goOn(); });
    columns->addWidget(remark_, 1);
    columns->addWidget(back_);
    columns->addWidget(next_);
    return bottom;
}

void SetupWindow::showMenuButton(QMenu* menu, const QString& why) {
    menuButton_->setMenu(menu);
    menuButton_->setVisible(menu != nullptr);
    setWrappedText(*remark_, why);
}

void SetupWindow::goOn() {
    if (step_ != SetupStep::test) {
        openStep(static_cast<SetupStep>(static_cast<int>(step_) + 1));
        return;
    }
    actions_.finishSetup();
    close();
}

void SetupWindow::openStep(SetupStep step) {
    step_ = step;
    const int index = static_cast<int>(step);
    pageList_[static_cast<std::size_t>(index)]->display(shown_);
    for (int i = 0; i < kSetupSteps; ++i) {
        stepButtons_[static_cast<std::size_t>(i)]->setChecked(i == index);
    }
    pages_->setCurrentIndex(index);
    back_->setEnabled(step != SetupStep::bluetooth);
    next_->setText(step == SetupStep::test ? tr("Done") : tr("Continue"));
}

void SetupWindow::display(const SetupView& view) {
    shown_ = view;
    pageList_[static_cast<std::size_t>(step_)]->display(shown_);
    showMarks(shown_);
}

void SetupWindow::showMarks(const SetupView& view) {
    for (int i = 0; i < kSetupSteps; ++i) {
        const auto step = static_cast<SetupStep>(i);
        const bool done = isDone(step, view);
        if (std::exchange(doneShown_[static_cast<std::size_t>(i)], done) == done) continue;
        const Mark mark = done ? Mark::passed : Mark::none;
        QPushButton& button = *stepButtons_[static_cast<std::size_t>(i)];
        button.setIcon(
            markPixmap(mark, Brand::scaled(kButtonMarkSize), markColor(mark, appearance_)));
        button.setAccessibleDescription(done ? tr("done") : tr("open"));
    }
}

void SetupWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (watcher_) watcher_(true);
}

void SetupWindow::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (watcher_) watcher_(false);
}

}  // namespace tandrel
