// Asks the delegate for rows when they are needed.
#include "window/outline/OutlineModel.h"

#include <QDateTime>
#include <QFont>
#include <QLocale>
#include <QTimer>
#include <algorithm>
#include <utility>

#include "window/appearance/DisplayText.h"
#include "window/appearance/Icons.h"

namespace vantory {

// A row that Qt may hold an index of. Its children are there once it was opened.
struct OutlineModel::Row {
  OutlineItemPointer item;
  Row* parent = nullptr;
  int position = 0;
  bool opened = false;
  std::vector<std::unique_ptr<Row>> rows = {};
};

namespace {

Qt::CheckState checkState(State state) {
  if (state == Mixed) return Qt::PartiallyChecked;
  return state == On ? Qt::Checked : Qt::Unchecked;
}

QString stateInWords(State state) {
  if (state == Mixed) return QStringLiteral("partly ticked");
  return state == On ? QStringLiteral("ticked") : QStringLiteral("not ticked");
}

// Dates in short, as the person's language has them; beside a check box its title.
QString cellText(const ObjectValue& value, const OutlineCell& cell) {
  if (const auto* date = std::get_if<Timestamp>(&value))
    return QLocale().toString(QDateTime::fromSecsSinceEpoch(date->seconds), QLocale::ShortFormat);
  const auto* text = std::get_if<std::string>(&value);
  return displayText(text ? *text : cell.title);
}

QFont emphasizedFont() {
  QFont font;
  font.setBold(true);
  return font;
}

}  // namespace

OutlineModel::OutlineModel(std::vector<OutlineColumn> columns)
    : columns_(std::move(columns)), root_(std::make_unique<Row>()) {}

OutlineModel::~OutlineModel() = default;

// All rows go: they were the last delegate's.
void OutlineModel::setDelegate(OutlineDelegate* delegate) {
  beginResetModel();
  delegate_ = delegate;
  *root_ = {};
  endResetModel();
}

void OutlineModel::reloadData() {
  beginResetModel();
  *root_ = {};
  endResetModel();
}

// --- Rows ------------------------------------------------------------------------------------------------------------

// An index that is not valid is the root's.
OutlineModel::Row& OutlineModel::rowAt(const QModelIndex& index) const {
  return index.isValid() ? *static_cast<Row*>(index.internalPointer()) : *root_;
}

QModelIndex OutlineModel::indexOfRow(Row& row, int column) const {
  return &row == root_.get() ? QModelIndex() : createIndex(row.position, column, &row);
}

std::vector<OutlineItemPointer> OutlineModel::askForChildren(const OutlineItemPointer& item) const {
  if (!delegate_ || (item && !delegate_->isItemExpandable(item))) return {};
  return delegate_->childrenOfItem(item);
}

// Const for Qt's questions: to be asked is what opens a row.
void OutlineModel::open(Row& row) const {
  if (row.opened) return;
  row.opened = true;
  for (OutlineItemPointer& item : askForChildren(row.item)) {
    const int position = static_cast<int>(row.rows.size());
    row.rows.push_back(std::make_unique<Row>(Row{std::move(item), &row, position}));
  }
}

OutlineItemPointer OutlineModel::item(const QModelIndex& index) const {
  return rowAt(index).item;
}

bool OutlineModel::hasBeenOpened(const QModelIndex& index) const {
  return rowAt(index).opened;
}

QModelIndex OutlineModel::indexOf(const OutlineItemPointer& item) const {
  if (!item) return {};
  Row* row = find({root_.get()}, item->identity(), Search::EveryRow);
  return row ? indexOfRow(*row) : QModelIndex();
}

// Level by level, since what is looked for lies near the top as a rule.
OutlineModel::Row* OutlineModel::find(const std::vector<Row*>& level, const std::string& identity,
                                      Search search) const {
  std::vector<Row*> below;
  for (Row* row : level) {
    if (search == Search::EveryRow) open(*row);
    for (const auto& child : row->rows) {
      if (child->item->identity() == identity) return child.get();
      below.push_back(child.get());
    }
  }
  return below.empty() ? nullptr : find(below, identity, search);
}

// A row that was never opened is asked for when it is.
void OutlineModel::reloadItem(const OutlineItemPointer& item, bool reloadChildren) {
  if (!item) return reloadData();
  Row* row = find({root_.get()}, item->identity(), Search::OpenedRows);
  if (!row) return;
  redraw(*row);
  if (reloadChildren) replaceChildren(*row);
}

void OutlineModel::redraw(Row& row) {
  emit dataChanged(indexOfRow(row), indexOfRow(row, columnCount() - 1));
}

// Rows that are the same as before stay open and selected.
void OutlineModel::replaceChildren(Row& row) {
  if (!row.opened) return;
  const std::vector<OutlineItemPointer> children = askForChildren(row.item);
  const bool same =
      std::equal(children.begin(), children.end(), row.rows.begin(), row.rows.end(),
                 [](const auto& child, const auto& old) { return child->identity() == old->item->identity(); });
  if (same) {
    for (std::size_t i = 0; i < children.size(); ++i) {
      row.rows[i]->item = children[i];
      redraw(*row.rows[i]);
      replaceChildren(*row.rows[i]);
    }
    return;
  }
  if (!row.rows.empty()) {
    beginRemoveRows(indexOfRow(row), 0, static_cast<int>(row.rows.size()) - 1);
    row.rows.clear();
    endRemoveRows();
  }
  if (children.empty()) return;
  beginInsertRows(indexOfRow(row), 0, static_cast<int>(children.size()) - 1);
  row.opened = false;
  open(row);
  endInsertRows();
}

// --- What Qt asks ----------------------------------------------------------------------------------------------------

QModelIndex OutlineModel::index(int row, int column, const QModelIndex& parent) const {
  if (row < 0 || column < 0 || column >= columnCount() || row >= rowCount(parent)) return {};
  return createIndex(row, column, rowAt(parent).rows[static_cast<std::size_t>(row)].get());
}

QModelIndex OutlineModel::parent(const QModelIndex& index) const {
  return index.isValid() ? indexOfRow(*rowAt(index).parent) : QModelIndex();
}

// Below other columns than the first there are no rows, as Qt wants it of a tree.
int OutlineModel::rowCount(const QModelIndex& parent) const {
  if (parent.column() > 0) return 0;
  Row& row = rowAt(parent);
  open(row);
  return static_cast<int>(row.rows.size());
}

int OutlineModel::columnCount(const QModelIndex&) const {
  return static_cast<int>(columns_.size());
}

// Does not open the row: a triangle must not cost the reading of what is below it.
bool OutlineModel::hasChildren(const QModelIndex& parent) const {
  if (!delegate_ || parent.column() > 0) return false;
  return parent.isValid() ? delegate_->isItemExpandable(item(parent)) : rowCount() > 0;
}

const std::string& OutlineModel::columnIdentifier(const QModelIndex& index) const {
  return columns_[static_cast<std::size_t>(index.column())].identifier;
}

QVariant OutlineModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || !delegate_) return {};
  if (role == Qt::TextAlignmentRole)
    return QVariant::fromValue(columns_[static_cast<std::size_t>(index.column())].alignment | Qt::AlignVCenter);
  const OutlineItemPointer& item = rowAt(index).item;
  const ObjectValue value = delegate_->objectValueForTableColumn(columnIdentifier(index), item);
  const auto* state = std::get_if<State>(&value);
  if (role == Qt::CheckStateRole) return state ? QVariant(checkState(*state)) : QVariant();

  OutlineCell cell;
  delegate_->willDisplayCell(cell, columnIdentifier(index), item);
  switch (role) {
    case Qt::DisplayRole:
      return cell.remark.empty() ? cellText(value, cell)
                                 : QStringLiteral("%1 (%2)").arg(cellText(value, cell), displayText(cell.remark));
    case Qt::EditRole:
      return cellText(value, cell);
    case Qt::DecorationRole:
      return cell.icon.empty() ? QVariant() : QVariant(icons::named(cell.icon));
    case Qt::AccessibleDescriptionRole:
      return state && cell.enabled ? QVariant(stateInWords(*state)) : QVariant();
    case Qt::FontRole:
      return cell.emphasized ? QVariant(emphasizedFont()) : QVariant();
    case kEnabledRole:
      return cell.enabled;
    case kDimmedRole:
      return cell.dimmed;
    default:
      return {};
  }
}

