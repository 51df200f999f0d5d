#include "platform/csv_desc.h"

#include <gtest/gtest.h>

namespace fabscope::internal {
namespace {

TEST(CsvDescTest, LeavesOrdinaryTextAlone) {
  EXPECT_EQ(DescToCsvDesc(""), "");
  EXPECT_EQ(DescToCsvDesc("Neighborhood 3: a, b; 'c' \\ ~"), "Neighborhood 3: a, b; 'c' \\ ~");
}

TEST(CsvDescTest, DoublesEveryDoubleQuote) {
  EXPECT_EQ(DescToCsvDesc("\"a\"b\"\""), "\"\"a\"\"b\"\"\"\"");
}

TEST(CsvDescTest, TurnsEachControlCharacterIntoOneBlank) {
  EXPECT_EQ(DescToCsvDesc("a\r\nb\tc"), "a  b c");
  for (int byte = 0; byte < 0x20; ++byte) {
    EXPECT_EQ(DescToCsvDesc(std::string(1, static_cast<char>(byte))), " ") << "byte " << byte;
  }
  EXPECT_EQ(DescToCsvDesc("\x7f"), " ");
}

TEST(CsvDescTest, KeepsBytesBeyondAscii) {
  EXPECT_EQ(DescToCsvDesc("caf\xc3\xa9 \x80\xff"), "caf\xc3\xa9 \x80\xff");
}

}  // namespace
}  // namespace fabscope::internal
