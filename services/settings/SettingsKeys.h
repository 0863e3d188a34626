// The keys of the program's settings.
#pragma once

#include "platform/PrivilegedRunner.h"

namespace vantory::setting {

inline constexpr const char* kBackupPath = "backupPath";                  // the library's folder
inline constexpr const char* kDefaultBackup = "defaultBackup";            // the name of its folder
inline constexpr const char* kAutoRestoreDefault = "autoRestoreDefault";  // 1: restore it after trashing
inline constexpr const char* kSelectedPrefs = "selectedPrefs";            // the keys of the ticked items
inline constexpr const char* kPeriodicAutosave = "periodicAutosave";      // 1: make automatic backups ...
inline constexpr const char* kAutosaveFrequency = "autosaveFrequency";    // ... every so many days, at least 1
inline constexpr int kUsualAutosaveFrequency = 7;                         // ... where nobody chose
inline constexpr const char* kMaxAutoBackups = "maxAutoBackups";          // how many of them are kept ...
inline constexpr int kUsualMaxAutoBackups = 10;                           // ... where nobody chose
inline constexpr const char* kSortedColumn = "sortedColumn";  // of the Restore pane: "name", "date" or "size"
inline constexpr const char* kSortedDescending = "sortedDescending";
// 1: with a project that no backup is linked to, show the system settings of Final Cut Pro.
inline constexpr const char* kShowSystemSettings = "showSysSettingsDialog";
// 1: the window asks for an administrator before it opens.
inline constexpr const char* kRequireAdministrator = kAdministratorSetting;

}  // namespace vantory::setting
