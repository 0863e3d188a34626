// Fills the table from its delegate.
#include "window/settings/QWShortcutKeyTableview.h"

#include <QAbstractTableModel>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyledItemDelegate>

#include "settings/ui/QWShortcutKeyTableDelegate.h"
#include "window/appearance/DisplayText.h"
#include "window/settings/QWShortcutKeyFieldEditor.h"

namespace vantory {

namespace {

constexpr const char* kColumns[] = {"description", "shortcutkey"};
constexpr int kShortcutColumn = 1;
constexpr int kRowPadding = 8;

}  // namespace

// The commands with their shortcuts, of which only the shortcuts can be edited.
class QWShortcutKeyTableview::Model : public QAbstractTableModel {
 public:
  explicit Model(const QWShortcutKeyTableDelegate& delegate) : delegate_(delegate) {}

  int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : rows_; }
  int columnCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : 2; }

  QVariant data(const QModelIndex& index, int role) const override {
    if (role == Qt::SizeHintRole) return QSize(0, QFontMetrics(QFont()).height() + kRowPadding);
    if (role != Qt::DisplayRole) return {};
    return displayText(
        delegate_.objectValueForTableColumn(kColumns[index.column()], static_cast<std::size_t>(index.row())));
  }

  QVariant headerData(int section, Qt::Orientation, int role) const override {
    if (role != Qt::DisplayRole) return {};
    return section == kShortcutColumn ? QStringLiteral("Shortcut") : QStringLiteral("Command");
  }

  Qt::ItemFlags flags(const QModelIndex& index) const override {
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index) | Qt::ItemNeverHasChildren;
    return index.column() == kShortcutColumn ? flags | Qt::ItemIsEditable : flags;
  }

  // Rows of the same number are only painted anew, so that what is selected stays so.
  void reload() {
    const int rows = static_cast<int>(delegate_.numberOfRows());
    if (rows == rows_) {
      if (rows > 0) emit dataChanged(index(0, 0), index(rows - 1, kShortcutColumn));
      return;
    }
    beginResetModel();
    rows_ = rows;
    endResetModel();
  }

 private:
  const QWShortcutKeyTableDelegate& delegate_;
  int rows_ = 0;
};

// Lends the cells the one editor that captures keys.
class QWShortcutKeyTableview::Cells : public QStyledItemDelegate {
 public:
  Cells(QWShortcutKeyTableview& table, QWShortcutKeyTableDelegate& delegate) : table_(table), delegate_(delegate) {}

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&, const QModelIndex&) const override {
    if (!delegate_.windowWillReturnFieldEditor(&table_)) return nullptr;
    table_.editor_->setParent(parent);
    return table_.editor_;
  }
  // There is one editor, which is kept.
  void destroyEditor(QWidget* editor, const QModelIndex&) const override { editor->hide(); }
  void setEditorData(QWidget*, const QModelIndex&) const override {}
  void setModelData(QWidget*, QAbstractItemModel*, const QModelIndex&) const override {}

 protected:
  // All keys are the editor's.
  bool eventFilter(QObject* editor, QEvent* event) override {
    return event->type() == QEvent::FocusOut && QStyledItemDelegate::eventFilter(editor, event);
  }

 private:
  QWShortcutKeyTableview& table_;
  QWShortcutKeyTableDelegate& delegate_;
};

QWShortcutKeyTableview::QWShortcutKeyTableview(QWShortcutKeyTableDelegate& delegate)
    : delegate_(delegate),
      model_(std::make_unique<Model>(delegate)),
      cells_(std::make_unique<Cells>(*this, delegate)),
      editor_(new QWShortcutKeyFieldEditor(viewport())) {
  editor_->hide();
  editor_->onLeave = [this] { endEditing(); };
  setAccessibleName(QStringLiteral("Shortcuts"));
  setModel(model_.get());
  setItemDelegate(cells_.get());
  setRootIsDecorated(false);
  setUniformRowHeights(true);
  setAlternatingRowColors(true);
  setAllColumnsShowFocus(true);
  setEditTriggers(NoEditTriggers);
  setTabKeyNavigation(false);
  header()->setStretchLastSection(false);
  header()->setSectionResizeMode(0, QHeaderView::Stretch);
  header()->setSectionResizeMode(kShortcutColumn, QHeaderView::Fixed);
  header()->setSectionsMovable(false);
  header()->resizeSection(kShortcutColumn,
                          fontMetrics().horizontalAdvance(QStringLiteral("Ctrl+Shift+Alt+Cmd+F12")) + 24);
  connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    if (onSelectionChange) onSelectionChange();
  });
  delegate.setTable(this);
}

// The delegate lives on, and must not tell a table that has gone.
QWShortcutKeyTableview::~QWShortcutKeyTableview() {
  delegate_.setTable(nullptr);
  setModel(nullptr);
  setItemDelegate(nullptr);
}

void QWShortcutKeyTableview::reloadData() {
  model_->reload();
  if (onSelectionChange) onSelectionChange();
}

int QWShortcutKeyTableview::selectedRow() const {
  const QModelIndexList rows = selectionModel()->selectedRows();
  return rows.isEmpty() ? -1 : rows.first().row();
}

void QWShortcutKeyTableview::editShortcut() {
  const int row = selectedRow();
  if (row < 0) return;
  setFocus();
  edit(model_->index(row, kShortcutColumn));
}

// What was captured has been handed on already.
void QWShortcutKeyTableview::endEditing() {
  if (editor_->isVisible()) closeEditor(editor_, QAbstractItemDelegate::NoHint);
}

// Shortcuts that nobody listens for cannot be set.
void QWShortcutKeyTableview::setManagerMissing(bool missing) {
  setEnabled(!missing);
  if (onManagerMissing) onManagerMissing(missing);
}

ShortcutFieldEditor& QWShortcutKeyTableview::fieldEditor() {
  return *editor_;
}

// Other keys than these do not begin to edit, so that a letter still finds its row.
void QWShortcutKeyTableview::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_F2:
      return editShortcut();
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
      return delegate_.clearShortcutKey();
    default:
      QTreeView::keyPressEvent(event);
  }
}

void QWShortcutKeyTableview::mouseDoubleClickEvent(QMouseEvent* event) {
  if (indexAt(event->pos()).isValid()) editShortcut();
}

}  // namespace vantory
