// The table of commands and their shortcuts.
#pragma once

#include <QTreeView>
#include <functional>
#include <memory>

#include "settings/ui/ShortcutViews.h"

namespace vantory {

class QWShortcutKeyFieldEditor;
class QWShortcutKeyTableDelegate;

// Return on a row, or a double click, edits its shortcut; Delete clears it.
class QWShortcutKeyTableview : public QTreeView, public ShortcutTable {
 public:
  // The delegate outlives it.
  explicit QWShortcutKeyTableview(QWShortcutKeyTableDelegate& delegate);
  ~QWShortcutKeyTableview() override;

  std::function<void(bool missing)> onManagerMissing;
  std::function<void()> onSelectionChange;

  void editShortcut();

  void reloadData() override;
  int selectedRow() const override;
  void endEditing() override;
  void setManagerMissing(bool missing) override;
  ShortcutFieldEditor& fieldEditor() override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  class Model;
  class Cells;

  QWShortcutKeyTableDelegate& delegate_;
  const std::unique_ptr<Model> model_;
  const std::unique_ptr<Cells> cells_;
  QWShortcutKeyFieldEditor* const editor_;
};

}  // namespace vantory
