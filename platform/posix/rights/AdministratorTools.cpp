// Checks the paths of a request, and does the tool's work by system calls.
#include "platform/posix/rights/AdministratorTools.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/Paths.h"
#include "platform/OneItem.h"
#include "platform/PrivilegedRunner.h"
#include "platform/ProtectedFolders.h"
#include "platform/ToolCopy.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/Names.h"

namespace vantory {

namespace {

Status refusal(std::string_view about, std::string_view reason) {
  return errorWithText(std::errc::operation_not_permitted, about, reason);
}

// The tools, too, are content with what is gone already.
Status unlessMissing(Status status) {
  if (!status && status.error().code == std::errc::no_such_file_or_directory) return {};
  return status;
}

}  // namespace

// A tool with exactly these options, and behind them a number of paths.
struct AdministratorTools::Shape {
  std::string tool;
  std::vector<std::string> options;
  std::size_t paths;
  Status (AdministratorTools::*work)(const Paths&);

  bool fits(const std::string& otherTool, const std::vector<std::string>& arguments) const {
    return tool == otherTool && arguments.size() == options.size() + paths &&
           std::equal(options.begin(), options.end(), arguments.begin());
  }
};

// Every call that the program makes and no other: options are compared to the letter.
const std::vector<AdministratorTools::Shape>& AdministratorTools::shapes() {
  using Tools = AdministratorTools;
  static const std::vector<Shape> list = {
      {"/bin/cp", {"-f", "-p", "-R"}, 2, &Tools::copy},
      {"/bin/mv", {"-f"}, 2, &Tools::move},
      {"/bin/rm", {"-Rdf"}, 1, &Tools::removeItem},
      {"/bin/rm", {"-R", "-f"}, 1, &Tools::removeItem},
      {"/bin/mkdir", {"-p"}, 1, &Tools::makeFolder},
      {"/usr/bin/touch", {"-c"}, 1, &Tools::touch},
      {"/usr/bin/chattr", {"+i"}, 1, &Tools::lock},
      {"/usr/bin/chattr", {"-i"}, 1, &Tools::unlock},
      {"/usr/sbin/chown", {"root:wheel"}, 1, &Tools::giveJobToSuperuser},
      {"/bin/chmod", {"644"}, 1, &Tools::publishJob},
      {kMachineSettingTool, {kAdministratorSetting, "1"}, 0, &Tools::requireAdministrator},
      {kMachineSettingTool, {kAdministratorSetting, "0"}, 0, &Tools::requireNoAdministrator},
  };
  return list;
}

AdministratorTools::AdministratorTools(User user, const StandardFolders& standard,
                                       std::unique_ptr<AdministratorDisk> disk, IsWanted isWanted)
    : user_(std::move(user)), standard_(standard), disk_(std::move(disk)), isWanted_(std::move(isWanted)) {}

bool AdministratorTools::knows(const std::string& tool) {
  return std::any_of(shapes().begin(), shapes().end(), [&](const Shape& shape) { return shape.tool == tool; });
}

// Paths are brought into one form first, in which all checks compare them.
Status AdministratorTools::perform(const std::string& tool, const std::vector<std::string>& arguments) {
  const auto shape =
      std::find_if(shapes().begin(), shapes().end(), [&](const Shape& each) { return each.fits(tool, arguments); });
  if (shape == shapes().end()) return refusal(tool, "is no tool of ours, or is not called as we call it");
  Paths paths;
  for (std::size_t i = shape->options.size(); i < arguments.size(); ++i) {
    std::optional<std::string> path = plainPath(arguments[i]);
    if (!path) return refusal(arguments[i], "is no absolute path");
    paths.push_back(std::move(*path));
  }
  return (this->*shape->work)(paths);
}

// A link stays a link. What goes back to its place from a backup must be what its checksum says.
Status AdministratorTools::copy(const Paths& paths) {
  const Result<FileInfo> item = files_.info(paths[0], Links::DoNotFollow);
  if (!item) return item.error();
  if (item->type != FileType::SymbolicLink) {
    const auto isWanted = [this](std::int64_t, int) { return !isWanted_ || isWanted_(); };
    return copyAsTool(files_, paths[0], item->type, paths[1], CopyChecksum::Check, isWanted);
  }
  const Result<std::string> place = placeOfCopy(files_, paths[0], item->type, paths[1]);
  return place ? disk_->copyLink(paths[0], *place) : place.status();
}

// To the place of a job the superuser writes a file of its own.
Status AdministratorTools::move(const Paths& paths) {
  if (machine_.isJob(paths[1])) return machine_.install(paths[0], paths[1]);
  if (Status allowed = refuseProtected(paths[0]); !allowed) return allowed;
  return files_.move(paths[0], paths[1]).status();
}

Status AdministratorTools::removeItem(const Paths& paths) {
  if (machine_.isJob(paths[0])) return unlessMissing(machine_.remove(paths[0]));
  if (Status allowed = refuseProtected(paths[0]); !allowed) return allowed;
  return unlessMissing(files_.remove(paths[0]));
}

// The folders of jobs are the machine's.
Status AdministratorTools::makeFolder(const Paths& paths) {
  return machine_.isJobFolder(paths[0]) ? machine_.makeFolder(paths[0]) : files_.makeFolder(paths[0]);
}

// What is missing is not made.
Status AdministratorTools::touch(const Paths& paths) {
  return unlessMissing(metadata_.setModified(paths[0], std::nullopt));
}

// A folder that must not be moved must not be frozen either.
Status AdministratorTools::lock(const Paths& paths) {
  if (Status allowed = refuseProtected(paths[0]); !allowed) return allowed;
  return metadata_.setLocked(paths[0], true);
}

Status AdministratorTools::unlock(const Paths& paths) {
  return metadata_.setLocked(paths[0], false);
}

Status AdministratorTools::giveJobToSuperuser(const Paths& paths) {
  if (!machine_.isJob(paths[0])) return refusal(paths[0], "is no job of the machine's");
  return machine_.giveToSuperuser(paths[0]);
}

Status AdministratorTools::publishJob(const Paths& paths) {
  if (machine_.isJob(paths[0])) return machine_.makeReadable(paths[0]);
  if (!isUsersJob(paths[0])) return refusal(paths[0], "is no job");
  return makeReadableForAll(disk_->locate(paths[0]), paths[0]);
}

Status AdministratorTools::requireAdministrator(const Paths&) {
  return machine_.requireAdministrator(true);
}

Status AdministratorTools::requireNoAdministrator(const Paths&) {
  return machine_.requireAdministrator(false);
}

Status AdministratorTools::refuseProtected(const std::string& path) const {
  for (const std::string& folder : protectedFolders(standard_, user_.home)) {
    const Result<bool> isProtected = surelyLeadToOneItem(disk_->machineFiles(), path, folder);
    if (!isProtected) return isProtected.error();
    if (*isProtected) return refusal(path, "is a system directory");
  }
  return {};
}

bool AdministratorTools::isUsersJob(const std::string& path) const {
  const auto library = standard_.userFolder(StandardFolder::Library, user_.home);
  const std::string folder = paths::parent(path);
  return library && leadToOneItem(disk_->machineFiles(), folder, *library + "/LaunchAgents") &&
         isJobFileIn(folder, path);
}

std::vector<std::string> requestFor(const std::string& tool, const std::vector<std::string>& arguments) {
  std::vector<std::string> request{tool};
  request.insert(request.end(), arguments.begin(), arguments.end());
  return request;
}

std::string logLineOf(const std::string& user, const std::vector<std::string>& request, const Status& done) {
  std::string line("As administrator for ");
  line.append(user).append(":");
  for (const std::string& text : request) line.append(" ").append(text);
  return line.append(done ? " - done" : " - failed, ").append(done ? "" : done.error().text);
}

}  // namespace vantory
