#include "manual/completions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace fabscope::internal {
namespace {

using ::testing::HasSubstr;

constexpr const char* group = "Group";

const CommandText small{
    .name = "try",
    .summary = "It's a try: [really].",
    .operands = {{"OLD", "first"}, {"NEW...", "others"}},
    .options =
        [] {
          return std::vector<OptionText>{{"-a,--all", "", group, "it's all", ""},
                                         {"-m,--mode", "one|two", group, "how: [this]", ""},
                                         {"--in", "FILE", group, "what is read", ""},
                                         {"--count", "N", group, "how often", ""}};
        },
    .examples = {{"fabscope try", ""}},
    .statuses = {},
    .description = {},
};
const std::vector<const CommandText*> commands{&small};

TEST(CompletionsTest, BashOffersWordsFilesOrNothing) {
  const std::string text = BashCompletion(commands);
  EXPECT_THAT(text, HasSubstr("_fabscope_words 'try -h --help --version'\n"));
  EXPECT_THAT(text, HasSubstr("    try:-m | try:--mode) _fabscope_words 'one two'; return ;;\n"
                              "    try:--in) _fabscope_files; return ;;\n"
                              "    try:--count) return ;;\n"
                              "  esac\n"));
  EXPECT_THAT(text, HasSubstr("    try:-*) _fabscope_words '-a --all -m --mode --in --count -h "
                              "--help --version' ;;\n"
                              "    try:*) _fabscope_files ;;\n"));
}

TEST(CompletionsTest, ZshTellsWhatItOffers) {
  const std::string text = ZshCompletion(commands);
  EXPECT_THAT(text, HasSubstr("      'try:It'\\''s a try\\: \\[really\\].'\n"));
  EXPECT_THAT(text, HasSubstr("'(-a --all)-a[it'\\''s all]' '(-a --all)--all[it'\\''s all]'"));
  EXPECT_THAT(text, HasSubstr("'(-m --mode)-m+[how\\: \\[this\\]]:value:(one two)' "
                              "'(-m --mode)--mode=[how\\: \\[this\\]]:value:(one two)'"));
  EXPECT_THAT(text, HasSubstr("'--in=[what is read]:FILE:_files'"));
  EXPECT_THAT(text, HasSubstr("'--count=[how often]:N: '"));
  EXPECT_THAT(text, HasSubstr("'1:OLD:_files' \\\n        '*:NEW:_files'"));
}

TEST(CompletionsTest, FishTellsWhatItOffers) {
  const std::string text = FishCompletion(commands);
  EXPECT_THAT(text, HasSubstr("complete -c fabscope -n 'not __fish_seen_subcommand_from try' "
                              "-a try -d 'It'\\''s a try: [really].'\n"));
  const std::string behind = "complete -c fabscope -n '__fish_seen_subcommand_from try' ";
  EXPECT_THAT(text, HasSubstr(behind + "-F\n"));
  EXPECT_THAT(text, HasSubstr(behind + "-s a -l all -d 'it'\\''s all'\n"));
  EXPECT_THAT(text, HasSubstr(behind + "-s m -l mode -x -a 'one two' -d 'how: [this]'\n"));
  EXPECT_THAT(text, HasSubstr(behind + "-l in -r -F -d 'what is read'\n"));
  EXPECT_THAT(text, HasSubstr(behind + "-l count -x -d 'how often'\n"));
}

}  // namespace
}  // namespace fabscope::internal
