// Resolves the built-in table for the user whose files are handled.
#include "catalog/Catalog.h"

#include <optional>
#include <utility>

#include "base/Paths.h"
#include "catalog/BuiltInCatalog.h"
#include "services/QWLocalPaths.h"
#include "services/files/QWFileManager.h"

namespace vantory {

namespace {

// The folders of the user whose files are handled; none when there is no such user. A "*" in a home's own path would
// be taken for a pattern and lead to other people's files: such a home has no folders either.
class BaseFolders {
 public:
  // The full patterns of those whose folder the user has.
  std::vector<std::string> resolve(const std::vector<BuiltInFile>& files) const {
    std::vector<std::string> patterns;
    patterns.reserve(files.size());
    for (const BuiltInFile& file : files)
      if (const auto& folder = folderOf(file.base)) patterns.push_back(paths::join(*folder, file.pattern));
    return patterns;
  }

 private:
  using Folder = std::optional<std::string>;

  static Folder usable(Folder folder) {
    if (folder && QWFileManager::isWildcardPath(*folder)) return std::nullopt;
    return folder;
  }

  const Folder& folderOf(Base base) const {
    switch (base) {
      case Base::Preferences:
        return preferences_;
      case Base::ApplicationSupport:
        return applicationSupport_;
      case Base::Documents:
        break;
    }
    return documents_;
  }

  Folder preferences_ = usable(QWLocalPaths::prefsDirectory(true));
  Folder applicationSupport_ = usable(QWLocalPaths::appSupportDirectory(true));
  Folder documents_ = usable(QWLocalPaths::documentDirectory(true));
};

// One row of the table as a record, with the Avid users of this moment.
std::shared_ptr<QWApp> buildApp(const BuiltInApp& row, const BaseFolders& folders) {
  auto app = QWApp::appWithName(row.name, row.icon, row.bundleID);
  for (const BuiltInItem& item : row.items) {
    auto added = std::make_shared<QWPrefItem>(item.name, item.key, item.lockable, folders.resolve(item.files),
                                              item.hasAvidUsers);
    if (item.hasAvidUsers) added->populateAvidUsers();
    app->addItem(added);
  }
  app->updateLockStatus();
  return app;
}

}  // namespace

AppList buildCatalog() {
  const BaseFolders folders;
  AppList apps;
  for (const BuiltInApp& row : builtInCatalog()) apps.push_back(buildApp(row, folders));
  return apps;
}

// Users lie below their items.
std::shared_ptr<QWPrefItem> prefItemForKey(const AppList& apps, const std::string& key) {
  for (const auto& app : apps)
    for (const auto& item : app->children()) {
      if (item->key() == key) return item;
      for (const auto& user : item->users())
        if (user->key() == key) return user;
    }
  return nullptr;
}

}  // namespace vantory
