#include "window/appearance/DarkStyle.h"

#include <QPainter>
#include <QStyleOption>

namespace vantory {

namespace {

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

}  // namespace

DarkStyle::DarkStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

void DarkStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
  if (element == PE_IndicatorCheckBox || element == PE_IndicatorItemViewItemCheck)
    drawCheckBox(*option, *painter);
  else
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

}  // namespace vantory