// A click on a mixed check box makes it on.
bool OutlineModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (!index.isValid() || !delegate_) return false;
  if (role == Qt::CheckStateRole) {
    const State state = value.toInt() == Qt::Unchecked ? Off : On;
    delegate_->setObjectValue(state, columnIdentifier(index), item(index));
    return true;
  }
  if (role != Qt::EditRole || value.toString() == data(index, Qt::EditRole).toString()) return false;
  // The delegate may have all rows replaced, which the editor that is closing now would not survive.
  QTimer::singleShot(
      0, this, [this, text = value.toString().toStdString(), column = columnIdentifier(index), item = item(index)] {
        if (delegate_) delegate_->setObjectValue(text, column, item);
      });
  return true;
}

// What is drawn as disabled can be selected all the same, but not ticked.
Qt::ItemFlags OutlineModel::flags(const QModelIndex& index) const {
  if (!index.isValid() || !delegate_) return Qt::NoItemFlags;
  OutlineCell cell;
  const OutlineItemPointer& item = rowAt(index).item;
  delegate_->willDisplayCell(cell, columnIdentifier(index), item);
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  if (cell.editable) flags |= Qt::ItemIsEditable;
  const ObjectValue value = delegate_->objectValueForTableColumn(columnIdentifier(index), item);
  if (cell.enabled && std::holds_alternative<State>(value)) flags |= Qt::ItemIsUserCheckable;
  return flags;
}

// A title that is hidden behind the check box is still told to assistive technologies.
QVariant OutlineModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) return {};
  const OutlineColumn& column = columns_[static_cast<std::size_t>(section)];
  if (role == Qt::AccessibleTextRole) return column.title;
  if (role == Qt::DisplayRole) return section == 0 && hidesFirstTitle_ ? QString() : column.title;
  if (role == Qt::TextAlignmentRole) return QVariant::fromValue(column.alignment | Qt::AlignVCenter);
  return {};
}

}  // namespace vantory
