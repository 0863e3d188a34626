// Draws names with icons, and what is the default in bold.
#include "window/outline/OutlineCellPainter.h"

#include "window/outline/OutlineModel.h"

namespace vantory {

namespace {

constexpr int kRowMargin = 8;

}  // namespace

// All rows are of one height, also those without an image.
QSize OutlineCellPainter::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
  const QSize size = QStyledItemDelegate::sizeHint(option, index);
  return {size.width(), qMax(option.decorationSize.height(), option.fontMetrics.height()) + kRowMargin};
}

// Only drawn as disabled: a row that is disabled for Qt could not be selected.
void OutlineCellPainter::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
  QStyledItemDelegate::initStyleOption(option, index);
  if (!index.data(OutlineModel::kEnabledRole).toBool()) option->state &= ~QStyle::State_Enabled;
}

}  // namespace vantory
