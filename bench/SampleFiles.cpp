#include "bench/SampleFiles.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace vantory::bench {

namespace {

namespace fs = std::filesystem;

const std::string& noise() {
  static const std::string bytes = [] {
    std::mt19937_64 generator(1);
    std::string text(1 << 20, '\0');
    std::generate(text.begin(), text.end(), [&] { return static_cast<char>(generator()); });
    return text;
  }();
  return bytes;
}

std::string numbered(const char* format, int number) {
  char text[64];
  std::snprintf(text, sizeof text, format, number);
  return text;
}

std::uint64_t sampleSize(int number) {
  return 1024 + static_cast<std::uint64_t>(number) * 997 % 6144;
}

}  // namespace

void makeFile(const std::string& path, std::uint64_t bytes) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream file(path, std::ios::binary);
  while (bytes > 0) {
    const std::uint64_t part = std::min<std::uint64_t>(bytes, noise().size());
    file.write(noise().data(), static_cast<std::streamsize>(part));
    bytes -= part;
  }
  if (!file.flush()) {
    std::fprintf(stderr, "%s could not be written.\n", path.c_str());
    std::exit(1);
  }
}

std::vector<std::string> makeLayouts(const std::string& home, int count) {
  std::vector<std::string> paths;
  for (int number = 0; number < count; ++number) {
    paths.push_back(home + "/Library/Application Support/Final Cut Pro/Layouts/" +
                    numbered("Layout %04d.moduleLayout", number));
    makeFile(paths.back(), sampleSize(number));
  }
  return paths;
}

std::string makeButtonBars(const std::string& home, int count) {
  const std::string folder = home + "/Library/Preferences/Final Cut Pro User Data/Button Bars";
  for (int number = 0; number < count; ++number)
    makeFile(folder + numbered("/Bars %d", number % 10) + numbered("/Bar %04d.fcbtn", number), sampleSize(number));
  return folder;
}

std::vector<std::string> makeEquallyNamed(const std::string& home, int count) {
  std::vector<std::string> paths;
  for (int number = 0; number < count; ++number) {
    paths.push_back(home + "/Documents/Adobe/Premiere Pro/6.0/Settings/" + numbered("Job %04d", number) +
                    "/Broadcast 25p.sqpreset");
    makeFile(paths.back(), 1024);
  }
  return paths;
}

std::string backupPath(const std::string& home, const std::string& name) {
  return home + "/Library/Application Support/Quarrywell/Vantory/Backups/" + name + ".vnt";
}

std::string pathInBackup(const std::string& backup, const std::string& home, const std::string& path) {
  return backup + "/Users/user" + path.substr(home.size());
}

int entriesIn(const std::string& folder) {
  return fs::exists(folder) ? static_cast<int>(std::distance(fs::directory_iterator(folder), {})) : 0;
}

std::string trashFolder(const std::string& home) {
  return home + "/.local/share/Trash/files";
}

}  // namespace vantory::bench
