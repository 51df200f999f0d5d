#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "cli/messages.h"
#include "cli/outputs.h"
#include "cli/tree_options.h"
#include "os/terminal.h"
#include "reports/text_report.h"

namespace fabscope::internal {

// `fabscope check` as the command line gives it.
struct CheckArguments : TreeArguments {
  std::vector<std::string> operands;  // the FABRIC
  OutputFiles outputs;
  bool quiet = false;
  bool summary = false;
  ColorWhen color = ColorWhen::Auto;
};

// A run of it, as its outputs tell of it.
struct CheckRun {
  const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
  Messages messages;
  CheckResult result;
  TextStyle style;  // of the report
};

// In the order in which a help lists them.
Outputs<CheckRun> CheckOutputs();

std::vector<BoundOption> BindOptions(CheckArguments& arguments);
extern const CommandText checkText;

// Works out what the options mean together; answers what contradicts.
std::optional<std::string> SettleArguments(CheckArguments& arguments);

}  // namespace fabscope::internal
