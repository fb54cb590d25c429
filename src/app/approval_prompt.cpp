#include "app/approval_prompt.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <vector>

#include "app/brand.h"
#include "app/every_desktop.h"
#include "app/icons.h"
#include "app/screen_picture.h"
#include "app/wrapped_label.h"

namespace tandrel {
namespace {

constexpr int kMargin = 24;
constexpr int kSpacing = 16;
constexpr int kTitleBar = 48;  // what the window manager may put around the panel
constexpr int kLowestPicture = 330;
constexpr int kHighestPicture = 480;
constexpr int kWidestPicture = 260;
constexpr int kGapBetweenPrompts = 16;

constexpr const char* kPromptRules = R"(
    #prompt { background: @surface; }
    QLabel[role="product"] { color: @link; }
    QLabel[role="title"] { font-size: 20pt; }
    QLabel[role="body"] { font-size: 13.5pt; }
    QLabel[role="secondary"] { font-size: 11.5pt; }
    QLabel[role="attention"] { font-size: 11pt; }
    QPushButton { font-size: 12pt; padding: 10px 16px; background: @sidebar; }
    QPushButton:focus { padding: 9px 15px; }
    QPushButton[role="primary"]:disabled { background: @sidebar; }
)";

// Prompts on the screen, in the order they were shown.
std::vector<ApprovalPrompt*> openPrompts;

// The part of the screen that the panel may take.
QSize space() {
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    return area.size() - QSize(2 * kMargin, 2 * kMargin + kTitleBar);
}

}  // namespace

ApprovalPrompt::ApprovalPrompt(const ApprovalRequest& request, TimePoint deadline, Clock& clock,
                               Answered answered)
    : QWidget(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                           Qt::WindowCloseButtonHint | Qt::WindowStaysOnTopHint),
      deadline_(deadline),
      clock_(clock),
      answered_(std::move(answered)) {
    setObjectName("prompt");
    setAttribute(Qt::WA_StyledBackground);
    setWindowTitle(tr("Tandrel: approve a payment"));
    setWindowIcon(productIcon());
    // Light whatever the desktop is: a question about money looks the same every time.
    Brand::dress(*this, ColorScheme::light, kPromptRules);
    build(request);
    QObject::connect(&ticker_, &QTimer::timeout, this, [this] { showSecondsLeft(); });
    ticker_.start(std::chrono::seconds(1));
}

ApprovalPrompt::~ApprovalPrompt() { std::erase(openPrompts, this); }

void ApprovalPrompt::build(const ApprovalRequest& request) {
    auto* columns = new QHBoxLayout(this);
    columns->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    columns->setSpacing(kMargin);
    auto* column = new QVBoxLayout;
    column->setSpacing(kSpacing);
    columns->addLayout(column);
    texts_ = new QScrollArea;
    texts_->setFocusPolicy(Qt::NoFocus);
    texts_->setFrameShape(QFrame::NoFrame);
    texts_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    texts_->setWidgetResizable(true);
    texts_->setWidget(buildTexts(request));
    countdown_ = makeWrappedLabel("attention", {});
    buttons_ = buildButtons();
    column->addWidget(texts_);
    column->addWidget(countdown_);
    column->addWidget(buttons_);
    showSecondsLeft();
    layOut(request.picture, request.place);
}

QWidget* ApprovalPrompt::buildTexts(const ApprovalRequest& request) {
    auto* texts = new QWidget;
    auto* rows = new QVBoxLayout(texts);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(kSpacing);
    const auto text = [](const std::string& utf8) { return QString::fromStdString(utf8); };
    rows->addWidget(makeWrappedLabel("product", "Tandrel"));
    rows->addWidget(makeWrappedLabel("title", text(request.title)));
    rows->addStretch(1);  // beside a picture that is higher the texts spread out
    rows->addWidget(
        makeWrappedLabel("body", tr("Your AI wants to %1 on your iPhone. The screen shows %2.")
                                     .arg(text(request.what), text(request.summary))));
    rows->addStretch(1);
    rows->addWidget(makeWrappedLabel(
        "secondary", tr("Approve lets this one action through. If the amount or recipient "
                        "changes before it happens, Tandrel asks again.")));
    rows->addStretch(1);
    return texts;
}

QWidget* ApprovalPrompt::buildButtons() {
    auto* row = new QWidget;
    auto* buttons = new QHBoxLayout(row);
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->setSpacing(12);
    deny_ = new QPushButton(tr("Deny"));
    approve_ = new QPushButton(tr("Approve"));
    approve_->setProperty("role", "primary");
    approve_->setFocusPolicy(Qt::NoFocus);  // never reached, so never pressed, by a key
    for (QPushButton* button : {deny_, approve_}) {
        button->setAutoDefault(false);
        button->setEnabled(false);
        buttons->addWidget(button, 1);
    }
    QObject::connect(deny_, &QPushButton::clicked, this, [this] { answer(ApprovalAnswer::deny); });
    QObject::connect(approve_, &QPushButton::clicked, this,
                     [this] { answer(ApprovalAnswer::approve); });
    return row;
}

