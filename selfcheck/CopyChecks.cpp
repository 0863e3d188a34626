// Copies: made out of sight, given their name in one step, and what they keep.
#include "selfcheck/PlatformChecks.h"

#include "platform/Checksums.h"
#include "platform/FileMetadata.h"
#include "platform/FileSystem.h"

namespace vantory {

namespace {

using Existing = StagedCopy::Existing;

// All at once.
Status copy(const Bench& bench, const CopyRequest& request, Existing existing = Existing::Keep) {
  Result<std::unique_ptr<StagedCopy>> staged = bench.platform.files.stageCopy(request);
  return staged ? (*staged)->commit(existing) : staged.status();
}

Finding copiesFile(const Bench& bench) {
  Trial trial(bench);
  FileSystem& files = bench.platform.files;
  const std::string source = trial.put("source", "content"), target = bench.path("copy");
  trial.does(bench.platform.metadata.setModified(source, Timestamp{1'000'000'000, 500'000'000}));
  trial.does([&]() -> Status {
    auto staged = files.stageCopy({source, target});
    if (!staged) return staged.error();
    trial.sees(!bench.isThere(target), "it has its name before it is finished");
    return (*staged)->commit(Existing::Keep);
  }());
  trial.sees(bench.contentOf(target) == "content", "it holds something else");
  const Result<FileInfo> info = files.info(target, Links::DoNotFollow);
  trial.sees(info && info->modified.seconds == 1'000'000'000, "its time of change was not kept");
  return trial.finding();
}

Finding leavesNothing(const Bench& bench) {
  Trial trial(bench);
  const FileSystem& files = bench.platform.files;
  trial.does(bench.platform.files.makeFolder(bench.path("empty")));
  trial.does(bench.platform.files.stageCopy({trial.put("source", "content"), bench.path("empty/copy")}).status());
  const auto left = files.list(bench.path("empty"), Detail::Names);
  trial.does(left);
  trial.sees(left && left->empty(), "something of it is left");
  return trial.finding();
}

Finding keepsWhatIsThere(const Bench& bench) {
  Trial trial(bench);
  const std::string target = trial.put("there", "kept");
  trial.refuses(copy(bench, {trial.put("source", "new"), target}), std::errc::file_exists, "it took another's place");
  trial.sees(bench.contentOf(target) == "kept", "what was there is gone");
  return trial.finding();
}

Finding replacesFile(const Bench& bench) {
  Trial trial(bench);
  const std::string target = trial.put("there", "old");
  trial.does(copy(bench, {trial.put("source", "new"), target}, Existing::Replace));
  trial.sees(bench.contentOf(target) == "new", "the old one is still there");
  return trial.finding();
}

// Not every volume can exchange items.
Finding exchangesFolder(const Bench& bench) {
  Trial trial(bench);
  for (const char* folder : {"new", "there"}) trial.does(bench.platform.files.makeFolder(bench.path(folder)));
  trial.put("new/file", "new");
  const std::string old = trial.put("there/old", "old");
  trial.does(copy(bench, {bench.path("new"), bench.path("there")}, Existing::Replace));
  trial.sees(bench.contentOf(bench.path("there/file")) == "new", "the new one is not there");
  trial.sees(!bench.isThere(old), "something of the old one is left");
  trial.does(copy(bench, {trial.put("file", "content"), bench.path("there")}, Existing::Replace));
  trial.sees(bench.contentOf(bench.path("there")) == "content", "no file takes a folder's place");
  return trial.finding();
}

Finding ends(const Bench& bench) {
  Trial trial(bench);
  const std::string source = trial.put("large", std::string(kLargestReadBytes, 'x'));
  const auto refuse = [](std::int64_t, int) { return false; };
  trial.refuses(copy(bench, {.source = source, .destination = bench.path("copy"), .observer = refuse}),
                std::errc::operation_canceled, "it goes on");
  return trial.finding();
}

Finding writesOther(const Bench& bench) {
  Trial trial(bench);
  const std::string target = bench.path("copy");
  trial.does(
      copy(bench, {.source = trial.put("source", "old"), .destination = target, .content = std::string("merged")}));
  trial.sees(bench.contentOf(target) == "merged", "it holds something else");
  return trial.finding();
}

Finding keepsAttributes(const Bench& bench) {
  Trial trial(bench);
  const std::string source = trial.put("source", "content"), target = bench.path("copy");
  const std::string label = std::string(9, '\0') + '\x0C' + std::string(22, '\0');
  trial.does(bench.platform.metadata.setFinderInfo(source, label));
  trial.does(copy(bench, {source, target}));
  const Result<std::string> kept = bench.platform.metadata.finderInfo(target);
  trial.does(kept);
  trial.sees(kept && *kept == label, "the label of the Finder is lost");
  return trial.finding();
}

Finding knowsDamage(const Bench& bench) {
  Trial trial(bench);
  const std::string target = bench.path("copy");
  trial.does(
      copy(bench, {.source = trial.put("source", "content"), .destination = target, .checksum = CopyChecksum::Make}));
  const auto folder = bench.platform.checksums.ofFolder(bench.folder);
  trial.does(folder);
  if (!folder) return trial.finding();
  const Result<FileChecksum> sound = (*folder)->ofFile("copy");
  trial.does(sound);
  if (sound && !sound->carried) trial.passesOver("this volume keeps no attributes, so copies carry no checksums");
  trial.sees(sound && !sound->isDamaged(), "a sound copy passes for a damaged one");
  std::string_view more = "!";
  if (auto opened = bench.platform.files.openForAppending(target); opened) trial.does((*opened)->append(more));
  const Result<FileChecksum> damaged = (*folder)->ofFile("copy");
  trial.sees(damaged && damaged->isDamaged(), "a damaged copy passes for a sound one");
  trial.refuses(copy(bench, {.source = target, .destination = bench.path("back"), .checksum = CopyChecksum::Check}),
                std::errc::bad_message, "it is copied back");
  return trial.finding();
}

constexpr Check kChecks[] = {
    {"copies", "gives a finished copy its name, with its times", copiesFile},
    {"copies", "leaves nothing of one that is given up", leavesNothing},
    {"copies", "never takes another's place", keepsWhatIsThere},
    {"copies", "replaces a file in one step", replacesFile},
    {"copies", "exchanges a folder in one step", exchangesFolder},
    {"copies", "ends when told to", ends},
    {"copies", "writes other content in its place", writesOther},
    {"copies", "keeps attributes", keepsAttributes},
    {"copies", "knows a damaged copy by its checksum", knowsDamage},
};

}  // namespace

Checks copyChecks() {
  return kChecks;
}

}  // namespace vantory
