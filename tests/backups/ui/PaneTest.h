// What the tests of the panes stand on: a library, parts of a window, and a person who answers.
#pragma once

#include <string>
#include <vector>

#include "backups/ui/CatalogRows.h"
#include "backups/ui/PaneSwitcher.h"
#include "tests/backups/BackupsTest.h"
#include "tests/backups/ui/FakeViews.h"
#include "tests/services/PersonAtWindow.h"

namespace vantory::test {

class PaneTest : public BackupsTest, protected PersonAtWindow, protected PaneSwitcher {
 protected:
  PaneTest() : PersonAtWindow(runtime_) {}
  ~PaneTest() override { finishWork(); }

  void toolbarBackup() override { shownPanes_.push_back("Backup"); }
  void toolbarRestore() override { shownPanes_.push_back("Restore"); }

  // Two applications: one with preferences and layouts, one with two Avid users.
  void setTwoApps() {
    writeFile(prefs("editor.plist"), "preferences");
    writeFile(prefs("editor.layout"), "layout");
    editor_ = QWApp::appWithName("Editor", "editor.png", "com.example.Editor");
    editor_->addItemWithName("Preferences", "editorPrefs", true, {prefs("editor.plist")});
    editor_->addItemWithName("Layouts", "editorLayouts", true, {prefs("editor.layout")});
    avid_ = QWApp::appWithName("Avid Media Composer", "avid.png", "com.example.Avid");
    avidItem_ = std::make_shared<QWPrefItem>("Preferences", "avidPrefs", false, std::vector<std::string>(), true);
    avid_->addItem(avidItem_);
    for (const char* name : {"anna", "ben"}) {
      writeFile(avidFile(name), name);
      auto user = std::make_shared<QWPrefItem>(name, std::string("avidPrefUser") + name, true,
                                               std::vector<std::string>{avidFile(name)});
      user->setSelected(On);
      avidItem_->addUser(user);
    }
    avid_->updateSelectionStatus();
    controller().setAppArray({editor_, avid_});
  }

  // The row by which a pane shows the record; null when it shows none.
  static OutlineItemPointer rowOf(OutlineDelegate& pane, const RecordRow::Record& record,
                                  const OutlineItemPointer& under = nullptr) {
    for (const OutlineItemPointer& row : pane.childrenOfItem(under)) {
      if (dynamic_cast<const RecordRow&>(*row).record() == record) return row;
      if (const auto below = rowOf(pane, record, row)) return below;
    }
    return nullptr;
  }

  // The library's record of the backup; none when there is none.
  std::shared_ptr<QWBackup> listed(const std::string& name) {
    for (const auto& node : controller().backupArray())
      if (node->name() == name) return std::dynamic_pointer_cast<QWBackup>(node);
    return nullptr;
  }

  std::string avidFile(const std::string& user) const {
    return machine_ / ("Users/Shared/AvidMediaComposer/Avid Users/" + user + "/MCState");
  }

  std::shared_ptr<QWApp> editor_;
  std::shared_ptr<QWApp> avid_;
  std::shared_ptr<QWPrefItem> avidItem_;

  FakeOutline outline_;
  FakeButton button_;
  FakeBusyIndicator spinner_;
  std::vector<std::string> shownPanes_;
};

}  // namespace vantory::test
