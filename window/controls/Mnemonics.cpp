// Puts ampersands into titles.
#include "window/controls/Mnemonics.h"

namespace vantory {

// A doubled ampersand is shown as one.
QString withMnemonic(QString title, QChar letter) {
  title.replace(QLatin1Char('&'), QLatin1String("&&"));
  const auto position = letter.isNull() ? -1 : title.indexOf(letter, 0, Qt::CaseInsensitive);
  if (position >= 0) title.insert(position, QLatin1Char('&'));
  return title;
}

QStringList withMnemonics(const QStringList& titles, QString taken) {
  QStringList marked;
  for (const QString& title : titles) {
    QChar own;
    for (const QChar letter : title)
      if (own.isNull() && letter.isLetter() && !taken.contains(letter, Qt::CaseInsensitive)) own = letter;
    if (!own.isNull()) taken += own;
    marked << withMnemonic(title, own);
  }
  return marked;
}

}  // namespace vantory
