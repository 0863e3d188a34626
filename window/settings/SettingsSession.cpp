// Makes the window when it is first wanted.
#include "window/settings/SettingsSession.h"

#include "services/settings/SettingsKeys.h"
#include "window/dialogs/QtFileChooser.h"

namespace vantory {

// Window and controller, which stay once they have been made.
struct SettingsSession::Parts {
  Parts(QWidget* parent, PreferenceDelegate* delegate) : window(parent), controller({window, chooser, delegate}) {
    window.setActions({.choosePane = [this](PreferencePane pane) { choose(pane); },
                       .setBackupPath = [this](const std::string& path) { controller.setBackupPath(path); },
                       .browse = [this] { controller.browse(); },
                       .changeValue = [this](const std::string& key, long long value) { change(key, value); },
                       .changeHandlerToVantory = [this] { controller.changeHandlerToVantory(); },
                       .changeHandlerToFCS = [this] { controller.changeHandlerToFCS(); },
                       .activated = [this] { controller.refresh(); },
                       .closed = [this] { controller.windowWillClose(); }});
  }

  void choose(PreferencePane pane) {
    switch (pane) {
      case PreferencePane::General:
        return controller.toolbarGeneral();
      case PreferencePane::Autosave:
        return controller.toolbarAutosave();
      case PreferencePane::ProjectHandling:
        return controller.toolbarProjectHandling();
      case PreferencePane::Hotkeys:
        return controller.toolbarHotkeys();
    }
  }

  // The administrator's setting is one of the machine's and takes a password.
  void change(const std::string& key, long long value) {
    if (key == setting::kRequireAdministrator) return controller.prefsToggleAdminPass(value == 1);
    controller.changeValue(key, value);
  }

  SettingsWindow window;
  QtFileChooser chooser{&window};
  QWPreferenceController controller;
};

SettingsSession::SettingsSession(QWidget* parent, PreferenceDelegate* delegate)
    : parent_(parent), delegate_(delegate) {}

SettingsSession::~SettingsSession() = default;

// One that is open already only comes to the front.
void SettingsSession::show() {
  if (!parts_) parts_ = std::make_unique<Parts>(parent_, delegate_);
  if (parts_->window.isVisible()) return parts_->window.bringToFront();
  parts_->controller.awakeFromNib();
}

// A window that is closed reads everything anew when it is shown.
void SettingsSession::refresh() {
  if (window()) parts_->controller.refresh();
}

void SettingsSession::close() {
  if (SettingsWindow* open = window()) open->close();
}

SettingsWindow* SettingsSession::window() const {
  return parts_ && parts_->window.isVisible() ? &parts_->window : nullptr;
}

}  // namespace vantory
