// Opens, rolls over and fills the files.
#include "services/log/LogFile.h"

#include <chrono>
#include <utility>

#include "base/Format.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "base/UtcText.h"
#include "platform/FileSystem.h"
#include "platform/SystemInfo.h"
#include "platform/SystemLog.h"
#include "platform/Users.h"
#include "services/QWLocalPaths.h"

namespace vantory {

namespace {

constexpr int kGenerations = 5;
constexpr std::size_t kMostPending = 256 * 1024;  // bytes
constexpr auto kLongestWait = std::chrono::seconds(2);
constexpr double kBytesPerGigabyte = 1024.0 * 1024.0 * 1024.0;

std::string generationPath(const std::string& folder, const std::string& name, int generation) {
  return paths::join(folder, logFileName(name, generation));
}

bool exists(const FileSystem& files, const std::string& path) {
  return files.info(path, Links::DoNotFollow).ok();
}

template <class... Arguments>
void tell(Platform& platform, std::string_view format, const Arguments&... arguments) {
  platform.systemLog.write(printable(formatted(format, arguments...)));
}

}  // namespace

std::optional<std::string> logFolder(bool user) {
  const std::optional<std::string> logs = QWLocalPaths::logDirectory(user);
  if (!logs) return std::nullopt;
  return paths::join(*logs, "Quarrywell");
}

std::string logFileName(const std::string& name, int generation) {
  return formatted("%@.%i.log", name, generation);
}

LogFile::LogFile(Platform& platform) : platform_(platform) {}

LogFile::~LogFile() = default;

// The superuser's older generations lie in another folder than the current file: both must be there.
void LogFile::create(const std::string& name) {
  close();
  written_ = 0;
  const bool machineWide = platform_.users.isSuperuser();
  const std::optional<std::string> generations = logFolder(true);
  const std::optional<std::string> current = machineWide ? logFolder(false) : generations;
  if ((generations || !machineWide) && !makeFolder(platform_.files, generations)) return;
  if (machineWide && !makeFolder(platform_.machineFiles, current)) return;
  const std::string path = generationPath(*current, name, 1);
  // Of two processes each moves what the other has left. One that hangs keeps nobody from a log.
  const auto hold = generations ? platform_.files.holdFolder(*generations, kLongestWait)
                                : platform_.machineFiles.holdFolder(*current, kLongestWait);
  // On the disk before the generations move on: one that is full loses none of them.
  const std::string draft = paths::join(*current, formatted(".%@.new", name));
  Status made = currentFiles().write(draft, header(), {});
  if (made && generations && exists(currentFiles(), path) && !rotate(*generations, name)) {
    (void)currentFiles().remove(draft);
    return;
  }
  if (made) {
    (void)currentFiles().remove(path);  // the superuser's, which is no generation; what stays refuses the move
    made = currentFiles().move(draft, path).status();
  }
  if (!made) return tell(platform_, "Unable to create log file %@ - %@", path, made.error().text);
  open(name);
}

std::optional<std::string> LogFile::currentPath(const Platform& platform, const std::string& name) {
  const std::optional<std::string> folder = logFolder(!platform.users.isSuperuser());
  if (!folder) return std::nullopt;
  return generationPath(*folder, name, 1);
}

bool LogFile::open(const std::string& name) {
  const std::optional<std::string> path = currentPath(platform_, name);
  if (!path) return false;
  auto file = currentFiles().openForAppending(*path);
  if (!file) return false;
  file_ = std::move(*file);
  return true;
}

void LogFile::close() {
  file_.reset();
}

// One line, whatever bytes the message has.
void LogFile::add(std::string_view message) {
  pending_ += dateText();
  pending_ += " - ";
  pending_ += printable(message);
  pending_ += '\n';
}

// What could not be written is kept, but not without end.
Status LogFile::flush() {
  if (pending_.empty() || !file_) return {};
  std::string_view left = pending_;
  const Status added = file_->append(left);
  const std::size_t count = pending_.size() - left.size();
  pending_.erase(0, count);
  written_ += count;
  if (pending_.size() > kMostPending) pending_.clear();
  return added;
}

// Told with the folder's path, or "(null)" where there is nobody it could belong to.
bool LogFile::makeFolder(FileSystem& files, const std::optional<std::string>& folder) {
  if (folder && files.makeFolder(*folder)) return true;
  tell(platform_, "Unable to create folder %@.", folder);
  return false;
}

// The oldest first, so that each finds its new name free.
bool LogFile::rotate(const std::string& folder, const std::string& name) {
  FileSystem& files = platform_.files;
  const std::string oldest = generationPath(folder, name, kGenerations);
  if (exists(files, oldest)) static_cast<void>(files.remove(oldest));  // if it stays, the move onto it tells
  for (int generation = kGenerations - 1; generation >= 1; --generation) {
    const std::string from = generationPath(folder, name, generation);
    if (!exists(files, from)) continue;
    const std::string to = generationPath(folder, name, generation + 1);
    if (files.move(from, to)) continue;
    tell(platform_, "Unable to move file %@ to %@", from, to);
    return false;
  }
  return true;
}

// The words are fixed: scripts look for them.
std::string LogFile::header() {
  const SystemInfo& system = platform_.system;
  std::string text = formatted("Log started: %@\n", dateText());
  text += formatted("Version: %@\n", VANTORY_VERSION);
  text += formatted("Path: %@\n", printable(system.executablePath()));
  text += formatted("System: OS X %@, %i CPU(s), %0.2f GB RAM\n", printable(system.systemName()),
                    system.processorCount(), static_cast<double>(system.memoryBytes()) / kBytesPerGigabyte);
  text += formatted("Running in %i-bit mode\n", sizeof(void*) * 8);
  return text;
}

FileSystem& LogFile::currentFiles() const {
  return platform_.users.isSuperuser() ? platform_.machineFiles : platform_.files;
}

// Many lines fall into one second, so its text is kept.
const std::string& LogFile::dateText() {
  const std::int64_t second = platform_.clock.now().seconds;
  if (second != dateSecond_) {
    dateText_ = utcText(second) + " +0000";
    dateSecond_ = second;
  }
  return dateText_;
}

}  // namespace vantory
