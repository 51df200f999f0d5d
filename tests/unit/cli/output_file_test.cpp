#include "cli/output_file.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace fabscope {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::Eq;
using ::testing::Optional;

class OutputFileTest : public ::testing::Test {
 protected:
  OutputFileTest() {
    std::string name = ::testing::TempDir() + "/fabscope-XXXXXX";
    folder = mkdtemp(name.data());
  }
  ~OutputFileTest() override { fs::remove_all(folder); }

  static std::string Read(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
  }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
      names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }
  static WriteTo Text(const std::string& text) {
    return [text](std::ostream& stream) { stream << text; };
  }

  fs::path folder;
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

TEST_F(OutputFileTest, DeviceIsWrittenToAndNotReplaced) {
  EXPECT_EQ(WriteFile("/dev/null", Text("x")), std::nullopt);
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(OutputFileTest, FullDeviceIsAProblem) {
  EXPECT_THAT(WriteFile("/dev/full", Text("x")),
              Optional(Eq("cannot write /dev/full: No space left on device")));
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

}  // namespace
}  // namespace fabscope
