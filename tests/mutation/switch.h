// The switch of the mutants. It is included before everything else in the sources that
// tests/mutation/mutate writes, where each change of the code stands beside what it changes:
//
//   if ((On(17) ? (a <= b) : (a < b))) ...
//
// The environment names the one mutant that is on in a process, and the file (one byte for each
// mutant) that takes down which mutants were reached.
#pragma once

#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <type_traits>
#include <unistd.h>

namespace fabscope::internal::mutation {

inline unsigned long MutantOfEnvironment() {
  const char* number = std::getenv("FABSCOPE_MUTANT");
  return number != nullptr ? std::strtoul(number, nullptr, 10) : 0;
}

// Shared with the file, so that what a crash leaves behind is there as well.
inline unsigned char* ReachedOfEnvironment() {
  const char* path = std::getenv("FABSCOPE_MUTANTS_REACHED");
  if (path == nullptr) return nullptr;
  const int file = open(path, O_RDWR);
  struct stat status = {};
  if (file < 0 || fstat(file, &status) != 0) std::abort();
  void* bytes = mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_READ | PROT_WRITE,
                     MAP_SHARED, file, 0);
  close(file);
  if (bytes == MAP_FAILED) std::abort();
  return static_cast<unsigned char*>(bytes);
}

inline const unsigned long mutant = MutantOfEnvironment();
inline unsigned char* const reached = ReachedOfEnvironment();

inline bool OnNow(unsigned long id) {
  if (reached != nullptr) reached[id] = 1;
  return id == mutant;
}

// What the compiler works out by itself cannot be switched.
constexpr bool On(unsigned long id) { return !std::is_constant_evaluated() && OnNow(id); }

}  // namespace fabscope::internal::mutation
