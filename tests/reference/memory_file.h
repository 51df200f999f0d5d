#pragma once

#include <fstream>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace fabscope::internal::reference {

// A file to load from that is in memory: on a disk, writing it takes longer than all else.
class MemoryFile {
 public:
  MemoryFile() : file_(memfd_create("fabscope-reference", 0)) {}
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { close(file_); }

  std::string Path() const { return "/proc/self/fd/" + std::to_string(file_); }
  void Write(const std::string& text) const { std::ofstream(Path(), std::ios::binary) << text; }

 private:
  int file_;
};

}  // namespace fabscope::internal::reference
