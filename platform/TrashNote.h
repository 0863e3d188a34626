// The note that lies beside an item in the desktop's Trash, so that a file manager can put the item back.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace vantory {

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
  std::string note = "[Trash Info]\nPath=";
  for (const char character : path) {
    const auto byte = static_cast<unsigned char>(character);
    if (kPlainInTrashNote[byte]) {
      note += character;
    } else {
      note += {'%', kDigits[byte >> 4], kDigits[byte & 0xF]};
    }
  }
  note.append("\nDeletionDate=").append(localDate).append("\n");
  return note;
}

}  // namespace vantory
