#include "formats/input_text.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <zlib.h>

namespace fabscope {
namespace {

// simdjson asks for this many readable bytes behind a document.
constexpr std::size_t padding = 64;

MaybeError SystemError(const std::string& file) {
  return InputError{file, 0, 0, std::strerror(errno)};
}

MaybeError ReadAll(int fd, const std::string& file, std::string& bytes) {
  struct stat info {};
  if (fstat(fd, &info) != 0) return SystemError(file);
  constexpr std::size_t firstRead = std::size_t{1} << 16;
  const auto expected = static_cast<std::size_t>(S_ISREG(info.st_mode) ? info.st_size : 0);
  // One byte more than the file has lets the last read find its end.
  bytes.resize(std::max(expected + 1, firstRead));
  std::size_t size = 0;
  for (;;) {
    const ssize_t got = read(fd, bytes.data() + size, bytes.size() - size);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return SystemError(file);
    if (got == 0) break;
    size += static_cast<std::size_t>(got);
    if (size == bytes.size()) bytes.resize(size * 2);
  }
  bytes.resize(size);
  bytes.reserve(size + padding);
  return std::nullopt;
}

bool IsGzip(std::string_view bytes) { return bytes.starts_with("\x1f\x8b"); }

// Unpacks all members of a gzip file. False when the data is damaged or cut short; what was
// unpacked until then stays in `unpacked`.
bool Unpack(std::string_view packed, std::string& unpacked) {
  constexpr int gzipOnly = 16 + MAX_WBITS;
  z_stream stream{};
  if (inflateInit2(&stream, gzipOnly) != Z_OK) return false;
  unpacked.resize(packed.size() * 4 + padding);
  std::size_t size = 0;
  std::size_t taken = 0;
  int status = Z_OK;
  while (taken < packed.size()) {
    if (size == unpacked.size()) unpacked.resize(size * 2);
    const auto room = static_cast<uInt>(std::min<std::size_t>(unpacked.size() - size, 1U << 30U));
    const auto left = static_cast<uInt>(std::min<std::size_t>(packed.size() - taken, 1U << 30U));
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data() + taken));
    stream.avail_in = left;
    stream.next_out = reinterpret_cast<Bytef*>(unpacked.data() + size);
    stream.avail_out = room;
    status = inflate(&stream, Z_NO_FLUSH);
    taken += left - stream.avail_in;
    size += room - stream.avail_out;
    if (status == Z_STREAM_END) {
      // Bytes behind the last member that begin no other are padding, as gzip itself reads them.
      if (!IsGzip(packed.substr(taken))) break;
      inflateReset(&stream);
    } else if (status != Z_OK) {
      break;
    }
  }
  inflateEnd(&stream);
  unpacked.resize(size);
  unpacked.reserve(size + padding);
  return status == Z_STREAM_END;
}

}  // namespace

MaybeError ReadInput(const std::string& path, InputText& input) {
  const bool isStandardInput = path == "-";
  input.file = isStandardInput ? "<stdin>" : path;
  const int fd = isStandardInput ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return SystemError(input.file);
  MaybeError error = ReadAll(fd, input.file, input.bytes);
  if (!isStandardInput) close(fd);
  if (error || !IsGzip(input.bytes)) return error;

  std::string unpacked;
  if (!Unpack(input.bytes, unpacked)) {
    return ErrorAt(input.file, unpacked, unpacked.size(),
                   "the gzip data is damaged or cut short: this is the last place that could be "
                   "unpacked");
  }
  input.bytes = std::move(unpacked);
  return std::nullopt;
}

}  // namespace fabscope
