// With whose rights files are touched, and how a path becomes a place that can be worked on safely with them.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/Users.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Place.h"

namespace vantory {

// Three kinds: the process's own rights; those of a user for whom the superuser works (the kernel then checks every
// step as if that user made it); and the superuser's own, which serve only below certain folders and never pass a
// symbolic link but one of the superuser's in a folder that nobody else can change.
class FileRights {
 public:
  static FileRights own();
  static FileRights ofUser(const User& user);
  static FileRights administrator(const User& user, std::vector<std::string> folders);
  // The superuser's own, on every path, for folders that belong to the machine: everyone may look into those that are
  // made. Passes no user's link either.
  static FileRights machine();

  // Takes the rights on this thread while it lives; may be nested. Every system call on a path or on a new file belongs
  // inside one.
  class Scope {
   public:
    explicit Scope(const FileRights& rights);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    bool releases_ = false;
  };

  // Where the item itself lies; fails when the rights do not serve there.
  Result<Place> locate(const std::string& path) const;

  // Opens a folder that was just made with mode 0700. As administrator it must be that one: who may write beside it
  // may have put another in its place. An invalid descriptor leaves errno.
  Descriptor openNewFolder(int parent, const std::string& name) const;

  // Added to the flags that open a folder or file named by a path: whether a link at its end may be followed.
  int noFollowFlag() const { return kind_ == Kind::Administrator ? O_NOFOLLOW : 0; }
  // The user whose files are handled.
  uid_t fileOwner() const;
  // The mode a copy may have: the superuser restores no set-id bits.
  mode_t permittedMode(mode_t mode) const;
  // Gives what the superuser made at `path` to its rightful owner: into the user's home to that user, elsewhere to
  // `otherwise`.
  Status giveAway(int descriptor, const std::string& path, uid_t otherwiseUser, gid_t otherwiseGroup) const;
  // The same for a link, which cannot be opened, called `name` in an open folder.
  Status giveAway(int folder, const char* name, const std::string& path, uid_t otherwiseUser,
                  gid_t otherwiseGroup) const;
  // The mode of a new folder: private, but for what the superuser makes outside of the home for all to use.
  mode_t folderMode(const std::string& path) const;
  // Whether an open file may be handed on to the user: not one that the superuser alone may read and the user merely
  // has a second name for.
  bool mayCopy(const struct stat& status) const;
  // Whether the process is the superuser's, with whatever rights it works.
  bool isSuperuser() const { return superuser_; }
  bool isAdministrator() const { return kind_ == Kind::Administrator; }

 private:
  enum class Kind { Own, User, Administrator };

  FileRights(Kind kind, User user) : kind_(kind), user_(std::move(user)) {}

  bool isInHome(const std::string& path) const;

  Kind kind_;
  bool superuser_ = getuid() == 0;
  User user_;
  std::vector<gid_t> groups_;         // of the user
  std::vector<std::string> folders_;  // where the administrator's rights serve
};

// Opens an item below an open folder without passing any symbolic link. errno tells why it failed; ELOOP for a link.
Descriptor openBeneath(int folder, const std::string& relativePath, int flags);

}  // namespace vantory
