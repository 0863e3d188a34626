// The log that the superuser's tasks write for the whole machine.
#pragma once

#include <string>

#include "base/Result.h"
#include "platform/StandardFolders.h"
#include "platform/macos/files/MacFileSystem.h"
#include "platform/macos/rights/RootConversation.h"

namespace vantory {

// A request is this, a verb, and names of files in the folder of the log.
inline constexpr const char* kMachineLog = "machine-log";

// Its folder; none where there is no place for it.
std::string machineLogFolder(const StandardFolders& standard);

// With the superuser's rights, for a process that need not be trusted: nothing but log files in that one folder.
class MachineLog {
 public:
  explicit MachineLog(const StandardFolders& standard) : folder_(machineLogFolder(standard)) {}

  // Does what is asked; the log that is opened for adding goes to `file`.
  Status perform(const Message& request, Descriptor& file);

 private:
  Status open(const std::string& path, Descriptor& file) const;

  const std::string folder_;
  const macos::Rights rights_ = macos::Rights::machine();
  MacFileSystem files_{rights_};
};

// The same folder for the process that asks. All else is done with that one's own rights. Any thread.
class MachineLogFiles : public MacFileSystem {
 public:
  // The conversation outlives it.
  MachineLogFiles(const StandardFolders& standard, RootConversation& superuser)
      : folder_(machineLogFolder(standard)), superuser_(superuser) {}

  Status makeFolder(const std::string& path) override;
  Status write(const std::string& path, std::string_view bytes, WriteOptions options) override;
  Status remove(const std::string& path) override;
  Result<Notes> move(const std::string& source, const std::string& destination) override;
  Result<std::unique_ptr<AppendFile>> openForAppending(const std::string& path) override;

 private:
  Status ask(const std::string& verb, const std::string& path, const std::string& more = {},
             Descriptor* file = nullptr);

  const std::string folder_;
  RootConversation& superuser_;
};

}  // namespace vantory
