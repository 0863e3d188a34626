// Lays the pane out, and warns where shortcuts cannot work.
#include "window/settings/QWShortcutKeyContainerView.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "settings/ui/QWShortcutKeyTableDelegate.h"
#include "window/controls/PushButton.h"
#include "window/settings/QWShortcutKeyTableview.h"

namespace vantory {

QWShortcutKeyContainerView::QWShortcutKeyContainerView(QWShortcutKeyTableDelegate& delegate)
    : table_(new QWShortcutKeyTableview(delegate)),
      warning_(new QLabel(QStringLiteral("The shortcut key manager is not installed, so no shortcuts can be set. It "
                                         "comes with the maker's other tools."),
                          this)),
      edit_(new PushButton(QStringLiteral("&Set Shortcut…"), this)),
      clear_(new PushButton(QStringLiteral("&Clear Shortcut"), this)) {
  warning_->setWordWrap(true);
  warning_->setMargin(8);
  warning_->setAutoFillBackground(true);
  warning_->setBackgroundRole(QPalette::ToolTipBase);
  warning_->setForegroundRole(QPalette::ToolTipText);
  warning_->hide();
  auto* sentence = new QLabel(QStringLiteral("Keys that start a task of Vantory from anywhere."), this);
  sentence->setWordWrap(true);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(20, 20, 20, 20);
  layout->setSpacing(10);
  layout->addWidget(sentence);
  layout->addWidget(warning_);
  layout->addWidget(table_, 1);
  layout->addWidget(makeButtons(delegate));
  // Told anew with every reading of the shortcuts: it may be installed meanwhile.
  table_->onManagerMissing = [this](bool missing) {
    warning_->setVisible(missing);
    showSelection();
  };
  table_->onSelectionChange = [this] { showSelection(); };
  showSelection();
}

QWidget* QWShortcutKeyContainerView::makeButtons(QWShortcutKeyTableDelegate& delegate) {
  auto* row = new QWidget(this);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(edit_);
  layout->addWidget(clear_);
  layout->addStretch();
  connect(edit_, &QPushButton::clicked, this, [this] { table_->editShortcut(); });
  connect(clear_, &QPushButton::clicked, this, [&delegate] { delegate.clearShortcutKey(); });
  return row;
}

// Only a row that has a shortcut can lose it.
void QWShortcutKeyContainerView::showSelection() {
  const bool selected = table_->isEnabled() && table_->selectedRow() >= 0;
  edit_->setEnabled(selected);
  clear_->setEnabled(selected && !table_->currentIndex().siblingAtColumn(1).data().toString().isEmpty());
}

}  // namespace vantory
