#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/option_values.h"
#include "formats/write_fabric.h"
#include "synthetic/faults.h"
#include "synthetic/tree_shape.h"

namespace fabscope::internal {

struct FaultRequest {
  FaultKind kind{};
  int count = 0;
};

// `fabscope generate` as the command line gives it. Files: empty when not asked for, "-" for
// standard output.
struct GenerateArguments {
  std::vector<std::string> operands;  // it takes none
  std::optional<TreeShape> xgft;      // of --xgft
  int levels = 0;                     // 0 where an option was not given
  int radix = 0;
  int pods = 0;
  int hostsPerLeaf = 0;
  int parallel = 1;
  int planes = 1;
  bool flids = false;
  std::uint32_t speed = 0x400;  // HDR
  std::uint64_t seed = 1;
  std::vector<FaultRequest> faults;  // in the order in which they are done
  std::string truthFile;
  std::optional<FabricFormat> givenFormat;  // of --format
  std::string outputFile = "-";

  // Settled from the ones above.
  TreeShape shape;
  FabricFormat format = FabricFormat::Document;
};

std::vector<BoundOption> BindOptions(GenerateArguments& arguments);
extern const CommandText generateText;

// Works out what the options mean together; answers what contradicts or cannot be.
std::optional<std::string> SettleArguments(GenerateArguments& arguments);

}  // namespace fabscope::internal
