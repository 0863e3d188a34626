#include "base/Paths.h"
#include "platform/Processes.h"
#include "platform/SystemTools.h"
#include "platform/Users.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/tools/QWTask.h"

namespace vantory {

namespace {

Platform& platform() {
  return Runtime::current().platform();
}

bool reportUncompressed(const std::string& source, std::string_view reason) {
  QWLog::appendLog("Unable to compress %@: %@", source, reason);
  return false;
}

// A tool has the rights of this process and would follow another user's links with them.
bool handlesOwnFiles() {
  const Users& users = platform().users;
  if (!users.isSuperuser()) return true;
  const auto handled = users.consoleUser();
  return handled && handled->id == 0;
}

bool zip(const std::string& source, const std::string& archive) {
  const ToolCall call = platform().tools.zip(source, archive);
  std::shared_ptr<Process> process;
  const auto said = QWTask::dataFromTask(call.tool, call.arguments, process);
  if (!process) return reportUncompressed(source, "the tool for it is missing");
  if (process->wait() != 0) return reportUncompressed(source, *said);
  if (!said->empty()) QWLog::appendLog("Compressing %@: %@", source, *said);
  return true;
}

}  // namespace

bool QWFileManager::compressFile(const std::string& source, const std::string& toDestinationFile) {
  if (itemExistsAtPath(toDestinationFile)) (void)trashFile(toDestinationFile, false);
  if (!handlesOwnFiles()) return reportUncompressed(source, "it must be done as the user whose file it is");
  const auto archive = QWLocalPaths::tempFile();
  if (!archive) return reportUncompressed(source, "there is no folder for temporary files");
  FileSystem& files = platform().files;
  // Made here, so that it is private while the tool fills it.
  if (const Status made = files.write(*archive, "", {}); !made) return reportUncompressed(source, made.error().text);
  const bool zipped = zip(source, *archive);
  const Status moved = zipped ? files.move(*archive, toDestinationFile) : Status();
  if (zipped && moved) return true;
  (void)files.remove(*archive);
  return zipped && reportUncompressed(source, moved.error().text);
}

bool QWFileManager::registerApplicationWithLaunchServices(const std::string& path) {
  const auto call = platform().tools.registerApplication(path);
  return call && fileExistsAtPath(path) && QWTask::terminationCodeFromTask(call->tool, call->arguments) == 0;
}

}  // namespace vantory
