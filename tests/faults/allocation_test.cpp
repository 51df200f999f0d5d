// Memory that runs out at any allocation of a run, once for the next one only and once for
// good: the run ends with one line and status 2, or with all that it should write. Nothing is half
// written, and nothing that was there before is lost.

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <new>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "cli/command_line.h"
#include "support/folder_test.h"

namespace {

enum class Lasts { Once, ForGood };

// Allocations until memory runs out; below 0: it does not.
long allocationsLeft = -1;
Lasts failureLasts = Lasts::Once;
long failures = 0;

void* Allocate(std::size_t size) {
  const bool isLast = allocationsLeft == 0;
  if (allocationsLeft > 0) --allocationsLeft;
  if (isLast) {
    ++failures;
    if (failureLasts == Lasts::Once) allocationsLeft = -1;
    throw std::bad_alloc();
  }
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace fabscope::internal {
namespace {

namespace fs = std::filesystem;

// Every single one takes a minute, and several where all memory is watched.
#ifdef __SANITIZE_ADDRESS__
constexpr long step = 97;
#else
constexpr long step = 13;
#endif

// One of the process's own streams, kept in a file instead.
class StreamInFile {
 public:
  StreamInFile(int stream, const std::string& path) : stream_(stream), saved_(dup(stream)) {
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    dup2(fd, stream_);
    close(fd);
  }
  StreamInFile(const StreamInFile&) = delete;
  StreamInFile& operator=(const StreamInFile&) = delete;
  ~StreamInFile() {
    dup2(saved_, stream_);
    close(saved_);
  }

 private:
  int stream_;
  int saved_;
};

using Files = std::map<std::string, std::string>;  // what they hold, by name

struct Ending {
  int status = 0;
  bool hasFailed = false;  // whether memory ran out
  std::string error;       // standard error
  Files files;
};

std::string LastLine(const std::string& text) {
  const std::size_t end = text.empty() ? 0 : text.rfind('\n', text.size() - 2) + 1;
  return text.substr(end);
}

class AllocationTest : public FolderTest,
                       public ::testing::WithParamInterface<std::vector<std::string>> {
 protected:
  AllocationTest() : before_(fs::current_path()) {
    fs::create_directory(folder / "out");
    const fs::path data = FABSCOPE_TEST_DATA;
    fs::copy(data / "tree-32h-intra.topo", folder / "fabric.topo");
    std::ofstream(folder / "ranks.csv") << "guid,rank\n0x1,0\n0x2,1\n";
    std::ofstream(folder / "flids.csv") << "guid,flid\n0x1,7\n0x2,8\n";
    std::ofstream(folder / "names.map") << "0x1 \"a name too long to be kept in its string\"\n";
    std::ofstream(folder / "fabric.json") << document;
    fs::current_path(folder);
  }
  ~AllocationTest() override { fs::current_path(before_); }

  static Files Outputs() {
    Files files;
    for (const auto& entry : fs::directory_iterator("out")) {
      files[entry.path().filename()] = Read(entry.path());
    }
    return files;
  }

  // The whole command, with memory running out at its allocation number `at` (none below 0).
  static Ending Run(long at, Lasts lasts) {
    for (const char* name : outputs) std::ofstream(std::string("out/") + name) << "old";
    std::vector<const char*> words;
    for (const std::string& word : GetParam()) words.push_back(word.c_str());
    Ending ending;
    {
      const StreamInFile output(STDOUT_FILENO, "stdout");
      const StreamInFile error(STDERR_FILENO, "stderr");
      const pid_t child = fork();
      if (child == 0) {
        failureLasts = lasts;
        allocationsLeft = at;
        const int status = RunCommandLine(static_cast<int>(words.size()), words.data());
        allocationsLeft = -1;
        _exit(status + (failures == 0 ? 0 : failed));
      }
      waitpid(child, &ending.status, 0);
    }
    if (WIFEXITED(ending.status)) {
      const int status = WEXITSTATUS(ending.status);
      ending.hasFailed = status >= failed || status == 2;
      ending.status = status % failed;
    }
    ending.error = Read("stderr");
    ending.files = Outputs();
    return ending;
  }

  static constexpr int failed = 16;  // added to the exit status
  static constexpr std::array outputs{"a", "b", "c"};

 private:
  static constexpr const char* document = R"({"format": "fabscope-fabric", "version": 1, "nodes": [
{"guid": "0x1", "type": "switch", "name": "a spine with a long enough name", "numPorts": 2, "smdbRank": 0},
{"guid": "0x2", "type": "switch", "name": "leaf 1", "numPorts": 2, "planes": [1, 2], "flids": [1, 2]},
{"guid": "0x3", "type": "switch", "name": "leaf 2", "numPorts": 2, "ports": [{"num": 1, "group": 1}]}],
"links": [{"a": "0x1", "aPort": 1, "b": "0x2", "bPort": 1}, {"a": "0x1", "aPort": 2, "b": "0x3", "bPort": 1},
{"a": "0x2", "aPort": 2, "b": "0x3", "bPort": 2}],
"aports": [{"ports": [["0x1", 1], ["0x1", 2]], "asymmetry": 5}]})";

  fs::path before_;
};

TEST_P(AllocationTest, ThatFailsEndsTheRunWithOneLineAndNothingHalfWritten) {
  const Ending whole = Run(-1, Lasts::Once);
  ASSERT_NE(whole.status, 2) << whole.error;
  long injected = 0;
  for (const Lasts lasts : {Lasts::Once, Lasts::ForGood}) {
    for (long at = 0;; at += step) {
      const Ending ending = Run(at, lasts);
      if (!ending.hasFailed) break;
      ++injected;
      for (const auto& [name, text] : ending.files) {
        ASSERT_TRUE(whole.files.contains(name)) << "left behind: " << name << " at " << at;
        ASSERT_TRUE(text == "old" || text == whole.files.at(name)) << name << " at " << at;
      }
      if (ending.status == whole.status) {
        ASSERT_EQ(ending.error, whole.error) << at;
        ASSERT_EQ(ending.files, whole.files) << at;
        continue;
      }
      ASSERT_EQ(ending.status, 2) << at << ": " << ending.error;
      // Lines of warning may stand before it.
      ASSERT_EQ(LastLine(ending.error), "fabscope: out of memory\n") << at;
    }
  }
  std::printf("%ld faults injected\n", injected);
  EXPECT_GT(injected, 0);
}

using Words = std::vector<std::string>;

INSTANTIATE_TEST_SUITE_P(
    Commands, AllocationTest,
    ::testing::Values(
        Words{"fabscope", "check", "--csv", "out/a", "--json", "out/b", "--dump", "out/c", "--svg",
              "out/d", "--html", "out/e", "--node-name-map", "names.map", "fabric.topo"},
        Words{"fabscope", "check", "--ranks", "ranks.csv", "--flids", "flids.csv", "--json",
              "out/a", "--log", "out/b", "fabric.json"},
        Words{"fabscope", "check", "--root-regex", "^(root|x{3})-g[0-9]+", "fabric.topo"},
        Words{"fabscope", "convert", "fabric.topo", "-o", "out/a", "--format", "document"},
        Words{"fabscope", "convert", "fabric.json", "-o", "out/a", "--format", "ibnetdiscover"},
        Words{"fabscope", "convert", "fabric.topo", "-o", "out/a", "--format", "ibsim"},
        Words{"fabscope", "convert", "fabric.topo", "-o", "out/a", "--format", "dot"},
        Words{"fabscope", "convert", "fabric.topo", "-o", "out/a", "--format", "graphml"},
        Words{"fabscope", "convert", "fabric.topo", "-o", "out/a", "--format", "slurm",
              "--root-regex", "^root"},
        Words{"fabscope", "generate", "--levels", "2", "--radix", "4", "--flids", "--fault",
              "missing-link=1", "--truth", "out/a", "-o", "out/b"}),
    [](const auto& test) { return test.param[1] + std::to_string(test.index); });

}  // namespace
}  // namespace fabscope::internal
