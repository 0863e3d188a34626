// The one seam between the program and the disk. Everything that lists, reads, writes, copies, trashes or
// deletes goes through it, so that a test can stand a failing disk in its place.
//
// Paths are absolute byte strings: any byte but NUL and no promise of UTF-8. Unless a function says otherwise it acts
// on the item itself and never on what a symbolic link at the end of the path points to. All functions may be called
// from any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"
#include "platform/Clock.h"

namespace vantory {

enum class FileType { File, Folder, SymbolicLink, Other };

enum class Links { Follow, DoNotFollow };

// Tells two names of one file or folder from two files.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t number = 0;

  auto operator<=>(const FileIdentity&) const = default;  // NOLINT(modernize-use-nullptr): a false finding
};

struct FileInfo {
  FileType type = FileType::Other;
  std::uint64_t size = 0;  // bytes of the item itself, never of a folder's contents
  Timestamp modified;
  FileIdentity identity;
  bool locked = false;                      // the immutable flag
  std::optional<std::uint32_t> owner = {};  // the user's id; none for what is only recorded
};

struct DirectoryEntry {
  std::string name;
  FileType type = FileType::Other;
  std::uint64_t size = 0;  // bytes; filled in only by Detail::Sizes
};

enum class Detail { Names, Sizes };

// The largest file that read() is asked for: property lists, all of them small.
inline constexpr std::uint64_t kLargestReadBytes = 4 * 1024 * 1024;

// Sentences about what was left out on purpose or could not be kept: special files, unsupported attributes, files that
// vanished.
using Notes = std::vector<std::string>;

// Where a trashed item lies now, and what did not come along where it had to be copied there.
struct Trashed {
  std::string place;
  Notes notes = {};
};

// A file open for adding lines at its end.
class AppendFile {
 public:
  virtual ~AppendFile() = default;
  // Adds all of `bytes` or reports why not; then they are left with what has not been added.
  virtual Status append(std::string_view& bytes) = 0;
};

// A finished copy that does not have its name yet. Destroying it before commit() leaves no trace of it.
class StagedCopy {
 public:
  enum class Existing { Keep, Replace };

  virtual ~StagedCopy() = default;
  // Gives the copy its final name in one step. With Existing::Keep an item already there makes it fail with
  // file_exists; with Existing::Replace it takes the old item's place atomically, also that of another kind.
  virtual Status commit(Existing existing) = 0;
  virtual const Notes& notes() const = 0;
};

// Holds a folder against other processes (not threads) until it is destroyed; the kernel lets go of it when a process
// dies.
class FolderHold {
 public:
  virtual ~FolderHold() = default;
};

// Hears how much more of a copy is done: bytes, fewer than none where a file that has changed is copied again, and
// finished files and links. False ends the copy with operation_canceled. Called from several threads, also at once.
using CopyObserver = std::function<bool(std::int64_t bytes, int objects)>;

// What a copy has to do with the checksum that a file may carry (platform/Checksums.h).
enum class CopyChecksum {
  Keep,  // it is an attribute like any other
  Make,  // the copy carries that of the bytes copied, where its file system knows such attributes
  Check  // a source that carries one must be what it says, else the copy fails (bad_message); the copy carries none
};

struct CopyRequest {
  std::string source;
  std::string destination;
  // When not empty, the source must lie below this folder and be reached without any symbolic link.
  std::string sourceRoot = {};
  Links links = Links::Follow;  // whether a symbolic link as the source stands for what it points to
  CopyObserver observer = {};   // may be empty
  // What the copy of a file is to hold instead of its content; its time of change is then now.
  std::optional<std::string> content = {};
  CopyChecksum checksum = CopyChecksum::Keep;
  bool mayBeProgram = true;  // otherwise nobody may execute a file of it, or do more with it than with a new one
};

struct WriteOptions {
  bool durable = false;  // on disk before write() returns
};

class FileSystem {
 public:
  virtual ~FileSystem() = default;

  virtual Result<FileInfo> info(const std::string& path, Links links) const = 0;

  // The entries of a folder without "." and "..", in the order the system reports them. A link at the end of the
  // path is followed.
  virtual Result<std::vector<DirectoryEntry>> list(const std::string& path, Detail detail) const = 0;

  // The bytes of a regular file (links followed). Fails with file_too_large above kLargestReadBytes; a FIFO or device
  // is refused, never waited for.
  virtual Result<std::string> read(const std::string& path) const = 0;

  // Whether two regular files hold the same bytes, read piece by piece (links followed). What is no regular
  // file is refused, as by read(); one of any size is compared.
  virtual Result<bool> haveSameContent(const std::string& path, const std::string& other) const = 0;

  // Replaces the file at `path` by one holding `bytes`, whole or not at all; a folder is refused. Mode, owner and
  // access lists of a file that was there are kept; a new file is private (0600).
  virtual Status write(const std::string& path, std::string_view bytes, WriteOptions options) = 0;

  // Opens or creates (0600) a regular file for adding at its end.
  virtual Result<std::unique_ptr<AppendFile>> openForAppending(const std::string& path) = 0;

  // Copies a file, or a folder with all it holds, beside its destination, under no name or a hidden one. Content,
  // mode, times and extended attributes are kept, links inside a folder stay links, the immutable flag is not carried
  // over. A source that changes meanwhile is copied again, up to three times. Fails when the destination's folder is
  // missing; a copy that fails or is ended leaves nothing behind.
  virtual Result<std::unique_ptr<StagedCopy>> stageCopy(const CopyRequest& request) = 0;

  // Moves an item, also to another file system, never over an existing one (file_exists). Both paths are full. To
  // another file system it is copied, and the original removed once the copy is on disk. Only what is still as it was
  // copied is removed: what another program has changed or added meanwhile stays, as does a special file, and the move
  // fails. A failure before the first removal leaves no copy behind. Answers what the copy could not keep.
  virtual Result<Notes> move(const std::string& source, const std::string& destination) = 0;

  // Deletes an item for good, folders with their contents. A missing one is an error (no_such_file_or_directory).
  virtual Status remove(const std::string& path) = 0;

  // Creates a folder (0700 where it is new; 0755 where administrator rights make it outside of the user's home) and the
  // folders above it. An existing folder is success.
  virtual Status makeFolder(const std::string& path) = 0;

  // Moves an item to the desktop's Trash: the one whose files lie in `trashFolder` when that is on the same file
  // system, otherwise that of the item's own. What cannot be renamed on its own file system is moved as to another.
  virtual Result<Trashed> trash(const std::string& path, const std::string& trashFolder) = 0;

  // Returns once everything written to the file system that holds `path` is on disk.
  virtual Status sync(const std::string& path) = 0;

  // Takes hold of an existing folder, or file, waiting at most `wait` for another process that has it (timed_out).
  virtual Result<std::unique_ptr<FolderHold>> holdFolder(const std::string& path, std::chrono::milliseconds wait) = 0;
};

}  // namespace vantory
