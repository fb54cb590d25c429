#include "app/setup_apps_page.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPointer>

#include "app/qt_text.h"
#include "app/wrapped_label.h"

namespace tandrel {
namespace {
constexpr std::chrono::milliseconds kCopiedFor = std::chrono::seconds(2);
}  // namespace

AppsPage::AppsPage(ColorScheme appearance, WindowActions& actions)
    : SetupPage(appearance, tr("Connect your AI"),
                tr("Add Tandrel to the AI apps that may use your iPhone. Their other settings stay "
                   "as they are.")),
      actions_(actions) {
    place_ = new StatusCard(appearance);
    rows().addWidget(place_);
    helper_ = new StatusCard(appearance);
    rows().addWidget(helper_);
    for (const AIApp app : {AIApp::claudeCode, AIApp::claudeDesktop, AIApp::codex}) rowOf(app);
}

AppsPage::Row& AppsPage::rowOf(AIApp app) {
    Row& row = apps_[app];
    if (row.status != nullptr) return row;
    row.status = new StatusCard(appearance());
    rows().addWidget(row.status);
    addByHand(app, row);
    return row;
}

void AppsPage::addByHand(AIApp app, Row& row) {
    row.byHand = new QWidget;
    auto* parts = new QVBoxLayout(row.byHand);
    parts->setContentsMargins(0, 4, 0, 0);
    parts->setSpacing(6);
    row.toPaste = makeWrappedLabel("code", {});
    row.copy = new QPushButton(tr("Copy"));
    row.copy->setAccessibleName(tr("Copy the text for %1").arg(qtText(name(app))));
    QObject::connect(row.copy, &QPushButton::clicked, this, [this, app] {
        QGuiApplication::clipboard()->setText(apps_[app].text);
        apps_[app].copy->setText(tr("Copied"));
        apps_[app].copied->start(kCopiedFor);
    });
    row.copied = new QTimer(row.copy);
    row.copied->setSingleShot(true);
    QObject::connect(row.copied, &QTimer::timeout, row.copy,
                     [copy = row.copy] { copy->setText(tr("Copy")); });
    parts->addWidget(makeWrappedLabel("secondary", tr("Or add it yourself:")));
    parts->addWidget(row.toPaste);
    parts->addWidget(row.copy, 0, Qt::AlignLeft);
    row.status->add(row.byHand);
}

void AppsPage::display(const SetupView& view) {
    shown_ = view;
    showPlace(view.app.liesInPassing);
    showHelper(view.app.helper);
    for (const AIAppStatus& app : view.app.aiApps) showApp(app, rowOf(app.app));
}

void AppsPage::dropStaleOutcome(const AIAppStatus& app, Row& row) {
    if (!row.outcome || !row.outcome->ok) return;
    if (app.link == Link::addedHere) {
        row.outcomeHeld = true;
    } else if (row.outcomeHeld) {
        row.outcome.reset();
    }
}

StatusCard::Content AppsPage::contentFor(const AIAppStatus& app, Row& row) {
    const QString appName = qtText(name(app.app));
    StatusCard::Content content{
        .mark = Mark::none, .title = appName, .pressed = [this, app = app.app] { add(app); }};
    if (app.link == Link::addedHere) {
        content.mark = Mark::passed;
        content.detail = tr("Tandrel is added.");
    } else if (app.link == Link::addedElsewhere) {
        content.mark = Mark::warning;
        content.detail = tr("%1 still points to an older copy of Tandrel.").arg(appName);
        content.button = tr("Replace");
    } else if (app.lost) {
        content.mark = Mark::warning;
        content.detail =
            tr("Tandrel was added, but its entry has gone from %1's settings.").arg(appName);
        content.button = tr("Add Again");
        content.otherButton = tr("Leave It Out");
        content.otherPressed = [this, app = app.app] { actions_.leaveOut(app); };
    } else if (app.installed) {
        content.detail = tr("Found on this computer.");
        content.button = tr("Add to %1").arg(appName);
    } else {
        content.detail = tr("Not found on this computer.");
    }
    if (row.outcome) {
        content.detail = qtText(row.outcome->message);
        if (!row.outcome->ok) content.mark = Mark::failed;
    }
    if (row.outcome && row.outcome->ok && app.app == AIApp::claudeDesktop && app.running) {
        content.button = tr("Restart Claude Desktop");
        content.pressed = [this] {
            actions_.restartClaudeDesktop(showOutcomeAt(AIApp::claudeDesktop));
        };
    }
    return content;
}

void AppsPage::showApp(const AIAppStatus& app, Row& row) {
    dropStaleOutcome(app, row);
    row.status->display(contentFor(app, row));
    row.byHand->setVisible(app.link != Link::addedHere);
    const QString text = qtText(app.toPaste);
    if (row.text != text) {
        row.text = text;
        setWrappedText(*row.toPaste, text);
    }
}

void AppsPage::showPlace(bool liesInPassing) {
    place_->setVisible(liesInPassing);
    if (!liesInPassing) return;
    place_->display({.mark = Mark::warning,
                     .title = tr("This copy of Tandrel may not stay where it is"),
                     .detail = tr("AI apps start it from the folder that it lies in. Move it to "
                                  "your applications first; it opens again from there."),
                     .button = tr("Move to Applications"),
                     .pressed = [this] { actions_.fix(Fix::moveToApplications); }});
}

void AppsPage::showHelper(const HelperCheck::State& helper) {
    using Kind = HelperCheck::State::Kind;
    helper_->setVisible(helper.kind != Kind::ready);
    if (helper.kind == Kind::ready) return;
    StatusCard::Content content{.mark = Mark::warning};
    content.title = tr("AI apps can't start Tandrel's helper");
    if (helper.kind == Kind::missing) {
        content.detail = tr("It is missing beside this program. Install Tandrel again.");
    } else if (helper.kind == Kind::failed) {
        content.detail = qtText(helper.text);
    } else {
        content.detail = tr("The system holds it back because it was downloaded.");
        content.button = tr("Allow It");
        content.pressed = [this] { actions_.fix(Fix::approveHelper); };
    }
    helper_->display(std::move(content));
}

void AppsPage::add(AIApp app) { actions_.addToApp(app, showOutcomeAt(app)); }

WindowActions::Done AppsPage::showOutcomeAt(AIApp app) {
    return [self = QPointer<AppsPage>(this), app](const AIConnect::Outcome& outcome) {
        if (!self) return;
        self->apps_[app].outcome = outcome;
        self->apps_[app].outcomeHeld = false;
        self->display(SetupView(self->shown_));
    };
}

}  // namespace tandrel
