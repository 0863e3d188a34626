// Draws names with icons, and what is the default in bold.
#include "window/outline/OutlineCellPainter.h"

#include "window/appearance/SystemColours.h"
#include "window/outline/OutlineModel.h"

namespace vantory {

namespace {

constexpr int kRowMargin = 8;
constexpr double kReadable = 5;  // contrast; small text takes 4.5

}  // namespace

// All rows are of one height, also those without an image.
QSize OutlineCellPainter::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
  const QSize size = QStyledItemDelegate::sizeHint(option, index);
  return {size.width(), qMax(option.decorationSize.height(), option.fontMetrics.height()) + kRowMargin};
}

// Only drawn as disabled: a row that is disabled for Qt could not be selected. What is dimmed can still be read.
void OutlineCellPainter::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
  QStyledItemDelegate::initStyleOption(option, index);
  if (index.data(OutlineModel::kDimmedRole).toBool()) {
    const QColor ground = option->palette.color(QPalette::Base);
    const QColor faint = option->palette.color(QPalette::Disabled, QPalette::Text);
    option->palette.setColor(QPalette::Text, withContrast(faint, ground, kReadable));
  }
  if (!index.data(OutlineModel::kEnabledRole).toBool()) option->state &= ~QStyle::State_Enabled;
}

}  // namespace vantory
