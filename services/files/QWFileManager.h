// Everything the program does to files: finding them by pattern, asking about them, and changing them with a privileged
// second attempt.
#pragma once

#include <any>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"
#include "platform/FileSystem.h"

namespace vantory {

class FileOperation;
class FileOperationDelegate;
class TaskReport;
struct FileOperationContext;

// All functions may be called from any thread. Success means that the effect is there; a failure carries its cause, and
// is in the log already unless a function says otherwise.
class QWFileManager {
 public:
  // Paths by pattern (QWFileManagerPatterns.cpp). In a pattern, every component that contains "*" stands for all
  // matching entries of one folder. What cannot be looked at is a match, so that who takes it tells why it fails.
  static std::vector<std::string> filesMatchingWildcardPath(const std::string& pattern);
  // Whether the path is a pattern, all of whose matches exist; any other path matches itself, whether or not it does.
  // The path of a folder with a "*" in its own name looks like one too, and is of no use as a place for files.
  static bool isWildcardPath(std::string_view path);
  static std::vector<std::string> filesMatchingWildcardPath(const std::string& pattern,
                                                            const std::string& fromBasePath);
  // The same for a task: folders that cannot be listed are logged and told in its report, each once.
  static std::vector<std::string> filesMatchingWildcardPath(const std::string& pattern, TaskReport& report);
  static std::vector<std::string> filesMatchingWildcardPath(const std::string& pattern, const std::string& fromBasePath,
                                                            TaskReport& report);
  // The first match, else the base joined with the pattern as written.
  static std::string decodeWildcardPath(const std::string& pattern, const std::string& fromBasePath);

  // Questions and names (QWFileManagerQuestions.cpp).
  static bool fileExistsAtPath(const std::string& path);   // links followed
  static bool mayExistAtPath(const std::string& path);     // the same, and true where it cannot be told
  static bool isDirectoryAtPath(const std::string& path);  // links followed
  static bool isSymbolicLinkAtPath(const std::string& path);
  // A symbolic link among the folder and those above it, up to the root, which may be one; none where there is none.
  static std::optional<std::string> linkOnTheWay(const std::string& folder, const std::string& root);
  // Why a link at this path is left out, where only what it leads to could be meant.
  static Error linkLeftOut(const std::string& path);
  static bool isPackageAtPath(const std::string& path);
  // Whether anything bears this name, a dangling link included.
  static bool itemExistsAtPath(const std::string& path);
  // Whether two paths lead to one item, by links or ".." too; false where either leads nowhere.
  static bool isSameItem(const std::string& path, const std::string& otherPath);
  // Whether it lies in a folder that all users share and is another user's, which is left alone in a home that the
  // superuser named; else false.
  static bool isLeftToOthers(const std::string& path);
  // Whether the path is the folder or lies in it, by its text or by where links lead; neither has to be there.
  static bool isWithin(const std::string& path, const std::string& folder);
  // The path without links, as far as that can be told.
  static std::string realPath(const std::string& path);
  // Whether it is certain that nothing bears this name; false where that cannot be told.
  static bool isMissingAtPath(const std::string& path);
  // The path itself, or with " 2", " 3" ... before its extension: the first that does not exist.
  static std::string uniqueFilename(const std::string& path);
  // The name without a leading dot, blanks at its ends, "/" and ":"; may be empty.
  static std::string validateFilename(const std::string& name);
  static std::string formatFileSize(double bytes);
  // True for a folder without files; housekeeping files and folders of only such do not count.
  static bool isFolderEmpty(const std::string& path);
  // Bytes of a file, or of all files in a folder.
  static std::uint64_t fileSize(const std::string& path);
  // Names of a folder's entries; empty when it cannot be read.
  static std::vector<std::string> contentsOfDirectory(const std::string& path);
  // Sets the time of last change to now; never creates a file.
  static Status touchFile(const std::string& path);

  // Colour labels (QWFileManagerQuestions.cpp).
  struct LabelColor {
    double hue, saturation, brightness;
  };
  // The whole flags word, 0 when unreadable.
  static std::uint16_t finderColorIndexForPath(const std::string& path);
  static void setFinderColorIndex(std::uint16_t index, const std::string& forPath);
  static std::optional<LabelColor> finderColorForPath(const std::string& path);

