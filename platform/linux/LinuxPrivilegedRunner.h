// The work of a few file tools, done with the superuser's rights.
#pragma once

#include "platform/PrivilegedRunner.h"

namespace vantory {

class FileMetadata;
class FileSystem;

// Does the tools' work itself, on file services that hold administrator rights, because a tool would follow whatever
// link a user plants in its way. An ordinary process is never authorized.
class LinuxPrivilegedRunner : public PrivilegedRunner {
 public:
  // The services outlive the runner; null for an ordinary process.
  LinuxPrivilegedRunner(FileSystem* files, FileMetadata* metadata) : files_(files), metadata_(metadata) {}

  bool authorize() override { return isAuthorized(); }
  void release() override {}
  bool isAuthorized() const override { return files_ != nullptr; }
  int run(const std::string& tool, const std::vector<std::string>& arguments) override;

 private:
  bool copy(const std::string& source, const std::string& destination) const;
  bool move(const std::string& source, const std::string& destination) const;
  bool removeItem(const std::string& path) const;
  bool touch(const std::string& path) const;

  FileSystem* files_;
  FileMetadata* metadata_;
};

}  // namespace vantory
