// What the tests of backups stand on.
#pragma once

#include <filesystem>
#include <map>

#include "backups/QWDataController.h"
#include "tests/catalog/CatalogFixture.h"

namespace vantory::test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class BackupsTest : public CatalogTest {
 protected:
  std::string prefs(const std::string& name) const { return home_ / ("Library/Preferences/" + name); }
  std::string library() const { return home_ / "Library/Application Support/Quarrywell/Vantory/Backups"; }
  std::string inLibrary(const std::string& name) const { return library() + "/" + name; }

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
};

}  // namespace vantory::test
