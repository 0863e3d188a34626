// Desktop entries: the files that declare applications.
#pragma once

#include <gio/gdesktopappinfo.h>

#include <memory>
#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/linux/session/GLibPointers.h"

namespace vantory::desktop {

using KeyFilePointer = std::unique_ptr<GKeyFile, Releaser<g_key_file_unref>>;
using ApplicationPointer = ObjectPointer<GDesktopAppInfo>;

enum class Case { Exact, Any };

// Found in the folder that comes first, and read with bounds: no file that is large or no file at all. One that the
// user has hidden is not there.
class DesktopEntry {
 public:
  // The entry "IDENTIFIER.desktop". An exact match goes before one in another case. Fails with
  // no_such_file_or_directory, or with what is wrong with the file.
  static Result<DesktopEntry> find(const std::string& identifier, Case names);

  const std::string& path() const { return path_; }
  std::string identifier() const;
  // Empty, or false, when the key is missing.
  std::string text(const char* key) const;
  bool isSet(const char* key) const;
  // The words of its command line without placeholders; none when it is malformed.
  std::vector<std::string> command() const;
  // The application, as GIO starts it. Fails when its program is missing.
  Result<ApplicationPointer> application() const;

 private:
  DesktopEntry(std::string path, KeyFilePointer keys) : path_(std::move(path)), keys_(std::move(keys)) {}
  static Result<DesktopEntry> read(const std::string& path);

  std::string path_;
  KeyFilePointer keys_;
};

}  // namespace vantory::desktop
