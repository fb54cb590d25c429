#include "app/approval_prompt.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <vector>

#include "app/screen_picture.h"

namespace tandrel {
namespace {

constexpr int kMargin = 24;
constexpr int kPictureHeight = 432;
constexpr int kGapBetweenPrompts = 16;

// Light whatever the desktop's theme is: a question about money looks the same every time.
constexpr const char* kStyle = R"(
    #prompt { background: #ffffff; }
    QLabel { color: #1d1d1f; font-size: 14px; }
    #product { color: #0a5bd3; font-size: 13px; font-weight: 600; }
    #title { font-size: 21px; font-weight: 700; }
    #small { color: #515154; font-size: 13px; }
    #countdown { color: #9a3412; font-size: 13px; font-weight: 600; }
    QPushButton { font-size: 15px; font-weight: 600; min-height: 40px; border-radius: 10px; }
    QPushButton#deny { background: #e8e8ed; color: #1d1d1f; border: 1px solid #c7c7cc; }
    QPushButton#deny:hover { background: #dcdce1; }
    QPushButton#approve { background: #0a5bd3; color: #ffffff; border: 1px solid #0a5bd3; }
    QPushButton#approve:hover { background: #084cb0; }
    QPushButton:disabled { background: #f2f2f5; color: #6e6e73; border: 1px solid #d2d2d7; }
)";

// Prompts on the screen, in the order they were shown.
std::vector<ApprovalPrompt*> openPrompts;

QString translated(const char* text) { return QCoreApplication::translate("ApprovalPrompt", text); }

QLabel* label(const char* name, const QString& text) {
    auto* result = new QLabel(text);
    result->setObjectName(name);
    result->setTextFormat(Qt::PlainText);  // what stands on the phone is never markup
    result->setWordWrap(true);
    return result;
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
    setWindowTitle(translated("Tandrel: approve a payment"));
    setStyleSheet(kStyle);
    build(request);
    QObject::connect(&ticker_, &QTimer::timeout, this, [this] { showSecondsLeft(); });
    ticker_.start(std::chrono::seconds(1));
}

ApprovalPrompt::~ApprovalPrompt() { std::erase(openPrompts, this); }

void ApprovalPrompt::build(const ApprovalRequest& request) {
    auto* columns = new QHBoxLayout(this);
    columns->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    columns->setSpacing(kMargin);
    columns->addWidget(buildText(request), 1);
    int width = kWidth;
    int height = kHeight;
    if (request.picture) {
        auto* picture = new QLabel;
        picture->setPixmap(screenPicture(request.picture, request.place, kPictureHeight));
        picture->setAlignment(Qt::AlignTop);
        picture->setAccessibleName(translated("The iPhone's screen with the place of the action"));
        columns->addWidget(picture);
        width +=
            picture->pixmap().width() / static_cast<int>(picture->pixmap().devicePixelRatio()) +
            kMargin;
        height = std::max(height, kPictureHeight + 2 * kMargin);
    }
    setFixedWidth(width);
    setMinimumHeight(height);
}

QWidget* ApprovalPrompt::buildText(const ApprovalRequest& request) {
    auto* column = new QWidget;
    auto* rows = new QVBoxLayout(column);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(10);
    const auto text = [](const std::string& utf8) { return QString::fromStdString(utf8); };
    rows->addWidget(label("product", "Tandrel"));
    rows->addWidget(label("title", text(request.title)));
    rows->addWidget(
        label("body", translated("Your AI wants to %1 on your iPhone. The screen shows %2.")
                          .arg(text(request.what), text(request.summary))));
    rows->addWidget(
        label("small", translated("Approve lets this one action through. If the amount or "
                                  "recipient changes before it happens, Tandrel asks "
                                  "again.")));
    rows->addStretch(1);
    countdown_ = label("countdown", {});
    rows->addWidget(countdown_);
    rows->addWidget(buildButtons());
    showSecondsLeft();
    return column;
}

QWidget* ApprovalPrompt::buildButtons() {
    auto* row = new QWidget;
    auto* buttons = new QHBoxLayout(row);
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->setSpacing(12);
    deny_ = new QPushButton(translated("Deny"));
    deny_->setObjectName("deny");
    approve_ = new QPushButton(translated("Approve"));
    approve_->setObjectName("approve");
    approve_->setFocusPolicy(Qt::NoFocus);  // never reached, so never pressed, by a key
    for (QPushButton* button : {deny_, approve_}) {
        button->setAutoDefault(false);
        button->setEnabled(false);
        buttons->addWidget(button);
    }
    QObject::connect(deny_, &QPushButton::clicked, this, [this] { answer(ApprovalAnswer::deny); });
    QObject::connect(approve_, &QPushButton::clicked, this,
                     [this] { answer(ApprovalAnswer::approve); });
    return row;
}

void ApprovalPrompt::open() {
    adjustSize();
    placeBesideOthers();
    openPrompts.push_back(this);
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
    if (event->key() == Qt::Key_Escape) answer(ApprovalAnswer::deny);
    event->accept();
}

void ApprovalPrompt::showSecondsLeft() {
    const double left = std::max(0.0, toSeconds(deadline_ - clock_.now()));
    countdown_->setText(translated("No answer in %1 s means no").arg(std::lround(left)));
}

void ApprovalPrompt::placeBesideOthers() {
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    QRect place(QPoint(0, 0), size());
    place.moveCenter(area.center());
    place.moveTop(area.top() + area.height() / 6);
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
