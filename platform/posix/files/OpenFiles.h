// What is done with open files on every POSIX system.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/FileSystem.h"
#include "platform/posix/files/Descriptor.h"

namespace vantory {

// Takes what is written off the front of the bytes.
Status writeAll(int file, std::string_view& bytes, const std::string& path);

class OpenAppendFile : public AppendFile {
 public:
  OpenAppendFile(Descriptor file, std::string path) : file_(std::move(file)), path_(std::move(path)) {}
  Status append(std::string_view& bytes) override { return writeAll(file_.get(), bytes, path_); }

 private:
  Descriptor file_;
  std::string path_;
};

// Waits until no other process holds an open folder or file, as FileSystem::holdFolder() says. The lock goes with the
// descriptor, and so also with a process that is killed.
Result<std::unique_ptr<FolderHold>> holdOpen(Descriptor item, const std::string& path, std::chrono::milliseconds wait);

}  // namespace vantory
