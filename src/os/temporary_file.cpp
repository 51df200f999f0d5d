#include "os/temporary_file.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/xattr.h>
#include <unistd.h>
#include <utility>

namespace fabscope::internal {
namespace {

// The signals that end a process and leave it the time to clean up.
constexpr std::array<int, 7> endingSignals{SIGHUP,  SIGINT,  SIGQUIT, SIGTERM,
                                           SIGPIPE, SIGALRM, SIGXCPU};

// What a signal is to remove; null when there is nothing.
std::atomic<const char*> nameToRemove{nullptr};
static_assert(std::atomic<const char*>::is_always_lock_free);

// The signal ends the process as soon as this returns: its default is back already.
void RemoveAndEnd(int signal) {
  if (const char* name = nameToRemove) unlink(name);
  (void)raise(signal);
}

// What was set otherwise (nohup ignores SIGHUP) stays so.
void CatchEndingSignals() {
  for (const int signal : endingSignals) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
    action.sa_handler = RemoveAndEnd;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(signal, &action, nullptr);
  }
}

void ReleaseEndingSignals() {
  for (const int signal : endingSignals) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != RemoveAndEnd) continue;
    action.sa_handler = SIG_DFL;
    sigaction(signal, &action, nullptr);
  }
}

// Signals wait as long as this lives.
class SignalsWait {
 public:
  SignalsWait() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : endingSignals) sigaddset(&signals, signal);
    sigprocmask(SIG_BLOCK, &signals, &before_);
  }
  SignalsWait(const SignalsWait&) = delete;
  SignalsWait& operator=(const SignalsWait&) = delete;
  ~SignalsWait() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_{};
};

constexpr const char* accessList = "system.posix_acl_access";

// Whether the file system and the file have none.
bool IsWithoutList(int error) { return error == ENODATA || error == EOPNOTSUPP; }

// As the kernel has it; empty: it has none; nothing: it cannot be told.
std::optional<std::string> AccessListOf(const std::string& file) {
  std::string list(std::size_t{1} << 16U, '\0');  // as large as the kernel lets one be
  const ssize_t size = getxattr(file.c_str(), accessList, list.data(), list.size());
  if (size < 0 && !IsWithoutList(errno)) return std::nullopt;
  list.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  return list;
}

// A new file gets one from its folder. False: it is still there.
bool RemoveAccessList(int fd) { return fremovexattr(fd, accessList) == 0 || IsWithoutList(errno); }

// What is granted to others than the owner's group, for the group as well.
mode_t WithoutGroup(mode_t mode) { return (mode & 0707U) | (mode & 0007U) << 3U; }

}  // namespace

// The name is short: the target's may be as long as names can be.
TemporaryFile::TemporaryFile(const std::string& target)
    : name_(std::filesystem::path(target).parent_path() / ".fabscope-XXXXXX") {
  const SignalsWait wait;
  fd_ = mkostemp(name_.data(), O_CLOEXEC);
  if (fd_ < 0) {
    error_ = errno;
    name_.clear();
    return;
  }
  nameToRemove = name_.c_str();
  CatchEndingSignals();
}

TemporaryFile::~TemporaryFile() {
  if (fd_ >= 0) close(fd_);
  if (name_.empty()) return;
  unlink(name_.c_str());
  Forget();
}

void TemporaryFile::Forget() {
  const SignalsWait wait;
  nameToRemove = nullptr;
  name_.clear();
  ReleaseEndingSignals();
}

int TemporaryFile::AllowAsNew() const {
  const mode_t mask = umask(0);
  umask(mask);
  return fchmod(fd_, 0666U & ~mask) == 0 ? 0 : errno;
}

// Root keeps the owner, others at least the group if they are in it. A report is never run, so
// marks to run it as its owner are dropped. An access control list may also keep people out, so a
// file that cannot have that of the old one is for its owner alone.
int TemporaryFile::AllowAs(const struct stat& old, const std::string& target) const {
  mode_t mode = old.st_mode & 0777U;
  const bool isOwned = fchown(fd_, old.st_uid, old.st_gid) == 0;
  const bool isOfGroup = isOwned || fchown(fd_, static_cast<uid_t>(-1), old.st_gid) == 0;
  const std::optional<std::string> list = AccessListOf(target);
  if (list && !list->empty() && isOfGroup) {
    // It holds the permissions as well.
    if (fsetxattr(fd_, accessList, list->data(), list->size(), 0) == 0) return 0;
  }
  if (!list || !list->empty() || !RemoveAccessList(fd_)) {
    mode &= 0700U;
  } else if (!isOfGroup) {
    mode = WithoutGroup(mode);
  }
  return fchmod(fd_, mode) == 0 ? 0 : errno;
}

int TemporaryFile::Replace(const std::string& target) {
  // Some file systems know no other way than to write at once.
  if (fsync(fd_) != 0 && errno != EINVAL) return errno;
  if (close(std::exchange(fd_, -1)) != 0) return errno;
  if (rename(name_.c_str(), target.c_str()) != 0) return errno;
  Forget();
  return 0;
}

}  // namespace fabscope::internal
