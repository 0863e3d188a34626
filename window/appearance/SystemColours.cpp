// Asks the desktop for its colours, and repaints.
#include "window/appearance/SystemColours.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <algorithm>
#include <cmath>

namespace vantory {

namespace {

// How bright a colour seems, from 0 to 1.
double luminance(const QColor& colour) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

// Black or white, whichever the ground shows better.
void drawFocusRing(const QStyleOption& option, QPainter& painter) {
  const auto* focus = qstyleoption_cast<const QStyleOptionFocusRect*>(&option);
  const bool tellsGround = focus && focus->backgroundColor.isValid();
  const QColor ground = tellsGround ? focus->backgroundColor : option.palette.color(QPalette::Button);
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(contrast(ground, Qt::white) > contrast(ground, Qt::black) ? Qt::white : Qt::black, 1.5));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(QRectF(option.rect).adjusted(1, 1, -1, -1), 2.5, 2.5);
  painter.restore();
}

// A box with a tick, a bar for "some", or nothing.
void drawCheckBox(const QStyleOption& option, QPainter& painter) {
  const bool usable = option.state & QStyle::State_Enabled;
  const bool marked = option.state & (QStyle::State_On | QStyle::State_NoChange);
  const QPalette& palette = option.palette;
  const QColor ink = palette.color(usable ? QPalette::Active : QPalette::Disabled, QPalette::WindowText);
  QColor outline = ink;
  outline.setAlphaF(usable ? 0.55F : 0.3F);
  const QRectF box = QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5);

  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(outline, 1));
  painter.setBrush(marked && usable ? palette.color(QPalette::Active, QPalette::Highlight).darker(115)
                                    : palette.color(QPalette::Base));
  painter.drawRoundedRect(box, 2.5, 2.5);
  painter.setPen(QPen(ink, box.width() / 7, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.setBrush(Qt::NoBrush);
  const auto at = [&](qreal x, qreal y) { return box.topLeft() + QPointF(box.width() * x, box.height() * y); };
  if (option.state & QStyle::State_NoChange)
    painter.drawLine(at(0.28, 0.5), at(0.72, 0.5));
  else if (option.state & QStyle::State_On)
    painter.drawPolyline(QPolygonF({at(0.24, 0.53), at(0.43, 0.72), at(0.77, 0.3)}));
  painter.restore();
}

// Where a desktop says whether its user prefers dark colours.
constexpr auto kService = "org.freedesktop.portal.Desktop";
constexpr auto kObject = "/org/freedesktop/portal/desktop";
constexpr auto kInterface = "org.freedesktop.portal.Settings";
constexpr auto kGroup = "org.freedesktop.appearance";
constexpr auto kKey = "color-scheme";
constexpr uint kPrefersDark = 1;

// Connecting without one would start a bus that nobody else is on.
bool hasSessionBus() {
  return qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
         QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
}

// Told by the colours themselves: a desktop may have made them dark without saying so.
bool isDark(const QPalette& palette) {
  return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

// The palette with a ground for selected rows on which their text can be read.
QPalette withReadableSelection(QPalette palette) {
  for (const auto group : {QPalette::Active, QPalette::Inactive})
    palette.setColor(
        group, QPalette::Highlight,
        withContrast(palette.color(group, QPalette::Highlight), palette.color(group, QPalette::HighlightedText), 4.6));
  return palette;
}

// Where Qt has no dark colours of its own.
QPalette darkPalette() {
  const QColor window(0x2d, 0x2e, 0x31), base(0x1f, 0x20, 0x22), text(0xec, 0xec, 0xee), faint(0x80, 0x82, 0x87);
  const QColor accent(0x3d, 0x8b, 0xdf);
  QPalette palette(window);
  palette.setColor(QPalette::WindowText, text);
  palette.setColor(QPalette::Base, base);
  palette.setColor(QPalette::AlternateBase, QColor(0x26, 0x27, 0x2a));
  palette.setColor(QPalette::Text, text);
  palette.setColor(QPalette::Button, QColor(0x3a, 0x3b, 0x3f));
  palette.setColor(QPalette::ButtonText, text);
  palette.setColor(QPalette::BrightText, Qt::white);
  palette.setColor(QPalette::Highlight, accent);
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Link, QColor(0x6c, 0xb2, 0xff));
  palette.setColor(QPalette::ToolTipBase, QColor(0x4a, 0x45, 0x2c));
  palette.setColor(QPalette::ToolTipText, text);
  palette.setColor(QPalette::PlaceholderText, faint);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
    palette.setColor(QPalette::Disabled, role, faint);
  return withReadableSelection(palette);
}

// The service answers with a value inside a value.
uint unwrapped(QVariant value) {
  while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
  return value.toUInt();
}

}  // namespace

