// Feeds arbitrary bytes to all that reads settings: as a backup's they name no item beyond the catalog, and where one
// of them is changed they can be read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "backups/QWBackup.h"
#include "backups/QWDataController.h"
#include "base/PropertyList.h"
#include "platform/posix/files/SettingsText.h"
#include "services/Runtime.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/LockableFiles.h"

namespace {

using namespace vantory;

void require(bool condition) {
  if (!condition) std::abort();
}

// Every file holds the same.
class SameFiles : public test::LockableFiles {
 public:
  using LockableFiles::LockableFiles;
  Result<std::string> read(const std::string&) const override { return content; }

  std::string content;
};

struct Machine {
  Machine() {
    for (const char* name : {"Editor", "Player"}) {
      const auto app = QWApp::appWithName(name, "", "com.example");
      for (const bool hasAvidUsers : {true, false})
        app->addItem(std::make_shared<QWPrefItem>(hasAvidUsers ? "Preferences" : "Layouts", "key", true,
                                                  std::vector<std::string>{"/nowhere"}, hasAvidUsers));
      catalog.push_back(app);
    }
    QWDataController::sharedController().setAppArray(catalog);
  }

  test::FakeLocks locks;
  SameFiles files{locks};
  test::FakePlatform fakes{files, locks, "/nowhere", "/nowhere/anna"};
  Runtime runtime{fakes.platform};
  AppList catalog;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static Machine machine;
  machine.files.content.assign(reinterpret_cast<const char*>(bytes), size);
  const auto backup = QWBackup::backupWithFile("/nowhere/Clean.vnt");
  require(backup->children().size() <= 2);
  for (const auto& app : backup->children()) require(!app->children().empty() && app->children().size() <= 2);

  const auto changed = withSetting(machine.files.content, "requireAdmin", 1, "/nowhere");
  if (!changed) return 0;
  const auto again = withSetting(*changed, "requireAdmin", 1, "/nowhere");
  require(again && *again == *changed);
  return 0;
}
