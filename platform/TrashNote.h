// The note that lies beside an item in the desktop's Trash, so that a file manager can put the item back.
#pragma once

#include <algorithm>
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
