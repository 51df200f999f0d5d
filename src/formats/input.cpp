#include "formats/input.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <zlib.h>

namespace fabscope::internal {
namespace {

// Small enough to stay in the processor's cache while it is read line by line.
constexpr std::size_t pieceSize = std::size_t{1} << 18U;

// Fabrics unpack to some ten or twenty times their packed size; what gzip can reach is 1032 times.
constexpr std::size_t mostTimesPacked = 250;
constexpr std::size_t alwaysUnpacked = std::size_t{1} << 24U;

constexpr std::size_t gzipMarkSize = 2;
bool IsGzip(std::string_view bytes) { return bytes.starts_with("\x1f\x8b"); }

}  // namespace

// Unpacks gzip data, all members one behind the other.
class Input::Unpacker {
 public:
  // `begin` are the first packed bytes, which the input has read already.
  Unpacker(Input& input, std::string_view begin) : input_(input), packed_(begin) {
    constexpr int gzipOnly = 16 + MAX_WBITS;
    if (inflateInit2(&stream_, gzipOnly) != Z_OK) throw std::bad_alloc();
    SetPacked(begin.size());
  }
  Unpacker(const Unpacker&) = delete;
  Unpacker& operator=(const Unpacker&) = delete;
  ~Unpacker() { inflateEnd(&stream_); }

  // Answers how many bytes it put there; fewer than `size` at the end only.
  std::size_t Read(char* room, std::size_t size) {
    constexpr std::size_t most = std::size_t{1} << 30U;
    const auto asked = static_cast<uInt>(std::min(size, most));
    stream_.next_out = reinterpret_cast<Bytef*>(room);
    stream_.avail_out = asked;
    while (!isAtEnd_ && stream_.avail_out != 0) Unpack();
    const std::size_t got = asked - stream_.avail_out;
    unpacked_ += got;
    if (IsTooMuch(unpacked_)) {
      Fail("the gzip data unpacks to more than " + std::to_string(mostTimesPacked) +
           " times its size, which that of a fabric never does");
    }
    return got;
  }

 private:
  void Unpack() {
    if (stream_.avail_in == 0) ReadPacked();
    const int status = inflate(&stream_, Z_NO_FLUSH);
    if (status == Z_MEM_ERROR) throw std::bad_alloc();
    if (status == Z_STREAM_END) {
      BeginMember();
    } else if (status != Z_OK) {
      Fail("the gzip data is damaged or cut short: this is the last place that could be unpacked");
    }
  }

  // Bytes behind the last member that begin no other are padding, as gzip itself reads them.
  void BeginMember() {
    while (stream_.avail_in < gzipMarkSize && ReadPacked()) continue;
    const char* next = packed_.data() + (packedSize_ - stream_.avail_in);
    isAtEnd_ = !IsGzip({next, stream_.avail_in});
    if (!isAtEnd_) inflateReset(&stream_);
  }

  void Fail(std::string message) {
    isAtEnd_ = true;
    // That the file cannot be read comes first.
    if (!input_.failure_) input_.FailHere(std::move(message));
  }

  // A small file may unpack to more than any memory or patience can hold.
  bool IsTooMuch(std::size_t unpacked) const {
    return unpacked > alwaysUnpacked &&
           unpacked / mostTimesPacked > input_.done_ - stream_.avail_in;
  }

  // More packed bytes behind those that are left. False at the file's end.
  bool ReadPacked() {
    const std::size_t left = stream_.avail_in;
    packed_.erase(0, packedSize_ - left);
    packed_.resize(pieceSize);
    const std::size_t got = input_.ReadFile(packed_.data() + left, packed_.size() - left);
    SetPacked(left + got);
    return got != 0;
  }

  void SetPacked(std::size_t size) {
    packedSize_ = size;
    stream_.next_in = reinterpret_cast<Bytef*>(packed_.data());
    stream_.avail_in = static_cast<uInt>(size);
  }

  Input& input_;
  std::string packed_;
  std::size_t packedSize_ = 0;
  z_stream stream_{};
  std::size_t unpacked_ = 0;
  bool isAtEnd_ = false;
};

Input::Input() = default;

Input::Input(std::string file, std::string text)
    : file_(std::move(file)),
      bytes_(std::move(text)),
      end_(bytes_.size()),
      done_(end_),
      total_(end_) {}

Input::~Input() {
  if (isOwnFd_) close(fd_);
}

MaybeError Input::Open(const std::string& path) {
  const bool isStandardInput = path == "-";
  file_ = isStandardInput ? "<stdin>" : path;
  fd_ = isStandardInput ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
  isOwnFd_ = fd_ >= 0 && !isStandardInput;
  struct stat info {};
  if (fd_ < 0 || fstat(fd_, &info) != 0) return InputError{file_, 0, 0, std::strerror(errno)};
  if (S_ISREG(info.st_mode)) total_ = static_cast<std::size_t>(info.st_size);
  FindFormat();
  if (failure_) return InputError{file_, 0, 0, failure_->message};
  return std::nullopt;
}

void Input::FindFormat() {
  while (end_ < gzipMarkSize && Fill()) continue;
  if (!IsGzip(Unread())) return;
  unpacker_ = std::make_unique<Unpacker>(*this, Unread());
  end_ = 0;
}

std::size_t Input::ReadFile(char* room, std::size_t size) {
  while (fd_ >= 0 && !failure_) {
    const ssize_t got = read(fd_, room, size);
    if (got >= 0) {
      done_ += static_cast<std::size_t>(got);
      return static_cast<std::size_t>(got);
    }
    if (errno != EINTR) failure_ = Failure{std::strerror(errno), false};
  }
  return 0;
}

void Input::MakeRoom() {
  if (begin_ != 0) {
    std::memmove(bytes_.data(), bytes_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
  }
  if (end_ != bytes_.size()) return;
  // Of a small file the last read finds its end in one byte more.
  const std::size_t left = total_ > done_ ? total_ - done_ + 1 : pieceSize;
  bytes_.resize(std::max(std::min(left, pieceSize), bytes_.size() * 2));
}

bool Input::Fill() {
  if (failure_ || fd_ < 0) return false;  // without a file all was there at once
  MakeRoom();
  char* room = bytes_.data() + end_;
  const std::size_t size = bytes_.size() - end_;
  const std::size_t got = unpacker_ != nullptr ? unpacker_->Read(room, size) : ReadFile(room, size);
  end_ += got;
  return got != 0;
}

void Input::FailHere(std::string message) { failure_ = Failure{std::move(message), true}; }

std::string Input::TakeRest(std::size_t spare) {
  // One byte more than the file has lets the last read find its end.
  const bool isTooLong = GetExpectedSize() > MostOfADocument;
  if (!isTooLong && GetExpectedSize() > done_) {
    bytes_.resize(end_ + (GetExpectedSize() - done_) + 1 + spare);
  }
  while (!isTooLong && end_ <= MostOfADocument && Fill()) continue;
  if (isTooLong || end_ > MostOfADocument) {
    FailHere("the document is longer than 1 GiB, which that of a fabric never is");
  }
  bytes_.resize(end_);
  bytes_.erase(0, begin_);
  bytes_.reserve(bytes_.size() + spare);
  begin_ = end_ = 0;
  return std::exchange(bytes_, {});
}

}  // namespace fabscope::internal
