#include "reference/small_fabrics.h"

#include <string>

#include "reference/fabric_sketch.h"

namespace fabscope::internal::reference {
namespace {

// Takes the lowest digit of a binary number off.
bool TakeBit(std::uint64_t& number) {
  const bool bit = (number & 1U) != 0;
  number >>= 1U;
  return bit;
}

}  // namespace

SmallFabrics::SmallFabrics(int switches)
    : switches_(switches),
      graphs_(std::uint64_t{1} << (switches * (switches - 1) / 2)),
      choices_(std::uint64_t{1} << switches) {}

PlainCase SmallFabrics::Case(std::uint64_t number) const {
  RandomSource random(number);
  FabricSketch sketch(random);
  PlainCase what;
  what.kind = std::to_string(switches_) + " switches";
  for (int i = 0; i < switches_; ++i) sketch.AddSwitch("s" + std::to_string(i));

  what.kind += ", cables";
  for (int b = 1; b < switches_; ++b) {
    for (int a = 0; a < b; ++a) {
      if (!TakeBit(number)) continue;
      sketch.Cable(a, b);
      what.kind += " " + std::to_string(a) + "-" + std::to_string(b);
    }
  }
  what.kind += ", hosts at";
  for (int i = 0; i < switches_; ++i) {
    if (!TakeBit(number)) continue;
    sketch.Cable(i, sketch.AddHost("h" + std::to_string(i)));
    what.kind += " " + std::to_string(i);
  }
  if (number > 0) {
    std::uint64_t roots = number - 1;
    what.options.roots = PlainRoots::Smdb;
    what.kind += ", roots";
    for (int i = 0; i < switches_; ++i) {
      if (!TakeBit(roots)) continue;
      sketch.Node(i).smdbRank = 0;
      what.kind += " " + std::to_string(i);
    }
  }
  what.fabric = sketch.Finish(false);
  return what;
}

}  // namespace fabscope::internal::reference
