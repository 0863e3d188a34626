// The files of the program that serve all users of the machine: job files, and one setting.
#pragma once

#include <string>

#include "base/Result.h"
#include "platform/StandardFolders.h"
#include "platform/posix/rights/AdministratorDisk.h"

namespace vantory {

// Works with the superuser's own rights, on files of the program's own names only. Paths are plain.
class MachineWideFiles {
 public:
  // The folders and the disk outlive the object.
  MachineWideFiles(const StandardFolders& standard, AdministratorDisk& disk) : standard_(standard), disk_(disk) {}

  bool isJobFolder(const std::string& path) const;
  bool isJob(const std::string& path) const;
  Status makeFolder(const std::string& path) { return files_.makeFolder(path); }
  // Moves a file that the user may read to a place where no job is yet.
  Status install(const std::string& source, const std::string& job);
  Status remove(const std::string& job) { return files_.remove(job); }
  Status giveToSuperuser(const std::string& job) const;
  Status makeReadable(const std::string& path) const;

  // Whether the program asks every user for an administrator's password when it starts.
  Status requireAdministrator(bool required);

 private:
  const StandardFolders& standard_;
  AdministratorDisk& disk_;
  FileSystem& files_ = disk_.machineFiles();
};

// Whether this is the path of one of the program's job files in the folder.
bool isJobFileIn(const std::string& folder, const std::string& path);
// Lets all read a regular file that bears no other name.
Status makeReadableForAll(const Result<Place>& place, const std::string& path);

}  // namespace vantory
