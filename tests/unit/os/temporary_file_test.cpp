#include "os/temporary_file.h"

#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <new>
#include <set>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "os/output_file.h"
#include "support/folder_test.h"

namespace fabscope::internal {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::StartsWith;

class TemporaryFileTest : public FolderTest {
 protected:
  TemporaryFileTest() : target(folder / "report") {}

  // Of the one file that is not the target.
  fs::path Other() const {
    for (const auto& entry : fs::directory_iterator(folder)) {
      if (entry.path() != target) return entry.path();
    }
    return {};
  }
  static unsigned Permissions(const fs::path& path) {
    return static_cast<unsigned>(fs::status(path).permissions());
  }
  static void Write(const fs::path& path, const std::string& text) { std::ofstream(path) << text; }

  fs::path target;
};

TEST_F(TemporaryFileTest, NobodyElseMayReadItWhileItIsWritten) {
  const mode_t before = umask(0);
  Write(target, "old");
  fs::permissions(target, fs::perms(0666));
  EXPECT_EQ(WriteFile(target,
                      [this](std::ostream& stream) {
                        stream << "new" << std::flush;
                        EXPECT_EQ(Read(Other()), "new");
                        EXPECT_EQ(Permissions(Other()), 0600U);
                        EXPECT_EQ(Read(target), "old");
                      }),
            std::nullopt);
  umask(before);
  EXPECT_EQ(Read(target), "new");
}

// Somebody who knew the name could put a link there, and have another file written.
TEST_F(TemporaryFileTest, ItsNameIsADifferentOneEachTime) {
  std::set<std::string> names;
  for (int i = 0; i < 50; ++i) {
    const TemporaryFile file(target);
    EXPECT_THAT(Other().filename(), StartsWith(".fabscope-"));
    names.insert(Other().filename());
  }
  EXPECT_EQ(names.size(), 50U);
  EXPECT_THAT(Names(), ElementsAre());
}

TEST_F(TemporaryFileTest, TheTargetsNameMayBeAsLongAsNamesCanBe) {
  target = folder / std::string(255, 'n');
  EXPECT_EQ(WriteFile(target, [](std::ostream& stream) { stream << "x"; }), std::nullopt);
  EXPECT_EQ(Read(target), "x");
}

TEST_F(TemporaryFileTest, IsGoneWhenItsWriterThrows) {
  Write(target, "old");
  const WriteTo fails = [](std::ostream& stream) {
    stream << "half" << std::flush;
    throw std::bad_alloc();
  };
  EXPECT_THROW(WriteFile(target, fails), std::bad_alloc);
  EXPECT_THAT(Names(), ElementsAre("report"));
  EXPECT_EQ(Read(target), "old");
}

// A report is never run.
TEST_F(TemporaryFileTest, MarksToRunTheOldFileAsItsOwnerAreDropped) {
  Write(target, "old");
  fs::permissions(target, fs::perms(06755));
  EXPECT_EQ(WriteFile(target, [](std::ostream& stream) { stream << "x"; }), std::nullopt);
  EXPECT_EQ(Permissions(target), 0755U);
}

TEST_F(TemporaryFileTest, RootKeepsOwnerAndGroupOfTheOldFile) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  Write(target, "old");
  fs::permissions(target, fs::perms(0640));
  ASSERT_EQ(chown(target.c_str(), 12345, 23456), 0);
  EXPECT_EQ(WriteFile(target, [](std::ostream& stream) { stream << "x"; }), std::nullopt);
  struct stat info {};
  ASSERT_EQ(stat(target.c_str(), &info), 0);
  EXPECT_EQ(info.st_uid, 12345U);
  EXPECT_EQ(info.st_gid, 23456U);
  EXPECT_EQ(Permissions(target), 0640U);
}

// Runs in a process of its own, which may take another user's place and be ended.
class ChildProcessTest : public TemporaryFileTest {
 protected:
  // How it ends.
  template <typename Work>
  static int StatusOf(Work work) {
    const pid_t child = fork();
    if (child == 0) {
      work();
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
  }
};

// The group of the new file is another one, which must not get the rights of the old one.
TEST_F(ChildProcessTest, AGroupThatCannotBeKeptLosesItsRights) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  Write(target, "old");
  fs::permissions(target, fs::perms(0664));
  fs::permissions(folder, fs::perms(0777));
  ASSERT_EQ(chown(target.c_str(), 12345, 23456), 0);
  const int status = StatusOf([this] {
    const bool isOther = setgroups(0, nullptr) == 0 && setgid(34567) == 0 && setuid(34567) == 0;
    const auto problem = WriteFile(target, [](std::ostream& stream) { stream << "x"; });
    _exit(isOther && !problem ? 0 : 1);
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Read(target), "x");
  EXPECT_EQ(Permissions(target), 0644U);
}

class EndingSignalTest : public ChildProcessTest, public ::testing::WithParamInterface<int> {};

TEST_P(EndingSignalTest, RemovesTheFileAndEndsTheProcess) {
  Write(target, "old");
  const int status = StatusOf([this] {
    (void)WriteFile(target, [](std::ostream& stream) {
      stream << "half" << std::flush;
      (void)raise(GetParam());
    });
  });
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), GetParam());
  EXPECT_THAT(Names(), ElementsAre("report"));
  EXPECT_EQ(Read(target), "old");
}

TEST_P(EndingSignalTest, ThatIsIgnoredStaysSo) {
  const int status = StatusOf([this] {
    (void)std::signal(GetParam(), SIG_IGN);
    (void)WriteFile(target, [](std::ostream& stream) {
      (void)raise(GetParam());
      stream << "all";
    });
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Read(target), "all");
}

TEST_P(EndingSignalTest, EndsTheProcessAsEverOnceTheFileIsThere) {
  const int status = StatusOf([this] {
    (void)WriteFile(target, [](std::ostream& stream) { stream << "all"; });
    (void)raise(GetParam());
  });
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_THAT(Names(), ElementsAre("report"));
  EXPECT_EQ(Read(target), "all");
}

INSTANTIATE_TEST_SUITE_P(Signals, EndingSignalTest,
                         ::testing::Values(SIGHUP, SIGINT, SIGTERM, SIGQUIT, SIGPIPE, SIGALRM,
                                           SIGXCPU),
                         [](const auto& test) {
                           return "SIG" + std::string(sigabbrev_np(test.param));
                         });

}  // namespace
}  // namespace fabscope::internal
