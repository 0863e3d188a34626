#include "tests/support/ScratchFolder.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace vantory::test {

namespace fs = std::filesystem;

ScratchFolder::ScratchFolder() {
  std::string name = "/tmp/vantory-test-XXXXXX";
  if (!mkdtemp(name.data())) throw std::runtime_error("no scratch folder can be made below /tmp");
  path_ = fs::canonical(name).native();
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string ScratchFolder::operator/(std::string_view relative) const {
  return path_ + "/" + std::string(relative);
}

void writeFile(const std::string& path, std::string_view bytes) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream stream(path, std::ios::binary | std::ios::trunc);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  stream.flush();
  if (!stream) throw std::runtime_error("cannot write " + path);
}

std::string readFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) throw std::runtime_error("cannot read " + path);
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

void makeFolders(const std::string& path) {
  fs::create_directories(path);
}

bool exists(const std::string& path) {
  return fs::symlink_status(path).type() != fs::file_type::not_found;
}

}  // namespace vantory::test
