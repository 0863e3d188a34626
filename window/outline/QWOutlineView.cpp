// Keeps selection, open rows and sorting through a reload.
#include "window/outline/QWOutlineView.h"

#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMouseEvent>
#include <QScrollBar>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "window/appearance/DisplayText.h"
#include "window/outline/OutlineCellPainter.h"
#include "window/outline/OutlineTree.h"
#include "window/outline/QWHeaderCheckCell.h"

namespace vantory {

namespace {

constexpr int kIconSize = 20;
constexpr int kIndentation = 20;
constexpr int kRemarkMargin = 10;
constexpr int kHeaderMargin = 14;  // above and below its text

}  // namespace

QWOutlineView::QWOutlineView(std::vector<OutlineColumn> columns, const QString& accessibleName)
    : model_(std::move(columns)),
      tree_(new OutlineTree(this)),
      headerCheck_(new QWHeaderCheckCell(this)),
      emptyLabel_(new QLabel(this)),
      remark_(new QLabel(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  remark_->setWordWrap(true);
  remark_->setMargin(kRemarkMargin);
  remark_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  remark_->hide();
  layout->addWidget(remark_);
  layout->addWidget(tree_);
  setFocusProxy(tree_);
  tree_->setModel(&model_);
  tree_->setItemDelegate(new OutlineCellPainter(tree_));
  tree_->setIconSize({kIconSize, kIconSize});
  tree_->setIndentation(kIndentation);
  tree_->setAccessibleName(accessibleName);
  emptyLabel_->setWordWrap(true);
  emptyLabel_->setAlignment(Qt::AlignCenter);
  emptyLabel_->setAttribute(Qt::WA_TransparentForMouseEvents);
  emptyLabel_->hide();
  headerCheck_->hide();
  layOutColumns();
  connectTree();
}

// Nothing may ask the delegate any more while the tree is taken down.
QWOutlineView::~QWOutlineView() {
  setDelegate(nullptr, nullptr);
}

void QWOutlineView::connectTree() {
  tree_->onKeyUp = [this](OutlineKey key) { return actions_ && actions_->keyUp(key); };
  tree_->onKeyDown = [this](QChar key) { return performWatchKey(key); };
  tree_->onDoubleClick = [this] {
    if (actions_) actions_->doubleClick();
  };
  headerCheck_->onClick = [this] {
    if (actions_) actions_->mouseDownInHeaderOfTableColumn(model_.columns().front().identifier);
  };
  connect(tree_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] { noticeSelection(); });
  connect(tree_->header(), &QHeaderView::sectionClicked, this, [this](int section) {
    if (actions_) actions_->didClickTableColumn(model_.columns()[static_cast<std::size_t>(section)].identifier);
  });
  connect(tree_->header(), &QHeaderView::sectionResized, this, [this] { placeOverlays(); });
  tree_->header()->viewport()->installEventFilter(this);
  tree_->viewport()->installEventFilter(this);
}

void QWOutlineView::setDelegate(OutlineDelegate* delegate, OutlineActions* actions) {
  actions_ = actions;
  noticed_ = nullptr;
  model_.setDelegate(delegate);
  placeOverlays();
}

// --- Columns and what lies over the tree -----------------------------------------------------------------------------

// The first column takes what the others leave.
void QWOutlineView::layOutColumns() {
  QHeaderView& header = *tree_->header();
  header.setStretchLastSection(false);
  header.setSectionsMovable(false);
  header.setMinimumSectionSize(60);
  header.setDefaultAlignment(Qt::AlignVCenter | Qt::AlignLeading);
  header.setFixedHeight(header.fontMetrics().height() + kHeaderMargin);
  header.setSectionResizeMode(0, QHeaderView::Stretch);
  for (int column = 1; column < model_.columnCount(); ++column)
    header.resizeSection(column, model_.columns()[static_cast<std::size_t>(column)].width);
}

void QWOutlineView::showHeaderCheck() {
  headerCheck_->setText(model_.columns().front().title);
  model_.hideFirstTitle();
  headerCheck_->show();
  setTabOrder(headerCheck_, tree_);
  placeOverlays();
}

void QWOutlineView::showSortIndicators() {
  tree_->header()->setSectionsClickable(true);
}

void QWOutlineView::setEmptyText(const QString& noRows, std::function<QString()> oneClosedRow) {
  noRowsText_ = noRows;
  oneClosedRowText_ = std::move(oneClosedRow);
  placeOverlays();
}

// Of one row that cannot be opened the text says what is missing below it.
QString QWOutlineView::emptyText() const {
  const int rows = model_.rowCount();
  if (rows == 0) return noRowsText_;
  const bool isClosed = rows == 1 && !model_.hasChildren(model_.index(0, 0));
  return isClosed && oneClosedRowText_ ? oneClosedRowText_() : QString();
}

void QWOutlineView::setMenu(QMenu* menu) {
  tree_->menu = menu;
}

// The check box stands over the header, the text over the empty tree; both follow every change of size.
void QWOutlineView::placeOverlays() {
  QHeaderView& header = *tree_->header();
  const QPoint corner = header.viewport()->mapTo(this, QPoint(header.sectionViewportPosition(0), 0));
  const int margin = kIndentation + style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 1;  // above the rows' boxes
  const QSize size = headerCheck_->sizeHint().boundedTo({header.sectionSize(0) - margin, header.height()});
  headerCheck_->setGeometry({corner + QPoint(margin, (header.height() - size.height()) / 2), size});
  const QPoint origin = tree_->viewport()->mapTo(this, QPoint());
  emptyLabel_->setGeometry(QRect(origin, tree_->viewport()->size()).adjusted(40, 20, -40, -20));
  emptyLabel_->setText(emptyText());
  emptyLabel_->setVisible(!emptyLabel_->text().isEmpty());
}

void QWOutlineView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  placeOverlays();
}

