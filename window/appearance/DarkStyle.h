// Fusion with check boxes that can be seen on dark grounds.
#pragma once

#include <QProxyStyle>

namespace vantory {

class DarkStyle : public QProxyStyle {
 public:
  DarkStyle();

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
};

}  // namespace vantory
