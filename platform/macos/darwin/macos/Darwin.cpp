// Hands each call on to the system.
#include "platform/macos/darwin/Darwin.h"

#include <fcntl.h>
#include <libproc.h>
#include <mach/mach.h>
#include <sys/acl.h>
#include <sys/attr.h>
#include <sys/clonefile.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/param.h>
#include <sys/proc.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/stdio.h>
#include <unistd.h>

#include <algorithm>

// Of <sys/xattr.h>, which not every set of headers has.
extern "C" {
ssize_t flistxattr(int file, char* names, size_t size, int options);
ssize_t fgetxattr(int file, const char* name, void* value, size_t size, uint32_t position, int options);
int fsetxattr(int file, const char* name, const void* value, size_t size, uint32_t position, int options);
int fremovexattr(int file, const char* name, int options);
ssize_t getxattr(const char* path, const char* name, void* value, size_t size, uint32_t position, int options);
int setxattr(const char* path, const char* name, const void* value, size_t size, uint32_t position, int options);
int removexattr(const char* path, const char* name, int options);
}

// Of <sandbox.h>, likewise.
extern "C" int sandbox_init(const char* profile, uint64_t flags, char** error);

// Of <servers/bootstrap.h>, likewise.
extern "C" kern_return_t bootstrap_look_up(mach_port_t bootstrap, const char* name, mach_port_t* port);

namespace vantory::darwin {

namespace {

constexpr int kKeepLink = 0x1;  // XATTR_NOFOLLOW

static_assert(kImmutable == UF_IMMUTABLE && kAppendOnly == UF_APPEND && kSystemImmutable == SF_IMMUTABLE &&
              kSystemAppendOnly == SF_APPEND && kOnlyInCloud == SF_DATALESS);

void assign(ItemStatus& status, const struct stat& found) {
  status.device = static_cast<std::uint64_t>(found.st_dev);
  status.number = found.st_ino;
  status.mode = found.st_mode;
  status.owner = found.st_uid;
  status.group = found.st_gid;
  status.size = static_cast<std::uint64_t>(found.st_size);
  status.accessed = found.st_atimespec;
  status.modified = found.st_mtimespec;
  status.changed = found.st_ctimespec;
  status.created = found.st_birthtimespec;
  status.flags = found.st_flags;
  status.held = static_cast<std::uint64_t>(found.st_blocks) * S_BLKSIZE;
  status.names = found.st_nlink;
}

attrlist listOf(attrgroup_t attribute) {
  attrlist list{};
  list.bitmapcount = ATTR_BIT_MAP_COUNT;
  list.commonattr = attribute;
  return list;
}

// An access list while it is held.
class AccessList {
 public:
  explicit AccessList(acl_t list) : list_(list) {}
  ~AccessList() {
    if (list_) acl_free(list_);
  }
  AccessList(const AccessList&) = delete;
  AccessList& operator=(const AccessList&) = delete;

  explicit operator bool() const { return list_ != nullptr; }
  int giveTo(int item) const { return acl_set_fd_np(item, list_, ACL_TYPE_EXTENDED); }
  bool grants() const {
    acl_entry_t entry = nullptr;
    acl_tag_t tag = ACL_UNDEFINED_TAG;
    for (int which = ACL_FIRST_ENTRY; acl_get_entry(list_, which, &entry) == 0; which = ACL_NEXT_ENTRY)
      if (acl_get_tag_type(entry, &tag) != 0 || tag != ACL_EXTENDED_DENY) return true;
    return false;
  }

