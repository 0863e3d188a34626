// The superuser's disk for one user, on Linux.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/files/LinuxFileMetadata.h"
#include "platform/linux/files/LinuxFileSystem.h"
#include "platform/posix/rights/AdministratorDisk.h"

namespace vantory {

class LinuxAdministratorDisk : public AdministratorDisk {
 public:
  // Beside the home, the superuser's rights serve in these folders.
  LinuxAdministratorDisk(const User& user, std::vector<std::string> otherFolders)
      : rights_(FileRights::administrator(user, withHome(std::move(otherFolders), user))),
        usersFiles_(FileRights::ofUser(user)) {}

  FileSystem& files() override { return files_; }
  FileMetadata& metadata() override { return metadata_; }
  Status copyLink(const std::string& source, const std::string& destination) override {
    return files_.copyLink(source, destination);
  }
  FileSystem& machineFiles() override { return machineFiles_; }
  FileSystem& usersFiles() override { return usersFiles_; }
  Result<Place> locate(const std::string& path) const override { return rights_.locate(path); }
  Result<Place> locateOnMachine(const std::string& path) const override { return machine_.locate(path); }
  bool takesMachineJobs() const override { return true; }  // nothing runs them

 private:
  static std::vector<std::string> withHome(std::vector<std::string> folders, const User& user) {
    if (!user.home.empty()) folders.push_back(user.home);
    return folders;
  }

  const FileRights rights_;
  const FileRights machine_ = FileRights::machine();
  LinuxFileSystem files_{rights_};
  LinuxFileMetadata metadata_{rights_};
  LinuxFileSystem machineFiles_{machine_};
  LinuxFileSystem usersFiles_;
};

}  // namespace vantory
