#include "app/setup_test_page.h"

#include "app/owner_text.h"
#include "app/phone_test.h"
#include "app/qt_text.h"
#include "app/wrapped_label.h"

namespace tandrel {

TestPage::TestPage(ColorScheme appearance, WindowActions& actions)
    : SetupPage(appearance, tr("Test the iPhone"),
                qtText(ownerText("PhoneTest", PhoneTest::kExplanation)), Picture::live) {
    rows().addWidget(
        makeWrappedLabel("secondary", qtText(ownerText("PhoneTest", PhoneTest::kAdvice))));
    start_ = new QPushButton(tr("Test the iPhone"));
    QObject::connect(start_, &QPushButton::clicked, this, [&actions] { actions.startTest(); });
    rows().addWidget(start_, 0, Qt::AlignLeft);
    message_ = makeWrappedLabel("heading", {});
    rows().addWidget(message_);
    lineRows_ = new QVBoxLayout;
    lineRows_->setSpacing(8);
    rows().addLayout(lineRows_);
}

void TestPage::display(const SetupView& view) {
    const TestView& test = view.test;
    showPicture(view.picture);
    start_->setEnabled(!test.running);
    start_->setText(test.message.isEmpty() ? tr("Test the iPhone") : tr("Test Again"));
    while (lines_.size() > test.lines.size()) {
        delete lines_.back();
        lines_.pop_back();
    }
    while (lines_.size() < test.lines.size()) {
        lines_.push_back(new StatusCard(appearance()));
        lineRows_->addWidget(lines_.back());
    }
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const TestView::Line& line = test.lines[i];
        lines_[i]->display({.mark = line.mark, .title = line.title, .detail = line.detail});
    }
    message_->setVisible(!test.message.isEmpty());
    setWrappedText(*message_, test.message);
}

}  // namespace tandrel
