// Reads a process's files below /proc.
#include "platform/linux/session/ProcessView.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <string_view>

namespace vantory {

namespace {

constexpr std::string_view kDeleted = " (deleted)";

std::vector<std::string> parts(std::string_view text, char separator) {
  std::vector<std::string> list;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    list.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return list;
}

// What stands behind "NAME" at the beginning of a line.
std::string_view lineAfter(std::string_view text, std::string_view name) {
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    const std::string_view line = text.substr(start, end - start);
    if (line.starts_with(name)) return line.substr(name.size());
    start = end + 1;
  }
  return {};
}

template <class Number>
Number numberFrom(std::string_view text, Number otherwise) {
  Number number{};
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  return failure == std::errc() ? number : otherwise;
}

}  // namespace

ProcessView::ProcessView(int processes, pid_t number)
    : number_(number),
      folder_(openat(processes, std::to_string(number).c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)) {}

// One that has ended stays in the table until its parent has asked for it.
bool ProcessView::isAliveFor(uid_t user) const {
  if (!folder_.valid() || !belongsTo(user)) return false;
  const std::vector<std::string> fields = state();
  return !fields.empty() && fields[0] != "Z" && fields[0] != "X";
}

pid_t ProcessView::parent() const {
  const std::vector<std::string> fields = state();
  return fields.size() < 2 ? 0 : numberFrom<pid_t>(fields[1], 0);
}

std::vector<std::string> ProcessView::arguments() const {
  return parts(content("cmdline", kLargestText), '\0');
}

std::string ProcessView::variable(const std::string& name) const {
  const std::string start = name + "=";
  for (const std::string& entry : parts(content("environ", kLargestEnvironment), '\0'))
    if (entry.starts_with(start)) return entry.substr(start.size());
  return {};
}

// Flatpak puts this file into each of its sandboxes.
std::string ProcessView::flatpakApplication() const {
  const std::string info = content("root/.flatpak-info", kLargestText);
  return info.starts_with("[Application]\n") ? std::string(lineAfter(info, "name=")) : "";
}

// The kernel marks a program whose file was removed or replaced.
std::string ProcessView::program() const {
  std::string path = linkText("exe");
  if (path.ends_with(kDeleted)) path.resize(path.size() - kDeleted.size());
  return path;
}

// By the file itself, or by its name where an update has put another in its place.
bool ProcessView::runs(const std::string& program) const {
  struct stat own {};
  struct stat file {};
  if (fstatat(folder_.get(), "exe", &own, 0) != 0) return false;
  if (stat(program.c_str(), &file) == 0 && own.st_dev == file.st_dev && own.st_ino == file.st_ino) return true;
  return own.st_nlink == 0 && linkText("exe") == program + std::string(kDeleted);
}

// Whatever is no regular file, such as a FIFO in a sandbox's root, is not waited for.
std::string ProcessView::content(const char* file, std::size_t limit) const {
  const Descriptor descriptor(openat(folder_.get(), file, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status {};
  if (!descriptor.valid() || fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
  std::string text;
  char buffer[4096];
  while (text.size() < limit) {
    const ssize_t count = uninterrupted([&] { return read(descriptor.get(), buffer, sizeof buffer); });
    if (count <= 0) break;
    text.append(buffer, static_cast<std::size_t>(count));
  }
  return text;
}

std::string ProcessView::linkText(const char* link) const {
  char text[PATH_MAX];
  const ssize_t size = readlinkat(folder_.get(), link, text, sizeof text);
  return size < 0 ? "" : std::string(text, static_cast<std::size_t>(size));
}

// The program's name stands before it in parentheses and may hold any byte.
std::vector<std::string> ProcessView::state() const {
  const std::string text = content("stat", kLargestText);
  const std::size_t end = text.rfind(") ");
  return end == std::string::npos ? std::vector<std::string>() : parts(std::string_view(text).substr(end + 2), ' ');
}

// The kernel shows a process that must not be looked into as the superuser's, whoever it belongs to.
bool ProcessView::belongsTo(uid_t user) const {
  struct stat status {};
  if (fstat(folder_.get(), &status) != 0) return false;
  if (status.st_uid == user || status.st_uid != 0) return status.st_uid == user;
  const std::string text = content("status", kLargestText);
  return numberFrom<uid_t>(lineAfter(text, "Uid:\t"), 0) == user;
}

}  // namespace vantory
