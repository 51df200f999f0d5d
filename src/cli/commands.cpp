#include "cli/commands.h"

#include <array>

#include "cli/check_command.h"
#include "cli/check_options.h"
#include "cli/convert_command.h"
#include "cli/convert_options.h"
#include "cli/diff_command.h"
#include "cli/diff_options.h"
#include "cli/generate_command.h"
#include "cli/generate_options.h"
#include "cli/parser.h"
#include "cli/repair_command.h"
#include "cli/repair_options.h"

namespace fabscope::internal {
namespace {

using Words = std::vector<std::string>;

template <typename Arguments, const CommandText& text, int (*run)(const Arguments&)>
int Run(const Words& words) {
  Arguments arguments;
  if (const auto status = Parse(text, BindOptions(arguments), words, arguments.operands)) {
    return *status;
  }
  if (const auto problem = SettleArguments(arguments)) return WrongUsage(text, *problem);
  return run(arguments);
}

struct Command {
  const CommandText* text;
  int (*run)(const Words& words);
};

constexpr std::array<Command, 5> allCommands{{
    {&checkText, Run<CheckArguments, checkText, RunCheckCommand>},
    {&repairText, Run<RepairArguments, repairText, RunRepairCommand>},
    {&diffText, Run<DiffArguments, diffText, RunDiffCommand>},
    {&generateText, Run<GenerateArguments, generateText, RunGenerateCommand>},
    {&convertText, Run<ConvertArguments, convertText, RunConvertCommand>},
}};

}  // namespace

const CommandText toolText{
    .name = "",
    .summary = "Finds wrong cables in InfiniBand fat trees.",
    .operands = {},
    .options = [] { return std::vector<OptionText>(); },
    .examples = {{"ibnetdiscover | fabscope check -",
                  "Checks the fabric of this host (ibnetdiscover needs root)."}},
    .statuses = {{0, "nothing found"}, {1, "something found"}, {2, "error"}},
    .description =
        {"Finds wrong cables in the fat tree of an InfiniBand fabric, from a dump of the "
         "fabric: names the switches and ports at fault, and says which cables to move."},
};

std::vector<const CommandText*> CommandTexts() {
  std::vector<const CommandText*> texts;
  texts.reserve(allCommands.size());
  for (const Command& command : allCommands) texts.push_back(command.text);
  return texts;
}

int RunCommand(const Words& words) {
  for (const Command& command : allCommands) {
    if (words.empty() || words.front() != command.text->name) continue;
    return command.run({words.begin() + 1, words.end()});
  }
  return ParseWithoutCommand(toolText, CommandTexts(), words);
}

}  // namespace fabscope::internal
