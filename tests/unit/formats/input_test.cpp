#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <thread>
#include <unistd.h>

#include "formats/input_text.h"
#include "support/input_fixture.h"
#include "support/packed.h"

namespace fabscope::internal {
namespace {

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

}  // namespace
}  // namespace fabscope::internal
