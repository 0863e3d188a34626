// Fills the list.
#include "window/dialogs/ResultList.h"

#include <QHeaderView>
#include <QStyledItemDelegate>
#include <utility>

#include "window/appearance/DisplayText.h"

namespace vantory {

namespace {

constexpr QSize kSize(680, 220);
constexpr int kFileWidth = 280;
constexpr int kEventWidth = 110;
constexpr int kRowMargin = 8;
constexpr int kCause = 2;

// A sentence is read from its beginning; of a path both ends count.
class SentenceDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    option->textElideMode = Qt::ElideRight;
  }
};

// Over as many lines as it needs, whatever is in the text.
QString toolTipOf(const QString& text) {
  return QStringLiteral("<p>%1</p>").arg(text.toHtmlEscaped());
}

}  // namespace

ResultList::ResultList(std::vector<AlertRow> rows, QWidget* parent) : QTreeWidget(parent), rows_(std::move(rows)) {
  setAccessibleName(QStringLiteral("What was left out"));
  setHeaderLabels({QStringLiteral("File"), QStringLiteral("What Happened"), QStringLiteral("Cause")});
  setRootIsDecorated(false);
  setAllColumnsShowFocus(true);
  setAlternatingRowColors(true);
  setTextElideMode(Qt::ElideMiddle);
  setItemDelegateForColumn(kCause, new SentenceDelegate(this));
  setUniformRowHeights(true);
  setTabKeyNavigation(false);
  for (const AlertRow& row : rows_) {
    auto* item = new QTreeWidgetItem(this, {displayText(row.file), displayText(row.event), displayText(row.cause)});
    item->setSizeHint(0, {0, fontMetrics().height() + kRowMargin});
    for (const int column : {0, kCause}) item->setToolTip(column, toolTipOf(item->text(column)));
  }
  header()->resizeSection(0, kFileWidth);
  header()->resizeSection(1, kEventWidth);
  setCurrentItem(topLevelItem(0));
}

// An application has a name only.
std::string ResultList::selectedPath() const {
  const QModelIndexList selected = selectionModel()->selectedRows();
  if (selected.isEmpty()) return "";
  const std::string& file = rows_[static_cast<std::size_t>(selected.front().row())].file;
  return file.starts_with('/') ? file : "";
}

QString ResultList::selectedInWords() const {
  const QTreeWidgetItem* item = currentItem();
  return item ? QStringLiteral("%1\n%2").arg(item->text(0), item->text(kCause)) : QString();
}

QSize ResultList::sizeHint() const {
  return kSize;
}

}  // namespace vantory
