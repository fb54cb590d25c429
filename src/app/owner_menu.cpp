#include "app/owner_menu.h"

#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

#include "app/icons.h"
#include "app/qt_text.h"

namespace tandrel {
namespace {

constexpr int kLongestLine = 52;  // characters
constexpr int kMostLines = 6;

// The text on lines of a length that a menu can have.
QStringList folded(const QString& text) {
    QStringList lines;
    for (const QString& word : text.split(' ', Qt::SkipEmptyParts)) {
        if (lines.isEmpty() || lines.back().size() + word.size() >= kLongestLine) {
            lines << word;
        } else {
            lines.back() += " " + word;
        }
    }
    return lines;
}

}  // namespace

OwnerMenu::OwnerMenu(ColorScheme appearance, WindowActions& actions, const Windows& windows)
    : appearance_(appearance), actions_(actions) {
    Brand::dress(*this, appearance);
    headline_ = addAction(QString());
    headline_->setEnabled(false);
    for (int i = 0; i < kMostLines; ++i) {
        detail_.push_back(addAction(QString()));
        detail_.back()->setEnabled(false);
    }
    fix_ = addAction(QString());
    QObject::connect(fix_, &QAction::triggered, this, [this] {
        if (offered_) actions_.fix(*offered_);
    });
    lost_ = addCommand({}, windows.apps);
    lost_->setVisible(false);
    addSeparator();
    addSwitches();
    addSeparator();
    addCommand(tr("Test the iPhone…"), windows.test);
    addCommand(tr("Setup…"), windows.setup);
    addCommand(tr("Approvals…"), windows.approvals);
    addSeparator();
    autostart_ = addSwitch(tr("Open at login"), &WindowActions::setAutostart);
    addCommand(tr("About Tandrel"), windows.about);
    addCommand(tr("Quit Tandrel"), [this] { actions_.quit(); });
    QObject::connect(this, &QMenu::aboutToShow, this,
                     [this] { autostart_->setChecked(actions_.autostart()); });
}

void OwnerMenu::addSwitches() {
    pause_ = addCommand({}, [this] { actions_.setPaused(!paused_); });
    askBefore_ = addSwitch(tr("Ask me before payments"), nullptr);
    QObject::connect(askBefore_, &QAction::triggered, this, [this](bool on) {
        if (on) return actions_.setAskBeforePayments(true);
        askBefore_->setChecked(true);  // it is on until the owner has confirmed
        confirmNoQuestions();
    });
    askUnsure_ = addSwitch(tr("Ask when unsure"), &WindowActions::setAskWhenUnsure);
}

QAction* OwnerMenu::addCommand(const QString& text, std::function<void()> run) {
    QAction* action = addAction(text);
    QObject::connect(action, &QAction::triggered, this, [run = std::move(run)] {
        if (run) run();
    });
    return action;
}

QAction* OwnerMenu::addSwitch(const QString& text, void (WindowActions::*change)(bool)) {
    QAction* action = addAction(text);
    action->setCheckable(true);
    if (change != nullptr) {
        QObject::connect(action, &QAction::triggered, this,
                         [this, change](bool on) { (actions_.*change)(on); });
    }
    return action;
}

void OwnerMenu::display(const AppSnapshot& now) {
    const auto wrong = notice(now.inputs);
    headline_->setText(qtText(headline(now.inputs)));
    headline_->setIcon(healthIcon(health(now.inputs)));
    showDetail(wrong ? qtText(wrong->detail) : QString());
    offered_ = wrong ? wrong->fix : std::nullopt;
    fix_->setVisible(offered_ && wrong->fixLabel);
    fix_->setText(fix_->isVisible() ? qtText(*wrong->fixLabel) : QString());
    showLost(now.aiApps);
    paused_ = now.inputs.paused;
    pause_->setText(paused_ ? tr("Resume control") : tr("Pause control"));
    askBefore_->setChecked(now.askBeforePayments);
    askUnsure_->setChecked(now.askBeforePayments && now.askWhenUnsure);
    askUnsure_->setEnabled(now.askBeforePayments);
}

void OwnerMenu::showDetail(const QString& detail) {
    const QStringList lines = folded(detail);
    for (int i = 0; i < kMostLines; ++i) {
        QAction& line = *detail_[static_cast<std::size_t>(i)];
        line.setVisible(i < lines.size());
        line.setText(lines.value(i));
    }
}

// An app whose entry has gone keeps the others from nothing, so it is no notice.
void OwnerMenu::showLost(const std::vector<AIAppStatus>& apps) {
    QStringList names;
    for (const AIAppStatus& app : apps) {
        if (app.lost) names << qtText(name(app.app));
    }
    lost_->setVisible(!names.isEmpty());
    lost_->setText(names.isEmpty() ? QString()
                                   : tr("Add Tandrel to %1 again…").arg(names.join(", ")));
}

void OwnerMenu::confirmNoQuestions() {
    const QPointer<OwnerMenu> self(this);
    QWidget* dialog = makeNoQuestionsDialog(appearance_, [self] {
        if (self) self->actions_.setAskBeforePayments(false);
    });
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

QWidget* makeNoQuestionsDialog(ColorScheme appearance, std::function<void()> yes) {
    auto* box = new QMessageBox;
    box->setWindowTitle("Tandrel");
    box->setWindowIcon(productIcon());
    box->setIconPixmap(productMark(Brand::scaled(48)));
    box->setTextFormat(Qt::PlainText);
    box->setText(OwnerMenu::tr("Stop asking before payments?"));
    box->setInformativeText(
        OwnerMenu::tr("Your AI could then pay, buy, subscribe or send money on your iPhone without "
                      "asking you first. You can turn this back on in the Tandrel menu."));
    auto* keep = box->addButton(OwnerMenu::tr("Keep Asking"), QMessageBox::RejectRole);
    auto* stop = box->addButton(OwnerMenu::tr("Stop Asking"), QMessageBox::AcceptRole);
    keep->setProperty("role", "primary");
    box->setDefaultButton(keep);
    box->setEscapeButton(keep);
    box->setProperty("ground", "window");
    Brand::dress(*box, appearance);
    QObject::connect(stop, &QPushButton::clicked, box, [yes = std::move(yes)] { yes(); });
    return box;
}

}  // namespace tandrel
