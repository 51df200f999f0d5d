#pragma once

#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace fabscope::internal::fuzz {

// The files of one command, and a few bytes that choose its options, as one text:
//
//   <options> 1e <role> <text of the file> 1e <role> <text> ...
//
// No file holds the byte 1e, so that any bytes at all are some bundle.
struct FileBundle {
  static constexpr std::size_t optionsSize = 4;
  static constexpr char fabric = 'F';
  static constexpr char newFabric = 'G';  // for a difference
  static constexpr char ranks = 'R';
  static constexpr char flids = 'L';
  static constexpr char names = 'N';
  static constexpr char plan = 'P';

  struct File {
    char role;
    std::string text;
  };

  std::array<std::uint8_t, optionsSize> options{};
  std::vector<File> files;

  static FileBundle Read(std::string_view bytes);
  std::string Write() const;
  // The first of that role, or null.
  const File* Find(char role) const;
};

// Changes a bundle as people and hosts change what they have: records, lines, words and digits of
// its files, and the cables of a dump at both of their ends. `mutateBytes` is for what is left.
using MutateBytes = std::string (*)(std::string text);
void MutateBundle(FileBundle& bundle, std::minstd_rand& random, MutateBytes mutateBytes);

// Files of one, and parts of those of the other.
FileBundle SplicedBundle(const FileBundle& one, const FileBundle& other, std::minstd_rand& random);

}  // namespace fabscope::internal::fuzz
