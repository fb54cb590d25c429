#pragma once

#include <QCoreApplication>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>

#include "base/clock.h"
#include "payments/asker.h"

class QLabel;
class QPushButton;
class QScrollArea;

namespace tandrel {

// The panel that asks the owner about one payment. It floats above other windows, takes no answer
// during its first second, and no single key press approves: Escape denies, Approve wants the
// mouse. Main thread only.
class ApprovalPrompt final : public QWidget {
    Q_DECLARE_TR_FUNCTIONS(ApprovalPrompt)

 public:
    using Answered = std::function<void(ApprovalAnswer)>;

    ApprovalPrompt(const ApprovalRequest& request, TimePoint deadline, Clock& clock,
                   Answered answered);
    ~ApprovalPrompt() override;
    ApprovalPrompt(const ApprovalPrompt&) = delete;
    ApprovalPrompt& operator=(const ApprovalPrompt&) = delete;

    // Shows the panel in front of everything, beside other open prompts.
    void open();
    // The owner's answer; only the first counts.
    void answer(ApprovalAnswer answer);

    // Puts open panels before a window that was just opened; false when there are none.
    static bool raiseOpen();

    static constexpr Duration kArmedAfter = std::chrono::seconds(1);
    // In points at the usual text size, without the picture; with it the panel grows to the right
    // and down. Larger text takes more, as far as the screen goes.
    static constexpr int kWidth = 460;
    static constexpr int kHeight = 300;

 protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

 private:
    void build(const ApprovalRequest& request);
    QWidget* buildTexts(const ApprovalRequest& request);
    QWidget* buildButtons();
    void layOut(const PixelBuffer& picture, const std::optional<PlaceOnScreen>& place);
    void addPicture(const QPixmap& pixmap);
    void showSecondsLeft();
    void placeBesideOthers();

    const TimePoint deadline_;
    Clock& clock_;
    Answered answered_;
    bool finished_ = false;
    QScrollArea* texts_ = nullptr;
    QLabel* countdown_ = nullptr;
    QWidget* buttons_ = nullptr;
    QPushButton* deny_ = nullptr;
    QPushButton* approve_ = nullptr;
    QTimer ticker_;
};

}  // namespace tandrel
