// Light and dark.
#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QPalette>
#include <QProxyStyle>

namespace vantory {

// Fusion with check boxes that can be seen on dark grounds.
class DarkStyle : public QProxyStyle {
 public:
  DarkStyle();

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
};

// Follows the desktop's choice between light and dark where Qt does not do so by itself. Main thread. Asks the
// desktop's settings service without waiting for it; a desktop that has none changes nothing.
class SystemColours : public QObject {
  Q_OBJECT

 public:
  explicit SystemColours(QObject* parent);

  void setDark(bool dark);

 private slots:
  void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  void ask();

  // As the application was started with.
  const QPalette light_;
  const QString lightStyle_;
};

}  // namespace vantory
