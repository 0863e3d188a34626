// How a backup is recorded, compared, and made the default.
#include "backups/QWBackup.h"

#include "backups/BackupFolder.h"
#include "backups/BackupNaming.h"
#include "backups/LibraryFolder.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "base/PropertyList.h"
#include "base/Text.h"
#include "platform/FileSystem.h"
#include "services/Runtime.h"
#include "services/files/FolderWalk.h"
#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"

namespace vantory {

namespace {

template <class T>
int compare(const T& left, const T& right) {
  return left < right ? -1 : right < left ? 1 : 0;
}

// A backup holds what was chosen for it, so all of it is ticked when it is shown.
void selectEveryItem(QWApp& app) {
  for (const auto& item : app.children()) item->setSelected(On);
  app.updateSelectionStatus();
}

}  // namespace

QWBackup::QWBackup(std::string name, std::string path, std::optional<Timestamp> date)
    : name_(std::move(name)), path_(std::move(path)), date_(date) {}

std::shared_ptr<QWBackup> QWBackup::backupWithName(const std::string& name, const std::optional<std::string>& path) {
  std::string place = path.value_or("");
  if (!path) {
    if (const auto library = libraryFolder()) place = paths::join(*library, backupFileName(name));
  }
  const auto info = Runtime::current().platform().files.info(place, Links::Follow);
  return std::make_shared<QWBackup>(name, place, info ? std::optional(info->modified) : std::nullopt);
}

std::shared_ptr<QWBackup> QWBackup::backupWithName(const std::string& name, const std::optional<std::string>& path,
                                                   AppList children) {
  auto backup = backupWithName(name, path);
  const auto place = std::make_shared<const BackupFolder>(backup->path());
  for (const auto& app : children) {
    selectEveryItem(*app);
    for (const auto& item : app->children()) item->measureWhenAsked(place);
  }
  backup->setChildren(std::move(children));
  return backup;
}

// Not while the old path is being measured.
void QWBackup::setPath(std::string path) {
  const std::lock_guard lock(sizeMutex_);
  path_ = std::move(path);
}

// Once; whoever else asks meanwhile waits for the answer. A link in a backup may lead anywhere, and is no part of it.
std::uint64_t QWBackup::size() const {
  const std::lock_guard lock(sizeMutex_);
  if (!isMeasured_) size_ = folderSize(path_, Links::DoNotFollow);
  isMeasured_ = true;
  return size_;
}

void QWBackup::addApp(const std::shared_ptr<QWApp>& app) {
  selectEveryItem(*app);
  children_.push_back(app);
}

std::string QWBackup::safeUserPath(const std::string& path) {
  return BackupFolder("").safeUserPath(path);
}

std::optional<std::string> QWBackup::defaultBackupName() {
  return QWUserDefaults::standardUserDefaults().stringForKey(setting::kDefaultBackup);
}

Status QWBackup::setDefault() {
  if (path_.empty()) return {};
  return QWUserDefaults::standardUserDefaults().setObject(setting::kDefaultBackup,
                                                          textValue(paths::lastComponent(path_)));
}

void QWBackup::updateDefault() {
  isDefault_ = isComplete_ && defaultBackupName() == paths::lastComponent(path_);
}

std::string QWBackup::flaw() const {
  if (isComplete_) return "";
  return readError_ ? "cannot be read" : "incomplete";
}

std::string QWBackup::flawInWords() const {
  return readError_ ? formatted("\"%@\" cannot be read: %@", name_, readError_->text)
                    : formatted("\"%@\" is incomplete", name_);
}

int QWBackup::nameCompare(const BackupNode& other) const {
  return compareNames(name(), other.name());
}

int QWBackup::dateCompare(const BackupNode& other) const {
  return compare(date(), other.date());
}

int QWBackup::sizeCompare(const BackupNode& other) const {
  return compare(size(), other.size());
}

}  // namespace vantory
