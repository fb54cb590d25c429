#pragma once

#include <QLabel>

namespace tandrel {

// Plain text that wraps within any width: a word that is longer than a line breaks, too. What
// stands on a phone is never taken for markup.
QLabel* makeWrappedLabel(const QString& role, const QString& text);
void setWrappedText(QLabel& label, const QString& text);

}  // namespace tandrel
