#include "app/app_delegate.h"

#include <QApplication>
#include <QMessageBox>

#include "app/about_window.h"
#include "app/approval_prompt.h"
#include "app/owner_text.h"
#include "app/qt_text.h"
#include "app/screenshots.h"
#include "base/environment.h"
#include "base/log.h"

namespace tandrel {
namespace {

// A desktop that starts up may have its tray ready only after us.
constexpr Duration kBetweenLooksForTray = std::chrono::milliseconds(500);
constexpr int kLooksBeforeWindowOpens = 6;

AppDelegate* sharedDelegate = nullptr;

Mark markOf(PhoneTest::Mark mark) {
    switch (mark) {
        case PhoneTest::Mark::running:
            return Mark::running;
        case PhoneTest::Mark::passed:
            return Mark::passed;
        case PhoneTest::Mark::failed:
            return Mark::failed;
        case PhoneTest::Mark::fellShort:
            return Mark::warning;
    }
    return Mark::none;
}

TestView testView(const PhoneTest::Progress& progress) {
    TestView view;
    view.running = progress.running;
    view.message = qtText(progress.message.value_or(""));
    for (const PhoneTest::Line& line : progress.lines) {
        view.lines.push_back(
            {qtText(line.title), markOf(line.mark), qtText(line.detail.value_or(""))});
    }
    return view;
}

void bringToFront(QWidget& window) {
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    // A question about a payment stays in front and keeps the keyboard.
    if (!ApprovalPrompt::raiseOpen()) window.activateWindow();
}

}  // namespace

AppDelegate* AppDelegate::shared() { return sharedDelegate; }

AppDelegate::AppDelegate(OwnerSide& owner, AppInfo info, ColorScheme appearance, MainLoop& loop,
                         Clock& clock)
    : owner_(owner),
      info_(std::move(info)),
      loop_(loop),
      appearance_(appearance),
      menu_(appearance_, *this,
            {.test =
                 [this] {
                     showSetup(SetupStep::test);
                     startTest();
                 },
             .setup = [this] { showSetup(); },
             .apps = [this] { showSetup(SetupStep::apps); },
             .approvals = [this] { showApprovals(); },
             .about = [this] { showAbout(); }}),
      setup_(appearance_, *this),
      approvals_(appearance_, owner.services().files().approvals),
      pictures_(loop, clock,
                [this](const QImage& image) {
                    view_.picture = image;
                    display();
                }),
      test_(owner.state(), owner.enginePlace(), loop, clock,
            [this](const PhoneTest::Progress& now) {
                view_.test = testView(now);
                display();
            }) {
    sharedDelegate = this;
    QApplication::setQuitOnLastWindowClosed(false);
    pictures_.setEngine(owner.enginePlace().engine);
    setup_.setWatcher([this](bool visible) { pictures_.setWatched(visible); });
    listening_ = owner.state().listen([this](const AppSnapshot& now) {
        view_.app = now;
        display();
    });
}

AppDelegate::~AppDelegate() {
    setup_.setWatcher({});
    sharedDelegate = nullptr;
}

void AppDelegate::start() {
    view_.app = owner_.state().snapshot();
    display();
    const bool asked = environment("TANDREL_SHOW_SETUP") == "1";
    if (asked || !view_.app.inputs.setupDone) showSetup();
    lookForTray();
    owner_.listenForCopies([this] { showSetup(); });
    if (const auto folder = environment("TANDREL_SNAPSHOT_DIR")) snapshotSteps(*folder);
}

void AppDelegate::lookForTray() {
    if (Tray::hasHost()) {
        tray_ = std::make_unique<Tray>(menu_);
        tray_->display(view_.app);
        setup_.showMenuButton(nullptr, {});
        trayTimer_.reset();
        return;
    }
    if (++looksForTray_ == kLooksBeforeWindowOpens) {
        setup_.showMenuButton(&menu_, tr("This desktop shows no tray icons, so Tandrel's menu is "
                                         "here. Closing the window leaves Tandrel running; start "
                                         "it again to come back."));
        if (!setup_.isVisible()) showSetup();
    }
    if (!trayTimer_) trayTimer_ = loop_.every(kBetweenLooksForTray, [this] { lookForTray(); });
}

void AppDelegate::display() {
    menu_.display(view_.app);
    if (tray_) tray_->display(view_.app);
    setup_.display(view_);
}

void AppDelegate::showSetup(std::optional<SetupStep> step) {
    if (!setup_.isVisible() && !step) step = firstOpenStep(view_);
    if (step) setup_.openStep(*step);
    bringToFront(setup_);
}

void AppDelegate::showApprovals() { bringToFront(approvals_); }

void AppDelegate::showAbout() {
    if (!about_) about_.reset(makeAboutWindow(appearance_, info_));
    bringToFront(*about_);
}

void AppDelegate::snapshotSteps(const std::filesystem::path& folder) {
    const auto drawn = Screenshots::draw({.folder = folder, .appearance = appearance_}, info_);
    if (!drawn) log(drawn.error().message);
}

void AppDelegate::setPaused(bool paused) { owner_.actions().setPaused(paused, tellProblem()); }

void AppDelegate::setAskBeforePayments(bool ask) {
    owner_.actions().setAskBeforePayments(ask, tellProblem());
}

void AppDelegate::setAskWhenUnsure(bool ask) {
    owner_.actions().setAskWhenUnsure(ask, tellProblem());
}

void AppDelegate::setAutostart(bool on) {
    const auto done = on ? owner_.autostart().turnOn() : owner_.autostart().turnOff();
    if (!done) tell(done.error().message);
}

bool AppDelegate::autostart() const { return owner_.autostart().isOn(); }

void AppDelegate::chooseLink(LinkChoice link) { owner_.actions().setLink(link, tellProblem()); }

void AppDelegate::fix(Fix fix) {
    switch (fix) {
        case Fix::showScreen:
        case Fix::airplaySettings:
        case Fix::allowScreenRecording:
            return showSetup(SetupStep::screen);
        case Fix::checkPointer:
            showSetup(SetupStep::pointer);
            return checkPointer();
        case Fix::test:
            showSetup(SetupStep::test);
            return startTest();
        default:
            return owner_.actions().fix(fix, tellProblem());
    }
}

void AppDelegate::checkPointer() {
    if (view_.pointer.looking) return;
    view_.pointer = {.looking = true};
    display();
    test_.checkPointer([this](const PhoneTest::PointerLook& look) {
        view_.pointer = {};
        if (look.problem) view_.pointer.problem = qtText(*look.problem);
        if (!look.problem && !look.shown) {
            view_.pointer.problem = qtText(ownerText("PhoneTest", PhoneTest::kPointerUnseen));
        }
        display();
    });
}

void AppDelegate::addToApp(AIApp app, Done done) { owner_.actions().addTo(app, std::move(done)); }

void AppDelegate::leaveOut(AIApp app) { owner_.actions().leaveOut(app, tellProblem()); }

void AppDelegate::restartClaudeDesktop(Done done) {
    owner_.actions().restartClaudeDesktop(std::move(done));
}

void AppDelegate::startTest() { test_.start(); }

void AppDelegate::finishSetup() { owner_.actions().setSetupDone(true, tellProblem()); }

void AppDelegate::quit() { loop_.quit(0); }

OwnerActions::Done AppDelegate::tellProblem() {
    return [this](const OwnerActions::Outcome& outcome) {
        if (!outcome.ok && !outcome.message.empty()) tell(outcome.message);
    };
}

void AppDelegate::tell(const std::string& sentence) {
    auto* box = new QMessageBox(&setup_);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle("Tandrel");
    box->setTextFormat(Qt::PlainText);
    box->setText(qtText(sentence));
    box->setProperty("ground", "window");
    Brand::dress(*box, appearance_);
    box->setModal(false);
    box->show();
}

}  // namespace tandrel
