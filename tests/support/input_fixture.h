#pragma once

#include <array>
#include <cstddef>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

#include "formats/input_text.h"

namespace fabscope::internal {

// Many different lines, which do not pack well.
inline std::string LongText(int lines) {
  std::string text;
  unsigned random = 1;
  for (int i = 0; i < lines; ++i) {
    random = random * 1103515245U + 12345U;
    text += std::to_string(random) + "\n";
  }
  return text;
}

// What a file holds; the error if it cannot be read.
inline MaybeError ReadInput(const std::string& path, InputText& text) {
  Input input;
  if (MaybeError error = input.Open(path)) return error;
  return ReadAll(input, text);
}

class InputTest : public ::testing::Test {
 protected:
  void Write(const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

  // What a file of these bytes is read as; the error if it cannot be read.
  std::string Read(const std::string& bytes) {
    Write(bytes);
    InputText input;
    const MaybeError error = ReadInput(path, input);
    return error ? error->Text() : input.bytes;
  }

  const std::string path = ::testing::TempDir() + "input_text_test_" + std::to_string(getpid()) +
                           "_" + ::testing::UnitTest::GetInstance()->current_test_info()->name();

  ~InputTest() override { unlink(path.c_str()); }
};

// Standard input that comes from a file descriptor while a test runs.
class StandardInput {
 public:
  explicit StandardInput(int fd) : saved_(dup(STDIN_FILENO)) {
    dup2(fd, STDIN_FILENO);
    close(fd);
  }
  StandardInput(const StandardInput&) = delete;
  StandardInput& operator=(const StandardInput&) = delete;
  ~StandardInput() {
    dup2(saved_, STDIN_FILENO);
    close(saved_);
  }

 private:
  int saved_;
};

// A pipe of which each read gives what one write has put in.
class Pieces {
 public:
  enum class End { Whole, Failure };

  // Behind the pieces the pipe is at its end, or every read fails.
  explicit Pieces(const std::vector<std::string>& pieces, End end = End::Whole) {
    EXPECT_EQ(pipe2(ends_.data(), O_DIRECT | O_NONBLOCK), 0);
    for (const std::string& piece : pieces) {
      EXPECT_EQ(write(ends_[1], piece.data(), piece.size()), static_cast<ssize_t>(piece.size()));
    }
    if (end == End::Whole) CloseWriter();
    input_.emplace(ends_[0]);
  }
  Pieces(const Pieces&) = delete;
  Pieces& operator=(const Pieces&) = delete;
  ~Pieces() { CloseWriter(); }

 private:
  void CloseWriter() {
    if (ends_[1] >= 0) close(ends_[1]);
    ends_[1] = -1;
  }

  std::array<int, 2> ends_{};
  std::optional<StandardInput> input_;
};

// What a read of a pipe that may not wait is told.
inline constexpr const char* failed = "<stdin>: Resource temporarily unavailable";

// What is told of packed bytes that cannot be unpacked.
inline constexpr const char* damaged =
    "the gzip data is damaged or cut short: this is the last place that could be unpacked";

}  // namespace fabscope::internal
