// The machine and this process, as the system describes them.
#pragma once

#include "platform/SystemInfo.h"

namespace vantory {

// Everything is looked up when asked for. Any thread.
class PosixSystemInfo : public SystemInfo {
 public:
  // The argument list as main() got it, the program first. For a program that another became, `startedProgram` is the
  // file name of the one beside it that the user started; empty otherwise.
  explicit PosixSystemInfo(std::vector<std::string> arguments, std::string startedProgram = {});

  std::string systemName() const override;
  std::string kernelName() const override;
  std::string fileSystemOf(const std::string& path) const override;
  int processorCount() const override;
  std::uint64_t memoryBytes() const override;
  // Empty when the kernel does not tell.
  std::string executablePath() const override;
  // Beside the program, where it was built, else where its installation keeps such files.
  std::string resourcePath(const std::string& name) const override;
  const std::vector<std::string>& arguments() const override { return arguments_; }
  // Empty when that folder is gone.
  std::string workingDirectory() const override;
  bool hasTerminal() const override;
  bool hasReader() const override;
  // A random UUID in capitals.
  std::string uniqueString() const override;

 private:
  std::vector<std::string> arguments_;
  std::string startedProgram_;
};

}  // namespace vantory
