// Copies folders with two threads.
#include "platform/linux/files/TreeCopy.h"

#include <fcntl.h>
#include <sys/uio.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <iterator>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

#include "platform/linux/files/FileCopy.h"
#include "platform/linux/files/FileRights.h"
#include "platform/linux/files/Folders.h"
#include "platform/posix/files/Errors.h"

namespace vantory {
namespace {

// Names handed to a thread at once: enough to make the hand-over cheap, few enough to share a folder out.
constexpr std::size_t kBatch = 64;

struct Folder;
using FolderPointer = std::shared_ptr<Folder>;

// Files of a folder, or one of its sub-folders, that wait to be copied.
struct Job {
  FolderPointer folder;
  std::vector<std::string> files;
  std::string subfolder;
};

// The jobs of one copy, and the two threads that work them off.
class TreeCopier {
 public:
  TreeCopier(const CopyManner& manner, CopyReport& report, int copy)
      : manner_(manner), rights_(manner.rights), report_(report), copy_(copy) {}

  Status run(FolderPointer root);

  void finish(const Folder& folder) noexcept;

 private:
  void giveAttributes(const Folder& folder);
  void work();
  std::optional<Job> takeJob();
  void addJobs(std::vector<Job> jobs);
  void jobDone();
  void startHelper();
  void fail(Error error);

  void perform(const Job& job) noexcept;
  void enumerate(const FolderPointer& folder);
  void openSubfolder(const FolderPointer& parent, const std::string& name);
  void copyOne(const Folder& folder, const std::string& name);
  void copyLink(const Folder& folder, const std::string& name);

  const CopyManner& manner_;
  const FileRights& rights_;
  CopyReport& report_;
  const int copy_;  // the folder that all is copied to
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Job> jobs_;  // the newest first, so that few folders are open at once
  std::size_t unfinished_ = 0;
  std::thread helper_;
  bool helperWanted_ = true;  // until it was started, or could not be
  std::atomic<bool> stopped_ = false;
  std::optional<Error> error_;
};

bool isSameFolder(int left, int right) {
  struct stat one;
  struct stat other;
  return fstat(left, &one) == 0 && fstat(right, &other) == 0 && one.st_dev == other.st_dev &&
         one.st_ino == other.st_ino;
}

// A folder that is being copied. Its jobs and sub-folders hold it; when the last of them is done it gets its attributes
// and is closed.
struct Folder {
  Folder(TreeCopier& owner, FolderPointer above, Descriptor from, Descriptor to, std::string sourcePath,
         std::string copyPath, int level)
      : copier(owner),
        parent(std::move(above)),
        source(std::move(from)),
        copy(std::move(to)),
        path(std::move(sourcePath)),
        destination(std::move(copyPath)),
        depth(level) {}
  ~Folder() { copier.finish(*this); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  TreeCopier& copier;
  FolderPointer parent;
  Descriptor source;
  Descriptor copy;
  std::string path;
  std::string destination;
  int depth;
};

// What one step throws is a failure of the copy: an exception that left a thread would end the program.
template <class Step>
std::optional<Error> caught(Step step) noexcept {
  try {
    step();
  } catch (const std::exception&) {
    return Error{std::errc::not_enough_memory, "out of memory"};  // short enough to need none
  }
  return std::nullopt;
}

Status TreeCopier::run(FolderPointer root) {
  if (auto error = caught([&] { enumerate(root); })) fail(std::move(*error));
  root.reset();
  work();
  if (helper_.joinable()) helper_.join();
  if (error_) return *error_;
  return {};
}

void TreeCopier::finish(const Folder& folder) noexcept {
  if (stopped_) return;
  if (auto error = caught([&] { giveAttributes(folder); })) fail(std::move(*error));
}

// When all that it holds is there: adding to a folder changes its times.
void TreeCopier::giveAttributes(const Folder& folder) {
  struct stat status;
  if (fstat(folder.source.get(), &status) != 0) return fail(systemError(folder.path));
  const FileRights::Scope scope(rights_);
  if (const Status copied = copyAttributes(folder.source.get(), status, folder.copy.get(), folder.path,
                                           folder.destination, manner_, report_);
      !copied)
    return fail(copied.error());
  report_.copied(folder.path, lookOf(status));
}

// Until there is nothing left, not even in the hands of the other thread.
void TreeCopier::work() {
  const FileRights::Scope scope(rights_);
  while (auto job = takeJob()) {
    if (!stopped_) perform(*job);
    job.reset();  // lets go of the folder before it counts as done
    jobDone();
  }
}

// Waits while the other thread may still add jobs; none when all is done.
std::optional<Job> TreeCopier::takeJob() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return !jobs_.empty() || unfinished_ == 0; });
  if (jobs_.empty()) return std::nullopt;
  Job job = std::move(jobs_.back());
  jobs_.pop_back();
  return job;
}

// Turned around, because they are taken from the end.
void TreeCopier::addJobs(std::vector<Job> jobs) {
  if (jobs.empty()) return;
  const std::lock_guard lock(mutex_);
  jobs_.insert(jobs_.end(), std::move_iterator(jobs.rbegin()), std::move_iterator(jobs.rend()));
  unfinished_ += jobs.size();
  // A second thread pays as soon as there is more than one batch to do.
  if (jobs_.size() > 1 && helperWanted_) startHelper();
  changed_.notify_all();
}

void TreeCopier::startHelper() {
  helperWanted_ = false;
  try {
    helper_ = std::thread([this] { work(); });
  } catch (const std::system_error&) {
    // No thread is to be had, so this one does it all.
  }
}

void TreeCopier::jobDone() {
  const std::lock_guard lock(mutex_);
  if (--unfinished_ == 0) changed_.notify_all();
}

