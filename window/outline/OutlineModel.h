// The rows that an outline's delegate tells of, as Qt asks for them.
#pragma once

#include <QAbstractItemModel>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "backups/ui/OutlineView.h"

namespace vantory {

struct OutlineColumn {
  std::string identifier;
  QString title;
  int width = 120;  // pixels at 100 %; the first column takes what the others leave
  Qt::Alignment alignment = Qt::AlignLeading;
};

// One class for all panes. A row's children are asked for when the row is opened.
class OutlineModel : public QAbstractItemModel {
 public:
  // Whether a cell can be used, beside Qt's own roles.
  static constexpr int kEnabledRole = Qt::UserRole;
  // Whether it tells of something that is not there.
  static constexpr int kDimmedRole = Qt::UserRole + 1;

  explicit OutlineModel(std::vector<OutlineColumn> columns);
  ~OutlineModel() override;

  // Not owned; null for no rows.
  void setDelegate(OutlineDelegate* delegate);
  const std::vector<OutlineColumn>& columns() const { return columns_; }
  // Leaves the first column's title to whatever stands in its header.
  void hideFirstTitle() { hidesFirstTitle_ = true; }

  // Forgets all rows; they are asked for anew.
  void reloadData();
  void reloadItem(const OutlineItemPointer& item, bool reloadChildren);

  // Null for an invalid index.
  OutlineItemPointer item(const QModelIndex& index) const;
  // The first cell of the item's row, which need not have been opened; invalid when the tree has no such row.
  QModelIndex indexOf(const OutlineItemPointer& item) const;
  // True when the row's children have been asked for.
  bool hasBeenOpened(const QModelIndex& index) const;

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& index) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  bool hasChildren(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  struct Row;

  Row& rowAt(const QModelIndex& index) const;
  QModelIndex indexOfRow(Row& row, int column = 0) const;
  void open(Row& row) const;
  // Null when there is none among them.
  enum class Search { EveryRow, OpenedRows };
  Row* find(const std::vector<Row*>& level, const std::string& identity, Search search) const;
  std::vector<OutlineItemPointer> askForChildren(const OutlineItemPointer& item) const;
  void redraw(Row& row);
  void replaceChildren(Row& row);
  const std::string& columnIdentifier(const QModelIndex& index) const;

  const std::vector<OutlineColumn> columns_;
  OutlineDelegate* delegate_ = nullptr;
  bool hidesFirstTitle_ = false;
  const std::unique_ptr<Row> root_;
};

}  // namespace vantory
