#pragma once

#include <QImage>
#include <QWidget>
#include <memory>
#include <mutex>

#include "platform/virtual/virtual_phone.h"

namespace tandrel {

// A window that shows a virtual phone as its owner sees it and takes the mouse for a finger and the
// keys for those of a keyboard. Main thread only; the phone outlives it.
class PhoneWindow final : public QWidget {
 public:
    explicit PhoneWindow(VirtualPhone& phone);
    ~PhoneWindow() override;
    PhoneWindow(const PhoneWindow&) = delete;
    PhoneWindow& operator=(const PhoneWindow&) = delete;

 protected:
    void customEvent(QEvent* event) override;  // a new frame is there
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

 private:
    struct Latest;
    void touch(TouchPhase phase, const QMouseEvent& event);
    QRectF screenArea() const;

    VirtualPhone& phone_;
    const std::shared_ptr<Latest> latest_;  // shared with the phone's thread
    QImage image_;
    PhoneSubscriptionPtr frames_;
};

}  // namespace tandrel
