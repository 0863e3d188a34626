// The disk as the superuser works on it for one user.
#pragma once

#include <string>

#include "base/Result.h"
#include "platform/FileMetadata.h"
#include "platform/FileSystem.h"
#include "platform/posix/files/Place.h"

namespace vantory {

// Whatever the user does meanwhile, no path leads elsewhere than it says, by no link of the user's.
class AdministratorDisk {
 public:
  virtual ~AdministratorDisk() = default;

  // With the superuser's rights, in the user's home and in the folders that the disk was made for.
  virtual FileSystem& files() = 0;
  virtual FileMetadata& metadata() = 0;
  // With the same rights copies a link, wherever it leads, under a name that nothing has.
  virtual Status copyLink(const std::string& source, const std::string& destination) = 0;
  // With the superuser's rights, everywhere.
  virtual FileSystem& machineFiles() = 0;
  // Of the user's own files, none that the user could not read and remove.
  virtual FileSystem& usersFiles() = 0;
  // Where an item lies that is there, as files() and as machineFiles() find it.
  virtual Result<Place> locate(const std::string& path) const = 0;
  virtual Result<Place> locateOnMachine(const std::string& path) const = 0;
  // Whether job files may be put where those of the whole machine lie. Where the system runs them, whoever had one
  // installed would be the superuser.
  virtual bool takesMachineJobs() const = 0;
};

}  // namespace vantory
