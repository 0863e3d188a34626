// Light and dark.
#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QPalette>
#include <QProxyStyle>

namespace vantory {

// From 1, none, to 21, black on white, as the guidelines for accessible web pages define it.
double contrast(const QColor& one, const QColor& other);
// The colour, darker or lighter by as much as that contrast takes.
QColor withContrast(QColor colour, const QColor& other, double ratio);

// Another style, with a ring around what has the keyboard that can be seen on every ground, a default or pressed button
// included, and that leaves the ground of a row as it is.
class ReadableStyle : public QProxyStyle {
 public:
  using QProxyStyle::QProxyStyle;

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
};

// Fusion with check boxes that can be seen on dark grounds.
class DarkStyle : public ReadableStyle {
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
