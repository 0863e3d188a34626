// Shows bytes that are no text as escapes.
#include "window/appearance/DisplayText.h"

#include <QStringDecoder>

namespace vantory {

namespace {

// As a programmer would write the byte.
QString escaped(unsigned char byte) {
  if (byte == '\n') return QStringLiteral("\\n");
  if (byte == '\t') return QStringLiteral("\\t");
  return QStringLiteral("\\x%1").arg(byte, 2, 16, QLatin1Char('0'));
}

// A file's name may mix text with bytes that are none; whatever does not decode is escaped byte by byte.
QString withInvalidBytesEscaped(QByteArrayView bytes) {
  QString text;
  while (!bytes.isEmpty()) {
    qsizetype length = 0;
    QString character;
    // A character has four bytes at the most.
    for (qsizetype tried = 1; tried <= qMin<qsizetype>(4, bytes.size()) && length == 0; ++tried) {
      QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
      character = decoder(bytes.first(tried));
      if (!decoder.hasError()) length = tried;
    }
    text += length > 0 ? character : escaped(static_cast<unsigned char>(bytes.front()));
    bytes = bytes.sliced(qMax<qsizetype>(length, 1));
  }
  return text;
}

// A line break within a name would make two names of one.
QString withControlCharactersEscaped(const QString& text) {
  QString line;
  for (const QChar character : text)
    line += character < QLatin1Char(' ') || character == QChar(0x7f)
                ? escaped(static_cast<unsigned char>(character.unicode()))
                : QString(character);
  return line;
}

}  // namespace

QString displayText(const std::string& bytes) {
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  const QByteArrayView view(bytes.data(), static_cast<qsizetype>(bytes.size()));
  const QString text = decoder(view);
  return withControlCharactersEscaped(decoder.hasError() ? withInvalidBytesEscaped(view) : text);
}

}  // namespace vantory
