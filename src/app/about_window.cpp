#include "app/about_window.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>

#include "app/icons.h"
#include "app/qt_text.h"
#include "app/wrapped_label.h"

namespace tandrel {
namespace {

constexpr int kMarkSize = 64;
constexpr int kTextWidth = 380;

class AboutTexts {
    Q_DECLARE_TR_FUNCTIONS(AboutWindow)

 public:
    static void add(QVBoxLayout& rows, const AppInfo& info) {
        rows.addWidget(makeWrappedLabel("title", "Tandrel"));
        rows.addWidget(makeWrappedLabel("secondary", tr("Version %1").arg(qtText(info.version))));
        rows.addWidget(makeWrappedLabel(
            "lead", tr("Lets your AI see and operate your iPhone, with nothing installed on it. "
                       "Before anything that could pay, it asks you.")));
        rows.addWidget(
            makeWrappedLabel("secondary", tr("Runs from %1").arg(qtText(info.bundle.string()))));
    }
    static QString title() { return tr("About Tandrel"); }
};

}  // namespace

QWidget* makeAboutWindow(ColorScheme appearance, const AppInfo& info) {
    auto* window = new QWidget;
    window->setWindowTitle(AboutTexts::title());
    window->setWindowIcon(productIcon());
    window->setProperty("ground", "window");
    window->setAttribute(Qt::WA_StyledBackground);
    auto* columns = new QHBoxLayout(window);
    columns->setContentsMargins(28, 28, 28, 28);
    columns->setSpacing(24);
    columns->setSizeConstraint(QLayout::SetFixedSize);
    auto* mark = new QLabel;
    mark->setPixmap(productMark(Brand::scaled(kMarkSize)));
    columns->addWidget(mark, 0, Qt::AlignTop);
    auto* texts = new QWidget;
    texts->setFixedWidth(Brand::scaled(kTextWidth));
    auto* rows = new QVBoxLayout(texts);
    rows->setContentsMargins(0, 0, 0, 0);
    AboutTexts::add(*rows, info);
    columns->addWidget(texts);
    Brand::dress(*window, appearance);
    return window;
}

}  // namespace tandrel
