// The superuser's disk for one user, on macOS.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/macos/files/MacFileMetadata.h"
#include "platform/macos/files/MacFileSystem.h"
#include "platform/posix/rights/AdministratorDisk.h"

namespace vantory {

class MacAdministratorDisk : public AdministratorDisk {
 public:
  // Beside the home, the superuser's rights serve in these folders.
  MacAdministratorDisk(const User& user, std::vector<std::string> otherFolders)
      : rights_(macos::Rights::administrator(user, std::move(otherFolders))) {}

  FileSystem& files() override { return files_; }
  FileMetadata& metadata() override { return metadata_; }
  Status copyLink(const std::string& source, const std::string& destination) override {
    return files_.copyLink(source, destination);
  }
  FileSystem& machineFiles() override { return machineFiles_; }
  // No thread has an identity of its own here. What is copied for the user anyway may be read for the user.
  FileSystem& usersFiles() override { return files_; }
  Result<Place> locate(const std::string& path) const override { return rights_.locate(path); }
  Result<Place> locateOnMachine(const std::string& path) const override { return machine_.locate(path); }
  bool takesMachineJobs() const override { return false; }

 private:
  const macos::Rights rights_;
  const macos::Rights machine_ = macos::Rights::machine();
  MacFileSystem files_{rights_};
  MacFileMetadata metadata_{rights_};
  MacFileSystem machineFiles_{machine_};
};

}  // namespace vantory
