// Files and folders put together out of sight and then given their name in one step.
#pragma once

#include <sys/stat.h>

#include <memory>
#include <string>

#include "platform/FileSystem.h"
#include "platform/linux/files/FileCopy.h"
#include "platform/linux/files/FileRights.h"
#include "platform/posix/files/Descriptor.h"

namespace vantory {

// A new private (0600) file without a name, in the folder of its destination. Where the file system has no such files
// it bears a hidden name until it is named or destroyed.
class UnnamedFile {
 public:
  static Result<UnnamedFile> create(const Place& destination, const std::string& path);
  UnnamedFile(UnnamedFile&&) noexcept = default;
  UnnamedFile& operator=(UnnamedFile&&) = delete;
  ~UnnamedFile();

  int get() const { return file_.get(); }
  // Lets go of a file that has not been named; the destructor does the same.
  void discard();
  // Gives the complete file its destination's name, over what is there only with Existing::Replace.
  Status name(const Place& destination, const std::string& path, StagedCopy::Existing existing);

 private:
  explicit UnnamedFile(Descriptor file) : file_(std::move(file)) {}

  Status linkTo(int folder, const std::string& name, const std::string& path) const;
  Status replace(const Place& destination, const std::string& path);

  Descriptor file_;
  // Only where the file has a hidden name: the folder it is in, and the name.
  std::unique_ptr<Place> hidden_;
};

// Copies an open regular file or folder beside its destination.
Result<std::unique_ptr<StagedCopy>> stageFile(const Descriptor& source, const struct stat& status,
                                              const CopyRequest& request, Place destination, const FileRights& rights,
                                              CopyReport& report);
// The same with the content that the request has.
Result<std::unique_ptr<StagedCopy>> stageChanged(const Descriptor& source, const struct stat& status,
                                                 const CopyRequest& request, Place destination,
                                                 const FileRights& rights);
Result<std::unique_ptr<StagedCopy>> stageFolder(Descriptor source, const CopyRequest& request, Place destination,
                                                const FileRights& rights, CopyReport& report);

// The place with its folder open.
Result<Place> openFolderOf(const Place& place, const std::string& path);

// Renames within one file system, never over an existing item; answers as the system call does.
int renameKeeping(int fromFolder, const char* from, int toFolder, const char* to);

// Renames an item, never over an existing one. A read-only folder of the caller's own is opened up for the moment it
// takes.
Status renameItem(const Place& from, int toFolder, const std::string& toName, const std::string& path);

}  // namespace vantory
