// Fills the list.
#include "window/dialogs/ResultList.h"

#include <QHeaderView>
#include <utility>

#include "window/appearance/DisplayText.h"

namespace vantory {

namespace {

constexpr QSize kSize(680, 220);
constexpr int kFileWidth = 280;
constexpr int kEventWidth = 110;
constexpr int kRowMargin = 8;

}  // namespace

ResultList::ResultList(std::vector<AlertRow> rows, QWidget* parent) : QTreeWidget(parent), rows_(std::move(rows)) {
  setAccessibleName(QStringLiteral("What was left out"));
  setHeaderLabels({QStringLiteral("File"), QStringLiteral("What Happened"), QStringLiteral("Cause")});
  setRootIsDecorated(false);
  setAllColumnsShowFocus(true);
  setAlternatingRowColors(true);
  setTextElideMode(Qt::ElideMiddle);
  setUniformRowHeights(true);
  setTabKeyNavigation(false);
  for (const AlertRow& row : rows_) {
    auto* item = new QTreeWidgetItem(this, {displayText(row.file), displayText(row.event), displayText(row.cause)});
    item->setSizeHint(0, {0, fontMetrics().height() + kRowMargin});
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
  return item ? QStringLiteral("%1\n%2").arg(item->text(0), item->text(2)) : QString();
}

QSize ResultList::sizeHint() const {
  return kSize;
}

}  // namespace vantory
