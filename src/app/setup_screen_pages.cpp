#include "app/setup_screen_pages.h"

#include <QSignalBlocker>

#include "app/qt_text.h"
#include "app/wrapped_label.h"

namespace tandrel {
namespace {

QString sourceName(const SetupView& view) {
    const AppSnapshot& app = view.app;
    const QString name = app.phones.empty() ? QString() : qtText(app.phones.front().name);
    const bool cable = app.inputs.screenSource == ScreenSource::usb;
    const QString way =
        cable ? ScreenPage::tr("Over the USB cable.") : ScreenPage::tr("Over AirPlay.");
    return name.isEmpty() ? way : name + ". " + way;
}

}  // namespace

ScreenPage::ScreenPage(ColorScheme appearance, WindowActions& actions)
    : SetupPage(appearance, tr("See the iPhone's screen"),
                tr("Your AI sees what the iPhone shows. Choose how the picture gets here."),
                Picture::live),
      actions_(actions) {
    addChoices();
    status_ = new StatusCard(appearance);
    rows().addWidget(status_);
    rows().addWidget(
        makeAdvice(tr("the cable's picture comes from the iPhone's video adapter through "
                      "a capture device; AirPlay's comes through a receiver program on "
                      "this computer.")));
}

void ScreenPage::addChoices() {
    struct Choice {
        QRadioButton** button;
        QLabel** how;
        QString title;
        LinkChoice link;
    };
    const Choice choices[] = {
        {&cable_, &cableHow_, tr("USB cable"), LinkChoice::usb},
        {&airplay_, &airplayHow_, tr("AirPlay, without a cable"), LinkChoice::airplay},
    };
    for (const Choice& choice : choices) {
        auto* button = new QRadioButton(choice.title);
        *choice.button = button;
        *choice.how = makeWrappedLabel("secondary", {});
        (*choice.how)->setContentsMargins(28, 0, 0, 0);
        auto* both = new QVBoxLayout;
        both->setSpacing(0);
        both->addWidget(button);
        both->addWidget(*choice.how);
        rows().addLayout(both);
        QObject::connect(button, &QRadioButton::toggled, this,
                         [this, link = choice.link](bool chosen) {
                             if (chosen) actions_.chooseLink(link);
                         });
    }
    setWrappedText(*cableHow_,
                   tr("The sharpest and quickest picture. Plug the iPhone in, unlock it, "
                      "and tap Trust if it asks."));
}

void ScreenPage::display(const SetupView& view) {
    const AppModelInputs& in = view.app.inputs;
    const bool airplay = in.linkChoice == LinkChoice::airplay;
    {
        const QSignalBlocker still(airplay ? airplay_ : cable_);
        (airplay ? airplay_ : cable_)->setChecked(true);
    }
    setWrappedText(
        *airplayHow_,
        tr("On the iPhone: Control Center › Screen Mirroring › %1").arg(qtText(in.macName)));
    showPicture(view.picture);
    if (!airplay && !in.screenReady && view.app.cameraPerm == Permission::denied) {
        // Nothing can be said of a cable that may not be looked at.
        status_->display({.mark = Mark::warning,
                          .title = tr("Tandrel may not see video devices"),
                          .detail = tr("Your user isn't allowed to open them."),
                          .button = tr("Show me how"),
                          .pressed = [this] { actions_.fix(Fix::cameraPrivacy); }});
    } else if (const auto inTheWay = noticeOf(SetupStep::screen, in)) {
        StatusCard::Content content = noticeCard(*inTheWay, actions_);
        if (inTheWay->fix == Fix::showScreen) content.button.clear();  // it is shown here
        if (airplay && !view.app.airplay.error.empty() && !in.screenReady) {
            content.detail += "\n" + qtText(view.app.airplay.error);
        }
        status_->display(std::move(content));
    } else if (in.screenReady) {
        status_->display({.mark = Mark::passed,
                          .title = tr("Tandrel sees the iPhone"),
                          .detail = sourceName(view)});
    } else {
        status_->display({.mark = Mark::running, .title = tr("Waiting for the iPhone's picture")});
    }
}

PointerPage::PointerPage(ColorScheme appearance, WindowActions& actions)
    : SetupPage(appearance, tr("Turn on AssistiveTouch"),
                tr("Taps need a pointer on the iPhone. Turn on Settings › Accessibility › Touch › "
                   "AssistiveTouch. A round pointer appears, and you can watch it here."),
                Picture::live),
      actions_(actions) {
    status_ = new StatusCard(appearance);
    rows().addWidget(status_);
}

void PointerPage::display(const SetupView& view) {
    showPicture(view.picture);
    const auto move = [this] { actions_.fix(Fix::checkPointer); };
    if (view.pointer.looking) {
        status_->display({.mark = Mark::running, .title = tr("Moving the pointer…")});
    } else if (!view.pointer.problem.isEmpty()) {
        status_->display({.mark = Mark::warning,
                          .title = tr("The pointer wasn't seen"),
                          .detail = view.pointer.problem,
                          .button = tr("Move the Pointer Again"),
                          .pressed = move});
    } else if (view.app.assistiveTouchOn) {
        status_->display({.mark = Mark::passed,
                          .title = tr("AssistiveTouch is on"),
                          .detail = tr("Tandrel moved the pointer and saw it move."),
                          .button = tr("Move the Pointer Again"),
                          .pressed = move});
    } else {
        status_->display(
            {.mark = Mark::none,
             .title = tr("The pointer hasn't been seen yet"),
             .detail = tr("Let Tandrel move it from one side of the screen to the other "
                          "and look for it. Nothing is tapped."),
             .button = tr("Move the Pointer"),
             .pressed = move});
    }
}

}  // namespace tandrel
