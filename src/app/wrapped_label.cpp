#include "app/wrapped_label.h"

#include <QTextBoundaryFinder>
#include <QVariant>

namespace tandrel {
namespace {

constexpr int kLongestWord = 16;  // characters that may stand together
constexpr QChar kBreakHere(0x200b);

}  // namespace

void setWrappedText(QLabel& label, const QString& text) {
    QString breakable;
    int run = 0;
    QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype start = 0, end = 0; (end = characters.toNextBoundary()) > 0; start = end) {
        run = text[start].isSpace() ? 0 : run + 1;
        if (run > kLongestWord) breakable += kBreakHere;
        breakable += QStringView(text).mid(start, end - start);
    }
    label.setText(breakable);
    label.setAccessibleName(text);
}

QLabel* makeWrappedLabel(const QString& role, const QString& text) {
    auto* label = new QLabel;
    label->setProperty("role", role);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    setWrappedText(*label, text);
    return label;
}

}  // namespace tandrel
