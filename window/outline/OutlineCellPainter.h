// Draws the cells of an outline.
#pragma once

#include <QStyledItemDelegate>

namespace vantory {

// A cell that cannot be used is drawn greyed while its row can still be selected.
class OutlineCellPainter : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

}  // namespace vantory
