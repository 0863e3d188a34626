// How backups are called on disk, and what lies in the library beside them.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace vantory {

inline constexpr std::string_view kBackupExtension = "vnt";
inline constexpr std::string_view kOlderBackupExtension = "vnt2";  // read, never written
inline constexpr std::array kBackupExtensions = {kBackupExtension, kOlderBackupExtension};
// The folder of automatic backups in the library, and how their names begin.
inline constexpr const char* kAutosavesFolder = "Autosaves";
inline constexpr std::string_view kAutomaticPrefix = "Auto Backup ";
// In each backup; it says what the backup holds.
inline constexpr const char* kBackupSettingsFile = "Settings.plist";
// In its settings, the definitions of applications that are not built in.
inline constexpr const char* kDefinitionsKey = "definitions";

// "Set" gives "Set.vnt".
std::string backupFileName(std::string_view name);
// "/library/Set.vnt" gives "Set".
std::string backupName(std::string_view path);
// "/library/Set.vnt2" gives "/library/Set.vnt".
std::string withBackupExtension(std::string_view path);
// Whether the name of a folder, or a path, ends in one of the extensions, in any case.
bool isBackupName(std::string_view path);
bool isAutomaticName(std::string_view name);
// Whether nothing but dots and blanks is in the name, so that its folder would be a hidden one without a name.
bool isOfDotsOnly(std::string_view name);

}  // namespace vantory
