#include <gtest/gtest.h>

#include "platform/linux/chosen_languages.h"
#include "reading/drawn_frame.h"
#include "reading/drawn_lines.h"

namespace tandrel {
namespace {

using Lines = std::vector<std::string>;

PixelBuffer frameOf(const std::string& words) {
    DrawnFrame frame(1179, 200, 3, kWhite);
    frame.text(20, 40, words);
    return frame.frame();
}

TEST(Languages, areNamesJoinedByPlusAndNeverPaths) {
    for (const char* good : {"eng", "deu", "eng+deu", "chi_sim", "eng+deu+fra+ita"}) {
        EXPECT_TRUE(areLanguages(good)) << good;
    }
    for (const char* bad : {"", "en", "eng+", "+eng", "eng++deu", "eng deu", "../eng", "ENG",
                            "a/b/c", "_sim", "eng+deu+fra+ita+spa", "averyveryverylongname"}) {
        EXPECT_FALSE(areLanguages(bad)) << bad;
    }
}

TEST(Languages, checkSaysWhatToInstall) {
    EXPECT_TRUE(checkLanguages("eng"));
    const auto missing = checkLanguages("eng+xyz_abc");
    ASSERT_FALSE(missing);
    EXPECT_NE(missing.error().message.find("apt install tesseract-ocr-xyz-abc"), std::string::npos)
        << missing.error().message;
    EXPECT_FALSE(checkLanguages("nonsense here"));
}

TEST(Languages, aChangeTakesEffectAtTheNextRead) {
    std::string chosen = "eng";
    ChosenLanguages recognizer([&] { return chosen; });
    EXPECT_EQ(linesOf(recognizer.read(frameOf("Total"))), Lines{"Total"});
    chosen = "xyz";
    EXPECT_FALSE(recognizer.read(frameOf("Total")));
    chosen = "no such thing";
    EXPECT_EQ(linesOf(recognizer.read(frameOf("Total"))), Lines{"Total"});
}

TEST(Languages, foreignTextIsReadWithItsOwnFile) {
    const std::pair<std::string, const char*> rows[] = {
        {"deu", "Überweisung für Größe"}, {"deu", "Lindenstraße 48"},     {"deu", "Schöne Grüße"},
        {"fra", "Payé à la réception"},   {"fra", "Numéro de téléphone"},
    };
    for (const auto& [language, words] : rows) {
        if (!checkLanguages(language)) GTEST_SKIP() << language << " is not installed";
        for (const std::string& languages : {language, "eng+" + language}) {
            ChosenLanguages recognizer([&] { return languages; });
            EXPECT_EQ(linesOf(recognizer.read(frameOf(words))), Lines{words}) << languages;
        }
    }
}

}  // namespace
}  // namespace tandrel
