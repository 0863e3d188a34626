// Lays the list out.
#include "window/application/RecentTasksDialog.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "window/appearance/DisplayText.h"

namespace vantory {

namespace {

constexpr QSize kSize(640, 380);
constexpr int kReceipt = Qt::UserRole;
constexpr int kCanBeUndone = Qt::UserRole + 1;

QString shown(const std::string& text) {
  return displayText(text);
}

}  // namespace

RecentTasksDialog::RecentTasksDialog(QWidget* parent)
    : QDialog(parent), list_(new QTreeWidget), undo_(new QPushButton(QStringLiteral("&Undo"))) {
  setWindowTitle(QStringLiteral("Recent Tasks"));
  list_->setHeaderLabels({QStringLiteral("Date"), QStringLiteral("Task"), QStringLiteral("State")});
  list_->setRootIsDecorated(false);
  list_->setUniformRowHeights(true);
  list_->setAllColumnsShowFocus(true);
  list_->setAccessibleName(QStringLiteral("Recent tasks"));
  list_->header()->setStretchLastSection(false);
  list_->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
  list_->header()->setSectionResizeMode(1, QHeaderView::Stretch);
  list_->header()->setSectionResizeMode(2, QHeaderView::ResizeToContents);
  auto* remark = new QLabel(QStringLiteral(
      "What has changed since a task stays as it is. An undo is a task too, and can be taken back from this list."));
  remark->setWordWrap(true);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  buttons->button(QDialogButtonBox::Close)->setIcon(QIcon());
  buttons->addButton(undo_, QDialogButtonBox::ActionRole);
  undo_->setAutoDefault(false);  // Return closes the list
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(list_, 1);
  layout->addWidget(remark);
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(undo_, &QPushButton::clicked, this, [this] { undoSelected(); });
  connect(list_, &QTreeWidget::itemSelectionChanged, this, [this] { enableUndo(); });
  resize(kSize);
}

// Whoever opens it wants the newest task.
void RecentTasksDialog::open() {
  list_->clear();
  showSentence(QStringLiteral("Reading…"));
  enableUndo();
  list_->setFocus();
  QDialog::open();
}

void RecentTasksDialog::setRows(const std::vector<UndoRow>& rows) {
  const QTreeWidgetItem* current = list_->currentItem();
  const QVariant selected = current ? current->data(0, kReceipt) : QVariant();
  list_->clear();
  for (const UndoRow& row : rows) {
    auto* item = new QTreeWidgetItem(list_, {shown(row.date), shown(row.title), shown(row.state)});
    item->setSizeHint(1, QSize(0, fontMetrics().height() * 3 / 2));
    item->setData(0, kReceipt, QString::fromStdString(row.receipt));
    item->setData(0, kCanBeUndone, row.canBeUndone);
    item->setToolTip(1, shown(row.title));
    if (item->data(0, kReceipt) == selected) list_->setCurrentItem(item);
  }
  if (rows.empty()) showSentence(QStringLiteral("No task has left a receipt yet."));
  if (!list_->currentItem() && list_->topLevelItemCount() > 0) list_->setCurrentItem(list_->topLevelItem(0));
  enableUndo();
}

// In the place of rows.
void RecentTasksDialog::showSentence(const QString& text) {
  auto* item = new QTreeWidgetItem(list_, {QString(), text});
  item->setFlags(Qt::NoItemFlags);
}

void RecentTasksDialog::enableUndo() {
  const QTreeWidgetItem* item = list_->currentItem();
  undo_->setEnabled(item && item->data(0, kCanBeUndone).toBool());
}

// Its progress and how it went are shown on the window below.
void RecentTasksDialog::undoSelected() {
  const std::string receipt = list_->currentItem()->data(0, kReceipt).toString().toStdString();
  close();
  if (onUndo) onUndo(receipt);
}

}  // namespace vantory
