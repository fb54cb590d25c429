#include "app/translations.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>
#include <memory>

namespace tandrel {

void installTranslations(const std::filesystem::path& share) {
    auto catalogue = std::make_unique<QTranslator>(QCoreApplication::instance());
    const QString folder = QString::fromStdString((share / "tandrel/translations").string());
    if (!catalogue->load(QLocale(), "tandrel", "_", folder, ".qm")) return;
    QCoreApplication::installTranslator(catalogue.release());  // the application object owns it
}

}  // namespace tandrel