// The small addition stands for the light that every screen reflects.
double contrast(const QColor& one, const QColor& other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

// In steps of two percent, and only so many: not every colour can come so far.
QColor withContrast(QColor colour, const QColor& other, double ratio) {
  constexpr int kSteps = 80;
  const bool mustBeLighter = luminance(colour) > luminance(other);
  for (int step = 0; step < kSteps && contrast(colour, other) < ratio; ++step)
    colour = mustBeLighter ? colour.lighter(102) : colour.darker(102);
  return colour;
}

// The ring is for those who go by the keyboard: after a click there is none.
void ReadableStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                  const QWidget* widget) const {
  if (element != PE_FrameFocusRect)
    QProxyStyle::drawPrimitive(element, option, painter, widget);
  else if (option->state & State_KeyboardFocusChange)
    drawFocusRing(*option, *painter);
}

// The ring of a push button lies within its edge.
void ReadableStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                                const QWidget* widget) const {
  QProxyStyle::drawControl(element, option, painter, widget);
  constexpr State kByKeyboard = State_HasFocus | State_KeyboardFocusChange;
  if (element != CE_PushButton || (option->state & kByKeyboard) != kByKeyboard) return;
  QStyleOption inside = *option;
  inside.rect.adjust(2, 2, -2, -2);
  drawFocusRing(inside, *painter);
}

DarkStyle::DarkStyle() : ReadableStyle(QStringLiteral("Fusion")) {}

void DarkStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
  if (element == PE_IndicatorCheckBox || element == PE_IndicatorItemViewItemCheck)
    drawCheckBox(*option, *painter);
  else
    ReadableStyle::drawPrimitive(element, option, painter, widget);
}

SystemColours::SystemColours(QObject* parent)
    : QObject(parent),
      light_(withReadableSelection(QApplication::palette())),
      lightStyle_(QApplication::style()->name()) {
  QApplication::setStyle(new ReadableStyle(lightStyle_));
  QApplication::setPalette(light_);
  // Colours that are dark from the start are the desktop's own choice, and stay.
  if (isDark(light_) || !hasSessionBus()) return;
  QDBusConnection::sessionBus().connect(kService, kObject, kInterface, QStringLiteral("SettingChanged"), this,
                                        SLOT(settingChanged(QString, QString, QDBusVariant)));
  ask();
}

// The answer may never come; nothing waits for it.
void SystemColours::ask() {
  auto question = QDBusMessage::createMethodCall(kService, kObject, kInterface, QStringLiteral("Read"));
  question << QString::fromLatin1(kGroup) << QString::fromLatin1(kKey);
  auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    const QDBusPendingReply<QDBusVariant> reply = *watcher;
    if (reply.isValid()) setDark(unwrapped(QVariant::fromValue(reply.value())) == kPrefersDark);
    watcher->deleteLater();
  });
}

void SystemColours::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
  if (group == QLatin1String(kGroup) && key == QLatin1String(kKey)) setDark(unwrapped(value.variant()) == kPrefersDark);
}

void SystemColours::setDark(bool dark) {
  if (dark == isDark(QApplication::palette())) return;
  // Other styles may ignore the colours they are given.
  if (dark)
    QApplication::setStyle(new DarkStyle);
  else
    QApplication::setStyle(new ReadableStyle(lightStyle_));
  QApplication::setPalette(dark ? darkPalette() : light_);
}

}  // namespace vantory
