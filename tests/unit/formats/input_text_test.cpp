#include "formats/input_text.h"

#include <array>
#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <zlib.h>

#include "formats/lines.h"
#include "formats/load_fabric.h"

namespace fabscope {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// One gzip member.
std::string Packed(const std::string& bytes) {
  z_stream stream{};
  deflateInit2(&stream, 9, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
  std::string packed(deflateBound(&stream, bytes.size()), '\0');
  std::string text = bytes;
  stream.next_in = reinterpret_cast<Bytef*>(text.data());
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

// Many different lines, which do not pack well.
std::string LongText(int lines) {
  std::string text;
  unsigned random = 1;
  for (int i = 0; i < lines; ++i) {
    random = random * 1103515245U + 12345U;
    text += std::to_string(random) + "\n";
  }
  return text;
}

class InputTextTest : public ::testing::Test {
 protected:
  void Write(const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

  // What a file of these bytes is read as; the error if it cannot be read.
  std::string Read(const std::string& bytes) {
    Write(bytes);
    InputText input;
    const MaybeError error = ReadInput(path, input);
    return error ? error->Text() : input.bytes;
  }

  const std::string path = ::testing::TempDir() + "input_text_test_" + std::to_string(getpid()) +
                           "_" + ::testing::UnitTest::GetInstance()->current_test_info()->name();

  ~InputTextTest() override { unlink(path.c_str()); }
};

TEST_F(InputTextTest, AFileIsReadAsItIs) {
  const std::string bytes("\r\n\0\xff tail ", 10);
  EXPECT_EQ(Read(bytes), bytes);
  EXPECT_EQ(Read(""), "");
  EXPECT_EQ(Read("\x1f"), "\x1f");
}

TEST_F(InputTextTest, ALongFileIsReadToItsEnd) {
  const std::string bytes = LongText(100000);
  EXPECT_TRUE(Read(bytes) == bytes);
  EXPECT_TRUE(Read(bytes.substr(0, 65536)) == bytes.substr(0, 65536));
}

TEST_F(InputTextTest, MessagesNameTheFileAsItWasGiven) {
  Write("");
  InputText input;
  ASSERT_EQ(ReadInput(path, input), std::nullopt);
  EXPECT_EQ(input.file, path);
}

TEST_F(InputTextTest, AMissingFileIsAnErrorWithoutAPlace) {
  InputText input;
  const MaybeError error = ReadInput("/nowhere/net.topo", input);
  ASSERT_NE(error, std::nullopt);
  EXPECT_EQ(error->Text(), "/nowhere/net.topo: No such file or directory");
}

TEST_F(InputTextTest, ADirectoryIsNoFile) {
  InputText input;
  const MaybeError error = ReadInput("/", input);
  ASSERT_NE(error, std::nullopt);
  EXPECT_EQ(error->Text(), "/: Is a directory");
}

// Standard input that comes from a file descriptor while a test runs.
class StandardInput {
 public:
  explicit StandardInput(int fd) : saved_(dup(STDIN_FILENO)) {
    dup2(fd, STDIN_FILENO);
    close(fd);
  }
  StandardInput(const StandardInput&) = delete;
  StandardInput& operator=(const StandardInput&) = delete;
  ~StandardInput() {
    dup2(saved_, STDIN_FILENO);
    close(saved_);
  }

 private:
  int saved_;
};

TEST_F(InputTextTest, ADashIsStandardInput) {
  Write(Packed("from a file"));
  const StandardInput redirected(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  InputText input;
  ASSERT_EQ(ReadInput("-", input), std::nullopt);
  EXPECT_EQ(input.bytes, "from a file");
  EXPECT_EQ(input.file, "<stdin>");
}

TEST_F(InputTextTest, StandardInputStaysOpen) {
  Write("x");
  const StandardInput redirected(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  InputText input;
  ASSERT_EQ(ReadInput("-", input), std::nullopt);
  EXPECT_NE(fcntl(STDIN_FILENO, F_GETFD), -1);
}

TEST_F(InputTextTest, StandardInputMayBeAPipe) {
  const std::string bytes = LongText(50000);
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  std::thread writer([&] {
    for (std::size_t at = 0; at < bytes.size();) {
      at += static_cast<std::size_t>(write(ends[1], bytes.data() + at, bytes.size() - at));
    }
    close(ends[1]);
  });
  const StandardInput redirected(ends[0]);
  InputText input;
  const MaybeError error = ReadInput("-", input);
  writer.join();
  ASSERT_EQ(error, std::nullopt);
  EXPECT_TRUE(input.bytes == bytes);
}

TEST_F(InputTextTest, TheParsersRoomFollowsEveryText) {
  InputText input;
  for (const std::string& bytes : {std::string(), LongText(20000), Packed("x"), Packed("")}) {
    Write(bytes);
    ASSERT_EQ(ReadInput(path, input), std::nullopt);
    EXPECT_GE(input.bytes.capacity(), input.bytes.size() + 64);
  }
}

TEST_F(InputTextTest, GzipIsUnpackedWhateverTheNameOfTheFile) {
  EXPECT_EQ(Read(Packed("one\ntwo\n")), "one\ntwo\n");
  EXPECT_EQ(Read(Packed("")), "");
}

TEST_F(InputTextTest, GzipMayUnpackToManyTimesItsSize) {
  std::string blanks;
  blanks.resize(10000000, ' ');
  EXPECT_TRUE(Read(Packed(blanks)) == blanks);
  const std::string text = LongText(100000);
  EXPECT_TRUE(Read(Packed(text)) == text);
}

TEST_F(InputTextTest, AllMembersOfAGzipFileAreUnpacked) {
  EXPECT_EQ(Read(Packed("one\ntw") + Packed("") + Packed("o\nthree\n")), "one\ntwo\nthree\n");
}

TEST_F(InputTextTest, PaddingBehindGzipDoesNotCount) {
  EXPECT_EQ(Read(Packed("one\n") + std::string(512, '\0')), "one\n");
  EXPECT_EQ(Read(Packed("one\n") + "\x1f"), "one\n");
}

TEST_F(InputTextTest, GzipIsUnpackedOnce) { EXPECT_EQ(Read(Packed(Packed("one"))), Packed("one")); }

constexpr const char* damaged =
    "the gzip data is damaged or cut short: this is the last place that could be unpacked";

TEST_F(InputTextTest, GzipThatWasCutIsAnErrorAtTheLastPlaceThatCouldBeUnpacked) {
  const std::string packed = Packed("one\ntwo\n");
  EXPECT_EQ(Read(packed.substr(0, 2)), path + ":1:1: " + damaged);
  EXPECT_EQ(Read(packed.substr(0, packed.size() - 1)), path + ":3:1: " + damaged);
}

TEST_F(InputTextTest, GzipThatWasCutAnywhereIsAnError) {
  const std::string packed = Packed(LongText(20));
  for (std::size_t size = 2; size < packed.size(); ++size) {
    EXPECT_THAT(Read(packed.substr(0, size)), ::testing::EndsWith(damaged)) << size;
  }
}

TEST_F(InputTextTest, ALaterMemberThatWasCutIsAnErrorToo) {
  const std::string second = Packed("two\n");
  EXPECT_EQ(Read(Packed("one\n") + second.substr(0, second.size() - 4)), path + ":3:1: " + damaged);
  EXPECT_EQ(Read(Packed("one\n") + "\x1f\x8b"), path + ":2:1: " + damaged);
}

TEST_F(InputTextTest, GzipWithAWrongChecksumOrLengthIsDamaged) {
  for (const std::size_t fromEnd : {1U, 5U}) {
    std::string packed = Packed("one\ntwo\n");
    packed[packed.size() - fromEnd] ^= 1;
    EXPECT_EQ(Read(packed), path + ":3:1: " + damaged);
  }
}

TEST_F(InputTextTest, GzipWithAByteChangedInsideIsDamaged) {
  const std::string packed = Packed(LongText(20));
  for (std::size_t at = 10; at < packed.size(); ++at) {  // behind the header
    std::string changed = packed;
    changed[at] = static_cast<char>(changed[at] ^ 0x01);
    EXPECT_THAT(Read(changed), ::testing::EndsWith(damaged)) << at;
  }
}

// Lines.

std::vector<std::string> Lines(const std::string& bytes) {
  std::vector<std::string> lines;
  ForEachLine(InputText{"net.topo", bytes}, [&](std::string_view line, std::size_t offset) {
    lines.push_back(std::to_string(offset) + ":" + std::string(line));
    return line != "stop";
  });
  return lines;
}

TEST_F(InputTextTest, LinesEndWithANewlineThatACarriageReturnMayPrecede) {
  EXPECT_THAT(Lines("a\r\n\n\r\nb\rc\nd"), ElementsAre("0:a", "3:", "4:", "6:b\rc", "10:d"));
  EXPECT_THAT(Lines("a\n"), ElementsAre("0:a"));
  EXPECT_THAT(Lines("a\r"), ElementsAre("0:a"));
  EXPECT_THAT(Lines("\n"), ElementsAre("0:"));
  EXPECT_THAT(Lines(""), IsEmpty());
}

TEST_F(InputTextTest, TheByteOrderMarkIsNotPartOfTheFirstLine) {
  EXPECT_THAT(Lines("\xef\xbb\xbf"
                    "a\n\xef\xbb\xbf"
                    "b"),
              ElementsAre("3:a",
                          "5:\xef\xbb\xbf"
                          "b"));
  EXPECT_THAT(Lines("\xef\xbb\xbf"), IsEmpty());
}

TEST_F(InputTextTest, VisitingLinesEndsWhenTheVisitorSaysSo) {
  EXPECT_THAT(Lines("a\nstop\nb\n"), ElementsAre("0:a", "2:stop"));
}

// The format of a fabric.

class LoadFabricTest : public InputTextTest {
 protected:
  // The names of the nodes; the error if there is one.
  std::string Load(const std::string& bytes) {
    Write(bytes);
    FabricBuilder builder;
    Warnings warnings;
    const regExp special("special");
    const MaybeError error = LoadFabric(path, nullptr, &special, builder, warnings);
    if (error) return error->Text();
    const auto fabric = builder.Build();
    std::string names;
    for (const IBNode& node : fabric->GetNodes()) {
      names += node.name + (node.special ? "!;" : ";");
    }
    return names;
  }
};

constexpr const char* document =
    R"({"format":"fabscope-fabric","version":1,"nodes":[)"
    R"({"guid":"0x1","type":"ca","name":"z","numPorts":1},)"
    R"({"guid":"0x2","type":"ca","name":"special host","numPorts":1}]})";
constexpr const char* dump =
    "Ca\t1 \"H-1\"\t\t# \"z\"\n"
    "Ca\t1 \"H-2\"\t\t# \"special host\"\n";

TEST_F(LoadFabricTest, WhatBeginsWithABraceIsADocument) {
  EXPECT_EQ(Load(document), "z;special host;");
  EXPECT_EQ(Load(std::string(" \t\r\n\n  ") + document), "z;special host;");
  EXPECT_EQ(Load(std::string("\xef\xbb\xbf\n") + document), "z;special host;");
}

// A document tells itself which nodes are special.
TEST_F(LoadFabricTest, AnythingElseIsADump) {
  EXPECT_EQ(Load(dump), "special host!;z;");
  EXPECT_EQ(Load(std::string("# {\n") + dump), "special host!;z;");
  EXPECT_EQ(Load("[]\n"), path +
                              ":1:1: no node found, expected a fabric document (JSON) or a "
                              "topology dump as `ibnetdiscover` prints it");
}

TEST_F(LoadFabricTest, BothMayBePacked) {
  EXPECT_EQ(Load(Packed(document)), "z;special host;");
  EXPECT_EQ(Load(Packed(dump)), "special host!;z;");
}

TEST_F(LoadFabricTest, PlacesInAPackedFileAreThoseOfItsText) {
  EXPECT_EQ(Load(Packed("# a\n{\"nodes\":1}\nCa\tx\n")),
            path + ":3:4: not a number of ports, expected 0 to 255");
}

TEST_F(LoadFabricTest, APackedDumpThatWasCutIsNoSmallerFabric) {
  const std::string packed = Packed(dump);
  EXPECT_EQ(Load(packed.substr(0, packed.size() - 8)), path + ":3:1: " + damaged);
}

}  // namespace
}  // namespace fabscope
