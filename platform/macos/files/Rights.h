// With whose rights files are touched, and how a path becomes a place that can be worked on safely with them.
#pragma once

#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/Users.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/posix/files/Place.h"

namespace vantory::macos {

// The process's own rights, with which the kernel judges every path; or the superuser's, used for a user in folders
// that the user may change at any moment. Those serve below certain folders only, and pass no link at all.
class Rights {
 public:
  static Rights own() { return {}; }
  // In the user's home, and in these folders.
  static Rights administrator(const User& user, std::vector<std::string> folders);
  // On every path, for folders that belong to the machine: everyone may look into those that are made.
  static Rights machine();

  bool isAdministrator() const { return isAdministrator_; }

  // Where the item itself lies: the path as one whole name, or as administrator its name in the open folder. Fails
  // where the rights do not serve.
  Result<Place> locate(const std::string& path) const;
  // The same with the folder open. One that may be passed but not read stays a path.
  Result<Place> locateInFolder(const std::string& path) const;

  // Opens a folder that was just made with mode 0700. As administrator it must be that one: who may write beside it may
  // have put another in its place. An invalid descriptor leaves errno.
  Descriptor openNewFolder(int parent, const std::string& name) const;

  // Added to the flags that open what a path names: whether a link at its end may be followed.
  int noFollowFlag() const;
  // The kind of look at what a path names.
  darwin::AtEnd atEnd(bool followsLink) const;
  // Whether an open item may be changed for the user: no file that somebody else's is and that merely has a second name
  // here.
  bool mayServe(const darwin::ItemStatus& status) const;
  // Whether its content may be handed on to the user: nothing that is somebody else's secret.
  bool mayHandOn(const darwin::ItemStatus& status) const;
  // Gives what was made at a place to its rightful owner: in the home to the user, elsewhere to `otherwise`. Of an open
  // item only: somebody may have given its name to another. As answered by fchown().
  int giveAway(int item, bool isInHome, uid_t otherwiseUser, gid_t otherwiseGroup) const;
  // The mode of a new folder: private, but for what is made outside of the home for all to use.
  mode_t folderMode(bool isInHome) const { return !isAdministrator_ || isInHome ? 0700 : 0755; }

 private:
  Rights() = default;

  bool isAdministrator_ = false;
  bool isEverywhere_ = false;
  User user_;
  std::vector<std::string> folders_;  // where the administrator's rights serve, the home not among them
};

}  // namespace vantory::macos
