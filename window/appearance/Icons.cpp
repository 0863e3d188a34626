// Renders the images.
#include "window/appearance/Icons.h"

#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>
#include <map>
#include <tuple>
#include <utility>

#include "window/appearance/DisplayText.h"
#include "window/appearance/SystemColours.h"

namespace vantory::icons {

namespace {

// Empty where the program has no such drawing.
QByteArray drawing(const QString& folder, const QString& name) {
  QFile file(QStringLiteral(":/%1/%2.svg").arg(folder, name));
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Draws an SVG. What it calls "currentColor" is the colour of text, as the mode wants it, or of the choice that is on.
class DrawingEngine : public QIconEngine {
 public:
  explicit DrawingEngine(QByteArray drawing)
      : drawing_(std::move(drawing)), followsText_(drawing_.contains("currentColor")) {}

  QIconEngine* clone() const override { return new DrawingEngine(drawing_); }
  bool isNull() override { return drawing_.isEmpty(); }

  void paint(QPainter* painter, const QRect& area, QIcon::Mode mode, QIcon::State state) override {
    const qreal scale = painter->device()->devicePixelRatio();
    painter->drawPixmap(area, scaledPixmap(area.size() * scale, mode, state, scale));
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    return scaledPixmap(size, mode, state, 1);
  }

  // The size is in the device's own pixels.
  QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state, qreal) override {
    const QRgb colour = followsText_ ? textColour(mode, state).rgb() : 0;
    // With the colour, so that another palette gets pictures of its own.
    const auto key = std::make_tuple(size.width(), size.height(), mode == QIcon::Disabled, colour);
    QPixmap& pixmap = drawn_[key];
    if (pixmap.isNull()) pixmap = draw(size, mode, QColor(colour));
    return pixmap;
  }

 private:
  using Key = std::tuple<int, int, bool, QRgb>;

  // A choice that is on stands out; everything else looks like the text beside it.
  static QColor textColour(QIcon::Mode mode, QIcon::State state) {
    const QPalette palette = QGuiApplication::palette();
    if (state == QIcon::On && mode != QIcon::Disabled)
      return withContrast(palette.color(QPalette::Highlight), palette.color(QPalette::Button), 4.5);
    if (mode == QIcon::Disabled) return palette.color(QPalette::Disabled, QPalette::WindowText);
    return palette.color(mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::WindowText);
  }

  // In the middle of the space, and as large as fits without being stretched.
  QPixmap draw(const QSize& size, QIcon::Mode mode, const QColor& colour) const {
    QByteArray text = drawing_;
    if (followsText_) text.replace("currentColor", colour.name().toLatin1());
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    // A drawing with colours of its own can only be made fainter.
    if (!followsText_ && mode == QIcon::Disabled) painter.setOpacity(0.4);
    QSvgRenderer renderer(text);
    const QSize drawn = renderer.defaultSize().scaled(size, Qt::KeepAspectRatio);
    renderer.render(&painter,
                    QRect(QPoint((size.width() - drawn.width()) / 2, (size.height() - drawn.height()) / 2), drawn));
    return pixmap;
  }

  const QByteArray drawing_;
  const bool followsText_;
  std::map<Key, QPixmap> drawn_;
};

// Emptied before the application object goes, which images must not outlive.
QHash<QString, QIcon> loaded;

QIcon load(const QString& folder, const QString& name) {
  return QIcon(new DrawingEngine(drawing(folder, name)));
}

}  // namespace

// The catalog's names end as those of the original images do; the drawings have none of these endings.
QIcon named(const std::string& resourceName) {
  if (loaded.isEmpty()) qAddPostRoutine([] { loaded.clear(); });
  QString name = displayText(resourceName);
  for (const auto* ending : {".icns", ".png"})
    if (name.endsWith(QLatin1String(ending))) name.chop(static_cast<qsizetype>(qstrlen(ending)));
  QIcon& icon = loaded[name];
  if (icon.isNull()) icon = load(QStringLiteral("icons"), name);
  if (icon.isNull()) icon = QIcon::fromTheme(name);
  if (icon.isNull()) icon = load(QStringLiteral("icons"), QStringLiteral("unknown"));
  return icon;
}

QIcon symbol(const QString& name) {
  return load(QStringLiteral("icons/symbols"), name);
}

QIcon application() {
  return load(QStringLiteral("icons"), QStringLiteral("vantory"));
}

}  // namespace vantory::icons
