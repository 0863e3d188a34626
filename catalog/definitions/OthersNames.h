// Names that no added application may have its files under: they are other programs', or start programs.
#pragma once

#include <string_view>

namespace vantory {

// All in small letters; in a component "*" stands for any run of characters. Where a name is answered it is the one
// that the component could match; empty for none.

// Folders and files of other programs in "~/.config", "~/.local/share" and "~/Library/Application Support", and with a
// dot before them in the home.
std::string_view nameOfAnotherProgram(std::string_view component);
// What follows the maker's part of a name such as "com.apple.motion.plist", which many applications have in common;
// empty where nothing does, the name itself where it has no such part.
std::string_view withoutDomain(std::string_view name);
// Makers of several applications, whose folders are shared by these.
bool isOfMaker(std::string_view component);
// Folders out of which programs are started, wherever they lie.
std::string_view folderOfPrograms(std::string_view component);
// Such folders where they lie directly in that of a program.
std::string_view folderOfAdditions(std::string_view component);
// Files that are programs, start some, or are read by a shell.
bool isProgram(std::string_view name);
// Files that another program may run as a part of itself.
bool isScript(std::string_view name);
// What is called after keys and passwords.
bool holdsSecrets(std::string_view component);

}  // namespace vantory
