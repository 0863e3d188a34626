// Has each check work in a folder of its own.
#include "selfcheck/SelfCheck.h"

#include "platform/FileSystem.h"
#include "selfcheck/PlatformChecks.h"
#include "selfcheck/Scratch.h"

namespace vantory {

namespace {

Finding findingOf(const Status& status) {
  return status ? Finding{} : Finding{Outcome::NotHeld, status.error().text};
}

Finding tryCheck(const Check& check, const Bench& bench) {
  const Status made = bench.platform.files.makeFolder(bench.folder);
  return made ? check.tried(bench) : findingOf(made);
}

}  // namespace

std::vector<Checked> checkPlatform(Platform& platform, const std::string& parent) {
  Result<Scratch> scratch = Scratch::make(platform, parent);
  if (!scratch) return {{"scratch", "makes a folder to work in", findingOf(scratch.status())}};
  std::vector<Checked> all;
  for (const Checks& checks :
       {fileChecks(), copyChecks(), metadataChecks(), trashChecks(), toolChecks(), systemChecks(), sessionChecks()}) {
    for (const Check& check : checks) {
      const Bench bench{platform, paths::join(scratch->folder(), std::to_string(all.size()))};
      all.push_back({std::string(check.part), std::string(check.promise), tryCheck(check, bench)});
    }
  }
  all.push_back({"scratch", "leaves nothing behind", findingOf(scratch->clear())});
  return all;
}

}  // namespace vantory
