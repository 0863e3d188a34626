// What lies beside a file's content: locks, times, labels, links.
#include "selfcheck/PlatformChecks.h"

#include "platform/Checksums.h"
#include "platform/FileMetadata.h"
#include "platform/FileSystem.h"
#include "platform/SystemInfo.h"

namespace vantory {

namespace {

bool isLocked(const Bench& bench, const std::string& path) {
  const Result<FileInfo> info = bench.platform.files.info(path, Links::DoNotFollow);
  return info && info->locked;
}

Finding locks(const Bench& bench) {
  Trial trial(bench);
  FileSystem& files = bench.platform.files;
  const std::string file = trial.put("locked", "kept");
  const Status locked = bench.platform.metadata.setLocked(file, true);
  // What would help is told where something would.
  if (!locked && locked.error().code == std::errc::operation_not_permitted && locked.error().cure.empty())
    trial.passesOver("this user cannot lock files here: name a folder in the home");
  trial.does(locked);
  if (!trial.isGood()) return trial.finding();
  trial.sees(isLocked(bench, file), "it is not seen to be locked");
  trial.sees(!files.remove(file).ok(), "a locked file was removed");
  trial.sees(!files.write(file, "new", {}).ok(), "a locked file was written over");
  trial.does([&]() -> Status {
    auto staged = files.stageCopy({file, bench.path("copy")});
    return staged ? (*staged)->commit(StagedCopy::Existing::Keep) : staged.status();
  }());
  trial.sees(!isLocked(bench, bench.path("copy")), "a copy is locked too");
  trial.does(bench.platform.metadata.setLocked(file, false));
  trial.does(files.remove(file));
  return trial.finding();
}

Finding setsTimes(const Bench& bench) {
  Trial trial(bench);
  const std::string file = trial.put("file", "text");
  const auto seconds = [&] {
    const Result<FileInfo> info = bench.platform.files.info(file, Links::DoNotFollow);
    return info ? info->modified.seconds : 0;
  };
  const std::int64_t before = seconds();
  trial.does(bench.platform.metadata.setModified(file, Timestamp{1'234'567'890, 0}));
  trial.sees(seconds() == 1'234'567'890, "it has another time of change");
  trial.does(bench.platform.metadata.setModified(file, std::nullopt));
  trial.sees(seconds() >= before, "\"now\" is long ago");
  return trial.finding();
}

Finding asksRights(const Bench& bench) {
  Trial trial(bench);
  const FileMetadata& metadata = bench.platform.metadata;
  const std::string file = trial.put("file", "text");
  trial.sees(metadata.isWritable(file), "the own file passes for one that cannot be written");
  trial.sees(!metadata.isExecutable(file), "a text passes for a program");
  trial.sees(metadata.isExecutable(bench.platform.system.executablePath()), "this program does not pass for one");
  return trial.finding();
}

Finding knowsPackages(const Bench& bench) {
  Trial trial(bench);
  for (const char* folder : {"Plain", "Editor.app"}) trial.does(bench.platform.files.makeFolder(bench.path(folder)));
  trial.sees(bench.platform.metadata.isPackage(bench.path("Editor.app")), "an application passes for a plain folder");
  trial.sees(!bench.platform.metadata.isPackage(bench.path("Plain")), "a plain folder passes for an application");
  return trial.finding();
}

Finding setsLabels(const Bench& bench) {
  Trial trial(bench);
  FileMetadata& metadata = bench.platform.metadata;
  const std::string file = trial.put("file", "text"), label = "TEXTttxt" + std::string(24, '\0');
  const std::string none(label.size(), '\0');
  for (const std::string& bytes : {label, none}) {
    trial.does(metadata.setFinderInfo(file, bytes));
    const Result<std::string> read = metadata.finderInfo(file);
    trial.does(read);
    trial.sees(read && *read == bytes, "it is read otherwise than it was written");
  }
  return trial.finding();
}

Finding setsHeld(const Bench& bench) {
  Trial trial(bench);
  const std::string file = trial.put("file", "text");
  trial.does(bench.platform.checksums.setHeld(file, "a checksum"));
  const auto held = bench.platform.checksums.held(file);
  trial.does(held);
  trial.sees(held && *held == "a checksum", "it is read otherwise than it was written");
  return trial.finding();
}

constexpr Check kChecks[] = {
    {"metadata", "locks a file, and unlocks it", locks},
    {"metadata", "sets the time of change", setsTimes},
    {"metadata", "tells what may be written and run", asksRights},
    {"metadata", "tells an application from a folder", knowsPackages},
    {"metadata", "sets what the Finder notes of a file", setsLabels},
    {"metadata", "keeps a backup's checksum of its paths", setsHeld},
};

}  // namespace

Checks metadataChecks() {
  return kChecks;
}

}  // namespace vantory
