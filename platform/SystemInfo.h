// What the program asks about the machine and about itself.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vantory {

class SystemInfo {
 public:
  virtual ~SystemInfo() = default;

  virtual std::string systemName() const = 0;  // for people, such as "Debian GNU/Linux 12 (bookworm)"
  virtual std::string kernelName() const = 0;  // with version and processor, such as "Linux 6.1.0-18-amd64 x86_64"
  // The kind of file system that an item lies on, such as "ext4"; empty where that is not known.
  virtual std::string fileSystemOf(const std::string& path) const = 0;
  virtual int processorCount() const = 0;
  virtual std::uint64_t memoryBytes() const = 0;
  virtual std::string executablePath() const = 0;
  // Where a file that is installed with the program lies; it may be missing.
  virtual std::string resourcePath(const std::string& name) const = 0;
  // The whole argument list, the program first.
  virtual const std::vector<std::string>& arguments() const = 0;
  virtual std::string workingDirectory() const = 0;
  // Whether a person reads standard error.
  virtual bool hasTerminal() const = 0;
  // False where standard output is a pipe that nobody reads any more.
  virtual bool hasReader() const = 0;
  // A string that no other call, process or machine is given.
  virtual std::string uniqueString() const = 0;
};

}  // namespace vantory
