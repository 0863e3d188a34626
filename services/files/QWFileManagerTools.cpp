// What tools of the system do: archives, and the registry of applications.
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

// A failure, told in the log.
Status reportUncompressed(const std::string& source, const std::string& reason, std::errc code = std::errc::io_error) {
  QWLog::appendLog("Unable to compress %@: %@", source, reason);
  return Error{code, source + ": " + reason};
}

// A tool has the rights of this process and would follow another user's links with them.
bool handlesOwnFiles() {
  const Users& users = platform().users;
  if (!users.isSuperuser()) return true;
  const auto handled = users.consoleUser();
  return handled && handled->id == 0;
}

// Fails with what the tool said. What it says about a success is logged.
Status zip(const std::string& source, const std::string& archive) {
  const ToolCall call = platform().tools.zip(source, archive);
  std::shared_ptr<Process> process;
  const auto said = QWTask::dataFromTask(call.tool, call.arguments, process);
  if (!process) return reportUncompressed(source, "the tool for it is missing");
  if (process->wait() != 0) return reportUncompressed(source, *said);
  if (!said->empty()) QWLog::appendLog("Compressing %@: %@", source, *said);
  return {};
}

}  // namespace

Status QWFileManager::compressFile(const std::string& source, const std::string& toDestinationFile) {
  // What is still in the way refuses the new name below.
  if (itemExistsAtPath(toDestinationFile)) (void)trashFile(toDestinationFile, false);
  if (!handlesOwnFiles()) return reportUncompressed(source, "it must be done as the user whose file it is");
  const auto archive = QWLocalPaths::tempFile();
  if (!archive) return reportUncompressed(source, "there is no folder for temporary files");
  FileSystem& files = platform().files;
  // Made here, so that it is private while the tool fills it.
  if (const Status made = files.write(*archive, "", {}); !made) return reportUncompressed(source, made.error().text);
  const Status zipped = zip(source, *archive);
  const Status moved = zipped ? files.move(*archive, toDestinationFile).status() : Status();
  if (zipped && moved) return {};
  (void)files.remove(*archive);
  return zipped ? reportUncompressed(source, moved.error().text, moved.error().code) : zipped;
}

Status QWFileManager::registerApplicationWithLaunchServices(const std::string& path) {
  if (!fileExistsAtPath(path)) return Error{std::errc::no_such_file_or_directory, path + " does not exist"};
  const auto call = platform().tools.registerApplication(path);
  if (!call) return Error{std::errc::not_supported, path + " cannot be registered on this system"};
  if (QWTask::terminationCodeFromTask(call->tool, call->arguments) == 0) return {};
  return Error{std::errc::io_error, path + " could not be registered by " + call->tool};
}

void QWFileManager::notifyFileSystemChanged(const std::string& path) {
  if (const auto call = platform().tools.refreshView(path)) (void)QWTask::runTask(call->tool, call->arguments);
}

}  // namespace vantory
