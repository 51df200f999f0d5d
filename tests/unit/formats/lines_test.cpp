#include "formats/lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "support/input_fixture.h"
#include "support/packed.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using LinesTest = InputTest;

TEST_F(LinesTest, ALineLongerThanAnyOfAFabricIsNotReadToItsEnd) {
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

TEST_F(LinesTest, TheLongestLineOfAFileIsReadToItsEnd) {
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

TEST_F(LinesTest, NothingOfALineThatIsTooLongIsHandedOut) {
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

TEST_F(LinesTest, LinesEndWithANewlineThatACarriageReturnMayPrecede) {
  EXPECT_THAT(Lines("a\r\n\n\r\nb\rc\nd"), ElementsAre("1:a", "2:", "3:", "4:b\rc", "5...d"));
  EXPECT_THAT(Lines("a\n"), ElementsAre("1:a"));
  EXPECT_THAT(Lines("a\r"), ElementsAre("1...a"));
  EXPECT_THAT(Lines("\n"), ElementsAre("1:"));
  EXPECT_THAT(Lines(""), IsEmpty());
}

TEST_F(LinesTest, TheByteOrderMarkIsNotPartOfTheFirstLine) {
  EXPECT_THAT(Lines("\xef\xbb\xbf"
                    "a\n\xef\xbb\xbf"
                    "b"),
              ElementsAre("1+:a",
                          "2...\xef\xbb\xbf"
                          "b"));
  EXPECT_THAT(Lines("\xef\xbb\xbf"), IsEmpty());
}

// Files are read in pieces, and so is what gzip unpacks: no line may be lost or cut between two.
TEST_F(LinesTest, LinesOfAFileAreThoseOfItsText) {
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
TEST_F(LinesTest, TheByteOrderMarkMayComeInPieces) {
  const Pieces redirected({"\xef", "\xbb", "\xbf", "a\n"});
  Input input;
  ASSERT_EQ(input.Open("-"), std::nullopt);
  LineReader reader(input);
  Line line;
  ASSERT_TRUE(reader.Next(line));
  EXPECT_EQ(line.text, "a");
  EXPECT_EQ(line.offset, 3U);
}

TEST_F(LinesTest, LinesOfAFileThatCannotBeReadToItsEndAreThoseThatAreWhole) {
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

TEST_F(LinesTest, DamageInTheMiddleOfALineIsToldBehindItsLastByte) {
  const std::string packed = Packed("one\ntwo");
  Write(packed.substr(0, packed.size() - 1));
  Input input;
  ASSERT_EQ(input.Open(path), std::nullopt);
  LineReader reader(input);
  EXPECT_EQ(reader.Finish(std::nullopt)->Text(), path + ":2:4: " + damaged);
}

TEST_F(LinesTest, TheEndIsBehindTheLastByte) {
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
TEST_F(LinesTest, ARestThatCannotBeReadIsWorseThanAWrongLine) {
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

TEST_F(LinesTest, AWrongLineIsToldWhenTheRestCanBeRead) {
  Input input("net.topo", "one\ntwo\n");
  LineReader reader(input);
  Line line;
  ASSERT_TRUE(reader.Next(line));
  EXPECT_EQ(reader.Finish(reader.ErrorAt(line.number, 2, "wrong"))->Text(), "net.topo:1:3: wrong");
}

}  // namespace
}  // namespace fabscope::internal
