#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <ostream>
#include <span>
#include <string_view>

#include "fabric/fabric_builder.h"
#include "fabric/ib_fabric.h"
#include "formats/diagnostics.h"
#include "formats/input.h"
#include "formats/node_name_map.h"
#include "formats/write_fabric.h"
#include "platform/reg_exp.h"

namespace fabscope::internal {

// All formats, an entry each. What loads, writes and tells losses goes by this table, and so do the
// options, messages and help of commands.

// What a format cannot hold, a bit each; fabric_losses.cpp lists the attributes of each.
enum FormatLimit : unsigned {
  NoLimit = 0,
  TextsAreJson = 1U << 0U,      // all texts: valid UTF-8 without control characters
  NamesAreUtf8 = 1U << 1U,      // names: valid UTF-8
  NamesAreOneLine = 1U << 2U,   // names: no control characters
  SpecialByName = 1U << 3U,     // special nodes are known by their name
  NamesAreNetFiles = 1U << 4U,  // names: as NetFileName makes them, also of special nodes
  OnlyDiscovered = 1U << 5U,    // nothing but what a discovery sees
  OnlyGraph = 1U << 6U,         // of a node no more than its name and type, of a cable its speed
  ReadLikeDump = 1U << 7U,      // nodes get the order of their names, a cable has one speed
  NodesHavePorts = 1U << 8U,    // nodes without ports are left out
  NoPortCounts = 1U << 9U,      // the number of ports
};

struct FormatEntry {
  // What WriteFabric takes. None: it is only read, or made of the tree that a check finds.
  std::optional<FabricFormat> format;
  const char* name;                    // for --format
  const char* title;                   // in the lists of a help; not shown if it is only read
  std::array<const char*, 2> endings;  // of file names; the second may be null
  unsigned limits;                     // FormatLimit bits
  // Null when `format` is none; what is made of a tree is written by src/reports.
  void (*write)(const IBFabric& fabric, std::ostream& stream) = nullptr;
  // As LoadFabric; null: it cannot be read.
  MaybeError (*read)(Input& input, const NodeNameMap* names, const regExp* specialNodes,
                     FabricBuilder& builder, Warnings& warnings) = nullptr;
  // Whether the input looks like this format. It may call Input::Fill, and consumes nothing. Null
  // for the one that is read when no other claims the input.
  bool (*detect)(Input& input) = nullptr;

  constexpr bool IsMadeOfTree() const { return !format && read == nullptr; }
};

// The whole table; what of it can be written, in the order in which a help lists it; of these
// what is made of a fabric alone, and what of its tree.
std::span<const FormatEntry> AllFormats();
std::span<const FormatEntry> WrittenFormats();
std::span<const FormatEntry> FabricFormats();
std::span<const FormatEntry> TreeFormats();

const FormatEntry& EntryOf(FabricFormat format);

// The entry of the name that a user gives, and that of the ending of a file's name; null if there
// is none.
const FormatEntry* FormatOfName(std::span<const FormatEntry> formats, std::string_view name);
const FormatEntry* FormatOfFile(std::span<const FormatEntry> formats, std::string_view path);

}  // namespace fabscope::internal
