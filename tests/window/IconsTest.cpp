#include <QImage>

#include "catalog/BuiltInCatalog.h"
#include "platform/qt/DisplayText.h"
#include "platform/qt/Icons.h"
#include "tests/window/WindowTest.h"

namespace vantory::test {

namespace {

QImage drawn(const QIcon& icon, int size) {
  return icon.pixmap(size).toImage();
}

TEST(IconsTest, EveryApplicationHasAnImageOfItsOwn) {
  const QImage unknown = drawn(icons::named("no such image.png"), 16);
  std::map<std::string, QImage> images;
  for (const BuiltInApp& app : builtInCatalog()) images[app.icon] = drawn(icons::named(app.icon), 16);
  for (const char* other : {"VNT-icon", "Autosaves"}) images[other] = drawn(icons::named(other), 16);
  for (const auto& [name, image] : images) {
    EXPECT_NE(image, unknown) << name;
    for (const auto& [otherName, otherImage] : images) {
      if (name < otherName) {
        EXPECT_NE(image, otherImage) << name << " and " << otherName;
      }
    }
  }
}

TEST(IconsTest, SymbolsTakeTheColourOfText) {
  const QPalette before = QApplication::palette();
  const auto strongest = [](const QColor& text) {
    QApplication::setPalette([&] {
      QPalette palette;
      palette.setColor(QPalette::WindowText, text);
      return palette;
    }());
    const QImage image = drawn(icons::symbol("lock"), 64);
    QColor strongestColour = Qt::transparent;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x)
        if (const QColor pixel = image.pixelColor(x, y); pixel.alpha() > strongestColour.alpha())
          strongestColour = pixel;
    return strongestColour;
  };
  EXPECT_EQ(strongest(Qt::red), QColor(Qt::red));
  EXPECT_EQ(strongest(Qt::white), QColor(Qt::white));
  QApplication::setPalette(before);
}

TEST(DisplayTextTest, ShowsWhateverBytesOnOneLine) {
  EXPECT_EQ(displayText("Schnitt für Änne 🎬"), QStringLiteral("Schnitt für Änne 🎬"));
  EXPECT_EQ(displayText("a\nb\tc\x01"), QStringLiteral("a\\nb\\tc\\x01"));
  EXPECT_EQ(displayText("ü\xff\xc3"), QStringLiteral("ü\\xff\\xc3"));
  EXPECT_EQ(displayText(std::string("a\0b", 3)), QStringLiteral("a\\x00b"));
}

}  // namespace

}  // namespace vantory::test
