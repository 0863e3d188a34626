// Kinds of items as the system calls tell of them.
#pragma once

#include "platform/FileSystem.h"

namespace vantory {

// The kind that a mode tells of.
FileType typeOfMode(unsigned mode);
// The kind that a folder's entry tells of, such as DT_REG. Other also stands for what a file system does not tell
// there.
FileType typeOfEntry(unsigned char kind);
// Whether an entry is "." or "..".
bool isSelfOrParent(const char* name);

}  // namespace vantory
