// Files and folders: written, read, listed, moved, removed.
#include "selfcheck/PlatformChecks.h"

#include <algorithm>

#include "platform/FileSystem.h"

namespace vantory {

namespace {

Finding writesWhole(const Bench& bench) {
  Trial trial(bench);
  FileSystem& files = bench.platform.files;
  const std::string file = trial.put("old.plist", "old, and longer");
  const Result<FileInfo> before = files.info(file, Links::DoNotFollow);
  trial.does(files.write(file, "new", {.durable = true}));
  const Result<FileInfo> after = files.info(file, Links::DoNotFollow);
  trial.does(after);
  trial.sees(bench.contentOf(file) == "new", "the file does not hold what was written");
  trial.sees(after && after->size == 3 && after->type == FileType::File, "its size or kind is told wrongly");
  trial.sees(before && after && before->identity != after->identity, "it was written over, not replaced");
  return trial.finding();
}

Finding appends(const Bench& bench) {
  Trial trial(bench);
  const std::string file = trial.put("log", "one\n");
  std::string_view more = "two\n";
  if (auto opened = bench.platform.files.openForAppending(file); opened)
    trial.does((*opened)->append(more));
  else
    trial.does(opened);
  trial.sees(bench.contentOf(file) == "one\ntwo\n", "the line is not at its end");
  return trial.finding();
}

Finding lists(const Bench& bench) {
  Trial trial(bench);
  const FileSystem& files = bench.platform.files;
  trial.does(bench.platform.files.makeFolder(bench.path("full/below")));
  trial.put("full/five", "12345");
  const auto entries = files.list(bench.path("full"), Detail::Sizes);
  trial.does(entries);
  const auto has = [&](const auto& isIt) { return entries && std::any_of(entries->begin(), entries->end(), isIt); };
  trial.sees(entries && entries->size() == 2, "it tells more items, or fewer");
  trial.sees(has([](const DirectoryEntry& entry) {
               return entry.name == "five" && entry.type == FileType::File && entry.size == 5;
             }),
             "the file, or its size, is told wrongly");
  trial.sees(has([](const DirectoryEntry& entry) { return entry.name == "below" && entry.type == FileType::Folder; }),
             "the folder is told wrongly");
  return trial.finding();
}

Finding compares(const Bench& bench) {
  Trial trial(bench);
  const std::string one = trial.put("one", "the same"), two = trial.put("two", "the same");
  const std::string other = trial.put("other", "the salt");
  const auto same = bench.platform.files.haveSameContent(one, two);
  const auto differing = bench.platform.files.haveSameContent(one, other);
  trial.does(same);
  trial.does(differing);
  trial.sees(same && *same, "two equal files pass for different ones");
  trial.sees(differing && !*differing, "two different files pass for equal ones");
  return trial.finding();
}

Finding makesFolders(const Bench& bench) {
  Trial trial(bench);
  const std::string folder = bench.path("a/b/c");
  for (int i = 0; i < 2; ++i) trial.does(bench.platform.files.makeFolder(folder));
  const Result<FileInfo> made = bench.platform.files.info(folder, Links::DoNotFollow);
  trial.sees(made && made->type == FileType::Folder, "there is no folder then");
  return trial.finding();
}

Finding movesOverNothing(const Bench& bench) {
  Trial trial(bench);
  FileSystem& files = bench.platform.files;
  const std::string file = trial.put("moving", "moved"), taken = trial.put("taken", "kept");
  trial.refuses(files.move(file, taken).status(), std::errc::file_exists, "an item was moved over another");
  trial.sees(bench.contentOf(taken) == "kept", "what was there is gone");
  trial.does(files.move(file, bench.path("free")));
  trial.sees(bench.contentOf(bench.path("free")) == "moved" && !bench.isThere(file), "it does not lie where it should");
  return trial.finding();
}

Finding removes(const Bench& bench) {
  Trial trial(bench);
  FileSystem& files = bench.platform.files;
  const std::string folder = bench.path("gone");
  trial.does(files.makeFolder(folder + "/below"));
  trial.put("gone/below/file", "text");
  trial.does(files.remove(folder));
  trial.sees(!bench.isThere(folder), "it is still there");
  trial.refuses(files.remove(folder), std::errc::no_such_file_or_directory, "what is missing was removed");
  return trial.finding();
}

// A volume may take names in UTF-8 only; then they cannot come back from elsewhere.
Finding takesAnyName(const Bench& bench) {
  Trial trial(bench);
  const std::string file = bench.path("caf\xE9.plist");
  const Status written = bench.platform.files.write(file, "text", {});
  if (!written && written.error().code == std::errc::illegal_byte_sequence)
    trial.passesOver("this volume takes names in UTF-8 only");
  trial.does(written);
  trial.sees(bench.contentOf(file) == "text", "it is not found again");
  return trial.finding();
}

Finding tellsCases(const Bench& bench) {
  Trial trial(bench);
  trial.put("Library", "text");
  trial.put("caf\xC3\xA9", "text");
  const bool ignoresCase = bench.isThere(bench.path("library"));
  const bool ignoresForm = bench.isThere(bench.path("cafe\xCC\x81"));
  return trial.finding(std::string(ignoresCase ? "upper and lower case are the same here" : "case counts here") +
                       (ignoresForm ? ", and so are composed and decomposed letters" : ""));
}

Finding reachesDisk(const Bench& bench) {
  Trial trial(bench);
  trial.does(bench.platform.files.sync(trial.put("kept", "text")));
  return trial.finding();
}

Finding holdsFolder(const Bench& bench) {
  Trial trial(bench);
  trial.does(bench.platform.files.makeFolder(bench.path("held")));
  trial.does(bench.platform.files.holdFolder(bench.path("held"), std::chrono::milliseconds(100)));
  return trial.finding();
}

constexpr Check kChecks[] = {
    {"files", "replaces a file whole, and on disk", writesWhole},
    {"files", "adds lines at the end of a file", appends},
    {"files", "lists a folder with sizes", lists},
    {"files", "compares files", compares},
    {"files", "makes folders", makesFolders},
    {"files", "moves an item, never over another", movesOverNothing},
    {"files", "removes a folder with all it holds", removes},
    {"files", "takes names of any bytes", takesAnyName},
    {"files", "finds a file by its name", tellsCases},
    {"files", "waits until all is on disk", reachesDisk},
    {"files", "holds a folder against other processes", holdsFolder},
};

}  // namespace

Checks fileChecks() {
  return kChecks;
}

}  // namespace vantory
