// The main window: a toolbar, one of four panes below it, and the menus.
#pragma once

#include <QMainWindow>
#include <array>
#include <functional>
#include <memory>

#include "tasks/ui/MainWindowView.h"
#include "window/panes/CatalogPanes.h"
#include "window/panes/RestorePane.h"

class QLabel;
class QMenu;
class QStackedWidget;

namespace vantory {

class PaneToolbar;
class WindowMemory;
class WindowMenus;

class MainWindow : public QMainWindow, public MainWindowView {
 public:
  MainWindow();

  TrashPane& trashPane() { return *trash_; }
  BackupPane& backupPane() { return *backup_; }
  LockPane& lockPane() { return *lock_; }
  RestorePane& restorePane() { return *restore_; }
  WindowMenus& menus() { return *menus_; }
  Pane shownPane() const;

  // What the person asked for.
  struct Actions {
    std::function<void(Pane)> choosePane;
    std::function<void()> openLink;
    std::function<void()> openHome;
    std::function<void(const std::string& column)> sort;
    std::function<void(const std::vector<std::string>& paths)> openFiles;
  };
  void setActions(Actions actions) { actions_ = std::move(actions); }
  // Called once the window has been painted for the first time.
  std::function<void()> onFirstPaint;
  // Called when the person turns to the window, or opens its Edit menu.
  std::function<void()> onAttention;
  // Asked when the window is to close.
  std::function<bool()> mayClose;

  // A sentence above the panes and their warning; empty for none.
  void showNotice(const std::string& text);

  void remember(WindowMemory& memory) const;
  void recall(const WindowMemory& memory);

  void showPane(Pane pane) override;
  void removeLinkItem() override;
  void bringToFront() override;
  void showWarning(const std::string& text) override;

 protected:
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  OutlinePane& pane(Pane pane) const;
  void putIntoStack(OutlinePane& pane);
  void makeToolbar();
  void addPaneItem(Pane pane, const QString& title, const QString& symbol);
  void addLinkItem();
  void makeMenus();
  void makeViewMenu();
  void tickAll();
  void showAbout();

  Actions actions_;
  TrashPane* const trash_;
  BackupPane* const backup_;
  LockPane* const lock_;
  RestorePane* const restore_;
  WindowMenus* const menus_;
  QLabel* const notice_;
  QLabel* const warning_;
  QStackedWidget* const stack_;
  PaneToolbar* const toolbar_;
  QAction* linkItem_ = nullptr;
  QAction* tickAll_ = nullptr;
  QAction* sortMenu_ = nullptr;
  QMenu* taskMenu_ = nullptr;
  bool isPainted_ = false;
};

}  // namespace vantory
