// How the desktop's Trash is laid out: its items in one folder, and in another for each a note, by which a file manager
// puts the item back.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "base/Paths.h"
#include "base/Text.h"

namespace vantory {

inline constexpr const char* kTrashItemsFolder = "files";
inline constexpr const char* kTrashNotesFolder = "info";

// Whether what lies in this folder of a Trash has notes; not every system's has.
inline bool hasTrashNotes(std::string_view folder) {
  return paths::lastComponent(folder) == kTrashItemsFolder;
}

// The name of an item's note.
inline std::string trashNoteName(std::string_view trashedName) {
  return std::string(trashedName).append(".trashinfo");
}

// Where the note of what lies at this place of a Trash is.
inline std::string trashNotePath(std::string_view place) {
  const std::string trash = paths::parent(paths::parent(place));
  return paths::join(paths::join(trash, kTrashNotesFolder), trashNoteName(paths::lastComponent(place)));
}

// The name that an item gets in the Trash: a mark tells it from others that were called like it. What is too long, for
// its note's name where it has one, is cut.
inline std::string nameInTrash(std::string_view stem, std::string_view mark, std::string_view extension, bool hasNote) {
  constexpr std::size_t kLongestName = 255;  // in bytes, which every file system holds
  const std::size_t longest = kLongestName - (hasNote ? trashNoteName("").size() : 0) - mark.size();
  const std::string_view end = shortened(extension, longest);
  return std::string(shortened(stem, longest - end.size())).append(mark).append(end);
}

// The characters that need no escape in the note's path.
inline constexpr std::array<bool, 256> kPlainInTrashNote = [] {
  std::array<bool, 256> plain{};
  for (const char character : std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/"))
    plain[static_cast<unsigned char>(character)] = true;
  return plain;
}();

// The text of the note. `path` says where the item lay: absolute, or relative to the top of its own file system; any
// bytes. `localDate` says when it was trashed, as "2026-11-14T21:35:17".
inline std::string trashNote(std::string_view path, std::string_view localDate) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto isPlain = [](char character) { return kPlainInTrashNote[static_cast<unsigned char>(character)]; };
  std::string note = "[Trash Info]\nPath=";
  note.reserve(path.size() + 80);
  while (!path.empty()) {
    const auto plain = static_cast<std::size_t>(std::ranges::find_if_not(path, isPlain) - path.begin());
    note.append(path.substr(0, plain));
    path.remove_prefix(plain);
    if (path.empty()) break;
    const auto byte = static_cast<unsigned char>(path.front());
    note += {'%', kDigits[byte >> 4], kDigits[byte & 0xF]};
    path.remove_prefix(1);
  }
  note.append("\nDeletionDate=").append(localDate).append("\n");
  return note;
}

}  // namespace vantory