// The panel is as high as its texts, and the picture as high as they are within its bounds. Where
// the screen is too small, the picture shrinks and the texts scroll; the buttons always stay.
void ApprovalPrompt::layOut(const PixelBuffer& picture, const std::optional<PlaceOnScreen>& place) {
    for (QWidget* child : findChildren<QWidget*>()) child->ensurePolished();
    const QSize most = space();
    const int pictureWidth = picture ? std::min(kWidestPicture / 2, most.width() / 4) + kMargin : 0;
    const int width = std::min(Brand::scaled(kWidth - 2 * kMargin), most.width() - pictureWidth);
    const int textHeight = texts_->widget()->heightForWidth(width);
    const int below = countdown_->heightForWidth(width) + buttons_->sizeHint().height();
    const int natural = textHeight + below + 2 * kSpacing;
    const int lowest = picture ? kLowestPicture : kHeight - 2 * kMargin;
    const int height = std::min(std::max(natural, lowest), most.height());
    texts_->setFixedSize(width, height - below - 2 * kSpacing);
    texts_->verticalScrollBar()->setSingleStep(kMargin);
    int total = width;
    if (picture) {
        const QSize bounds(std::min(kWidestPicture, most.width() - width - kMargin),
                           std::min(height, kHighestPicture));
        const QPixmap pixmap = screenPicture(asImage(picture), place, bounds);
        addPicture(pixmap);
        total += kMargin + qCeil(pixmap.deviceIndependentSize().width());
    }
    setFixedSize(total + 2 * kMargin, height + 2 * kMargin);
}

void ApprovalPrompt::addPicture(const QPixmap& pixmap) {
    auto* picture = new QLabel;
    picture->setPixmap(pixmap);
    picture->setAlignment(Qt::AlignTop);
    picture->setAccessibleName(tr("The iPhone's screen with the place of the action"));
    static_cast<QHBoxLayout*>(layout())->addWidget(picture);
}

void ApprovalPrompt::open() {
    placeBesideOthers();
    openPrompts.push_back(this);
    stayOnEveryDesktop(*this);
    show();
    raise();
    activateWindow();
    // A click that was meant for another window must not approve.
    QTimer::singleShot(std::chrono::duration_cast<std::chrono::milliseconds>(kArmedAfter), this,
                       [this] {
                           deny_->setEnabled(true);
                           approve_->setEnabled(true);
                           deny_->setFocus();
                       });
}

bool ApprovalPrompt::raiseOpen() {
    for (ApprovalPrompt* prompt : openPrompts) prompt->raise();
    return !openPrompts.empty();
}

void ApprovalPrompt::answer(ApprovalAnswer answer) {
    if (finished_) return;
    finished_ = true;
    ticker_.stop();
    hide();
    answered_(answer);
}

void ApprovalPrompt::closeEvent(QCloseEvent* event) {
    event->accept();
    answer(ApprovalAnswer::deny);
}

void ApprovalPrompt::keyPressEvent(QKeyEvent* event) {
    QScrollBar& bar = *texts_->verticalScrollBar();
    if (event->key() == Qt::Key_Escape) answer(ApprovalAnswer::deny);
    if (event->key() == Qt::Key_Down) bar.triggerAction(QScrollBar::SliderSingleStepAdd);
    if (event->key() == Qt::Key_Up) bar.triggerAction(QScrollBar::SliderSingleStepSub);
    event->accept();
}

void ApprovalPrompt::showSecondsLeft() {
    const double left = std::max(0.0, toSeconds(deadline_ - clock_.now()));
    countdown_->setText(tr("No answer in %1 s means no").arg(std::lround(left)));
}

void ApprovalPrompt::placeBesideOthers() {
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    QRect place(QPoint(0, 0), size());
    place.moveCenter(area.center());
    place.moveTop(area.top() + std::min(area.height() / 6, (area.height() - height()) / 2));
    for (const ApprovalPrompt* other : openPrompts) {
        if (!place.intersects(other->geometry())) continue;
        place.moveTop(other->geometry().bottom() + kGapBetweenPrompts);
        if (place.bottom() > area.bottom()) {
            place.moveTopLeft({other->geometry().right() + kGapBetweenPrompts, area.top()});
        }
    }
    move(place.topLeft());
}

}  // namespace tandrel
