#pragma once

#include <QCoreApplication>
#include <memory>
#include <optional>

#include "app/approvals_window.h"
#include "app/owner_side.h"
#include "app/phone_test_run.h"
#include "app/picture_feed.h"
#include "app/setup_window.h"
#include "app/tray.h"

namespace tandrel {

// The application as its owner sees it: the icon in the tray, its menu and the windows, all of them
// showing what the application model knows. Main thread only.
class AppDelegate final : public WindowActions {
    Q_DECLARE_TR_FUNCTIONS(AppDelegate)

 public:
    // The engine has started; `owner` and `loop` outlive this.
    AppDelegate(OwnerSide& owner, AppInfo info, ColorScheme appearance, MainLoop& loop,
                Clock& clock);
    ~AppDelegate() override;
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    static AppDelegate* shared();

    // Shows the icon, and the setup where it is not done, where TANDREL_SHOW_SETUP says so, or
    // where there is no tray for the icon. Draws the windows into TANDREL_SNAPSHOT_DIR if set.
    void start();
    void showSetup(std::optional<SetupStep> step = std::nullopt);
    void showApprovals();
    void showAbout();
    void snapshotSteps(const std::filesystem::path& folder);

    void setPaused(bool paused) override;
    void setAskBeforePayments(bool ask) override;
    void setAskWhenUnsure(bool ask) override;
    void setAutostart(bool on) override;
    bool autostart() const override;
    void chooseLink(LinkChoice link) override;
    void fix(Fix fix) override;
    void addToApp(AIApp app, Done done) override;
    void leaveOut(AIApp app) override;
    void restartClaudeDesktop(Done done) override;
    void startTest() override;
    void finishSetup() override;
    void quit() override;

 private:
    void lookForTray();
    void checkPointer();
    void display();
    // Tells the owner what went wrong, when something did.
    OwnerActions::Done tellProblem();
    void tell(const std::string& sentence);

    OwnerSide& owner_;
    const AppInfo info_;
    MainLoop& loop_;
    const ColorScheme appearance_;
    SetupView view_;
    OwnerMenu menu_;
    SetupWindow setup_;
    ApprovalsWindow approvals_;
    std::unique_ptr<QWidget> about_;
    std::unique_ptr<Tray> tray_;
    int looksForTray_ = 0;
    std::unique_ptr<Timer> trayTimer_;
    PictureFeed pictures_;
    PhoneTestRun test_;
    std::shared_ptr<void> listening_;
};

}  // namespace tandrel
