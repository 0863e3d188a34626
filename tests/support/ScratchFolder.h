// A folder of a test's own.
#pragma once

#include <string>
#include <string_view>

namespace vantory::test {

// A new folder directly below /tmp, two levels deep as a home should be; deleted with all it holds at the end. Locked
// files and folders in it are the test's to unlock.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::string& path() const { return path_; }
  // The full path of something in the folder.
  std::string operator/(std::string_view relative) const;

 private:
  std::string path_;
};

// Plain file access by full path, for arranging and checking. A failure ends the test program with an exception.
void writeFile(const std::string& path, std::string_view bytes);  // makes the folders above it
std::string readFile(const std::string& path);
void makeFolders(const std::string& path);
bool exists(const std::string& path);  // a link counts, wherever it points

}  // namespace vantory::test
