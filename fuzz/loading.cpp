#include "fuzz/loading.h"

#include <algorithm>

#include "formats/fabric_document.h"
#include "formats/load_fabric.h"
#include "formats/topology_dump.h"
#include "fuzz/require.h"

namespace fabscope::internal::fuzz {
namespace {

const regExp& SpecialNodes() {
  static const regExp expression("Aggregation Node");
  return expression;
}

std::string TextOf(const Loaded& loaded) {
  std::string text = std::to_string(loaded.line) + ":" + std::to_string(loaded.column) + ": " +
                     loaded.error + "\n" + loaded.document;
  for (const std::string& warning : loaded.warnings) text += warning + "\n";
  return text;
}

}  // namespace

Loaded LoadWith(const Load& load) {
  Loaded loaded;
  FabricBuilder builder;
  Warnings warnings;
  if (const MaybeError error = load(builder, warnings)) {
    loaded.error = error->message;
    loaded.line = error->line;
    loaded.column = error->column;
    Require(!loaded.error.empty(), "an error says what is wrong");
  } else {
    loaded.fabric = builder.Build();
    loaded.document = FabricDocumentText(*loaded.fabric);
  }
  loaded.warnings = warnings.Lines("fuzz");
  return loaded;
}

Loaded LoadPath(const std::string& path) {
  return LoadWith([&](FabricBuilder& builder, Warnings& warnings) {
    return LoadFabric(path, nullptr, &SpecialNodes(), builder, warnings);
  });
}

Loaded LoadDump(std::string_view text) {
  return LoadWith([&](FabricBuilder& builder, Warnings& warnings) {
    Input input("fuzz", std::string(text));
    return LoadTopologyDump(input, nullptr, &SpecialNodes(), builder, warnings);
  });
}

Loaded LoadDumpClosely(std::string_view text) {
  return LoadWith([&](FabricBuilder& builder, Warnings& warnings) {
    Input input("fuzz", std::string(text));
    return LoadTopologyDumpClosely(input, nullptr, &SpecialNodes(), builder, warnings);
  });
}

Loaded LoadDocument(std::string_view text) {
  return LoadWith([&](FabricBuilder& builder, Warnings& warnings) {
    Input input("fuzz", std::string(text));
    InputText whole;
    if (MaybeError error = ReadAll(input, whole)) return error;
    return LoadFabricDocument(whole, nullptr, builder, warnings);
  });
}

void RequirePlaceIn(std::string_view text, std::size_t line, std::size_t column) {
  Require(line != 0 && column != 0, "an error has a place");
  for (; line > 1; --line) {
    const std::size_t end = text.find('\n');
    Require(end != std::string_view::npos, "an error's line is in the text");
    text.remove_prefix(end + 1);
  }
  Require(column <= std::min(text.find('\n'), text.size()) + 1, "an error's column is in the line");
}

void RequireSame(const Loaded& one, const Loaded& other, const char* promise) {
  if (one != other) RequireSame(TextOf(one), TextOf(other), promise);
}

std::string Replaced(std::string text, std::string_view what, std::string_view by) {
  for (std::size_t at = text.find(what); at != std::string::npos;
       at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
  return text;
}

}  // namespace fabscope::internal::fuzz
