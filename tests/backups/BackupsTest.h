// What the tests of backups stand on.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "backups/QWDataController.h"
#include "platform/linux/LinuxFileMetadata.h"
#include "platform/linux/LinuxFileSystem.h"
#include "services/QWLog.h"
#include "services/Runtime.h"
#include "services/Text.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Nothing waits for the disk to be written.
class HastyFileSystem : public LinuxFileSystem {
 public:
  Status sync(const std::string&) override { return {}; }
};

// The real disk below a scratch home, everything else faked.
class BackupsTest : public testing::Test {
 protected:
  BackupsTest() { QWLog::createNewLog("Test"); }

  // The messages logged so far, without their dates.
  std::vector<std::string> logged() const {
    QWLog::finishWriting();
    std::vector<std::string> messages;
    for (const std::string& line : split(readFile(home_ / "Library/Logs/Quarrywell/Test.1.log"), '\n'))
      if (const auto dash = line.find(" - "); dash != std::string::npos) messages.push_back(line.substr(dash + 3));
    return messages;
  }

  std::string prefs(const std::string& name) const { return home_ / ("Library/Preferences/" + name); }
  std::string library() const { return home_ / "Library/Application Support/Quarrywell/Vantory/Backups"; }
  std::string inLibrary(const std::string& name) const { return library() + "/" + name; }
  std::string inTrash(const std::string& name) const { return home_ / (".local/share/Trash/files/" + name); }

  // Makes a catalog of one application, "Editor".
  void setCatalog(const std::map<std::string, std::vector<std::string>>& items) {
    const auto app = QWApp::appWithName("Editor", "", "com.example.Editor");
    for (const auto& [name, files] : items) app->addItemWithName(name, "key" + name, true, files);
    controller().setAppArray({app});
  }
  // With one item that owns one file.
  void setSmallCatalog(const std::string& content) {
    writeFile(prefs("editor.plist"), content);
    setCatalog({{"Preferences", {prefs("editor.plist")}}});
  }

  QWDataController& controller() { return QWDataController::sharedController(); }
  // A backup of the whole catalog, not yet written.
  std::shared_ptr<QWBackup> backupOfAll(const std::string& name) {
    AppList apps;
    for (const auto& app : controller().appArray()) apps.push_back(app->copy());
    return QWBackup::backupWithName(name, std::nullopt, apps);
  }

  ScratchFolder home_;
  ScratchFolder machine_;
  HastyFileSystem disk_;
  FaultyFileSystem files_{disk_};
  LinuxFileMetadata metadata_;
  FakePlatform fake_{files_, metadata_, machine_.path(), home_.path()};
  Runtime runtime_{fake_.platform};
};

}  // namespace vantory::test
