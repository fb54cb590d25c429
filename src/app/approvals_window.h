#pragma once

#include <QCoreApplication>
#include <QLabel>
#include <QTableView>
#include <QTimer>
#include <QWidget>
#include <filesystem>

#include "app/brand.h"
#include "payments/approvals.h"

class QStandardItemModel;

namespace tandrel {

// What the owner was asked before payments and what came of it, the newest first, following the log
// while it is open. Main thread only.
class ApprovalsWindow final : public QWidget {
    Q_DECLARE_TR_FUNCTIONS(ApprovalsWindow)

 public:
    // Without a log it shows what it is told to.
    ApprovalsWindow(ColorScheme appearance, std::filesystem::path log);

    // Reads the log if it has changed since.
    void refresh();
    void display(const Approvals& approvals);

    static constexpr std::size_t kMostRows = 1000;

 protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

 private:
    void addRow(const Approval& approval);

    const ColorScheme appearance_;
    const std::filesystem::path log_;
    std::pair<std::uintmax_t, std::filesystem::file_time_type> read_;
    QTableView* table_ = nullptr;
    QStandardItemModel* rows_ = nullptr;
    QLabel* remark_ = nullptr;
    QTimer timer_;
};

}  // namespace tandrel
