#include "fuzz/files.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/require.h"

namespace fabscope::internal::fuzz {
namespace {

// Nobody reads while a pipe is filled, so all pieces must fit into it. Each takes a page.
constexpr int pipeSize = 1 << 20;
constexpr std::size_t mostPieces = 128;

// Of a pipe with O_DIRECT each read hands out what one write put in, and what the reader has no
// room for is lost. Readers have room for more than this.
constexpr std::size_t mostInPieces = 1 << 17;

}  // namespace

MemoryFile::MemoryFile()
    : file_(memfd_create("fuzz", 0)), path_("/proc/self/fd/" + std::to_string(file_)) {
  Require(file_ >= 0, "a file can be made");
}

MemoryFile::~MemoryFile() { close(file_); }

void MemoryFile::Write(std::string_view bytes) const {
  const bool written = ftruncate(file_, 0) == 0 && pwrite(file_, bytes.data(), bytes.size(), 0) ==
                                                       static_cast<ssize_t>(bytes.size());
  Require(written, "a file can be written");
}

StandardInputInPieces::StandardInputInPieces(std::string_view text,
                                             const std::vector<std::size_t>& sizes)
    : saved_(dup(STDIN_FILENO)) {
  std::array<int, 2> ends{};
  const int direct = text.size() <= mostInPieces ? O_DIRECT : 0;
  Require(pipe2(ends.data(), direct | O_NONBLOCK) == 0, "a pipe can be made");
  Require(fcntl(ends[1], F_SETPIPE_SZ, pipeSize) >= 0, "a pipe can be enlarged");
  const auto write = [&](std::size_t size) {
    const ssize_t written = ::write(ends[1], text.data(), size);
    Require(written == static_cast<ssize_t>(size), "a text fits into the pipe");
    text.remove_prefix(size);
  };
  for (std::size_t i = 0; i < std::min(sizes.size(), mostPieces) && !text.empty(); ++i) {
    write(std::clamp<std::size_t>(sizes[i], 1, text.size()));
  }
  if (!text.empty()) write(text.size());
  dup2(ends[0], STDIN_FILENO);
  close(ends[0]);
  close(ends[1]);
}

StandardInputInPieces::~StandardInputInPieces() {
  // Without one before, the pipe's end is closed with the next.
  if (saved_ < 0) return;
  dup2(saved_, STDIN_FILENO);
  close(saved_);
}

}  // namespace fabscope::internal::fuzz
