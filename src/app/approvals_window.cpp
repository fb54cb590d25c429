#include "app/approvals_window.h"

#include <QDateTime>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLocale>
#include <QScreen>
#include <QStandardItemModel>
#include <QVBoxLayout>
#include <array>

#include "app/icons.h"
#include "app/qt_text.h"
#include "app/wrapped_label.h"

namespace tandrel {
namespace {

constexpr QSize kUsualSize(820, 460);
constexpr auto kLookAgain = std::chrono::seconds(1);

struct EventLook {
    std::string_view event;
    const char* words;
    std::string_view color;
};

// clang-format off
constexpr EventLook kEvents[] = {
    {"asked",     QT_TRANSLATE_NOOP("ApprovalsWindow", "Asked"),     "text"},
    {"approved",  QT_TRANSLATE_NOOP("ApprovalsWindow", "Approved"),  "good"},
    {"denied",    QT_TRANSLATE_NOOP("ApprovalsWindow", "Denied"),    "bad"},
    {"timed out", QT_TRANSLATE_NOOP("ApprovalsWindow", "No answer"), "attention"},
    {"voided",    QT_TRANSLATE_NOOP("ApprovalsWindow", "Voided"),    "attention"},
    {"refused",   QT_TRANSLATE_NOOP("ApprovalsWindow", "Refused"),   "bad"},
    {"withdrawn", QT_TRANSLATE_NOOP("ApprovalsWindow", "Withdrawn"), "secondary"},
};
// clang-format on

QString localTime(const std::string& at) {
    const QDateTime time = QDateTime::fromString(qtText(at), Qt::ISODate);
    if (!time.isValid()) return qtText(at);
    return QLocale().toString(time.toLocalTime(), "yyyy-MM-dd  HH:mm:ss");
}

}  // namespace

ApprovalsWindow::ApprovalsWindow(ColorScheme appearance, std::filesystem::path log)
    : appearance_(appearance), log_(std::move(log)) {
    setWindowTitle(tr("Tandrel: approvals"));
    setWindowIcon(productIcon());
    setProperty("ground", "window");
    setAttribute(Qt::WA_StyledBackground);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(24, 20, 24, 20);
    rows->setSpacing(12);
    rows->addWidget(makeWrappedLabel("title", tr("Approvals")));
    rows->addWidget(makeWrappedLabel(
        "secondary", tr("What Tandrel asked you before payments, and what came of it.")));
    rows_ = new QStandardItemModel(this);
    table_ = new QTableView;
    table_->setModel(rows_);
    table_->setEditTriggers(QTableView::NoEditTriggers);
    table_->setSelectionBehavior(QTableView::SelectRows);
    table_->setAlternatingRowColors(true);
    table_->setShowGrid(false);
    table_->setTabKeyNavigation(false);
    table_->verticalHeader()->hide();
    table_->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    table_->horizontalHeader()->setHighlightSections(false);
    table_->setAccessibleName(tr("Approvals"));
    rows->addWidget(table_, 1);
    remark_ = makeWrappedLabel("secondary", {});
    rows->addWidget(remark_);
    Brand::dress(*this, appearance);
    const QSize room = QGuiApplication::primaryScreen()->availableGeometry().size();
    resize(QSize(Brand::scaled(kUsualSize.width()), Brand::scaled(kUsualSize.height()))
               .boundedTo(room - QSize(20, 60)));
    QObject::connect(&timer_, &QTimer::timeout, this, [this] { refresh(); });
    display({});
}

void ApprovalsWindow::refresh() {
    if (log_.empty()) return;
    std::error_code none;
    const auto size = std::filesystem::file_size(log_, none);
    const auto now = std::pair(size, std::filesystem::last_write_time(log_, none));
    if (now == read_) return;
    read_ = now;
    if (const auto approvals = readApprovals(log_, kMostRows)) {
        display(*approvals);
    } else {
        display({});
        setWrappedText(*remark_,
                       tr("The log %1 can't be read: %2")
                           .arg(qtText(log_.string()), qtText(approvals.error().message)));
    }
}

void ApprovalsWindow::display(const Approvals& approvals) {
    rows_->clear();
    rows_->setHorizontalHeaderLabels({tr("When"), tr("Answer"), tr("What"), tr("Why")});
    for (auto it = approvals.newest.rbegin(); it != approvals.newest.rend(); ++it) addRow(*it);
    table_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table_->horizontalHeader()->setSectionResizeMode(2, QHeaderView::Stretch);
    table_->horizontalHeader()->setSectionResizeMode(3, QHeaderView::Stretch);
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    QString remark;
    if (approvals.newest.empty()) remark = tr("No payment has been asked about yet.");
    if (approvals.older > 0) {
        remark = tr("Older records in the log: %1.").arg(approvals.older);
    }
    if (approvals.unreadable > 0) {
        remark += (remark.isEmpty() ? "" : " ") +
                  tr("Lines of the log that could not be read: %1.").arg(approvals.unreadable);
    }
    setWrappedText(*remark_, remark);
    remark_->setVisible(!remark.isEmpty());
}

void ApprovalsWindow::addRow(const Approval& approval) {
    const auto* look = std::ranges::find(kEvents, approval.event, &EventLook::event);
    const bool known = look != std::end(kEvents);
    const std::array<QString, 4> texts = {
        localTime(approval.at), known ? tr(look->words) : qtText(approval.event),
        qtText(approval.detail), qtText(approval.why.value_or(""))};
    QList<QStandardItem*> row;
    for (const QString& text : texts) {
        auto* item = new QStandardItem(text);
        item->setToolTip("<span>" + text.toHtmlEscaped() + "</span>");
        item->setForeground(Brand::color("text", appearance_));
        row.push_back(item);
    }
    row[1]->setForeground(Brand::color(known ? look->color : "text", appearance_));
    rows_->appendRow(row);
}

void ApprovalsWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    refresh();
    timer_.start(kLookAgain);
}

void ApprovalsWindow::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    timer_.stop();
}

}  // namespace tandrel
