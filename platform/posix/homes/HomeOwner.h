// Whose a home folder is, and working in it as that user.
#pragma once

#include <string>

#include "base/Result.h"
#include "platform/Users.h"

namespace vantory {

struct HomeOwner {
  User user;  // whose home is the folder, without links
  std::string name;
};

// For the superuser's process: the owner of a home. Nothing below the home is looked at. The error's code is
// std::errc::operation_not_supported for a folder of the superuser's own, which is nobody's home. May wait for a dead
// file system or user database.
Result<HomeOwner> ownerOfHome(const std::string& home);

// For the superuser's process with one thread: from now on it is the owner's, for good, with the owner's environment.
// No process of the owner's may look into it.
Status becomeOwner(const HomeOwner& owner);

// For any other process: from now on this is its home. One of another user's is none of an error.
Status adoptHome(const std::string& home);

// For any other process, before it changes files there: fails with permission_denied and a sentence with the cure where
// the home is another user's and is not shared with it.
Status checkIsNotOthers(const std::string& home);

}  // namespace vantory
