// What only the windowed program does: services, for which authorization may be asked, and work on the library. Each
// line of standard input is an operation and its operands, separated by tabs; each answer is a line with 1 or 0. One
// operation may be given as the program's arguments instead; then the exit code, 0 or 1, is the answer.
#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "backups/QWBackup.h"
#include "backups/QWDataController.h"
#include "backups/QWLaunchd.h"
#include "base/Text.h"
#include "services/Runtime.h"
#include "services/files/QWAuthorization.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/settings/QWUserDefaults.h"
#include "services/threads/MainThread.h"
#include "settings/ui/LibraryMove.h"
#include VANTORY_PLATFORM_HEADER

namespace {

using namespace vantory;
using Files = QWFileManager;
using Operands = std::vector<std::string>;

QWAuthorization& authorization() {
  return QWAuthorization::sharedController();
}

// start-job LABEL SECONDS PROGRAM NAME [ARGUMENT...]
bool startJob(const Operands& operands) {
  PropertyListDictionary job;
  job.set("Label", operands.at(1));
  job.set("Program", textValue(operands.at(3)));
  PropertyListArray names;
  for (std::size_t i = 4; i < operands.size(); ++i) names.push_back(textValue(operands[i]));
  job.set("ProgramArguments", names);
  job.set("StartInterval", std::int64_t{std::stoll(operands.at(2))});
  return QWLaunchd::startLaunchAgent(operands[1], job, true);
}

// update NAME: replaces the copies in that backup.
bool updateBackup(const Operands& operands) {
  QWDataController& data = QWDataController::sharedController();
  data.populateApps();
  data.populateBackups();
  for (const auto& node : data.backupArray()) {
    const auto backup = std::dynamic_pointer_cast<QWBackup>(node);
    if (!backup || backup->name() != operands.at(1)) continue;
    TaskReport report;
    return backup->writeData(report, true) == WriteResult::Success && report.isWhole();
  }
  return false;
}

const std::map<std::string, std::function<bool(const Operands&)>> kOperations = {
    {"copy", [](const Operands& o) { return Files::copyFile(o.at(1), o.at(2)).ok(); }},
    {"move", [](const Operands& o) { return Files::moveFile(o.at(1), o.at(2)).ok(); }},
    {"remove", [](const Operands& o) { return Files::removeFile(o.at(1)).ok(); }},
    {"trash", [](const Operands& o) { return Files::trashFile(o.at(1)).ok(); }},
    {"mkdir", [](const Operands& o) { return Files::createDirectory(o.at(1)).ok(); }},
    {"touch", [](const Operands& o) { return Files::touchFile(o.at(1)).ok(); }},
    {"lock", [](const Operands& o) { return Files::lockFile(o.at(1)).ok(); }},
    {"unlock", [](const Operands& o) { return Files::unlockFile(o.at(1)).ok(); }},
    {"require", [](const Operands& o) { return authorization().authRequireAdministrator(o.at(1) == "1"); }},
    {"tool",
     [](const Operands& o) {
       return authorization().authExecTask(o.at(1), {o.begin() + 2, o.end()}) == 0;
     }},
    {"set", [](const Operands& o) { return QWUserDefaults::standardUserDefaults().setObject(o.at(1), o.at(2)).ok(); }},
    {"start-job", startJob},
    {"remove-job", [](const Operands& o) { return QWLaunchd::removeLaunchAgent(o.at(1), true), true; }},
    {"update", updateBackup},
    {"move-library", [](const Operands& o) { return moveLibrary(o.at(1), o.at(2)).isWhole(); }},
    {"prune", [](const Operands&) { return QWDataController::sharedController().manageAutoBackups().isWhole(); }},
    {"start", [](const Operands&) { return authorization().authStart(); }},
    {"end", [](const Operands&) { return authorization().authEnd(), true; }},
    {"authorized", [](const Operands&) { return authorization().isAuthorized(); }},
    {"window", [](const Operands& o) { return authorization().setHasGUI(o.at(1) == "1"), true; }},
};

}  // namespace

int main(int count, char** list) {
  const Operands arguments(list, list + count);
  VANTORY_PLATFORM platform(arguments);
  Runtime runtime(platform.platform());
  runtime.shared<MainThread>();
  QWLog::createNewLog("Driver");
  if (count > 1) return kOperations.at(arguments[1])({arguments.begin() + 1, arguments.end()}) ? 0 : 1;
  for (std::string line; std::getline(std::cin, line);) {
    const Operands operands = split(line, '\t');
    std::cout << kOperations.at(operands.front())(operands) << std::endl;
  }
}
