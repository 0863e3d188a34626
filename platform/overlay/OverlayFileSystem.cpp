// Answers from the record and the disk below it.
#include "platform/overlay/OverlayFileSystem.h"

#include <limits>
#include <set>
#include <system_error>
#include <utility>

#include "base/Paths.h"

namespace vantory {

namespace {

using Kind = OverlayNode::Kind;
using Lock = std::lock_guard<std::recursive_mutex>;

// A device that no disk is.
constexpr std::uint64_t kOverlayDevice = std::numeric_limits<std::uint64_t>::max();

// Bytes of an entry's name, on the file systems that people keep files on.
constexpr std::size_t kLongestName = 255;

// What the overlay knows of an item goes over what the disk says.
void applyOwn(const OverlayNode& node, FileInfo& info) {
  if (node.isCopy) info.locked = false;
  if (node.locked) info.locked = *node.locked;
  if (node.modified) info.modified = *node.modified;
  if (node.number > 0) info.identity = {kOverlayDevice, node.number};
}

DirectoryEntry entryFor(const std::string& name, const FileInfo& info) {
  return {name, info.type, info.type == FileType::File ? info.size : 0};
}

}  // namespace

// Copies no byte: its commit has the destination stand for what the source was.
class OverlayFileSystem::OverlayCopy : public StagedCopy {
 public:
  OverlayCopy(OverlayFileSystem& files, Change change, OverlayNode node)
      : files_(files), change_(std::move(change)), node_(std::move(node)) {}
  Status commit(Existing existing) override { return files_.commit(change_, node_, existing); }
  const Notes& notes() const override { return notes_; }

