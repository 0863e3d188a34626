// The letters by which buttons are pressed.
#pragma once

#include <QString>
#include <QStringList>

namespace vantory {

// The title with an ampersand before that letter, where it has it; ampersands of its own are shown as they are.
QString withMnemonic(QString title, QChar letter);

// Titles that stand side by side, each with a letter of its own where there is one; none of those in `taken`.
QStringList withMnemonics(const QStringList& titles, QString taken = {});

}  // namespace vantory
