#include "platform/linux/LinuxPrivilegedRunner.h"

#include <algorithm>
#include <ctime>
#include <memory>

#include "platform/FileMetadata.h"
#include "platform/FileSystem.h"

namespace vantory {
namespace {

constexpr int kSuccess = 0;
constexpr int kFailure = 1;
constexpr int kRefused = 64;  // as command-line tools answer a wrong call

using Arguments = std::vector<std::string>;

// Whether the call consists of exactly these options and this number of paths behind them.
bool hasShape(const Arguments& arguments, const Arguments& options, std::size_t paths) {
  return arguments.size() == options.size() + paths && std::equal(options.begin(), options.end(), arguments.begin());
}

int statusOf(bool done) {
  return done ? kSuccess : kFailure;
}

}  // namespace

int LinuxPrivilegedRunner::run(const std::string& tool, const Arguments& arguments) {
  if (!isAuthorized() || arguments.empty()) return kRefused;
  const std::string& last = arguments.back();
  if (tool == "/bin/cp" && hasShape(arguments, {"-f", "-p", "-R"}, 2)) return statusOf(copy(arguments[3], last));
  if (tool == "/bin/mv" && hasShape(arguments, {"-f"}, 2)) return statusOf(move(arguments[1], last));
  if (tool == "/bin/rm" && (hasShape(arguments, {"-Rdf"}, 1) || hasShape(arguments, {"-R", "-f"}, 1)))
    return statusOf(removeItem(last));
  if (tool == "/bin/mkdir" && hasShape(arguments, {"-p"}, 1)) return statusOf(files_->makeFolder(last).ok());
  if (tool == "/usr/bin/touch" && hasShape(arguments, {"-c"}, 1)) return statusOf(touch(last));
  if (tool == "/usr/bin/chattr" && (hasShape(arguments, {"+i"}, 1) || hasShape(arguments, {"-i"}, 1)))
    return statusOf(metadata_->setLocked(last, arguments[0] == "+i").ok());
  return kRefused;
}

// An existing file is replaced; an existing folder is left alone and makes it fail.
bool LinuxPrivilegedRunner::copy(const std::string& source, const std::string& destination) const {
  const Result<FileInfo> existing = files_->info(destination, Links::DoNotFollow);
  if (existing && existing->type == FileType::Folder) return false;
  auto staged = files_->stageCopy({source, destination, {}, Links::DoNotFollow});
  return staged && (*staged)->commit(StagedCopy::Existing::Replace).ok();
}

bool LinuxPrivilegedRunner::move(const std::string& source, const std::string& destination) const {
  return files_->move(source, destination).ok();
}

bool LinuxPrivilegedRunner::removeItem(const std::string& path) const {
  const Status removed = files_->remove(path);
  return removed || removed.error().code == std::errc::no_such_file_or_directory;
}

bool LinuxPrivilegedRunner::touch(const std::string& path) const {
  const Status touched = metadata_->setModified(path, {std::time(nullptr), 0});
  return touched || touched.error().code == std::errc::no_such_file_or_directory;
}

}  // namespace vantory
