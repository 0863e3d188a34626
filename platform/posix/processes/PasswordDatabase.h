// Users that the machine knows.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/Users.h"

namespace vantory {

// None when there is no such user; the home is empty where the database's cannot serve as one.
std::optional<User> databaseUser(uid_t id);
// The user's name; none when there is no such user.
std::optional<std::string> databaseName(uid_t id);
// The user with the id in decimal digits; none for any other text.
std::optional<User> userWithId(std::string_view digits);

// The folder, unless it is "/", the home of service accounts: a task must never take the whole machine for a user's
// folder.
std::optional<std::string> usableHome(std::optional<std::string> folder);

// The folder that HOME names, unless it is the home of this user, or that of the process's own in the database.
std::optional<std::string> homeBesides(const std::optional<User>& user);

}  // namespace vantory
