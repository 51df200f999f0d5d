#include "os/output_file.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include "support/folder_test.h"

namespace fabscope::internal {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::Eq;
using ::testing::Optional;

class OutputFileTest : public FolderTest {
 protected:
  static WriteTo Text(const std::string& text) {
    return [text](std::ostream& stream) { stream << text; };
  }
};

TEST_F(OutputFileTest, NewFileHoldsWhatWasWrittenAndNothingElseIsLeft) {
  EXPECT_EQ(WriteFile(folder / "report", Text("all of it\n")), std::nullopt);
  EXPECT_EQ(Read(folder / "report"), "all of it\n");
  EXPECT_THAT(Names(), ElementsAre("report"));
}

TEST_F(OutputFileTest, MoreThanABufferArrivesWhole) {
  const std::string text(1'000'003, 'x');
  EXPECT_EQ(WriteFile(folder / "report", Text(text)), std::nullopt);
  EXPECT_EQ(Read(folder / "report"), text);
}

TEST_F(OutputFileTest, NewFileHasThePermissionsThatTheMaskLeaves) {
  const mode_t before = umask(027);
  EXPECT_EQ(WriteFile(folder / "report", Text("x")), std::nullopt);
  umask(before);
  EXPECT_EQ(static_cast<unsigned>(fs::status(folder / "report").permissions()), 0640U);
}

TEST_F(OutputFileTest, TheMaskOfTheProcessStaysAsItWas) {
  const mode_t before = umask(027);
  EXPECT_EQ(WriteFile(folder / "report", Text("x")), std::nullopt);
  EXPECT_EQ(umask(before), 027U);
}

TEST_F(OutputFileTest, OldFileIsReplacedAndKeepsItsPermissions) {
  std::ofstream(folder / "report") << "old and longer";
  fs::permissions(folder / "report", fs::perms(0604));
  EXPECT_EQ(WriteFile(folder / "report", Text("new")), std::nullopt);
  EXPECT_EQ(Read(folder / "report"), "new");
  EXPECT_EQ(static_cast<unsigned>(fs::status(folder / "report").permissions()), 0604U);
}

TEST_F(OutputFileTest, SymbolicLinkStaysOneAndItsTargetIsReplaced) {
  std::ofstream(folder / "real") << "old";
  fs::create_symlink(folder / "real", folder / "link");
  EXPECT_EQ(WriteFile(folder / "link", Text("new")), std::nullopt);
  EXPECT_TRUE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(Read(folder / "real"), "new");
}

TEST_F(OutputFileTest, TargetOfADanglingSymbolicLinkIsMade) {
  fs::create_symlink("later", folder / "link");
  EXPECT_EQ(WriteFile(folder / "link", Text("new")), std::nullopt);
  EXPECT_TRUE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(Read(folder / "later"), "new");
}

TEST_F(OutputFileTest, SymbolicLinksThatGoRoundAreAProblem) {
  fs::create_symlink("b", folder / "a");
  fs::create_symlink("a", folder / "b");
  EXPECT_NE(WriteFile(folder / "a", Text("x")), std::nullopt);
  EXPECT_THAT(Names(), ElementsAre("a", "b"));
  EXPECT_TRUE(fs::is_symlink(folder / "a"));
}

// A named pipe stands for devices too: if it were replaced, nobody would miss it.
class NamedPipeTest : public OutputFileTest {
 protected:
  NamedPipeTest() : savedHandler_(std::signal(SIGPIPE, SIG_IGN)) {
    EXPECT_EQ(mkfifo(Path().c_str(), 0600), 0);
    reader = open(Path().c_str(), O_RDONLY | O_NONBLOCK);
  }
  ~NamedPipeTest() override {
    (void)std::signal(SIGPIPE, savedHandler_);
    if (reader >= 0) close(reader);
  }

  std::string Path() const { return folder / "pipe"; }

  int reader = -1;

