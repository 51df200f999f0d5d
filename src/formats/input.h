#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "formats/diagnostics.h"

namespace fabscope::internal {

// The bytes of a file or of standard input, unpacked if they are gzip, a piece at a time: a dump is
// often larger than the model that is made of it.
class Input {
 public:
  // Neither lines nor documents of a fabric are ever as long as these. Without a limit, a file that
  // is something else, or made to do harm, would take all memory.
  static constexpr std::size_t MostOfALine = std::size_t{16} << 20U;
  static constexpr std::size_t MostOfADocument = std::size_t{1} << 30U;

  Input();
  // A text in memory; messages name it `file`.
  Input(std::string file, std::string text);
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;
  ~Input();

  // Opens a file, or standard input for "-", and reads its beginning.
  MaybeError Open(const std::string& path);
  // As messages name it: the path, or "<stdin>".
  const std::string& GetFile() const { return file_; }

  // What was read and not yet consumed. Valid until the next Fill.
  std::string_view Unread() const { return std::string_view(bytes_).substr(begin_, end_ - begin_); }
  void Consume(std::size_t size) { begin_ += size; }
  // Reads more behind what is unread. False at the end, be it the true one or a failure's.
  bool Fill();
  // Reads on to the end and hands out all that was not consumed, with `spare` bytes of capacity
  // behind it.
  std::string TakeRest(std::size_t spare);

  // Why the end came too early. A read that failed has no place; that of damage in gzip data is
  // behind the last byte that could be unpacked.
  struct Failure {
    std::string message;
    bool hasPlace = false;
  };
  const std::optional<Failure>& GetFailure() const { return failure_; }

  // How many bytes of the file were consumed (of packed ones: read), and how many it has: 0 when
  // nobody knows.
  std::size_t GetDone() const { return unpacker_ == nullptr ? done_ - (end_ - begin_) : done_; }
  std::size_t GetTotal() const { return total_; }
  // The same for what is handed out, as far as it can be known before the end.
  std::size_t GetExpectedSize() const { return unpacker_ == nullptr ? total_ : 0; }

 private:
  class Unpacker;

  // Answers how many bytes of the file it put there; 0 at the end and after a failure.
  std::size_t ReadFile(char* room, std::size_t size);
  void FindFormat();
  void MakeRoom();
  // Ends the input behind what is unread.
  void FailHere(std::string message);

  std::string file_;
  std::string bytes_;  // those from begin_ to end_ are unread
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  int fd_ = -1;
  bool isOwnFd_ = false;
  std::size_t done_ = 0;  // bytes that were read from the file
  std::size_t total_ = 0;
  std::optional<Failure> failure_;
  std::unique_ptr<Unpacker> unpacker_;  // null unless the data are gzip
};

}  // namespace fabscope::internal
