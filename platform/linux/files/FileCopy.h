// Copying one open file into another, with what belongs to it.
#pragma once

#include <sys/stat.h>

#include <string>

#include "base/Result.h"
#include "platform/FileSystem.h"
#include "platform/posix/files/CopyReport.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/ItemLook.h"

namespace vantory {

class FileRights;

// With whose rights files are copied, what comes of their checksums and permissions.
struct CopyManner {
  const FileRights& rights;
  CopyChecksum checksum = CopyChecksum::Keep;
  bool mayBeProgram = true;  // otherwise untrustedMode() decides, and nothing gets an access list
};

// What is compared of an item that was looked at by its descriptor; says nothing of locks.
ItemLook lookOf(const struct stat& status);

// Opens a file or folder that is to be copied, without waiting for a FIFO or following a link. An invalid descriptor
// leaves errno.
Descriptor openSource(int folder, const char* name, int followFlag);

// Takes from a new file or folder the access lists that it inherited from the folder it was made in: they would let
// others in as soon as the copy gets its mode. False, with errno, when it may still have them.
bool dropInherited(int item);

// Copies the content and attributes of an open regular file of this status into a new empty one. A source that changes
// meanwhile is copied again, up to three times. `path` names the source in messages; `destination` decides who owns the
// copy, which is open for reading too.
Status copyFileContent(int source, struct stat status, int copy, const std::string& path,
                       const std::string& destination, const CopyManner& manner, CopyReport& report);

// Copies a symbolic link, with its times, under a name that nothing has; leaves nothing behind when it fails. `path`
// and `destination` as above.
Status copyLink(int folder, const char* name, int copyFolder, const char* copyName, const std::string& path,
                const std::string& destination, const FileRights& rights, CopyReport& report);

// Gives a copy the extended attributes, mode and times of its source. Content must be complete: it may be read-only
// afterwards.
Status copyAttributes(int source, const struct stat& status, int copy, const std::string& path,
                      const std::string& destination, const CopyManner& manner, CopyReport& report);

}  // namespace vantory
