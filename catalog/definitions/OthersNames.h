// Names that no added application may have its files under: they are other programs', or start programs.
#pragma once

#include <string_view>

namespace vantory {

// All in small letters; "*" at an end stands for any run of characters.

// Folders and files of other programs in "~/.config", "~/.local/share" and "~/Library/Application Support", and with a
// dot before them in the home.
bool isOfAnotherProgram(std::string_view component);
// Makers of several applications, whose folders are shared by these.
bool isOfMaker(std::string_view component);
// Folders out of which programs are started, wherever they lie.
bool holdsPrograms(std::string_view component);
// Such folders where they lie directly in that of a program.
bool holdsAdditions(std::string_view component);
// Files that are programs, start some, or are read by a shell.
bool isProgram(std::string_view name);
// Files that another program may run as a part of itself.
bool isScript(std::string_view name);
// What is called after keys and passwords.
bool holdsSecrets(std::string_view component);

}  // namespace vantory
