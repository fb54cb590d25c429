#include "app/sample_windows.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

#include <fmt/format.h>

#include "app/about_window.h"
#include "app/approval_prompt.h"
#include "app/approvals_window.h"
#include "app/icons.h"
#include "app/no_actions.h"
#include "app/owner_menu.h"
#include "app/sample_views.h"
#include "app/screen_picture.h"
#include "app/setup_window.h"
#include "platform/virtual/virtual_phone.h"

namespace tandrel {
namespace {

using Samples = std::vector<SampleWindow>;

// Where the virtual shop's price button is.
constexpr PlaceOnScreen kPriceButton{0.5, 0.59};

NoActions noActions;

// What the virtual phone shows on two of its pages.
struct PhonePictures {
    PixelBuffer home;
    PixelBuffer price;
};

Result<PhonePictures> phonePictures(const AppInfo& info) {
    VirtualPhone phone(TRY(loadScenario(info.bundle / "share/tandrel/scenarios/default.json")),
                       systemClock());
    PhonePictures pictures;
    pictures.home = phone.frame();
    phone.showPage("tote");
    pictures.price = phone.frame();
    return pictures;
}

class Maker {
 public:
    Maker(ColorScheme appearance, const AppInfo& info, PhonePictures pictures)
        : appearance_(appearance), info_(info), pictures_(std::move(pictures)) {}

    Samples make() {
        addSetup();
        addMenus();
        addPrompts();
        addOthers();
        return std::move(windows_);
    }

 private:
    void add(std::string name, QWidget* widget) {
        windows_.push_back({std::move(name), std::unique_ptr<QWidget>(widget)});
    }

    void addStep(const std::string& name, SetupStep step, const SetupView& view) {
        auto* window = new SetupWindow(appearance_, noActions);
        window->display(view);
        window->openStep(step);
        add(fmt::format("setup-{}-{}", static_cast<int>(step) + 1, name), window);
    }

    void addSetup() {
        const SetupView ready = samples::ready(asImage(pictures_.home));
        const SetupView fresh = samples::fresh();
        struct Row {
            const char* name;
            SetupStep step;
        };
        const Row rows[] = {{"bluetooth", SetupStep::bluetooth}, {"screen", SetupStep::screen},
                            {"pairing", SetupStep::pairing},     {"pointer", SetupStep::pointer},
                            {"apps", SetupStep::apps},           {"test", SetupStep::test}};
        for (const Row& row : rows) {
            addStep(fmt::format("{}-open", row.name), row.step, fresh);
            addStep(fmt::format("{}-done", row.name), row.step, ready);
        }
        SetupView refused = fresh;
        refused.app.cameraPerm = Permission::denied;
        addStep("screen-refused", SetupStep::screen, refused);
        SetupView mirrored = fresh;
        mirrored.app.inputs.linkChoice = LinkChoice::airplay;
        addStep("screen-airplay", SetupStep::screen, mirrored);
        addStep("apps-lost", SetupStep::apps, samples::appLost(asImage(pictures_.home)));
        SetupView almost = ready;
        almost.app.testPassed = false;
        almost.app.assistiveTouchOn = false;
        almost.test = samples::pointerTest();
        addStep("test-almost", SetupStep::test, almost);
    }

    void addMenu(const std::string& name, const AppModelInputs& inputs) {
        AppSnapshot snapshot;
        snapshot.inputs = inputs;
        addMenu(name, snapshot);
    }

    void addMenu(const std::string& name, const AppSnapshot& snapshot) {
        auto* menu = new OwnerMenu(appearance_, noActions, {});
        menu->display(snapshot);
        add(name, menu);
    }

    void addMenus() {
        AppModelInputs inputs = samples::ready({}).app.inputs;
        addMenu("menu-ready", inputs);
        inputs.paused = true;
        addMenu("menu-paused", inputs);
        addMenu("menu-app-lost", samples::appLost({}).app);
        addMenu("menu-setup", samples::fresh().app.inputs);
        for (const auto& [name, wrong] : samples::notices()) addMenu("notice-" + name, wrong);
        add("menu-stop-asking", makeNoQuestionsDialog(appearance_, [] {}));
    }

    void addPrompt(const std::string& name, const ApprovalRequest& request) {
        using namespace std::chrono_literals;
        const TimePoint deadline = systemClock().now() + 48s;
        add(name, new ApprovalPrompt(request, deadline, systemClock(), [](ApprovalAnswer) {}));
    }

    void addPrompts() {
        ApprovalRequest request{.title = "Approve a payment of €12.50?",
                                .what = "tap “€12.50”",
                                .summary = "€12.50",
                                .why = "",
                                .picture = pictures_.price,
                                .place = kPriceButton};
        addPrompt("approval-panel", request);
        request.picture = {};
        request.place.reset();
        addPrompt("approval-panel-no-picture", request);
        request.picture = pictures_.price;
        request.title =
            "Approve €1,249.00 to Wolfeschlegelsteinhausenbergerdorff & Partners Household Goods?";
        request.what = "type text that has a line break";
        request.summary =
            "€1,249.00 to Wolfeschlegelsteinhausenbergerdorff & Partners Household Goods, and also "
            "€4.90 for postage";
        addPrompt("approval-panel-long", request);
    }

    void addOthers() {
        auto* approvals = new ApprovalsWindow(appearance_, {});
        approvals->display(samples::approvals());
        add("approvals", approvals);
        add("approvals-empty", new ApprovalsWindow(appearance_, {}));
        AppInfo info = info_;
        info.bundle = "/home/hana/.local/opt/Tandrel";
        add("about", makeAboutWindow(appearance_, info));
        add("tray-icons", makeIconSheet());
    }

    // The four states as a tray shows them, on a light and a dark panel, and without colour.
    static QWidget* makeIconSheet() {
        auto* sheet = new QWidget;
        auto* rows = new QVBoxLayout(sheet);
        rows->setContentsMargins(0, 0, 0, 0);
        rows->setSpacing(0);
        for (const char* ground : {"#f2f2f4", "#202124", "#8a8a8e"}) {
            auto* row = new QLabel;
            row->setPixmap(iconRow(ground));
            rows->addWidget(row);
        }
        return sheet;
    }

    static QPixmap iconRow(const char* ground);

    const ColorScheme appearance_;
    const AppInfo& info_;
    const PhonePictures pictures_;
    Samples windows_;
};

QPixmap Maker::iconRow(const char* ground) {
    constexpr int kCell = 72;
    constexpr Health kStates[] = {Health::setup, Health::ready, Health::attention, Health::paused};
    QImage row(kCell * 8, kCell, QImage::Format_RGB32);
    row.fill(QColor(ground));
    QPainter painter(&row);
    int x = 0;
    for (const int size : {22, 48}) {
        for (const Health state : kStates) {
            const int margin = (kCell - size) / 2;
            painter.drawPixmap(x + margin, margin, healthPixmap(state, size));
            x += kCell;
        }
    }
    painter.end();
    const bool colourless = ground == std::string_view("#8a8a8e");
    if (colourless) row = row.convertToFormat(QImage::Format_Grayscale8);
    return QPixmap::fromImage(row);
}

}  // namespace

Result<Samples> makeSampleWindows(ColorScheme appearance, const AppInfo& info) {
    return Maker(appearance, info, TRY(phonePictures(info))).make();
}

}  // namespace tandrel
