// The calls of macOS that its files need, as thin functions: another system can answer them where they are tested.
//
// Each answers as the call that it is named after would: less than 0 with errno where it failed. Constants of which
// other systems know nothing bear their own numbers.
#pragma once

#include <sys/types.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "platform/posix/files/ItemLook.h"

namespace vantory::darwin {

// What a file system answers that cannot do something; one number on other systems.
inline bool isUnsupported(int error) {
  return error == ENOTSUP || error == EOPNOTSUPP;
}

#ifdef __APPLE__
inline constexpr int kNoAttribute = ENOATTR;
#else
inline constexpr int kNoAttribute = ENODATA;
#endif

// Flags of an item.
inline constexpr std::uint32_t kImmutable = 0x2;            // the owner's
inline constexpr std::uint32_t kAppendOnly = 0x4;           // the owner's
inline constexpr std::uint32_t kSystemImmutable = 0x20000;  // the system's
inline constexpr std::uint32_t kSystemAppendOnly = 0x40000;
inline constexpr std::uint32_t kRestricted = 0x80000;  // the system's own
inline constexpr std::uint32_t kSystemNoUnlink = 0x100000;
inline constexpr std::uint32_t kOnlyInCloud = 0x40000000;  // no content here
inline constexpr std::uint32_t kLocks = kImmutable | kAppendOnly | kSystemImmutable | kSystemAppendOnly;
inline constexpr std::uint32_t kForbidding = kLocks | kRestricted | kSystemNoUnlink;

struct ItemStatus : ItemLook {
  uid_t owner = 0;
  gid_t group = 0;
  timespec accessed{};
  timespec created{};
  std::uint32_t flags = 0;
  std::uint64_t held = 0;   // bytes that it takes up on its volume
  std::uint64_t names = 0;  // by which it can be reached
};

enum class AtEnd { FollowLink, KeepLink };

int statusOf(int item, ItemStatus& status);
int statusAt(int folder, const char* name, AtEnd link, ItemStatus& status);

// As openat(); what is opened is never handed down.
int openAt(int folder, const char* name, int flags, mode_t mode = 0);
// A new private file that is locked from its first moment.
int openNewHeld(int folder, const char* name);
int makeFolder(int folder, const char* name);
// Opens a link itself.
int openLink(int folder, const char* name);
int setOwner(int item, uid_t owner, gid_t group);

int renameExclusively(int fromFolder, const char* from, int toFolder, const char* to);
int renameOver(int fromFolder, const char* from, int toFolder, const char* to);
int exchange(int oneFolder, const char* one, int otherFolder, const char* other);
int removeFile(int folder, const char* name);
int removeFolder(int folder, const char* name);

// Makes a new file that shares the blocks of an open one, with all that belongs to it, flags too, but for its owner.
int clone(int source, int folder, const char* name);
int setFlags(int item, std::uint32_t flags);
// Never follows a link.
int setFlagsAt(int folder, const char* name, std::uint32_t flags);
int setCreated(int item, timespec time);

// What was written to the file goes to the drive before whatever is written later.
int flushInOrder(int file);
// What was handed to the drive before is on its medium.
int flushDrive(int item);
// Everything on the volume that holds the item is on its medium.
int flushVolume(int item);

ssize_t attributeNames(int item, char* names, std::size_t size);
ssize_t attribute(int item, const char* name, void* value, std::size_t size, std::uint32_t position);
int setAttribute(int item, const char* name, const void* value, std::size_t size, std::uint32_t position);
int removeAttribute(int item, const char* name);
// Never follow a link.
ssize_t attributeAt(const char* path, const char* name, void* value, std::size_t size);
int setAttributeAt(const char* path, const char* name, const void* value, std::size_t size);
int removeAttributeAt(const char* path, const char* name);

// Gives an item the access list of another, or none.
int copyAccessList(int from, int to);
int dropAccessList(int item);
// Whether an item's access list allows anybody anything, or cannot be told.
bool listGrants(int item);

// How many bytes the volume that holds the item has, and how many of them are free.
struct Room {
  std::uint64_t whole = 0;
  std::uint64_t free = 0;
};
int roomOf(int item, Room& room);
// Where the volume that holds the item is mounted; empty where that cannot be told.
std::string volumeOf(int folder, const std::string& name);
// On this thread, whether reading a file that is only in the cloud fetches it.
void fetchFromCloud(bool fetch);
// Who sits at the screen.
std::optional<uid_t> consoleOwner();
// Whose process is at the other end of a socket.
std::optional<uid_t> userBehind(int socket);

struct RunningProgram {
  pid_t process = 0;
  std::string path;  // its file, without links
};

// The programs of a user that run and have not ended, but for those whose file cannot be told.
std::vector<RunningProgram> programsOf(uid_t user);
// Where a tool of the system lies that is at this path on every Mac.
std::string toolPath(const std::string& path);
// Leaves this process, for good, work on files and nothing else: no network, no programs to start. False when that
// failed.
bool keepOnlyFileWork();
// Whether somebody in this session can be reached by messages under the name.
bool hasMessagePort(const std::string& name);

}  // namespace vantory::darwin
