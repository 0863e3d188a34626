// The settings window: a toolbar, and one of four panes below it.
#pragma once

#include <QMainWindow>
#include <array>
#include <functional>
#include <string>

#include "settings/ui/PreferenceView.h"
#include "window/controls/BoundControls.h"

class QStackedWidget;

namespace vantory {

class GeneralPane;
class PaneToolbar;
class ProjectHandlingPane;

class SettingsWindow : public QMainWindow, public PreferenceView {
 public:
  explicit SettingsWindow(QWidget* parent);

  // What the person asked for, and what happened to the window.
  struct Actions {
    std::function<void(PreferencePane)> choosePane;
    std::function<void(const std::string& path)> setBackupPath;
    std::function<void()> browse;
    std::function<void(const std::string& key, long long value)> changeValue;
    std::function<void()> changeHandlerToVantory;
    std::function<void()> changeHandlerToFCS;
    std::function<void()> activated;
    std::function<void()> closed;
  };
  void setActions(Actions actions);

  void showPane(PreferencePane pane) override;
  void bringToFront() override;
  void setBackupPath(const std::string& path) override;
  void setBackupRemark(const std::string& text) override;
  void setValue(const std::string& key, long long value) override;
  void setHandlerStatus(const HandlerStatus& status) override;
  void doBehindSheet(const std::string& label, const std::function<void()>& work) override;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void makeToolbar();
  void leave();

  Actions actions_;
  BoundControls controls_;
  GeneralPane* const general_;
  ProjectHandlingPane* const projectHandling_;
  QStackedWidget* const stack_;
  PaneToolbar* const toolbar_;
};

}  // namespace vantory
