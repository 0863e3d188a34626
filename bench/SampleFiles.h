// Preference files for the benchmarks, under names that the built-in catalog knows.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vantory::bench {

// Makes a file, and its folders, of so many bytes that do not compress.
void makeFile(const std::string& path, std::uint64_t bytes);

// "Final Cut Pro/Layouts/*.moduleLayout", key fcpxWinLayouts: `count` single files of 1 to 7 KB, 4 KB on average.
// Answers their paths.
std::vector<std::string> makeLayouts(const std::string& home, int count);
inline constexpr const char* kLayoutsKey = "fcpxWinLayouts";

// "Button Bars", key fcpButton: one folder with ten folders in it and `count` files of the same sizes. Answers its
// path.
std::string makeButtonBars(const std::string& home, int count);
inline constexpr const char* kButtonBarsKey = "fcpButton";

// "Settings/*/*.sqpreset", key premiereSequencePresets: `count` small files of one name, each in a folder of its own.
std::vector<std::string> makeEquallyNamed(const std::string& home, int count);
inline constexpr const char* kEquallyNamedKey = "premiereSequencePresets";

// The backup of that name in the home's library.
std::string backupPath(const std::string& home, const std::string& name);
// Where a backup keeps what lies at this path in the home.
std::string pathInBackup(const std::string& backup, const std::string& home, const std::string& path);

// How many files and folders lie directly in a folder; 0 when there is none.
int entriesIn(const std::string& folder);
std::string trashFolder(const std::string& home);

}  // namespace vantory::bench
