#include "cli/command_texts.h"

#include <array>

#include "cli/check_options.h"
#include "cli/convert_options.h"
#include "cli/generate_options.h"

namespace fabscope {
namespace {

constexpr std::array<const CommandText*, 3> texts{&checkText, &generateText, &convertText};

}  // namespace

const CommandText toolText{
    .name = "",
    .summary = "Finds the wrong cables of an InfiniBand fat tree.",
    .takesFabric = false,
    .options = [] { return std::vector<OptionText>(); },
    .examples = {{"ibnetdiscover | fabscope check -", "Checks the fabric of this host."}},
    .statuses = {{0, "nothing found"}, {1, "something found"}, {2, "the work could not be done"}},
    .description = {"Tells the people who run InfiniBand fabrics where the cabling of their fat "
                    "tree is wrong: the exact switches and ports, from a dump of the fabric."},
};

std::span<const CommandText* const> CommandTexts() { return texts; }

}  // namespace fabscope
