// Starts copies that run in the background.
#include <utility>

#include "base/Format.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "platform/SystemLog.h"
#include "services/Runtime.h"
#include "services/files/FileOperation.h"
#include "services/files/QWFileManager.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

template <class... Arguments>
void logToSystem(std::string_view format, const Arguments&... arguments) {
  Runtime::current().platform().systemLog.write(printable(formatted(format, arguments...)));
}

}  // namespace

std::shared_ptr<FileOperation> QWFileManager::copyFileWithProgress(FileOperationContext context) {
  const std::string source = context.source;
  const std::string folder = paths::parent(context.destination);
  if (!fileExistsAtPath(source)) {
    logToSystem("Error: File %@ doesn't exist. Aborting copy process...", source);
    return nullptr;
  }
  if (!fileExistsAtPath(folder) && !createDirectory(folder, 10s)) {
    logToSystem("Unable to copy file %@ - destination directory %@ doesn't exist. Aborting copy process...", source,
                folder);
    return nullptr;
  }
  auto operation = std::make_shared<FileOperation>(std::move(context));
  if (const Status started = operation->start(); !started) {
    logToSystem("Failed to begin asynchronous object copy: %@", static_cast<int>(started.error().code));
    return nullptr;
  }
  return operation;
}

std::shared_ptr<FileOperation> QWFileManager::copyFileWithProgress(const std::string& source,
                                                                   const std::string& destination,
                                                                   std::shared_ptr<FileOperationDelegate> delegate,
                                                                   std::any object) {
  return copyFileWithProgress({source, destination, std::move(delegate), std::move(object), {}});
}

void QWFileManager::cancelFileOperation(FileOperation& operation) {
  operation.cancel();
}

}  // namespace vantory