 private:
  acl_t list_;
};

}  // namespace

int statusOf(int item, ItemStatus& status) {
  struct stat found;
  if (fstat(item, &found) != 0) return -1;
  assign(status, found);
  return 0;
}

int statusAt(int folder, const char* name, AtEnd link, ItemStatus& status) {
  struct stat found;
  if (fstatat(folder, name, &found, link == AtEnd::KeepLink ? AT_SYMLINK_NOFOLLOW : 0) != 0) return -1;
  assign(status, found);
  return 0;
}

int openAt(int folder, const char* name, int flags, mode_t mode) {
  return ::openat(folder, name, flags | O_CLOEXEC | O_NOCTTY, mode);
}

int openNewHeld(int folder, const char* name) {
  return openAt(folder, name, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_EXLOCK | O_NONBLOCK, S_IRUSR | S_IWUSR);
}

int makeFolder(int folder, const char* name) {
  return mkdirat(folder, name, S_IRWXU);
}

int openLink(int folder, const char* name) {
  return openAt(folder, name, O_RDONLY | O_NONBLOCK | O_SYMLINK);
}

int setOwner(int item, uid_t owner, gid_t group) {
  return fchown(item, owner, group);
}

int renameExclusively(int fromFolder, const char* from, int toFolder, const char* to) {
  return renameatx_np(fromFolder, from, toFolder, to, RENAME_EXCL);
}

int renameOver(int fromFolder, const char* from, int toFolder, const char* to) {
  return renameat(fromFolder, from, toFolder, to);
}

int exchange(int oneFolder, const char* one, int otherFolder, const char* other) {
  return renameatx_np(oneFolder, one, otherFolder, other, RENAME_SWAP);
}

int removeFile(int folder, const char* name) {
  return unlinkat(folder, name, 0);
}

int removeFolder(int folder, const char* name) {
  return unlinkat(folder, name, AT_REMOVEDIR);
}

int clone(int source, int folder, const char* name) {
  return fclonefileat(source, folder, name, CLONE_NOOWNERCOPY);
}

int setFlags(int item, std::uint32_t flags) {
  return fchflags(item, flags);
}

int setFlagsAt(int folder, const char* name, std::uint32_t flags) {
  attrlist list = listOf(ATTR_CMN_FLAGS);
  return setattrlistat(folder, name, &list, &flags, sizeof flags, FSOPT_NOFOLLOW);
}

int setCreated(int item, timespec time) {
  attrlist list = listOf(ATTR_CMN_CRTIME);
  return fsetattrlist(item, &list, &time, sizeof time, 0);
}

int flushInOrder(int file) {
  return fcntl(file, F_BARRIERFSYNC) == -1 ? fsync(file) : 0;
}

int flushDrive(int item) {
  return fcntl(item, F_FULLFSYNC) == -1 ? fsync(item) : 0;
}

// The drive is flushed only for those who wait.
int flushVolume(int item) {
  if (fsync_volume_np(item, SYNC_VOLUME_FULLSYNC | SYNC_VOLUME_WAIT) == 0) return 0;
  return flushDrive(item);
}

ssize_t attributeNames(int item, char* names, std::size_t size) {
  return flistxattr(item, names, size, 0);
}

ssize_t attribute(int item, const char* name, void* value, std::size_t size, std::uint32_t position) {
  return fgetxattr(item, name, value, size, position, 0);
}

int setAttribute(int item, const char* name, const void* value, std::size_t size, std::uint32_t position) {
  return fsetxattr(item, name, value, size, position, 0);
}

int removeAttribute(int item, const char* name) {
  return fremovexattr(item, name, 0);
}

ssize_t attributeAt(const char* path, const char* name, void* value, std::size_t size) {
  return getxattr(path, name, value, size, 0, kKeepLink);
}

int setAttributeAt(const char* path, const char* name, const void* value, std::size_t size) {
  return setxattr(path, name, value, size, 0, kKeepLink);
}

int removeAttributeAt(const char* path, const char* name) {
  return removexattr(path, name, kKeepLink);
}

int copyAccessList(int from, int to) {
  const AccessList list(acl_get_fd_np(from, ACL_TYPE_EXTENDED));
  if (list) return list.giveTo(to);
  return errno == ENOENT ? dropAccessList(to) : -1;
}

int dropAccessList(int item) {
  if (const AccessList present(acl_get_fd_np(item, ACL_TYPE_EXTENDED)); !present && errno == ENOENT) return 0;
  const AccessList none(acl_init(0));
  return none ? none.giveTo(item) : -1;
}

bool listGrants(int item) {
  const AccessList list(acl_get_fd_np(item, ACL_TYPE_EXTENDED));
  return list ? list.grants() : errno != ENOENT && !isUnsupported(errno);
}

int roomOf(int item, Room& room) {
  struct statfs volume;
  if (fstatfs(item, &volume) != 0) return -1;
  room = {volume.f_blocks * volume.f_bsize, volume.f_bfree * volume.f_bsize};
  return 0;
}

std::string volumeOf(int folder, const std::string& name) {
  const int item = openAt(folder, name.c_str(), O_RDONLY | O_NONBLOCK | O_SYMLINK);
  if (item < 0) return {};
  struct statfs volume;
  const bool found = fstatfs(item, &volume) == 0;
  close(item);
  return found ? volume.f_mntonname : "";
}

void fetchFromCloud(bool fetch) {
  setiopolicy_np(IOPOL_TYPE_VFS_MATERIALIZE_DATALESS_FILES, IOPOL_SCOPE_THREAD,
                 fetch ? IOPOL_MATERIALIZE_DATALESS_FILES_ON : IOPOL_MATERIALIZE_DATALESS_FILES_DEFAULT);
}

std::optional<uid_t> consoleOwner() {
  struct stat console;
  if (stat("/dev/console", &console) != 0) return std::nullopt;
  return console.st_uid;
}

std::optional<uid_t> userBehind(int socket) {
  uid_t user = 0;
  gid_t group = 0;
  if (getpeereid(socket, &user, &group) != 0) return std::nullopt;
  return user;
}

// More may begin while they are counted: there is room for some.
std::vector<RunningProgram> programsOf(uid_t user) {
  constexpr int kRoom = 64;
  std::vector<pid_t> processes(static_cast<std::size_t>(std::max(proc_listallpids(nullptr, 0), 0) + kRoom));
  const int count = proc_listallpids(processes.data(), static_cast<int>(processes.size() * sizeof(pid_t)));
  processes.resize(static_cast<std::size_t>(std::max(count, 0)));
  std::vector<RunningProgram> programs;
  for (const pid_t process : processes) {
    proc_bsdshortinfo info{};
    char path[PROC_PIDPATHINFO_MAXSIZE];
    if (proc_pidinfo(process, PROC_PIDT_SHORTBSDINFO, 0, &info, sizeof info) != sizeof info) continue;
    if (info.pbsi_uid != user || info.pbsi_status == SZOMB) continue;
    const int length = proc_pidpath(process, path, sizeof path);
    if (length > 0) programs.push_back({process, std::string(path, static_cast<std::size_t>(length))});
  }
  return programs;
}

std::string toolPath(const std::string& path) {
  return path;
}

// The system's log is reached by messages.
bool keepOnlyFileWork() {
  constexpr const char* kProfile =
      "(version 1)\n"
      "(deny default)\n"
      "(allow file*)\n"
      "(allow sysctl-read)\n"
      "(allow mach-lookup (global-name \"com.apple.system.logger\") (global-name \"com.apple.logd\")\n"
      "  (global-name \"com.apple.diagnosticd\"))\n";
  char* error = nullptr;
  return sandbox_init(kProfile, 0, &error) == 0;
}

bool hasMessagePort(const std::string& name) {
  mach_port_t port = MACH_PORT_NULL;
  if (bootstrap_look_up(bootstrap_port, name.c_str(), &port) != KERN_SUCCESS) return false;
  mach_port_deallocate(mach_task_self(), port);
  return true;
}

}  // namespace vantory::darwin