// The first failure is the one that is told.
void TreeCopier::fail(Error error) {
  const std::lock_guard lock(mutex_);
  if (!error_) error_ = std::move(error);
  stopped_ = true;
}

// Whether reading it would wait for the disk.
bool isCold(int file) {
  char byte;
  const iovec part{&byte, 1};
  return preadv2(file, &part, 1, 0, RWF_NOWAIT) < 0 && errno == EAGAIN;
}

// What is not in memory is asked for at once for a whole batch: a disk answers many requests sooner than one after the
// other. The first file tells of the others.
void readAhead(const Folder& folder, const std::vector<std::string>& names) {
  constexpr off_t kMostBytes = 1024 * 1024;
  for (const std::string& name : names) {
    const Descriptor source = openSource(folder.source.get(), name.c_str(), O_NOFOLLOW);
    if (!source.valid() || (name == names.front() && !isCold(source.get()))) return;
    posix_fadvise(source.get(), 0, kMostBytes, POSIX_FADV_WILLNEED);
  }
}

// After a failure, here or on the other thread, the rest of the batch is left.
void TreeCopier::perform(const Job& job) noexcept {
  auto error = caught([&] {
    if (!job.subfolder.empty()) openSubfolder(job.folder, job.subfolder);
    readAhead(*job.folder, job.files);
    for (const std::string& name : job.files) {
      if (stopped_) return;
      copyOne(*job.folder, name);
    }
  });
  if (error) fail(std::move(*error));
}

// Links are made at once, files wait in batches, folders one by one.
void TreeCopier::enumerate(const FolderPointer& folder) {
  auto entries = readFolder(folder->source.get(), folder->path, Detail::Names);
  if (!entries) return fail(entries.error());
  std::vector<Job> jobs;
  std::vector<std::string> files;
  for (DirectoryEntry& entry : *entries) {
    if (stopped_) return;
    switch (entry.type) {
      case FileType::File:
        files.push_back(std::move(entry.name));
        break;
      case FileType::Folder:
        jobs.push_back({folder, {}, std::move(entry.name)});
        break;
      case FileType::SymbolicLink:
        copyLink(*folder, entry.name);
        break;
      case FileType::Other:
        report_.note("Left out " + folder->path + "/" + entry.name + ": it is a special file");
        break;
    }
    if (files.size() == kBatch) jobs.push_back({folder, std::exchange(files, {}), {}});
  }
  if (!files.empty()) jobs.push_back({folder, std::move(files), {}});
  addJobs(std::move(jobs));
}

// A folder that vanished is a note; one that cannot be opened ends the copy.
void TreeCopier::openSubfolder(const FolderPointer& parent, const std::string& name) {
  const std::string path = parent->path + "/" + name;
  if (parent->depth >= kDeepestFolder - 32)  // a backup adds levels of its own, and must be deletable
    return fail(errorWithText(std::errc::filename_too_long, path, "the folder is nested too deeply"));
  Descriptor source(openat(parent->source.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!source.valid()) {
    if (errno == ENOENT) return report_.note(path + " vanished while its folder was copied");
    return fail(systemError(path));
  }
  if (isSameFolder(source.get(), copy_))
    return fail(errorWithText(std::errc::invalid_argument, path, "a folder cannot be copied into itself"));
  if (uninterrupted([&] { return mkdirat(parent->copy.get(), name.c_str(), S_IRWXU); }) != 0)
    return fail(systemError(path));
  Descriptor copy = rights_.openNewFolder(parent->copy.get(), name);
  if (!copy.valid()) return fail(systemError(path));
  enumerate(std::make_shared<Folder>(*this, parent, std::move(source), std::move(copy), path,
                                     parent->destination + "/" + name, parent->depth + 1));
}

// Looked at once it is open: it may not be the file any more that was listed.
void TreeCopier::copyOne(const Folder& folder, const std::string& name) {
  const std::string path = folder.path + "/" + name;
  const Descriptor source = openSource(folder.source.get(), name.c_str(), O_NOFOLLOW);
  if (!source.valid()) {
    if (errno == ENOENT) return report_.note(path + " vanished while its folder was copied");
    return fail(systemError(path));
  }
  struct stat status;
  if (fstat(source.get(), &status) != 0) return fail(systemError(path));
  if (!S_ISREG(status.st_mode)) return report_.note("Left out " + path + ": it is a special file");
  if (!rights_.mayCopy(status)) return fail(systemError(path, EPERM));
  Descriptor copy(uninterrupted([&] {
    return openat(folder.copy.get(), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                  S_IRUSR | S_IWUSR);
  }));
  const std::string destination = folder.destination + "/" + name;
  if (!copy.valid()) return fail(systemError(destination));
  if (const Status copied = copyFileContent(source.get(), status, copy.get(), path, destination, manner_, report_);
      !copied)
    return fail(copied.error());
  if (!copy.closeWritten()) fail(systemError(destination));
}

void TreeCopier::copyLink(const Folder& folder, const std::string& name) {
  const std::string path = folder.path + "/" + name;
  const Status copied = vantory::copyLink(folder.source.get(), name.c_str(), folder.copy.get(), name.c_str(), path,
                                          folder.destination + "/" + name, rights_, report_);
  if (copied) return;
  if (copied.error().code == std::errc::no_such_file_or_directory)
    return report_.note(path + " vanished while its folder was copied");
  fail(copied.error());
}

}  // namespace

Status copyTree(Descriptor source, Descriptor copy, const std::string& path, const std::string& destination,
                const CopyManner& manner, CopyReport& report) {
  TreeCopier copier(manner, report, copy.get());
  return copier.run(
      std::make_shared<Folder>(copier, nullptr, std::move(source), std::move(copy), path, destination, 0));
}

}  // namespace vantory
