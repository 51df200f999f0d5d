#pragma once

#include <string>
#include <sys/stat.h>

namespace fabscope::internal {

// A new file beside a target, which takes the target's name once all is written, and is gone if
// that never happens: when it is destroyed before, and when a signal ends the process. Nobody else
// can read it until then, and its name can neither be guessed nor be of a file that is there.
class TemporaryFile {
 public:
  // `target` is no symbolic link. At most one temporary file may live at a time.
  explicit TemporaryFile(const std::string& target);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  // The errno of why there is none; 0 when there is.
  int GetError() const { return error_; }
  int GetDescriptor() const { return fd_; }

  // Each answers 0, or the errno of what went wrong.
  //
  // As the mask of the process wants a new file.
  int AllowAsNew() const;
  // As the target, the file that it will replace: no more than that allowed, to no one else.
  int AllowAs(const struct stat& old, const std::string& target) const;
  // Gives it the target's name. What was written is on the disk by then: a machine that fails
  // leaves the old file or the new one.
  int Replace(const std::string& target);

 private:
  void Forget();

  std::string name_;  // empty: there is nothing to remove
  int fd_ = -1;
  int error_ = 0;
};

}  // namespace fabscope::internal
