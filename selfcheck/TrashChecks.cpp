// The Trash, on one of the self-check's own.
#include "selfcheck/PlatformChecks.h"

#include "platform/FileSystem.h"
#include "platform/StandardFolders.h"

namespace vantory {

namespace {

// Like the user's, and on the same volume as what is trashed.
std::string ownTrash(const Bench& bench) {
  const auto users = bench.platform.folders.userFolder(StandardFolder::Trash, bench.folder);
  return bench.path("Trash/" + paths::lastComponent(users.value_or(".Trash")));
}

Finding trashes(const Bench& bench) {
  Trial trial(bench);
  FileSystem& files = bench.platform.files;
  const std::string trash = ownTrash(bench);
  for (const char* content : {"first", "second"}) {
    const std::string file = trial.put("unwanted.plist", content);
    const Result<Trashed> trashed = files.trash(file, trash);
    trial.does(trashed);
    trial.sees(!bench.isThere(file), "it is still in its place");
    trial.sees(trashed && paths::isWithin(trashed->place, trash), "it went to another Trash");
    trial.sees(trashed && bench.contentOf(trashed->place) == content, "it is not where it is said to be");
  }
  const auto items = files.list(trash, Detail::Names);
  trial.does(items);
  trial.sees(items && items->size() == 2, "of two items of one name not both are there");
  return trial.finding();
}

Finding bringsBack(const Bench& bench) {
  Trial trial(bench);
  FileSystem& files = bench.platform.files;
  const std::string folder = bench.path("wanted");
  trial.does(files.makeFolder(folder));
  trial.put("wanted/file", "text");
  const Result<Trashed> trashed = files.trash(folder, ownTrash(bench));
  trial.does(trashed);
  if (trashed) trial.does(files.move(trashed->place, folder).status());
  trial.sees(bench.contentOf(folder + "/file") == "text", "it does not come back whole");
  return trial.finding();
}

constexpr Check kChecks[] = {
    {"Trash", "takes items, also two of one name", trashes},
    {"Trash", "gives a folder back", bringsBack},
};

}  // namespace

Checks trashChecks() {
  return kChecks;
}

}  // namespace vantory
