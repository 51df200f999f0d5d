#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace fabscope::internal::fuzz {

// A file in memory, for loaders that open what they read.
class MemoryFile {
 public:
  MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile();

  void Write(std::string_view bytes) const;
  const std::string& Path() const { return path_; }

 private:
  int file_;
  std::string path_;
};

// As long as it lives, standard input is a pipe that hands out a text in pieces: first those of the
// given sizes (0 counts as 1), then the rest. A text of more than 128 kB comes as it fits.
class StandardInputInPieces {
 public:
  StandardInputInPieces(std::string_view text, const std::vector<std::size_t>& sizes);
  StandardInputInPieces(const StandardInputInPieces&) = delete;
  StandardInputInPieces& operator=(const StandardInputInPieces&) = delete;
  ~StandardInputInPieces();

 private:
  int saved_;
};

}  // namespace fabscope::internal::fuzz
