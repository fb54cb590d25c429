#include "app/translations.h"

#include <QAbstractButton>
#include <QAction>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QTranslator>
#include <QXmlStreamReader>
#include <set>

#include <gmock/gmock.h>

#include "app/offscreen.h"
#include "app/owner_text.h"
#include "app/running_program.h"
#include "app/sample_windows.h"
#include "app/status_explain.h"
#include "base/file.h"
#include "support/child_program.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

// A language that says everything in brackets, and knows what it was asked for.
class Bracketed final : public QTranslator {
 public:
    QString translate(const char* context, const char* source, const char*, int) const override {
        if (*context == 'Q') return {};  // Qt's own
        asked.insert({context, source});
        return "⟦" + QString::fromUtf8(source) + "⟧";
    }
    bool isEmpty() const override { return false; }
    mutable std::set<std::pair<std::string, std::string>> asked;
};

// What no language changes: names, what a phone, a program or another room says, and marks.
bool isData(const QString& text) {
    static const std::set<QString> names = {"Tandrel", "study-pc", "Claude Code", "Claude Desktop",
                                            "Codex"};
    return text.isEmpty() || names.contains(text);
}

QStringList textsOf(const QWidget& window) {
    QStringList texts{window.windowTitle()};
    for (const auto* label : window.findChildren<QLabel*>()) {
        // Code to paste is the same everywhere; a question's title comes from the guard.
        const QString role = label->property("role").toString();
        const bool fromGuard = role == "title" && window.objectName() == "prompt";
        if (role != "code" && !fromGuard) texts << label->text();
    }
    for (const auto* button : window.findChildren<QAbstractButton*>()) texts << button->text();
    QString lines;  // the headline and the detail, which a menu cannot wrap itself
    for (const auto* action : window.actions()) {
        if (action->isEnabled()) {
            texts << action->text();
        } else {
            lines += action->text();
        }
    }
    return texts << lines;
}

std::set<std::pair<std::string, std::string>> catalogue() {
    QFile file(TANDREL_SOURCE_DIR "/translations/tandrel.ts");
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QXmlStreamReader xml(&file);
    std::set<std::pair<std::string, std::string>> entries;
    std::string context;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement()) continue;
        if (xml.name() == u"name") context = xml.readElementText().toStdString();
        if (xml.name() == u"source") entries.insert({context, xml.readElementText().toStdString()});
    }
    return entries;
}

class Translations : public Offscreen {};

TEST_F(Translations, EveryTextOfEveryWindowGoesThroughThemAndIsInTheCatalogue) {
    Bracketed language;
    ASSERT_TRUE(QCoreApplication::installTranslator(&language));
    const auto samples = makeSampleWindows(ColorScheme::light, builtApp()).value();
    for (const SampleWindow& sample : samples) {
        for (QString text : textsOf(*sample.widget)) {
            text.remove(QChar(0x200b));
            EXPECT_TRUE(isData(text) || text.contains("⟦") || text.contains("⟧"))
                << sample.name << ": " << text.toStdString();
        }
    }
    EXPECT_EQ(Explain::actionError("", 500), "⟦Something went wrong (500).⟧");
    EXPECT_EQ(Explain::actionError("no frame yet from it", 503),
              "⟦No picture from the iPhone. Wake it and unlock it.⟧");
    std::vector<std::string> missing;
    const auto known = catalogue();
    for (const auto& [context, source] : language.asked) {
        if (!known.contains({context, source})) missing.push_back(context + ": " + source);
    }
    EXPECT_THAT(missing, testing::IsEmpty()) << "`make translations` was forgotten";
    EXPECT_GT(language.asked.size(), 120U);
    QCoreApplication::removeTranslator(&language);
}

TEST_F(Translations, ValuesAreFilledInOnceAndInTheOrderOfTheLanguage) {
    EXPECT_EQ(filledIn("tap %1 (“%2”)", {"%2", "desk"}), "tap %2 (“desk”)");
    EXPECT_EQ(filledIn("(“%2”) %1 tippen", {"Tandrel", "desk"}), "(“desk”) Tandrel tippen");
    EXPECT_EQ(filledIn("100 % of %3 and %", {"a", "b"}), "100 % of %3 and %");
}

TEST_F(Translations, ACatalogueOfTheOwnersLanguageIsFound) {
    const TemporaryFolder share;
    installTranslations(share.path());
    EXPECT_EQ(ownerText("Notice", "iPhone ready"), "iPhone ready") << "there is none";

    const auto source = share.path() / "tandrel_de.ts";
    ASSERT_TRUE(replaceFile(source, R"(<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS><TS version="2.1" language="de_DE"><context><name>Notice</name><message>
<source>iPhone ready</source><translation>iPhone bereit</translation></message></context></TS>)"));
    const auto folder = share.path() / "tandrel/translations";
    std::filesystem::create_directories(folder);
    const auto made =
        runProgramToEnd({"/usr/lib/qt6/bin/lrelease", source, "-qm", folder / "tandrel_de.qm"}, {});
    if (made.status != 0) GTEST_SKIP() << "lrelease: " << made.output;
    QLocale::setDefault(QLocale("de_AT"));
    installTranslations(share.path());
    QLocale::setDefault(QLocale::c());
    EXPECT_EQ(ownerText("Notice", "iPhone ready"), "iPhone bereit");
    EXPECT_EQ(ownerText("Notice", "Show me"), "Show me") << "not translated yet";
}

}  // namespace
}  // namespace tandrel
