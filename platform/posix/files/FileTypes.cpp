// Puts kinds of items into the program's own words.
#include "platform/posix/files/FileTypes.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cstring>

namespace vantory {

FileType typeOfMode(unsigned mode) {
  return S_ISREG(mode)   ? FileType::File
         : S_ISDIR(mode) ? FileType::Folder
         : S_ISLNK(mode) ? FileType::SymbolicLink
                         : FileType::Other;
}

FileType typeOfEntry(unsigned char kind) {
  switch (kind) {
    case DT_REG:
      return FileType::File;
    case DT_DIR:
      return FileType::Folder;
    case DT_LNK:
      return FileType::SymbolicLink;
    default:
      return FileType::Other;
  }
}

bool isSelfOrParent(const char* name) {
  return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

}  // namespace vantory