  // Changes (QWFileManagerChanges.cpp). They clear the immutable flag where it is in the way, try as the user, and on
  // failure log the reason and, with shouldAuth, try again with administrator rights where rights can help.
  static Status copyFile(const std::string& source, const std::string& toPath, bool shouldAuth = true,
                         CopyChecksum checksum = CopyChecksum::Keep);
  // A copy of the source that was staged before, with the file system itself, is taken as it is.
  static Status copyFile(const std::string& source, const std::string& toPath, std::chrono::seconds timeout,
                         std::unique_ptr<StagedCopy> staged = nullptr, CopyChecksum checksum = CopyChecksum::Keep);
  static Status moveFile(const std::string& source, const std::string& toPath, bool shouldAuth = true);
  static Status moveFile(const std::string& source, const std::string& toPath, std::chrono::seconds timeout);
  static Status removeFile(const std::string& path, bool shouldAuth = true);
  static Status removeFile(const std::string& path, std::chrono::seconds timeout);
  // Answers where it lies now; nothing where nothing was there.
  static Result<std::string> trashFile(const std::string& path, bool shouldAuth = true);
  static Result<std::string> trashFile(const std::string& path, std::chrono::seconds timeout);
  // The same for a task: what a move to another file system could not keep, told in the log already, is remarked in its
  // report.
  static Status moveFile(const std::string& source, const std::string& toPath, std::chrono::seconds timeout,
                         TaskReport& report);
  static Result<std::string> trashFile(const std::string& path, std::chrono::seconds timeout, TaskReport& report);
  // Moves what lies at the place of a Trash to the path, which is free, and takes its note away.
  static Status putBackFile(const std::string& place, const std::string& path, std::chrono::seconds timeout,
                            TaskReport& report);
  // The same, said in the log, where nothing has come to the path meanwhile. False where it stays in the Trash, and
  // where the place there is empty because nothing was moved.
  static bool returnFile(const std::string& place, const std::string& path, std::chrono::seconds timeout,
                         TaskReport& report);
  static Status createDirectory(const std::string& path, bool shouldAuth = true);
  static Status createDirectory(const std::string& path, std::chrono::seconds timeout);
  // The first step of a copy that replaces something: a finished copy without its name. Its notes are logged; a failure
  // is logged by the caller.
  static Result<std::unique_ptr<StagedCopy>> stageCopy(const CopyRequest& request);

  // A copy in the background, never over an item that exists (QWFileManagerProgress.cpp). It has its name when it is
  // complete, and its folder is made when missing. Answers the operation once it has started, null when it cannot. The
  // delegate is kept until its last call.
  static std::shared_ptr<FileOperation> copyFileWithProgress(FileOperationContext context);
  static std::shared_ptr<FileOperation> copyFileWithProgress(const std::string& source, const std::string& destination,
                                                             std::shared_ptr<FileOperationDelegate> delegate,
                                                             std::any object);
  // Within a second, also inside a file; nothing of the copy stays. The delegate is told as of any other end.
  static void cancelFileOperation(FileOperation& operation);

  // By the system's own tools (QWFileManagerTools.cpp). The zip archive holds the item under its own name and is there
  // whole or not at all; an older one of that name goes to the Trash first. Private to the user (0600).
  static Status compressFile(const std::string& source, const std::string& toDestinationFile);
  // Makes the application that the path stands for known to the desktop, also when it has changed.
  static Status registerApplicationWithLaunchServices(const std::string& path);
  // Asks the file manager to show an item as it is now, where it does not see that by itself. Waits for no answer.
  static void notifyFileSystemChanged(const std::string& path);

  // Whole folders (QWFileManagerFolders.cpp).
  // Ends with the first entry that fails.
  static Status copyContentsOfDirectory(const std::string& source, const std::string& toPath,
                                        std::chrono::seconds timeout);
  // Recreates the path's folder chain below the destination; answers the folder made.
  static std::string createDirectoryStructure(const std::string& path, const std::string& destination);
  static Status removeFolderIfEmpty(const std::string& path);
  // Goes on after a failure and answers the first.
  static Status trashDirectoryContents(const std::string& path, bool shouldAuth = true);
  // The paths found, whether or not trashing them worked.
  static std::vector<std::string> trashFilesNamed(const std::string& name, const std::string& inFolder);
  static std::vector<std::string> trashFilesOfType(const std::string& extension, const std::string& inFolder);

  // The immutable flag (QWFileManagerLocks.cpp). A failure gets one log line; a missing path is none.
  static Status lockFile(const std::string& path);
  static Status unlockFile(const std::string& path);
  // The same for many, sooner than one by one. `announce` is called for each in turn before its failure is logged.
  // Answers how each went, in the same order.
  struct LockOutcome {
    Status status;
    bool changed = false;  // false also for a missing path, and for what was as wanted
    bool wasSo = false;    // it is as wanted, and was so before
  };
  using Announcement = std::function<void(const std::string& path)>;
  static std::vector<LockOutcome> lockFiles(const std::vector<std::string>& paths, const Announcement& announce);
  static std::vector<LockOutcome> unlockFiles(const std::vector<std::string>& paths, const Announcement& announce);
  static bool isFileLocked(const std::string& path);
  // Everything inside the folder that is no folder, at every depth; links are not followed.
  static void lockFolder(const std::string& path);
  static void unlockFolder(const std::string& path);
};

}  // namespace vantory
