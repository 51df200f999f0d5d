#include "os/output_file.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <streambuf>
#include <sys/stat.h>
#include <unistd.h>

#include "os/standard_streams.h"
#include "os/temporary_file.h"

namespace fabscope::internal {
namespace {

// A stream buffer over a file descriptor that remembers why a write failed.
class DescriptorBuffer final : public std::streambuf {
 public:
  explicit DescriptorBuffer(int fd) : fd_(fd) {
    setp(bytes_.data(), bytes_.data() + bytes_.size());
  }

  int GetError() const { return error_; }

 protected:
  int_type overflow(int_type c) override {
    if (sync() != 0) return traits_type::eof();
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
      *pptr() = traits_type::to_char_type(c);
      pbump(1);
    }
    return traits_type::not_eof(c);
  }

  int sync() override {
    const char* at = pbase();
    while (at != pptr() && error_ == 0) {
      const ssize_t written = ::write(fd_, at, static_cast<std::size_t>(pptr() - at));
      if (written >= 0) {
        at += written;
      } else if (errno != EINTR) {
        error_ = errno;
      }
    }
    setp(bytes_.data(), bytes_.data() + bytes_.size());
    return error_ == 0 ? 0 : -1;
  }

 private:
  int fd_;
  int error_ = 0;
  std::array<char, std::size_t{1} << 16> bytes_{};
};

// 0, or the errno of what went wrong.
int WriteDescriptor(int fd, const WriteTo& write) {
  DescriptorBuffer buffer(fd);
  std::ostream stream(&buffer);
  write(stream);
  stream.flush();
  return buffer.GetError();
}

int WriteInPlace(const std::string& path, const WriteTo& write) {
  const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  if (fd < 0) return errno;
  int error = WriteDescriptor(fd, write);
  if (close(fd) != 0 && error == 0) error = errno;
  return error;
}

// `old` is the file that is replaced; null when there is none.
int WriteBeside(const std::string& target, const struct stat* old, const WriteTo& write) {
  TemporaryFile file(target);
  int error = file.GetError();
  if (error == 0) error = WriteDescriptor(file.GetDescriptor(), write);
  if (error == 0) error = old != nullptr ? file.AllowAs(*old, target) : file.AllowAsNew();
  if (error == 0) error = file.Replace(target);
  return error;
}

// What a path names once all symbolic links are followed; the last target need not exist.
std::string LinkTarget(const std::string& path) {
  namespace fs = std::filesystem;
  constexpr int maxLinks = 40;  // as many as the system follows
  fs::path target = path;
  std::error_code error;
  for (int i = 0; i < maxLinks && fs::is_symlink(fs::symlink_status(target, error)); ++i) {
    const fs::path next = fs::read_symlink(target, error);
    if (error) break;
    target = target.parent_path() / next;
  }
  return target;
}

// For writing: what stands for a closed stream cannot be written.
bool IsOpenAs(const struct stat& file, int fd) {
  struct stat open {};
  const int flags = fcntl(fd, F_GETFL);
  return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY && fstat(fd, &open) == 0 &&
         open.st_dev == file.st_dev && open.st_ino == file.st_ino;
}

std::optional<std::string> Failure(const std::string& file, int error) {
  if (error == 0) return std::nullopt;
  return "cannot write " + file + ": " + std::strerror(error);
}

}  // namespace

std::optional<std::string> WriteFile(const std::string& path, const WriteTo& write) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) {
    if (errno != ENOENT) return Failure(path, errno);
    return Failure(path, WriteBeside(LinkTarget(path), nullptr, write));
  }
  if (S_ISDIR(info.st_mode)) return Failure(path, EISDIR);
  // /dev/stdout is a name of whatever file our output goes to, which must not be replaced.
  if (IsOpenAs(info, STDOUT_FILENO)) return Failure(path, WriteDescriptor(STDOUT_FILENO, write));
  if (IsOpenAs(info, STDERR_FILENO)) return Failure(path, WriteDescriptor(STDERR_FILENO, write));
  // The system follows links to pipes and terminals; those of /dev/fd have no target to be read.
  if (!S_ISREG(info.st_mode)) return Failure(path, WriteInPlace(path, write));
  return Failure(path, WriteBeside(LinkTarget(path), &info, write));
}

std::optional<std::string> WriteStandardOutput(const WriteTo& write) {
  return Failure("standard output", WriteDescriptor(STDOUT_FILENO, write));
}

std::optional<std::string> WriteOutput(const std::string& name, const WriteTo& write) {
  return name == standardStream ? WriteStandardOutput(write) : WriteFile(name, write);
}

}  // namespace fabscope::internal