void QWOutlineView::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) placeOverlays();
}

// A click anywhere in the header of the check boxes' column counts.
bool QWOutlineView::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Resize) placeOverlays();
  if (watched == tree_->header()->viewport() && event->type() == QEvent::MouseButtonPress &&
      !headerCheck_->isHidden()) {
    const auto& press = static_cast<const QMouseEvent&>(*event);
    const QHeaderView& header = *tree_->header();
    const int x = static_cast<int>(press.position().x());
    // A press within four pixels of the border widens the column.
    const bool onBorder = header.logicalIndexAt(x + 4) != 0;
    if (press.button() == Qt::LeftButton && header.logicalIndexAt(x) == 0 && !onBorder) headerCheck_->onClick();
  }
  return QWidget::eventFilter(watched, event);
}

QByteArray QWOutlineView::layoutState() const {
  return tree_->header()->saveState();
}

void QWOutlineView::restoreLayoutState(const QByteArray& state) {
  tree_->header()->restoreState(state);
}

// --- Keys ------------------------------------------------------------------------------------------------------------

void QWOutlineView::addWatchKeys(const QString& keys, const std::string& selector) {
  for (const QChar key : keys) watchKeys_.push_back({key, selector});
}

// The entries of a key are tried in turn.
bool QWOutlineView::performWatchKey(QChar key) {
  for (const WatchKey& watched : watchKeys_) {
    if (watched.keycode != key) continue;
    if (watchDelegate && watchDelegate(watched.selector)) return true;
    if (reportMissing) reportMissing(watched.selector);
  }
  return false;
}

void QWOutlineView::editSelectedRow() {
  const QModelIndex row = tree_->currentIndex().siblingAtColumn(0);
  if (row.isValid() && (row.flags() & Qt::ItemIsEditable)) tree_->edit(row);
}

// --- Rows ------------------------------------------------------------------------------------------------------------

