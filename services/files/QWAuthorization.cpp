// Asks for the right, and has tools do their work with it.
#include "services/files/QWAuthorization.h"

#include <chrono>

#include "base/Format.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "base/Timestamp.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/PrivilegedRunner.h"
#include "platform/SystemLog.h"
#include "platform/TrashLayout.h"
#include "platform/Users.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/Items.h"
#include "services/files/QWFileManager.h"

namespace vantory {

namespace {

// A place in the Trash and the note beside it, which says where the item came from. Not every system's Trash has notes.
struct TrashPlace {
  std::string item;
  std::string note = {};
};

TrashPlace placeInTrash(const std::string& trashFolder, const std::string& name) {
  const std::string item = paths::join(trashFolder, name);
  return {item, hasTrashNotes(trashFolder) ? trashNotePath(item) : ""};
}

bool isTaken(const TrashPlace& place) {
  return itemExists(place.item) || (!place.note.empty() && itemExists(place.note));
}

// Under the item's own name, or with the time behind it where that is taken. The time is followed by the extension's
// dot even when there is no extension.
TrashPlace freePlaceInTrash(const std::string& trashFolder, const std::string& name, Timestamp now) {
  const bool hasNotes = hasTrashNotes(trashFolder);
  const std::string stem = paths::withoutExtension(name);
  TrashPlace place = placeInTrash(trashFolder, nameInTrash(stem, "", name.substr(stem.size()), hasNotes));
  const std::string time = "_" + localTimeText(now, "%Y%m%d%H%M%S");
  const std::string extension = "." + paths::extension(name);
  for (int number = 1; isTaken(place); ++number) {
    const std::string mark = number > 1 ? formatted("%@ %i", time, number) : time;
    place = placeInTrash(trashFolder, nameInTrash(stem, mark, extension, hasNotes));
  }
  return place;
}

// Written under another name first: only a move never replaces what another process just put there.
Status writeNote(FileSystem& files, const std::string& note, const std::string& text) {
  const std::string draft = paths::join(paths::parent(note), formatted(".%@", QWLocalPaths::uuid()));
  Status done = files.write(draft, text, {});
  if (done) done = files.move(draft, note).status();
  if (!done) (void)files.remove(draft);
  return done;
}

}  // namespace

QWAuthorization& QWAuthorization::sharedController(bool hasGUI) {
  auto& instance = Runtime::current().shared<QWAuthorization>();
  std::call_once(instance.decided_, [&] { instance.setHasGUI(hasGUI); });
  return instance;
}

QWAuthorization::QWAuthorization() : platform_(Runtime::current().platform()) {
  if (!isSuperuser()) userDirectory_ = QWLocalPaths::userDirectory();
}

QWAuthorization::~QWAuthorization() {
  authEnd();
}

bool QWAuthorization::isSuperuser() const {
  return platform_.users.isSuperuser();
}

bool QWAuthorization::isAuthorized() const {
  return isSuperuser() || platform_.privileged.isAuthorized();
}

bool QWAuthorization::canAuthorize() const {
  return hasGUI_ || isSuperuser();
}

void QWAuthorization::setHasGUI(bool hasGUI) {
  hasGUI_ = hasGUI;
}

bool QWAuthorization::authStart() {
  const std::lock_guard lock(asking_);
  return isAuthorized() || ask();
}

bool QWAuthorization::authStartWithUser(const std::string& user, const std::string& password) {
  if (isSuperuser()) return true;
  if (user.empty() || password.empty()) return false;
  authEnd();
  platform_.systemLog.write(
      formatted("Unable to create authRef - error %d", static_cast<int>(std::errc::not_supported)));
  return false;
}

void QWAuthorization::beginTask() {
  const std::lock_guard lock(asking_);
  refused_ = false;
}

void QWAuthorization::authEnd() {
  const std::lock_guard lock(asking_);
  refused_ = false;
  if (!isSuperuser()) platform_.privileged.release();
}

// For the steps of a task: whoever refused once is not asked at every file. Where nobody can be asked, each tells it.
bool QWAuthorization::authorizeForTask() {
  const std::lock_guard lock(asking_);
  return isAuthorized() || (!refused_ && ask());
}

// Under the mutex. Whoever reads what a task could not do is told the cause and cure of that.
bool QWAuthorization::ask() {
  if (!hasGUI_) {
    platform_.systemLog.record("Unable to authorize");
    return false;
  }
  refused_ = !platform_.privileged.authorize();
  return !refused_;
}

int QWAuthorization::authExecTask(const std::string& tool, const std::vector<std::string>& parameters) {
  if (!platform_.privileged.knows(tool) && !platform_.files.info(tool, Links::Follow)) {
    platform_.systemLog.write(printable(formatted("Unable to execute task: path %@ doesn't exist", tool)));
    return ToolMissing;
  }
  if (!authorizeForTask()) return NotAuthorized;
  return platform_.privileged.run(tool, parameters);
}

bool QWAuthorization::refuse(const char* message) const {
  platform_.systemLog.write(message);
  return false;
}

// Told in the system log.
bool QWAuthorization::isProtected(const std::string& path, const char* message) const {
  if (!QWLocalPaths::isPathSystemDirectory(paths::withoutTrailingSlashes(path), true)) return false;
  platform_.systemLog.write(printable(formatted(message, path)));
  return true;
}

bool QWAuthorization::authCopyFile(const std::string& source, const std::string& toPath) {
  if (source.empty()) return refuse("Error in authCopyFile: old path is null");
  if (toPath.empty()) return refuse("Error in authCopyFile: new path is null");
  if (isItemMissing(source)) return false;
  return authExecTask("/bin/cp", {"-f", "-p", "-R", source, toPath}) == Success;
}

bool QWAuthorization::authMoveFile(const std::string& source, const std::string& toPath) {
  if (source.empty()) return refuse("Error in authMoveFile: old path is null");
  if (toPath.empty()) return refuse("Error in authMoveFile: new path is null");
  if (isProtected(source, "Unable to move path %@ because it is a system directory.")) return false;
  if (isItemMissing(source)) return false;
  return authExecTask("/bin/mv", {"-f", source, toPath}) == Success;
}

bool QWAuthorization::authMoveFolderContents(const std::string& folder, const std::string& toPath) {
  if (isProtected(folder, "Unable to move contents of path %@ because it is a system directory.")) return false;
  bool all = true;
  for (const std::string& name : namesIn(folder))
    all &= authMoveFile(paths::join(folder, name), paths::join(toPath, name));
  return all;
}

bool QWAuthorization::authRemoveFile(const std::string& path) {
  if (isProtected(path, "Unable to delete path %@ because it is a system directory.")) return false;
  return authExecTask("/bin/rm", {"-Rdf", path}) == Success;
}

bool QWAuthorization::authCreateDir(const std::string& path) {
  const bool made = authExecTask("/bin/mkdir", {"-p", path}) == Success;
  platform_.clock.sleep(std::chrono::microseconds(500));
  return made;
}

bool QWAuthorization::deletesInsteadOfTrashing(bool deleteOnRootAccount) const {
  return !userDirectory_ && deleteOnRootAccount && isSuperuser();
}

// As the user first, and with administrator rights where only those are missing.
bool QWAuthorization::makeFolder(const std::string& path) {
  const vantory::Status made = platform_.files.makeFolder(path);
  return made || (rightsCouldHelp(made.error()) && authCreateDir(path));
}

bool QWAuthorization::authTrashFile(const std::string& path, bool deleteOnRootAccount) {
  if (!deletesInsteadOfTrashing(deleteOnRootAccount)) return trashedPlace(path).has_value();
  const auto place = freePlaceFor(path);
  // What is deleted is the place in the Trash; the item itself stays.
  return place && authRemoveFile(*place);
}

std::optional<std::string> QWAuthorization::freePlaceFor(const std::string& path) const {
  if (isProtected(path, "Unable to trash path %@ because it is a system directory.")) return std::nullopt;
  const auto trashFolder = QWLocalPaths::trashDirectory();
  if (!trashFolder) return std::nullopt;
  return freePlaceInTrash(*trashFolder, paths::lastComponent(path), platform_.clock.now()).item;
}

// Administrator rights pass no link of the user's: where one leads to the Trash, nothing is begun there.
std::optional<std::string> QWAuthorization::trashedPlace(const std::string& path) {
  const auto item = freePlaceFor(path);
  const auto home = QWLocalPaths::userDirectory();
  if (!item || (home && paths::isWithin(*item, *home) && QWFileManager::linkOnTheWay(paths::parent(*item), *home)))
    return std::nullopt;
  const TrashPlace place = placeInTrash(paths::parent(*item), paths::lastComponent(*item));
  for (const std::string& item : {place.item, place.note})
    if (!item.empty() && !makeFolder(paths::parent(item))) return std::nullopt;
  // The note comes first, so that nothing ever lies in the Trash without one.
  const std::string text = trashNote(path, localTimeText(platform_.clock.now(), "%Y-%m-%dT%H:%M:%S"));
  if (!place.note.empty() && !putNote(place.note, text)) return std::nullopt;
  if (authMoveFile(path, place.item)) return place.item;
  if (!place.note.empty() && !platform_.files.remove(place.note)) (void)authRemoveFile(place.note);
  return std::nullopt;
}

// As the user first. Where only rights are missing it is written where the user may, and moved with them.
bool QWAuthorization::putNote(const std::string& note, const std::string& text) {
  const vantory::Status written = writeNote(platform_.files, note, text);
  if (written || !rightsCouldHelp(written.error())) return written.ok();
  const auto draft = QWLocalPaths::tempFile();
  if (!draft || !platform_.files.write(*draft, text, {})) return false;
  const bool moved = authMoveFile(*draft, note);
  if (!moved) (void)platform_.files.remove(*draft);
  return moved;
}

bool QWAuthorization::authTrashFolderContents(const std::string& folder, bool deleteOnRootAccount) {
  if (isProtected(folder, "Unable to trash folder contents of path %@ because it is a system directory.")) return false;
  bool all = true;
  for (const std::string& name : namesIn(folder)) {
    const std::string path = paths::join(folder, name);
    all &= deletesInsteadOfTrashing(deleteOnRootAccount) ? authExecTask("/bin/rm", {"-R", "-f", path}) == Success
                                                         : authTrashFile(path);
  }
  return all;
}

bool QWAuthorization::authRequireAdministrator(bool required) {
  return authExecTask(kMachineSettingTool, {kAdministratorSetting, required ? "1" : "0"}) == Success;
}

}  // namespace vantory
