// Copies as the tool "cp" makes them.
#pragma once

#include <string>

#include "base/Paths.h"
#include "platform/FileSystem.h"
#include "platform/OneItem.h"

namespace vantory {

// Where "cp -f -R" puts the copy of an item of this type: in a folder that is there under the item's own name, else at
// the path itself. Fails where something is in the way that a copy must not take the place of: only a file goes over
// what is no folder, and no folder goes into itself.
inline Result<std::string> placeOfCopy(const FileSystem& files, const std::string& source, FileType type,
                                       const std::string& destination) {
  std::string place = destination;
  auto there = files.info(place, Links::DoNotFollow);
  if (there && there->type == FileType::Folder) {
    place = paths::join(destination, paths::lastComponent(source));
    there = files.info(place, Links::DoNotFollow);
  }
  if (!there && !meansMissing(there.error())) return there.error();
  if (there && there->type == FileType::Folder) return Error{std::errc::is_a_directory, place + ": a folder is there"};
  if (there && type != FileType::File) return Error{std::errc::file_exists, place + ": what is there is no folder"};
  if (type == FileType::Folder)
    for (std::string above = paths::parent(place); above != "/" && !above.empty(); above = paths::parent(above))
      if (leadToOneItem(files, above, source))
        return Error{std::errc::invalid_argument, place + ": a folder cannot be copied into itself"};
  return place;
}

// Copies a file or a folder there, whole or not at all.
inline Status copyAsTool(FileSystem& files, const std::string& source, FileType type, const std::string& destination,
                         CopyChecksum checksum, const CopyObserver& observer = {}) {
  const auto place = placeOfCopy(files, source, type, destination);
  if (!place) return place.error();
  const auto staged = files.stageCopy({.source = source,
                                       .destination = *place,
                                       .links = Links::DoNotFollow,
                                       .observer = observer,
                                       .checksum = checksum});
  if (!staged) return staged.error();
  return (*staged)->commit(type == FileType::File ? StagedCopy::Existing::Replace : StagedCopy::Existing::Keep);
}

}  // namespace vantory