// A row that was never opened is not asked for what is below it.
void QWOutlineView::noteOpenRows(const QModelIndex& parent, std::set<std::string>& open) const {
  if (!model_.hasBeenOpened(parent)) return;
  for (int i = 0; i < model_.rowCount(parent); ++i) {
    const QModelIndex row = model_.index(i, 0, parent);
    if (!tree_->isExpanded(row)) continue;
    open.insert(model_.item(row)->identity());
    noteOpenRows(row, open);
  }
}

// Rows that have gone are passed over.
void QWOutlineView::openAgain(const QModelIndex& parent, const std::set<std::string>& open) {
  for (int i = 0; i < model_.rowCount(parent); ++i) {
    const QModelIndex row = model_.index(i, 0, parent);
    if (!open.contains(model_.item(row)->identity())) continue;
    tree_->expand(row);
    openAgain(row, open);
  }
}

// Among the rows that are in sight, or would be after scrolling.
QModelIndex QWOutlineView::findOpen(const QModelIndex& parent, const std::string& identity) const {
  for (int i = 0; i < model_.rowCount(parent); ++i) {
    const QModelIndex row = model_.index(i, 0, parent);
    if (model_.item(row)->identity() == identity) return row;
    if (!tree_->isExpanded(row)) continue;
    if (const QModelIndex below = findOpen(row, identity); below.isValid()) return below;
  }
  return {};
}

// Open rows, selection and scrolling are noted, and found again by the identities of the rows.
void QWOutlineView::reloadData() {
  std::set<std::string> open;
  noteOpenRows({}, open);
  const OutlineItemPointer selected = selectedItem();
  const int scrolled = tree_->verticalScrollBar()->value();
  reloading_ = true;
  model_.reloadData();
  openAgain({}, open);
  if (selected) tree_->setCurrentIndex(findOpen({}, selected->identity()));
  tree_->verticalScrollBar()->setValue(scrolled);
  reloading_ = false;
  noticeSelection();
  placeOverlays();
}

void QWOutlineView::reloadItem(const OutlineItemPointer& item, bool reloadChildren) {
  if (!item) return reloadData();
  model_.reloadItem(item, reloadChildren);
}

void QWOutlineView::setHeaderState(State state) {
  headerCheck_->setState(state);
}

void QWOutlineView::setSortIndicator(const std::string& column, SortIndicator indicator) {
  const auto& columns = model_.columns();
  const auto found =
      std::find_if(columns.begin(), columns.end(), [&](const auto& c) { return c.identifier == column; });
  const bool shown = found != columns.end() && indicator != SortIndicator::None;
  QHeaderView& header = *tree_->header();
  header.setSortIndicatorShown(shown);
  if (shown)
    header.setSortIndicator(static_cast<int>(found - columns.begin()),
                            indicator == SortIndicator::Ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
}

void QWOutlineView::setRemark(const std::string& text) {
  remark_->setText(displayText(text));
  remark_->setVisible(!text.empty());
  tree_->setAccessibleDescription(remark_->text());
}

OutlineItemPointer QWOutlineView::selectedItem() const {
  const QModelIndexList rows = tree_->selectionModel()->selectedRows();
  return rows.isEmpty() ? nullptr : model_.item(rows.front());
}

// Opens the rows above it; an item that is not there leaves nothing selected.
void QWOutlineView::selectItem(const OutlineItemPointer& item) {
  const QModelIndex row = model_.indexOf(item);
  if (!row.isValid()) return tree_->selectionModel()->clear();
  for (QModelIndex above = row.parent(); above.isValid(); above = above.parent()) tree_->expand(above);
  tree_->setCurrentIndex(row);
  tree_->scrollTo(row);
}

void QWOutlineView::collapseAll() {
  tree_->collapseAll();
}

// While rows are replaced the selection comes and goes; only what remains of it counts.
void QWOutlineView::noticeSelection() {
  const OutlineItemPointer item = selectedItem();
  if (reloading_ || item == noticed_) return;
  noticed_ = item;
  if (actions_) actions_->selectionDidChange();
  if (onSelectionChange) onSelectionChange();
}

}  // namespace vantory