 private:
  void (*savedHandler_)(int);
};

TEST_F(NamedPipeTest, IsWrittenToAndNotReplaced) {
  EXPECT_EQ(WriteFile(Path(), Text("report")), std::nullopt);
  std::array<char, 100> bytes{};
  EXPECT_EQ(read(reader, bytes.data(), bytes.size()), 6);
  EXPECT_STREQ(bytes.data(), "report");
  EXPECT_TRUE(fs::is_fifo(Path()));
  EXPECT_THAT(Names(), ElementsAre("pipe"));
}

TEST_F(NamedPipeTest, ThatNobodyReadsAnyMoreIsAProblem) {
  const auto problem = WriteFile(Path(), [this](std::ostream& stream) {
    close(std::exchange(reader, -1));
    stream << "report";
  });
  EXPECT_THAT(problem, Optional(Eq("cannot write " + Path() + ": Broken pipe")));
  EXPECT_TRUE(fs::is_fifo(Path()));
}

TEST_F(OutputFileTest, FolderIsAProblem) {
  EXPECT_THAT(WriteFile(folder, Text("x")),
              Optional(Eq("cannot write " + folder.string() + ": Is a directory")));
}

TEST_F(OutputFileTest, MissingFolderIsAProblem) {
  const std::string path = folder / "no" / "report";
  EXPECT_THAT(WriteFile(path, Text("x")),
              Optional(Eq("cannot write " + path + ": No such file or directory")));
}

// Files may not grow beyond a number of bytes, as on a disk that gets full.
class FullDiskTest : public OutputFileTest {
 protected:
  static constexpr rlim_t room = 1000;

  FullDiskTest() : savedHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &saved_);
  }
  ~FullDiskTest() override { (void)std::signal(SIGXFSZ, savedHandler_); }

  // Without the limit a test's own report could be cut.
  std::optional<std::string> WriteInLittleRoom(const std::string& path, std::size_t size) const {
    rlimit limit = saved_;
    limit.rlim_cur = room;
    setrlimit(RLIMIT_FSIZE, &limit);
    auto problem = WriteFile(path, Text(std::string(size, 'x')));
    setrlimit(RLIMIT_FSIZE, &saved_);
    return problem;
  }

 private:
  void (*savedHandler_)(int);
  rlimit saved_{};
};

TEST_F(FullDiskTest, WhatFitsIsWritten) {
  EXPECT_EQ(WriteInLittleRoom(folder / "report", room), std::nullopt);
  EXPECT_EQ(Read(folder / "report"), std::string(room, 'x'));
}

TEST_F(FullDiskTest, WhatDoesNotFitIsAProblemAndLeavesNothingBehind) {
  const std::string path = folder / "report";
  for (const std::size_t size : {std::size_t{room} + 1, std::size_t{1'000'000}}) {
    EXPECT_THAT(WriteInLittleRoom(path, size),
                Optional(Eq("cannot write " + path + ": File too large")));
    EXPECT_THAT(Names(), ElementsAre());
  }
}

TEST_F(FullDiskTest, WhatDoesNotFitLeavesTheOldFile) {
  const std::string path = folder / "report";
  std::ofstream(path) << "old";
  EXPECT_THAT(WriteInLittleRoom(path, room + 1),
              Optional(Eq("cannot write " + path + ": File too large")));
  EXPECT_EQ(Read(path), "old");
  EXPECT_THAT(Names(), ElementsAre("report"));
}

