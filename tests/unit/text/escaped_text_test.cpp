#include "text/escaped_text.h"

#include <gtest/gtest.h>

namespace fabscope::internal {
namespace {

TEST(EscapedTextTest, PrometheusLabelsEscapeQuotesAndBackslashesOnly) {
  EXPECT_EQ(PrometheusLabel("leaf 1 & <2> {3}"), "leaf 1 & <2> {3}");
  EXPECT_EQ(PrometheusLabel(R"(a"b\c\")"), R"(a\"b\\c\\\")");
  EXPECT_EQ(PrometheusLabel(""), "");
}

TEST(EscapedTextTest, NoTextBringsControlCharactersOrInvalidBytes) {
  const char* odd = "a\n\x1b\x7f caf\xc3\xa9 \xff";
  EXPECT_EQ(PrometheusLabel(odd), "a??? caf\xc3\xa9 \xef\xbf\xbd");
  EXPECT_EQ(DotLabel(odd), "a??? caf\xc3\xa9 \xef\xbf\xbd");
  EXPECT_EQ(XmlText(odd), "a??? caf\xc3\xa9 \xef\xbf\xbd");
}

TEST(EscapedTextTest, NoTextBringsBidirectionalControls) {
  EXPECT_EQ(PrometheusLabel("a\xe2\x80\xae\xe2\x80\xac"), "a??");
  EXPECT_EQ(DotLabel("a\xe2\x80\xae\xe2\x80\xac"), "a??");
  EXPECT_EQ(XmlText("a\xe2\x80\xae\xe2\x80\xac"), "a??");
}

// Graphviz makes XML of its labels.
TEST(EscapedTextTest, WhatIsNoCharacterOfXmlIsReplaced) {
  const char* odd =
      "a\xef\xbf\xbe"
      "b\xef\xbf\xbf"
      "c\xef\xb7\x90";  // U+FFFE, U+FFFF, U+FDD0
  const char* fit =
      "a\xef\xbf\xbd"
      "b\xef\xbf\xbd"
      "c\xef\xb7\x90";
  EXPECT_EQ(XmlText(odd), fit);
  EXPECT_EQ(DotLabel(odd), fit);
  EXPECT_EQ(PrometheusLabel(odd), odd);
}

}  // namespace
}  // namespace fabscope::internal
