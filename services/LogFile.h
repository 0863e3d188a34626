// The files of the log: where they lie, their generations, their first lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Clock.h"
#include "platform/Platform.h"
#include "platform/Result.h"

namespace vantory {

class AppendFile;

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
  bool isOpen() const { return file_ != nullptr; }
  void close();
  // Adds one dated line; answers its length in bytes. Only while the file is open.
  Result<std::size_t> append(std::string_view message);

 private:
  bool makeFolder(FileSystem& files, const std::optional<std::string>& folder);
  bool rotate(const std::string& folder, const std::string& name);
  std::string header();
  FileSystem& currentFiles() const;
  const std::string& dateText();

  Platform& platform_;
  std::unique_ptr<AppendFile> file_;
  std::int64_t dateSecond_ = INT64_MIN;  // the second that dateText_ describes
  std::string dateText_;
};

}  // namespace vantory