// One of the process's own streams leads to a file of the folder.
class OwnStreamTest : public OutputFileTest, public ::testing::WithParamInterface<int> {
 protected:
  OwnStreamTest() : saved_(dup(GetParam())) {
    const int fd = open(Path().c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    dup2(fd, GetParam());
    close(fd);
  }
  ~OwnStreamTest() override { close(saved_); }

  std::string Path() const { return folder / "stream"; }
  void Restore() const { dup2(saved_, GetParam()); }

 private:
  int saved_;
};

TEST_P(OwnStreamTest, IsWrittenOnAndNotReplacedUnderWhateverName) {
  fs::create_hard_link(folder / "stream", folder / "other");
  const bool before = write(GetParam(), "before ", 7) == 7;
  const auto problem = WriteFile(folder / "other", Text("report "));
  const bool behind = write(GetParam(), "behind", 6) == 6;
  Restore();
  EXPECT_TRUE(before && behind);
  EXPECT_EQ(problem, std::nullopt);
  EXPECT_EQ(Read(folder / "stream"), "before report behind");
  EXPECT_EQ(Read(folder / "other"), "before report behind");
}

INSTANTIATE_TEST_SUITE_P(Streams, OwnStreamTest, ::testing::Values(STDOUT_FILENO, STDERR_FILENO),
                         [](const auto& test) {
                           return test.param == STDOUT_FILENO ? "Output" : "Error";
                         });

class PipeTest : public OutputFileTest {
 protected:
  PipeTest() { EXPECT_EQ(pipe(ends_.data()), 0); }
  ~PipeTest() override {
    EndOfWriting();
    close(ends_[0]);
  }

  int Front() const { return ends_[1]; }
  std::string ReadSome() const {
    std::array<char, 100> bytes{};
    const ssize_t size = read(ends_[0], bytes.data(), bytes.size());
    return {bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
  }
  // Leaves the pipe full for a while, then reads it to its end.
  void ReadLate() {
    reader_ = std::thread([this] {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      for (std::size_t size = 1; size != 0; arrived += size) size = ReadSome().size();
    });
  }
  void EndOfWriting() {
    if (ends_[1] >= 0) close(std::exchange(ends_[1], -1));
    if (reader_.joinable()) reader_.join();
  }

  std::size_t arrived = 0;

 private:
  std::array<int, 2> ends_{};
  std::thread reader_;
};

TEST_F(PipeTest, IsWrittenToUnderTheNameOfItsDescriptor) {
  const std::string number = std::to_string(Front());
  for (const std::string folderOfNames : {"/dev/fd/", "/proc/self/fd/"}) {
    const auto problem = WriteFile(folderOfNames + number, Text("report"));
    ASSERT_EQ(problem, std::nullopt);
    EXPECT_EQ(ReadSome(), "report");
  }
}

TEST_F(PipeTest, ASignalDoesNotCutWhatIsWritten) {
  const int saved = dup(STDOUT_FILENO);
  dup2(Front(), STDOUT_FILENO);
  sigset_t alarms;
  sigemptyset(&alarms);
  sigaddset(&alarms, SIGALRM);
  pthread_sigmask(SIG_BLOCK, &alarms, nullptr);  // the reader is not to be disturbed
  const std::string text(1'000'000, 'x');
  ReadLate();
  struct sigaction action {};
  struct sigaction savedAction {};
  action.sa_handler = [](int) {};
  sigaction(SIGALRM, &action, &savedAction);
  const itimerval often{{0, 1000}, {0, 1000}};
  setitimer(ITIMER_REAL, &often, nullptr);
  pthread_sigmask(SIG_UNBLOCK, &alarms, nullptr);

  const auto problem = WriteStandardOutput(Text(text));

  const itimerval never{};
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &savedAction, nullptr);
  dup2(saved, STDOUT_FILENO);
  close(saved);
  EndOfWriting();
  EXPECT_EQ(problem, std::nullopt);
  EXPECT_EQ(arrived, text.size());
}

TEST(StandardOutputTest, ThatIsClosedIsAProblem) {
  const int saved = dup(STDOUT_FILENO);
  close(STDOUT_FILENO);
  const auto problem = WriteStandardOutput([](std::ostream& stream) { stream << "x"; });
  dup2(saved, STDOUT_FILENO);
  close(saved);
  EXPECT_THAT(problem, Optional(Eq("cannot write standard output: Bad file descriptor")));
}

}  // namespace
}  // namespace fabscope::internal
