// Administrator rights over a disk that is only looked at.
#pragma once

#include "platform/FileMetadata.h"
#include "platform/PrivilegedRunner.h"
#include "platform/overlay/OverlayFileSystem.h"

namespace vantory {

// Nobody is asked for the right. Whoever has it anyway, the superuser, sees what its tools would do to files.
class OverlayRunner : public PrivilegedRunner {
 public:
  // All outlive it.
  OverlayRunner(const PrivilegedRunner& runner, OverlayFileSystem& files, FileMetadata& metadata)
      : runner_(runner), files_(files), metadata_(metadata) {}

  bool authorize() override { return false; }
  void release() override {}
  bool isAuthorized() const override { return false; }
  bool knows(const std::string& tool) const override { return runner_.knows(tool); }
  int run(const std::string& tool, const std::vector<std::string>& arguments) override;

 private:
  Status apply(const std::string& tool, const std::vector<std::string>& arguments);
  Status copy(const std::string& source, const std::string& destination);

  const PrivilegedRunner& runner_;
  OverlayFileSystem& files_;
  FileMetadata& metadata_;
};

}  // namespace vantory
