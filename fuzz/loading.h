#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fabric/fabric_builder.h"
#include "formats/diagnostics.h"

namespace fabscope::internal::fuzz {

// All that comes of reading a fabric; the name of the file is left out.
struct Loaded {
  std::string error;  // empty when all went well, and only then is there a document
  std::size_t line = 0;
  std::size_t column = 0;
  std::vector<std::string> warnings;
  std::string document;
  std::shared_ptr<IBFabric> fabric;

  friend bool operator==(const Loaded& a, const Loaded& b) {
    return a.error == b.error && a.line == b.line && a.column == b.column &&
           a.warnings == b.warnings && a.document == b.document;
  }
};

using Load = std::function<MaybeError(FabricBuilder& builder, Warnings& warnings)>;
Loaded LoadWith(const Load& load);

// Of any format, "-" is standard input.
Loaded LoadPath(const std::string& path);
Loaded LoadDump(std::string_view text);
Loaded LoadDumpClosely(std::string_view text);
Loaded LoadDocument(std::string_view text);

// An error names a place that is in the text, or just behind one of its lines.
void RequirePlaceIn(std::string_view text, std::size_t line, std::size_t column);

void RequireSame(const Loaded& one, const Loaded& other, const char* promise);

// A text in which another stands for all of what there was of one.
std::string Replaced(std::string text, std::string_view what, std::string_view by);

}  // namespace fabscope::internal::fuzz
