// The outline of a pane: rows that open, columns, check boxes, and the header above them.
#pragma once

#include <QWidget>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "backups/ui/OutlineView.h"
#include "window/outline/OutlineModel.h"

class QLabel;
class QMenu;

namespace vantory {

class OutlineTree;
class QWHeaderCheckCell;

class QWOutlineView : public QWidget, public OutlineView {
 public:
  // A key and what it stands for, by name.
  struct WatchKey {
    QChar keycode;
    std::string selector;
  };

  // The name is read out to those who cannot see the view.
  QWOutlineView(std::vector<OutlineColumn> columns, const QString& accessibleName);
  ~QWOutlineView() override;

  // Neither is owned; the actions may be null.
  void setDelegate(OutlineDelegate* delegate, OutlineActions* actions);
  // Puts a check box into the header of the first column.
  void showHeaderCheck();
  // Lets a click on a column's header sort.
  void showSortIndicators();
  // What stands in the place of rows while there are none, or, asked for anew whenever the rows change, while a single
  // one has nothing below it.
  void setEmptyText(const QString& noRows, std::function<QString()> oneClosedRow);
  // Pops up on rows. Not owned.
  void setMenu(QMenu* menu);
  // Lets the text of the selected row be changed in place, where its cell allows that.
  void editSelectedRow();

  // Called when another row is selected, or none, after the actions have been told.
  std::function<void()> onSelectionChange;

  // The first entry whose key is pressed, with or without modifiers, has the watch delegate perform its selector. The
  // delegate answers false for a selector it does not know; that is passed on to `reportMissing`, and the next entry is
  // tried.
  void addWatchKeys(const QString& keys, const std::string& selector);
  std::function<bool(const std::string& selector)> watchDelegate;
  std::function<void(const std::string& selector)> reportMissing;

  // The columns' widths, to be kept from one run to the next.
  QByteArray layoutState() const;
  void restoreLayoutState(const QByteArray& state);

  void reloadData() override;
  void reloadItem(const OutlineItemPointer& item, bool reloadChildren) override;
  void setHeaderState(State state) override;
  void setSortIndicator(const std::string& column, SortIndicator indicator) override;
  void setRemark(const std::string& text) override;
  OutlineItemPointer selectedItem() const override;
  void selectItem(const OutlineItemPointer& item) override;
  void collapseAll();

  OutlineTree& tree() { return *tree_; }
  QWHeaderCheckCell& headerCheck() { return *headerCheck_; }

 protected:
  void resizeEvent(QResizeEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void connectTree();
  void layOutColumns();
  void placeOverlays();
  QString emptyText() const;
  bool performWatchKey(QChar key);
  void noticeSelection();
  // Rows are found again by their identities.
  void noteOpenRows(const QModelIndex& parent, std::set<std::string>& open) const;
  void openAgain(const QModelIndex& parent, const std::set<std::string>& open);
  QModelIndex findOpen(const QModelIndex& parent, const std::string& identity) const;

  OutlineModel model_;
  OutlineTree* const tree_;
  QWHeaderCheckCell* const headerCheck_;
  QLabel* const emptyLabel_;
  QLabel* const remark_;
  OutlineActions* actions_ = nullptr;
  QString noRowsText_;
  std::function<QString()> oneClosedRowText_;
  std::vector<WatchKey> watchKeys_;
  OutlineItemPointer noticed_;  // the selected row's item that the actions were told of
  bool reloading_ = false;
};

}  // namespace vantory
