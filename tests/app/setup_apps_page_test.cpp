#include "app/setup_apps_page.h"

#include <QClipboard>
#include <QElapsedTimer>

#include <gmock/gmock.h>

#include "app/no_actions.h"
#include "app/offscreen.h"
#include "app/owner_menu.h"
#include "app/sample_views.h"

namespace tandrel {
namespace {

// Writes down what the page sets off.
class NotedActions final : public NoActions {
 public:
    void fix(Fix fix) override { fixed.push_back(fix); }
    void addToApp(AIApp app, Done done) override {
        added.push_back(app);
        told = std::move(done);
    }
    void leaveOut(AIApp app) override { left.push_back(app); }

    std::vector<Fix> fixed;
    std::vector<AIApp> added;
    std::vector<AIApp> left;
    Done told;
};

class AppsPageTest : public Offscreen {
 protected:
    AppsPageTest() {
        page.display(view);
        page.show();
    }
    AIAppStatus& codex() { return view.app.aiApps.back(); }
    bool shows(const QString& text) const {
        return std::ranges::any_of(page.findChildren<QLabel*>(), [&](const QLabel* label) {
            return label->isVisible() && QString(label->text()).remove(QChar(0x200b)) == text;
        });
    }
    QPushButton* button(const QString& text) const {
        for (QPushButton* one : page.findChildren<QPushButton*>()) {
            if (one->isVisible() && one->text() == text) return one;
        }
        return nullptr;
    }

    SetupView view = samples::appLost({});
    NotedActions actions;
    AppsPage page{ColorScheme::light, actions};
};

TEST_F(AppsPageTest, AnEntryThatHasGoneIsOfferedAgain) {
    EXPECT_TRUE(shows("Tandrel was added, but its entry has gone from Codex's settings."));
    ASSERT_NE(button("Add Again"), nullptr);
    button("Add Again")->click();
    EXPECT_THAT(actions.added, testing::ElementsAre(AIApp::codex));
    const char* added = "Added. Start a new Codex session to use it.";
    actions.told({true, added});
    EXPECT_TRUE(shows(added));
    codex().link = Link::addedHere;
    codex().lost = false;
    page.display(view);
    EXPECT_TRUE(shows(added));

    codex().link = Link::notAdded;
    codex().lost = true;
    page.display(view);
    EXPECT_FALSE(shows(added)) << "that was before";
    ASSERT_NE(button("Leave It Out"), nullptr);
    button("Leave It Out")->click();
    EXPECT_THAT(actions.left, testing::ElementsAre(AIApp::codex));
    codex().lost = false;
    page.display(view);
    EXPECT_NE(button("Add to Codex"), nullptr);
    EXPECT_EQ(button("Leave It Out"), nullptr);
}

TEST_F(AppsPageTest, ACopyThatMayNotStayIsMovedFirst) {
    ASSERT_NE(button("Move to Applications"), nullptr);
    button("Move to Applications")->click();
    EXPECT_THAT(actions.fixed, testing::ElementsAre(Fix::moveToApplications));
    view.app.liesInPassing = false;
    page.display(view);
    EXPECT_EQ(button("Move to Applications"), nullptr);
}

TEST_F(AppsPageTest, AFailureStaysUntilTheNextTry) {
    button("Add Again")->click();
    actions.told({false, "Couldn't write Codex's settings: No space left on device"});
    page.display(view);
    EXPECT_TRUE(shows("Couldn't write Codex's settings: No space left on device"));
    EXPECT_NE(button("Add Again"), nullptr);
}

TEST_F(AppsPageTest, TheMenuNamesTheAppsThatLostTheirEntry) {
    int opened = 0;
    OwnerMenu menu(ColorScheme::light, actions, {.apps = [&] { ++opened; }});
    const auto offers = [&] {
        QList<QAction*> found;
        for (QAction* action : menu.actions()) {
            if (action->isVisible() && action->text().contains("again")) found << action;
        }
        return found;
    };
    menu.display(view.app);
    ASSERT_EQ(offers().size(), 1);
    EXPECT_EQ(offers().front()->text(), "Add Tandrel to Codex again…");
    offers().front()->trigger();
    EXPECT_EQ(opened, 1);
    codex().lost = false;
    menu.display(view.app);
    EXPECT_THAT(offers(), testing::IsEmpty());
}

TEST_F(AppsPageTest, CopyingSaysSoForAWhile) {
    button("Copy")->click();
    EXPECT_EQ(QGuiApplication::clipboard()->text(),
              button("Copied")->parentWidget()->findChildren<QLabel*>().back()->text().remove(
                  QChar(0x200b)));
    QElapsedTimer patience;
    patience.start();
    while (button("Copied") != nullptr && patience.elapsed() < 60000) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    EXPECT_EQ(button("Copied"), nullptr);
}

}  // namespace
}  // namespace tandrel
