#pragma once

#include <gtest/gtest.h>
#include <string>
#include <zlib.h>

namespace fabscope::internal {

// One gzip member, whose header holds a name of a file if there is one.
inline std::string Packed(std::string bytes, std::string name = "") {
  z_stream stream{};
  deflateInit2(&stream, 9, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
  gz_header header{};
  header.name = reinterpret_cast<Bytef*>(name.data());
  if (!name.empty()) deflateSetHeader(&stream, &header);
  std::string packed(deflateBound(&stream, bytes.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(bytes.data());
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

// One gzip member of that size.
inline std::string PackedTo(const std::string& bytes, std::size_t size) {
  const std::size_t least = Packed(bytes, "n").size() - 1;
  return Packed(bytes, std::string(size - least, 'n'));
}

}  // namespace fabscope::internal
