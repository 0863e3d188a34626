// The files of the log: where they lie, their generations, their first lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/Result.h"
#include "base/Timestamp.h"
#include "platform/Platform.h"

namespace vantory {

class AppendFile;

// The folder of the maker's logs, the user's or the machine's; none when there is no such user.
std::optional<std::string> logFolder(bool user);
// What the log of that name is called there; the generations count from 1, the current one.
std::string logFileName(const std::string& name, int generation = 1);

// The current file "NAME.1.log" and the older ones up to "NAME.5.log". Used by one thread at a time.
//
// The superuser writes the current file in the machine-wide log folder, while the older generations are those in the
// folder of the user whose files are handled.
class LogFile {
 public:
  explicit LogFile(Platform& platform);
  ~LogFile();

  // Moves the generations on and opens a new file with the header lines. What fails is told to the system log, and then
  // no file is open.
  void create(const std::string& name);
  // Opens the current file as it is, or an empty one. False when it cannot be opened.
  bool open(const std::string& name);
  // Where the current file of that name lies; none where there is no folder for it.
  static std::optional<std::string> currentPath(const Platform& platform, const std::string& name);
  bool isOpen() const { return file_ != nullptr; }
  void close();
  // Adds one dated line, which is in the file once flush() has run.
  void add(std::string_view message);
  // The bytes of lines that are in the file since create(), and of those that are not yet.
  std::uint64_t written() const { return written_; }
  std::size_t pending() const { return pending_.size(); }
  // Writes the lines added since the last time, where the file is open. Lines that cannot be written wait for the
  // next time, unless they have become too many: then they are given up.
  Status flush();

 private:
  bool makeFolder(FileSystem& files, const std::optional<std::string>& folder);
  bool rotate(const std::string& folder, const std::string& name);
  std::string header();
  FileSystem& currentFiles() const;
  const std::string& dateText();

  Platform& platform_;
  std::unique_ptr<AppendFile> file_;
  std::string pending_;                  // lines
  std::uint64_t written_ = 0;            // bytes
  std::int64_t dateSecond_ = INT64_MIN;  // the second that dateText_ describes
  std::string dateText_;
};

}  // namespace vantory
