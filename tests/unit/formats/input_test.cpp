#include <array>
#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include "formats/input_text.h"
#include "formats/lines.h"
#include "formats/load_fabric.h"
#include "support/packed.h"

namespace fabscope {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

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

// What a file holds; the error if it cannot be read.
MaybeError ReadInput(const std::string& path, InputText& text) {
  Input input;
  if (MaybeError error = input.Open(path)) return error;
  return ReadAll(input, text);
}

class InputTest : public ::testing::Test {
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

  ~InputTest() override { unlink(path.c_str()); }
};

TEST_F(InputTest, AFileIsReadAsItIs) {
  const std::string bytes("\r\n\0\xff tail ", 10);
  EXPECT_EQ(Read(bytes), bytes);
  EXPECT_EQ(Read(""), "");
  EXPECT_EQ(Read("\x1f"), "\x1f");
}

TEST_F(InputTest, ALongFileIsReadToItsEnd) {
  const std::string bytes = LongText(100000);
  EXPECT_TRUE(Read(bytes) == bytes);
  EXPECT_TRUE(Read(bytes.substr(0, 65536)) == bytes.substr(0, 65536));
}

TEST_F(InputTest, MessagesNameTheFileAsItWasGiven) {
  Write("");
  InputText input;
  ASSERT_EQ(ReadInput(path, input), std::nullopt);
  EXPECT_EQ(input.file, path);
}

TEST_F(InputTest, AMissingFileIsAnErrorWithoutAPlace) {
  InputText input;
  const MaybeError error = ReadInput("/nowhere/net.topo", input);
  ASSERT_NE(error, std::nullopt);
  EXPECT_EQ(error->Text(), "/nowhere/net.topo: No such file or directory");
}

TEST_F(InputTest, ADirectoryIsKnownAsNoFileWhenItIsOpened) {
  Input input;
  const MaybeError error = input.Open("/");
  ASSERT_NE(error, std::nullopt);
  EXPECT_EQ(error->Text(), "/: Is a directory");
}

TEST_F(InputTest, ADirectoryIsNoFile) {
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

// A pipe of which each read gives what one write has put in.
class Pieces {
 public:
  enum class End { Whole, Failure };

  // Behind the pieces the pipe is at its end, or every read fails.
  explicit Pieces(const std::vector<std::string>& pieces, End end = End::Whole) {
    EXPECT_EQ(pipe2(ends_.data(), O_DIRECT | O_NONBLOCK), 0);
    for (const std::string& piece : pieces) {
      EXPECT_EQ(write(ends_[1], piece.data(), piece.size()), static_cast<ssize_t>(piece.size()));
    }
    if (end == End::Whole) CloseWriter();
    input_.emplace(ends_[0]);
  }
  Pieces(const Pieces&) = delete;
  Pieces& operator=(const Pieces&) = delete;
  ~Pieces() { CloseWriter(); }

 private:
  void CloseWriter() {
    if (ends_[1] >= 0) close(ends_[1]);
    ends_[1] = -1;
  }

  std::array<int, 2> ends_{};
  std::optional<StandardInput> input_;
};

// What a read of a pipe that may not wait is told.
constexpr const char* failed = "<stdin>: Resource temporarily unavailable";

TEST_F(InputTest, ADashIsStandardInput) {
  Write(Packed("from a file"));
  const StandardInput redirected(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  InputText input;
  ASSERT_EQ(ReadInput("-", input), std::nullopt);
  EXPECT_EQ(input.bytes, "from a file");
  EXPECT_EQ(input.file, "<stdin>");
}

TEST_F(InputTest, StandardInputStaysOpen) {
  Write("x");
  const StandardInput redirected(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  InputText input;
  ASSERT_EQ(ReadInput("-", input), std::nullopt);
  EXPECT_NE(fcntl(STDIN_FILENO, F_GETFD), -1);
}

TEST_F(InputTest, StandardInputMayBeAPipe) {
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

TEST_F(InputTest, AReadThatFailsIsAnErrorOfTheFileAsAWhole) {
  const auto read = [](const std::vector<std::string>& pieces) {
    const Pieces redirected(pieces, Pieces::End::Failure);
    InputText input;
    const MaybeError error = ReadInput("-", input);
    return error ? error->Text() : "";
  };
  EXPECT_EQ(read({}), failed);
  EXPECT_EQ(read({"a\nb"}), failed);
  const std::string packed = Packed(LongText(100));
  EXPECT_EQ(read({packed.substr(0, 100)}), failed);
}

TEST_F(InputTest, AFileIsClosedWhenItIsNotNeededAnyMore) {
  Write("x");
  const auto nextFree = [] {
    const int fd = dup(STDIN_FILENO);
    close(fd);
    return fd;
  };
  const int before = nextFree();
  {
    Input input;
    ASSERT_EQ(input.Open(path), std::nullopt);
    EXPECT_NE(nextFree(), before);
  }
  EXPECT_EQ(nextFree(), before);
}

TEST_F(InputTest, ATextInMemoryIsAllThereIsToRead) {
  const Pieces redirected({"more"});
  Input input("net.topo", "text");
  EXPECT_FALSE(input.Fill());
  EXPECT_EQ(input.Unread(), "text");
}

// A dump is often larger than the model that is made of it.
TEST_F(InputTest, WhatWasConsumedMakesRoomForTheNextPiece) {
  Write(LongText(200000));
  Input input;
  ASSERT_EQ(input.Open(path), std::nullopt);
  const std::size_t piece = input.Unread().size();
  std::size_t read = piece;
  for (;;) {
    input.Consume(input.Unread().size());
    if (!input.Fill()) break;
    EXPECT_LE(input.Unread().size(), piece);
    read += input.Unread().size();
  }
  EXPECT_EQ(read, input.GetTotal());
}

TEST_F(InputTest, TheRestIsAllThatWasNotConsumed) {
  Input input("net.topo", "one\ntwo\n");
  input.Consume(4);
  EXPECT_EQ(input.TakeRest(0), "two\n");
  EXPECT_EQ(input.Unread(), "");
  EXPECT_FALSE(input.Fill());
}

TEST_F(InputTest, TheRestBeforeAReadThatFailedIsWhatWasNotConsumed) {
  const Pieces redirected({"one\ntw"}, Pieces::End::Failure);
  Input input;
  ASSERT_EQ(input.Open("-"), std::nullopt);
  input.Consume(4);
  ASSERT_FALSE(input.Fill());
  input.Consume(1);
  EXPECT_EQ(input.TakeRest(0), "w");
  EXPECT_EQ(input.Unread(), "");
}

TEST_F(InputTest, TheParsersRoomFollowsEveryText) {
  InputText input;
  for (const std::string& bytes : {std::string(), LongText(20000), Packed("x"), Packed("")}) {
    Write(bytes);
    ASSERT_EQ(ReadInput(path, input), std::nullopt);
    EXPECT_GE(input.bytes.capacity(), input.bytes.size() + 64);
  }
}

TEST_F(InputTest, GzipIsUnpackedWhateverTheNameOfTheFile) {
  EXPECT_EQ(Read(Packed("one\ntwo\n")), "one\ntwo\n");
  EXPECT_EQ(Read(Packed("")), "");
}

TEST_F(InputTest, GzipMayUnpackToManyTimesItsSize) {
  std::string blanks;
  blanks.resize(10000000, ' ');
  EXPECT_TRUE(Read(Packed(blanks)) == blanks);
  const std::string text = LongText(100000);
  EXPECT_TRUE(Read(Packed(text)) == text);
}

TEST_F(InputTest, AllMembersOfAGzipFileAreUnpacked) {
  EXPECT_EQ(Read(Packed("one\ntw") + Packed("") + Packed("o\nthree\n")), "one\ntwo\nthree\n");
}

TEST_F(InputTest, PaddingBehindGzipDoesNotCount) {
  EXPECT_EQ(Read(Packed("one\n") + std::string(512, '\0')), "one\n");
  EXPECT_EQ(Read(Packed("one\n") + "\x1f"), "one\n");
}

TEST_F(InputTest, GzipMayComeInPieces) {
  const std::string one = Packed(LongText(100));
  const std::string two = Packed(LongText(200));
  const auto read = [](const std::vector<std::string>& pieces) {
    const Pieces redirected(pieces);
    InputText input;
    const MaybeError error = ReadInput("-", input);
    return error ? error->Text() : input.bytes;
  };
  EXPECT_EQ(read({one.substr(0, 1), one.substr(1)}), LongText(100));
  EXPECT_EQ(read({one.substr(0, 2), one.substr(2, 200), one.substr(202)}), LongText(100));
  // The second member begins with the last byte of a piece.
  EXPECT_EQ(read({one + two.substr(0, 1), two.substr(1)}), LongText(100) + LongText(200));
  EXPECT_EQ(read({one, two}), LongText(100) + LongText(200));
  EXPECT_EQ(read({one, two.substr(0, 1)}), LongText(100));
}

// Of a file whole pieces are read, and the second member begins with the last byte of the first.
TEST_F(InputTest, AMemberMayBeginAnywhereInAPiece) {
  const std::string rest = LongText(70000);
  const std::string packed = Packed(rest);
  const std::size_t pieceSize = 1U << 18U;
  ASSERT_GT(packed.size(), pieceSize);
  for (const std::size_t size : {pieceSize - 2, pieceSize - 1, pieceSize, 2 * pieceSize - 1}) {
    EXPECT_TRUE(Read(PackedTo("one\n", size) + packed) == "one\n" + rest) << size;
  }
}

TEST_F(InputTest, GzipIsUnpackedOnce) { EXPECT_EQ(Read(Packed(Packed("one"))), Packed("one")); }

constexpr const char* damaged =
    "the gzip data is damaged or cut short: this is the last place that could be unpacked";

TEST_F(InputTest, GzipThatWasCutIsAnErrorAtTheLastPlaceThatCouldBeUnpacked) {
  const std::string packed = Packed("one\ntwo\n");
  EXPECT_EQ(Read(packed.substr(0, 2)), path + ":1:1: " + damaged);
  EXPECT_EQ(Read(packed.substr(0, packed.size() - 1)), path + ":3:1: " + damaged);
}

TEST_F(InputTest, GzipThatWasCutAnywhereIsAnError) {
  const std::string packed = Packed(LongText(20));
  for (std::size_t size = 2; size < packed.size(); ++size) {
    EXPECT_THAT(Read(packed.substr(0, size)), ::testing::EndsWith(damaged)) << size;
  }
}

TEST_F(InputTest, ALaterMemberThatWasCutIsAnErrorToo) {
  const std::string second = Packed("two\n");
  EXPECT_EQ(Read(Packed("one\n") + second.substr(0, second.size() - 4)), path + ":3:1: " + damaged);
  EXPECT_EQ(Read(Packed("one\n") + "\x1f\x8b"), path + ":2:1: " + damaged);
}

TEST_F(InputTest, GzipWithAWrongChecksumOrLengthIsDamaged) {
  for (const std::size_t fromEnd : {1U, 5U}) {
    std::string packed = Packed("one\ntwo\n");
    packed[packed.size() - fromEnd] ^= 1;
    EXPECT_EQ(Read(packed), path + ":3:1: " + damaged);
  }
}

TEST_F(InputTest, GzipWithAByteChangedInsideIsDamaged) {
  const std::string packed = Packed(LongText(20));
  for (std::size_t at = 10; at < packed.size(); ++at) {  // behind the header
    std::string changed = packed;
    changed[at] = static_cast<char>(changed[at] ^ 0x01);
    EXPECT_THAT(Read(changed), ::testing::EndsWith(damaged)) << at;
  }
}

constexpr const char* tooMuch =
    "the gzip data unpacks to more than 250 times its size, which that of a fabric never does";

TEST_F(InputTest, GzipThatUnpacksToFarMoreThanAnyFabricIsNotUnpackedToItsEnd) {
  const auto repeated = [](std::size_t count, char byte) { return std::string(count, byte); };
  const std::string zeros = Packed(repeated(10'000'000, '\0'));
  EXPECT_THAT(Read(zeros), ::testing::SizeIs(10'000'000));  // no memory is short of that
  EXPECT_EQ(Read(zeros + zeros + zeros + zeros), path + ":1:33554433: " + tooMuch);
  EXPECT_EQ(Read(Packed(repeated(40'000'000, '\n'))), path + ":33554433:1: " + tooMuch);
}

TEST_F(InputTest, GzipOfALargeFabricIsUnpackedToItsEnd) {
  const std::string part = LongText(200000);
  const std::string packed = Packed(part);
  std::string all;
  for (int i = 0; i < 10; ++i) all += packed;
  ASSERT_GT(10 * part.size(), std::size_t{1} << 24U);
  EXPECT_THAT(Read(all), ::testing::SizeIs(10 * part.size()));
}

TEST_F(InputTest, ADocumentLongerThanAnyOfAFabricIsNotRead) {
  Write("{");
  ASSERT_EQ(truncate(path.c_str(), Input::MostOfADocument + 1), 0);
  InputText text;
  const MaybeError error = ReadInput(path, text);
  ASSERT_NE(error, std::nullopt);
  EXPECT_EQ(error->Text(),
            path + ":1:262145: the document is longer than 1 GiB, which that of a fabric never is");
}

// Lines.

TEST_F(InputTest, ALineLongerThanAnyOfAFabricIsNotReadToItsEnd) {
  constexpr const char* tooLong = "the line is longer than 16 MiB, which that of a fabric never is";
  const std::string longest(Input::MostOfALine, 'x');
  const auto read = [](const std::string& bytes) {
    Input input("net.topo", bytes);
    LineReader reader(input);
    std::size_t size = 0;
    for (Line line; reader.Next(line);) size = line.text.size();
    const MaybeError error = reader.Finish(std::nullopt);
    return error ? error->Text() : std::to_string(size);
  };
  EXPECT_EQ(read("1\n" + longest), "16777216");
  EXPECT_EQ(read("1\n" + longest + "\n"), "16777216");
  EXPECT_EQ(read("1\n" + longest + "x"), std::string("net.topo:2:16777217: ") + tooLong);
  EXPECT_EQ(read("1\n" + longest + "x\n3\n"), std::string("net.topo:2:16777217: ") + tooLong);
}

TEST_F(InputTest, TheLongestLineOfAFileIsReadToItsEnd) {
  Write(std::string(Input::MostOfALine, 'x') + "\ntwo\n");
  Input input;
  ASSERT_EQ(input.Open(path), std::nullopt);
  LineReader reader(input);
  Line line;
  ASSERT_TRUE(reader.Next(line));
  EXPECT_EQ(line.text.size(), Input::MostOfALine);
  EXPECT_TRUE(line.hasEnd);
  ASSERT_TRUE(reader.Next(line));
  EXPECT_EQ(line.text, "two");
}

TEST_F(InputTest, NothingOfALineThatIsTooLongIsHandedOut) {
  Input input("net.topo", "1\n" + std::string(Input::MostOfALine + 1, 'x') + "\n3\n");
  LineReader reader(input);
  Line line;
  ASSERT_TRUE(reader.Next(line));
  EXPECT_FALSE(reader.Next(line));
  EXPECT_FALSE(reader.Next(line));
  EXPECT_EQ(line.number, 1U);
}

std::vector<std::string> Lines(const std::string& bytes) {
  std::vector<std::string> lines;
  Input input("net.topo", bytes);
  LineReader reader(input);
  for (Line line; reader.Next(line);) {
    lines.push_back(std::to_string(line.number) + (line.offset == 0 ? "" : "+") +
                    (line.hasEnd ? ":" : "...") + std::string(line.text));
  }
  return lines;
}

TEST_F(InputTest, LinesEndWithANewlineThatACarriageReturnMayPrecede) {
  EXPECT_THAT(Lines("a\r\n\n\r\nb\rc\nd"), ElementsAre("1:a", "2:", "3:", "4:b\rc", "5...d"));
  EXPECT_THAT(Lines("a\n"), ElementsAre("1:a"));
  EXPECT_THAT(Lines("a\r"), ElementsAre("1...a"));
  EXPECT_THAT(Lines("\n"), ElementsAre("1:"));
  EXPECT_THAT(Lines(""), IsEmpty());
}

TEST_F(InputTest, TheByteOrderMarkIsNotPartOfTheFirstLine) {
  EXPECT_THAT(Lines("\xef\xbb\xbf"
                    "a\n\xef\xbb\xbf"
                    "b"),
              ElementsAre("1+:a",
                          "2...\xef\xbb\xbf"
                          "b"));
  EXPECT_THAT(Lines("\xef\xbb\xbf"), IsEmpty());
}

// Files are read in pieces, and so is what gzip unpacks: no line may be lost or cut between two.
TEST_F(InputTest, LinesOfAFileAreThoseOfItsText) {
  std::string bytes = LongText(60000);
  bytes.insert(bytes.size() / 2, std::string(700000, 'x'));
  bytes += "last";
  const std::vector<std::string> expected = Lines(bytes);
  for (const std::string& written : {bytes, Packed(bytes)}) {
    Write(written);
    Input input;
    ASSERT_EQ(input.Open(path), std::nullopt);
    LineReader reader(input);
    Line line;
    std::size_t count = 0;
    for (; reader.Next(line); ++count) {
      ASSERT_LT(count, expected.size());
      ASSERT_TRUE(expected[count].ends_with(line.text)) << count;
      ASSERT_EQ(line.number, count + 1);
    }
    EXPECT_EQ(count, expected.size());
    EXPECT_FALSE(line.hasEnd);
    EXPECT_EQ(reader.Finish(std::nullopt), std::nullopt);
    EXPECT_EQ(reader.ErrorAtEnd("x").Text(), path + ":" + std::to_string(expected.size()) + ":" +
                                                 std::to_string(line.text.size() + 1) + ": x");
  }
}

// Lines begin behind the mark, however little of it a pipe gives at first.
TEST_F(InputTest, TheByteOrderMarkMayComeInPieces) {
  const Pieces redirected({"\xef", "\xbb", "\xbf", "a\n"});
  Input input;
  ASSERT_EQ(input.Open("-"), std::nullopt);
  LineReader reader(input);
  Line line;
  ASSERT_TRUE(reader.Next(line));
  EXPECT_EQ(line.text, "a");
  EXPECT_EQ(line.offset, 3U);
}

TEST_F(InputTest, LinesOfAFileThatCannotBeReadToItsEndAreThoseThatAreWhole) {
  const Pieces redirected({"one\ntw"}, Pieces::End::Failure);
  Input input;
  ASSERT_EQ(input.Open("-"), std::nullopt);
  LineReader reader(input);
  Line line;
  ASSERT_TRUE(reader.Next(line));
  EXPECT_EQ(line.text, "one");
  EXPECT_FALSE(reader.Next(line));
  const MaybeError error = reader.Finish(reader.ErrorAt(line.number, 2, "wrong"));
  ASSERT_NE(error, std::nullopt);
  EXPECT_EQ(error->Text(), failed);
}

TEST_F(InputTest, DamageInTheMiddleOfALineIsToldBehindItsLastByte) {
  const std::string packed = Packed("one\ntwo");
  Write(packed.substr(0, packed.size() - 1));
  Input input;
  ASSERT_EQ(input.Open(path), std::nullopt);
  LineReader reader(input);
  EXPECT_EQ(reader.Finish(std::nullopt)->Text(), path + ":2:4: " + damaged);
}

TEST_F(InputTest, TheEndIsBehindTheLastByte) {
  const auto end = [](const std::string& bytes) {
    Input input("net.topo", bytes);
    LineReader reader(input);
    reader.Finish(std::nullopt);
    return reader.ErrorAtEnd("x").Text();
  };
  EXPECT_EQ(end(""), "net.topo:1:1: x");
  EXPECT_EQ(end("\xef\xbb\xbf"), "net.topo:1:4: x");
  EXPECT_EQ(end("a\r"), "net.topo:1:3: x");
  EXPECT_EQ(end("a\n"), "net.topo:2:1: x");
  EXPECT_EQ(end("a\nbc"), "net.topo:2:3: x");
}

// What stands in a file that cannot be read to its end may not be what was written.
TEST_F(InputTest, ARestThatCannotBeReadIsWorseThanAWrongLine) {
  const std::string packed = Packed("one\n" + LongText(60000));
  Write(packed.substr(0, packed.size() - 4));
  Input input;
  ASSERT_EQ(input.Open(path), std::nullopt);
  LineReader reader(input);
  Line line;
  ASSERT_TRUE(reader.Next(line));
  const MaybeError error = reader.Finish(reader.ErrorAt(line.number, 2, "wrong"));
  EXPECT_EQ(error->Text(), path + ":60002:1: " + damaged);
}

TEST_F(InputTest, AWrongLineIsToldWhenTheRestCanBeRead) {
  Input input("net.topo", "one\ntwo\n");
  LineReader reader(input);
  Line line;
  ASSERT_TRUE(reader.Next(line));
  EXPECT_EQ(reader.Finish(reader.ErrorAt(line.number, 2, "wrong"))->Text(), "net.topo:1:3: wrong");
}

TEST_F(InputTest, ProgressIsThatInTheFile) {
  const std::string packed = Packed(LongText(100000));
  Write(packed);
  Input input;
  ASSERT_EQ(input.Open(path), std::nullopt);
  EXPECT_EQ(input.GetTotal(), packed.size());
  EXPECT_LT(input.GetDone(), packed.size());
  EXPECT_EQ(input.GetExpectedSize(), 0U);  // nobody knows what it unpacks to
  InputText text;
  ASSERT_EQ(ReadAll(input, text), std::nullopt);
  EXPECT_EQ(input.GetDone(), packed.size());
}

TEST_F(InputTest, ProgressIsWhatWasConsumed) {
  Input input("net.topo", "12345678");
  EXPECT_EQ(input.GetDone(), 0U);
  input.Consume(3);
  EXPECT_EQ(input.GetDone(), 3U);
  EXPECT_EQ(input.GetTotal(), 8U);
}

TEST_F(InputTest, NobodyKnowsTheSizeOfAPipe) {
  const Pieces redirected({"12345678"});
  Input input;
  ASSERT_EQ(input.Open("-"), std::nullopt);
  EXPECT_EQ(input.GetTotal(), 0U);
  EXPECT_EQ(input.GetExpectedSize(), 0U);
  input.Consume(5);
  EXPECT_EQ(input.GetDone(), 5U);
}

// The format of a fabric.

class LoadFabricTest : public InputTest {
 protected:
  // The names of the nodes; the error if there is one.
  std::string Load(const std::string& bytes) {
    Write(bytes);
    return LoadPath(path);
  }
  std::string LoadPieces(const std::vector<std::string>& pieces,
                         Pieces::End end = Pieces::End::Whole) {
    const Pieces redirected(pieces, end);
    return LoadPath("-");
  }

  static std::string LoadPath(const std::string& from) {
    FabricBuilder builder;
    Warnings warnings;
    const regExp special("special");
    const MaybeError error = LoadFabric(from, nullptr, &special, builder, warnings);
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

// A slow pipe may give next to nothing at first.
TEST_F(LoadFabricTest, TheBeginningMayComeInPieces) {
  EXPECT_EQ(LoadPieces({"\xef", "\xbb", "\xbf", " ", document}), "z;special host;");
  EXPECT_EQ(LoadPieces({"\xef\xbb", "\xbf", document}), "z;special host;");
  EXPECT_EQ(LoadPieces({"\xef\xbb", "\xbf", dump}), "special host!;z;");
  const std::string packed = Packed(document);
  EXPECT_EQ(LoadPieces({packed.substr(0, 1), packed.substr(1)}), "z;special host;");
  EXPECT_EQ(LoadPieces({"\xef\xbb"}),
            "<stdin>:1:1: no node found, expected a fabric document (JSON) or a topology dump as "
            "`ibnetdiscover` prints it");
}

TEST_F(LoadFabricTest, AFabricThatCannotBeReadToItsEndIsNoSmallerOne) {
  EXPECT_EQ(LoadPieces({}, Pieces::End::Failure), failed);
  EXPECT_EQ(LoadPieces({document}, Pieces::End::Failure), failed);
  EXPECT_EQ(LoadPieces({dump}, Pieces::End::Failure), failed);
  EXPECT_EQ(LoadPieces({"# d\n", dump}, Pieces::End::Failure), failed);
}

TEST_F(LoadFabricTest, AMissingFileIsNoEmptyOne) {
  EXPECT_EQ(LoadPath("/nowhere/net.topo"), "/nowhere/net.topo: No such file or directory");
}

// Not even a fabric document has so many blanks in front.
TEST_F(LoadFabricTest, TheBeginningIsNotLookedForWithoutEnd) {
  EXPECT_EQ(Load(std::string(2 * Input::MostOfALine, ' ') + document),
            path + ":1:16777217: the line is longer than 16 MiB, which that of a fabric never is");
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
