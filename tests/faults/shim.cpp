// Stands before the C library (LD_PRELOAD) and lets one call of a run fail, as a machine at fault
// would: FABSCOPE_FAULT is "CALL:NUMBER:WHAT", for example "write:3:ENOSPC" as a number (28), or
// with WHAT
//   short     the call does one byte of what it should
//   signal N  written sN: signal N arrives first
// Number 0 is no call. The file FABSCOPE_FAULT_COUNT gets the number of calls that there were.

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct Fault {
  std::string call;
  long number = 0;
  long error = 0;
  long signal = 0;
  bool isShort = false;
  bool isForGood = false;
};

long calls = 0;

const Fault& TheFault() {
  static const Fault fault = [] {
    Fault read;
    const char* given = std::getenv("FABSCOPE_FAULT");
    const std::string text = given != nullptr ? given : "";
    const std::size_t first = text.find(':');
    const std::size_t second = text.find(':', first + 1);
    if (second == std::string::npos) return read;
    const std::string what = text.substr(second + 1);
    read.call = text.substr(0, first);
    read.number = std::strtol(text.c_str() + first + 1, nullptr, 10);
    read.isShort = what.starts_with("short");
    read.isForGood = what.ends_with('+');
    if (what.starts_with('s') && !read.isShort) read.signal = std::strtol(&what[1], nullptr, 10);
    if (!what.starts_with('s')) read.error = std::strtol(what.c_str(), nullptr, 10);
    return read;
  }();
  return fault;
}

// Whether this call is the one; calls are counted.
bool IsFaulty(const char* call) {
  const Fault& fault = TheFault();
  if (fault.call != call) return false;
  ++calls;
  const bool isIt = calls == fault.number || (fault.isForGood && calls > fault.number);
  if (isIt && fault.signal != 0) (void)std::raise(static_cast<int>(fault.signal));
  return isIt;
}

// Whether the call fails at once; errno is set then.
bool Fails(const char* call) {
  if (!IsFaulty(call) || TheFault().error == 0) return false;
  errno = static_cast<int>(TheFault().error);
  return true;
}

template <typename Function>
Function Next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

struct Count {
  Count() = default;
  Count(const Count&) = delete;
  Count& operator=(const Count&) = delete;
  ~Count() {
    const char* path = std::getenv("FABSCOPE_FAULT_COUNT");
    std::FILE* file = path != nullptr ? std::fopen(path, "w") : nullptr;
    if (file == nullptr) return;
    (void)std::fprintf(file, "%ld", calls);
    (void)std::fclose(file);
  }
};
const Count atExit;

}  // namespace

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" {

// Some of these are also called where they fail by a signal, a byte or not at all.
ssize_t read(int fd, void* room, std::size_t size) {
  static const auto next = Next<ssize_t (*)(int, void*, std::size_t)>("read");
  const long before = calls;
  if (Fails("read")) return -1;
  const Fault& fault = TheFault();
  const bool isIt = calls != before && (calls == fault.number || fault.isForGood);
  return next(fd, room, isIt && fault.isShort && size > 1 ? 1 : size);
}

ssize_t write(int fd, const void* bytes, std::size_t size) {
  static const auto next = Next<ssize_t (*)(int, const void*, std::size_t)>("write");
  const long before = calls;
  if (Fails("write")) return -1;
  const Fault& fault = TheFault();
  const bool isIt = calls != before && (calls == fault.number || fault.isForGood);
  return next(fd, bytes, isIt && fault.isShort && size > 1 ? 1 : size);
}

int fsync(int fd) {
  static const auto next = Next<int (*)(int)>("fsync");
  return Fails("fsync") ? -1 : next(fd);
}

int close(int fd) {
  static const auto next = Next<int (*)(int)>("close");
  if (!Fails("close")) return next(fd);
  const int error = errno;
  next(fd);  // it is closed all the same
  errno = error;
  return -1;
}

int fchmod(int fd, mode_t mode) noexcept {
  static const auto next = Next<int (*)(int, mode_t)>("fchmod");
  return Fails("fchmod") ? -1 : next(fd, mode);
}

int rename(const char* from, const char* to) noexcept {
  static const auto next = Next<int (*)(const char*, const char*)>("rename");
  return Fails("rename") ? -1 : next(from, to);
}

int mkostemp(char* name, int flags) {
  static const auto next = Next<int (*)(char*, int)>("mkostemp");
  return Fails("mkostemp") ? -1 : next(name, flags);
}

}  // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