 private:
  OverlayFileSystem& files_;
  const Change change_;
  const OverlayNode node_;
  const Notes notes_;
};

Error OverlayFileSystem::missing(const std::string& path) const {
  const auto code = std::errc::no_such_file_or_directory;
  return {code, path + ": " + std::make_error_code(code).message()};
}

// The disk is asked for what lies there, under its name of before.
Result<FileInfo> OverlayFileSystem::info(const std::string& path, Links links) const {
  const Lock lock(tree_.mutex);
  const OverlayNode there = node(path);
  FileInfo info;
  switch (there.kind) {
    case Kind::Gone:
      return missing(path);
    case Kind::Folder:
      info.type = FileType::Folder;
      break;
    case Kind::Written:
      info.type = FileType::File;
      info.size = there.bytes.size();
      break;
    case Kind::OnDisk: {
      const auto found = disk_.info(there.origin, links);
      if (!found) return found.error();
      info = *found;
    }
  }
  applyOwn(there, info);
  return info;
}

// The disk's list, but for the names that the overlay knows better.
Result<std::vector<DirectoryEntry>> OverlayFileSystem::list(const std::string& path, Detail detail) const {
  const Lock lock(tree_.mutex);
  const OverlayNode there = node(path);
  std::vector<DirectoryEntry> entries;
  if (there.kind == Kind::Gone) return missing(path);
  if (there.kind == Kind::OnDisk) {
    auto listed = disk_.list(there.origin, detail);
    if (!listed) return listed;
    entries = std::move(*listed);
  }
  const std::string folder = paths::normalized(path);
  const std::set<std::string> changed = tree_.children(folder);
  std::erase_if(entries, [&](const DirectoryEntry& entry) { return changed.contains(entry.name); });
  for (const std::string& name : changed) {
    std::string child = folder;
    const auto found = info(child.append("/").append(name), Links::DoNotFollow);
    if (found) entries.push_back(entryFor(name, *found));
  }
  return entries;
}

Result<std::string> OverlayFileSystem::read(const std::string& path) const {
  const Lock lock(tree_.mutex);
  const OverlayNode there = node(path);
  if (there.kind == Kind::Written) return there.bytes;
  if (there.kind == Kind::OnDisk) return disk_.read(there.origin);
  return missing(path);
}

// What was written here is small, and read whole.
Result<bool> OverlayFileSystem::haveSameContent(const std::string& path, const std::string& other) const {
  std::unique_lock lock(tree_.mutex);
  const OverlayNode nodes[] = {node(path), node(other)};
  lock.unlock();
  if (nodes[0].kind == Kind::OnDisk && nodes[1].kind == Kind::OnDisk)
    return disk_.haveSameContent(nodes[0].origin, nodes[1].origin);
  const Result<std::string> bytes[] = {read(path), read(other)};
  for (const auto& each : bytes)
    if (!each) return each.error();
  return *bytes[0] == *bytes[1];
}

std::optional<std::errc> OverlayFileSystem::obstacleTo(const std::string& path) const {
  if (paths::lastComponent(path).size() > kLongestName) return std::errc::filename_too_long;
  const std::string folder = paths::parent(paths::normalized(path));
  const auto found = info(folder, Links::Follow);
  if (!found) return found.error().code;
  if (found->type != FileType::Folder) return std::errc::not_a_directory;
  if (found->locked) return std::errc::operation_not_permitted;
  const OverlayNode there = node(folder);
  // The disk does not know of a flag that was cleared here.
  if (unlimited_ || there.isMade() || there.locked) return std::nullopt;
  const Status writable = metadata_.checkWritable(there.origin);
  return writable ? std::nullopt : std::optional(writable.error().code);
}

std::optional<std::errc> OverlayFileSystem::obstacleToTaking(const std::string& path) const {
  const auto found = info(path, Links::DoNotFollow);
  if (!found) return found.error().code;
  if (found->locked) return std::errc::operation_not_permitted;
  return obstacleTo(path);
}

// Kept in memory, so that it can be read again.
Status OverlayFileSystem::write(const std::string& path, std::string_view bytes, WriteOptions) {
  const Lock lock(tree_.mutex);
  Change change{.kind = Change::Kind::Write, .path = path};
  if (const auto obstacle = obstacleTo(path)) return changes_.refuse(std::move(change), *obstacle);
  tree_.put(paths::normalized(path), {.kind = Kind::Written, .bytes = std::string(bytes), .number = tree_.newNumber()});
  changes_.add(std::move(change));
  return {};
}

Result<std::unique_ptr<AppendFile>> OverlayFileSystem::openForAppending(const std::string& path) {
  const auto code = std::errc::read_only_file_system;
  return Error{code, path + ": " + std::make_error_code(code).message()};
}

// Links on the way from the source's root could lead anywhere.
bool OverlayFileSystem::isReachedWithoutLinks(const CopyRequest& request) const {
  const std::string root = paths::normalized(request.sourceRoot);
  for (std::string path = paths::normalized(request.source); path.size() > root.size(); path = paths::parent(path)) {
    const auto found = info(path, Links::DoNotFollow);
    if (found && found->type == FileType::SymbolicLink) return false;
  }
  return true;
}

Result<std::unique_ptr<StagedCopy>> OverlayFileSystem::stageCopy(const CopyRequest& request) {
  const Lock lock(tree_.mutex);
  Change change{.kind = Change::Kind::Copy, .path = request.source, .destination = request.destination};
  if (!request.sourceRoot.empty() && !isReachedWithoutLinks(request))
    return changes_.refuse(std::move(change), std::errc::too_many_symbolic_link_levels);
  const auto source = info(request.source, request.links);
  if (!source) return changes_.refuse(std::move(change), source.error().code);
  if (source->type != FileType::File && source->type != FileType::Folder)
    return changes_.refuse(std::move(change), std::errc::invalid_argument);
  if (const auto obstacle = obstacleTo(request.destination)) return changes_.refuse(std::move(change), *obstacle);
  if (request.content) {
    change.kind = Change::Kind::Write;
    change.path = std::exchange(change.destination, {});
    return std::unique_ptr<StagedCopy>(std::make_unique<OverlayCopy>(
        *this, std::move(change),
        OverlayNode{.kind = Kind::Written, .bytes = *request.content, .number = tree_.newNumber()}));
  }
  OverlayNode copied = node(request.source);
  copied.isCopy = true;
  copied.locked.reset();
  copied.number = tree_.newNumber();
  return std::unique_ptr<StagedCopy>(std::make_unique<OverlayCopy>(*this, std::move(change), std::move(copied)));
}

Status OverlayFileSystem::commit(const Change& copy, OverlayNode copied, StagedCopy::Existing existing) {
  const Lock lock(tree_.mutex);
  const std::string& destination = copy.kind == Change::Kind::Write ? copy.path : copy.destination;
  if (existing == StagedCopy::Existing::Keep && exists(destination))
    return changes_.refuse(copy, std::errc::file_exists);
  tree_.put(paths::normalized(destination), std::move(copied));
  changes_.add(copy);
  return {};
}

// What was made here only gets another name; of what the disk has it is a change.
Result<Notes> OverlayFileSystem::move(const std::string& source, const std::string& destination) {
  const Lock lock(tree_.mutex);
  Change change{.kind = Change::Kind::Move, .path = source, .destination = destination};
  if (const auto obstacle = obstacleToTaking(source)) return changes_.refuse(std::move(change), *obstacle);
  if (exists(destination)) return changes_.refuse(std::move(change), std::errc::file_exists);
  if (const auto obstacle = obstacleTo(destination)) return changes_.refuse(std::move(change), *obstacle);
  const bool isMade = node(source).isMade();
  tree_.move(paths::normalized(source), paths::normalized(destination));
  if (isMade)
    changes_.renameMade(source, destination);
  else
    changes_.add(std::move(change));
  return Notes();
}

// What was made here leaves no trace; of what the disk has it is a change.
void OverlayFileSystem::forget(const std::string& path, Change change) {
  const bool isMade = node(path).isMade();
  tree_.remove(paths::normalized(path));
  if (isMade)
    changes_.dropMade(paths::normalized(path));
  else
    changes_.add(std::move(change));
}

// A missing item is neither a change nor a refusal.
Status OverlayFileSystem::remove(const std::string& path) {
  const Lock lock(tree_.mutex);
  Change change{.kind = Change::Kind::Remove, .path = path};
  if (!exists(path)) return missing(path);
  if (const auto obstacle = obstacleToTaking(path)) return changes_.refuse(std::move(change), *obstacle);
  forget(path, std::move(change));
  return {};
}

// One change, however many folders it takes.
Status OverlayFileSystem::makeFolder(const std::string& path) {
  const Lock lock(tree_.mutex);
  const std::string folder = paths::normalized(path);
  if (!folder.starts_with('/')) return missing(path);
  std::vector<std::string> wanted;  // the innermost first
  for (std::string above = folder;; above = paths::parent(above)) {
    const auto found = info(above, Links::Follow);
    if (found && found->type == FileType::Folder) break;
    const Change change{.kind = Change::Kind::CreateFolder, .path = folder};
    if (found || exists(above)) return changes_.refuse(change, std::errc::not_a_directory);
    if (found.error().code != std::errc::no_such_file_or_directory) return changes_.refuse(change, found.error().code);
    wanted.push_back(above);
  }
  if (wanted.empty()) return {};
  if (const auto obstacle = obstacleTo(wanted.back()))
    return changes_.refuse({.kind = Change::Kind::CreateFolder, .path = folder}, *obstacle);
  for (; !wanted.empty(); wanted.pop_back())
    tree_.put(wanted.back(), {.kind = Kind::Folder, .number = tree_.newNumber()});
  changes_.add({.kind = Change::Kind::CreateFolder, .path = folder});
  return {};
}

Result<Trashed> OverlayFileSystem::trash(const std::string& path, const std::string& trashFolder) {
  const Lock lock(tree_.mutex);
  Change change{.kind = Change::Kind::Trash, .path = path};
  if (!exists(path)) return missing(path);
  if (const auto obstacle = obstacleToTaking(path)) return changes_.refuse(std::move(change), *obstacle);
  if (node(path).kind == Kind::Folder) changes_.trashCopiesIn(paths::normalized(path));
  forget(path, std::move(change));
  return Trashed{paths::join(trashFolder, paths::lastComponent(path))};
}

Status OverlayFileSystem::sync(const std::string& path) {
  if (!exists(path)) return missing(path);
  return {};
}

Result<std::unique_ptr<FolderHold>> OverlayFileSystem::holdFolder(const std::string& path, std::chrono::milliseconds) {
  const auto found = info(path, Links::Follow);
  if (!found) return found.error();
  return std::make_unique<FolderHold>();
}

}  // namespace vantory
