#pragma once

#include <cstdint>
#include <cstring>
#include <string>

namespace fabscope {

// The model order of nodes that no file puts in order: by name, digits as numbers, then by GUID. So
// the same fabric gives the same report wherever its discovery started. Answers as strcmp does.
inline int CompareNodeOrder(const std::string& nameA, std::uint64_t guidA, const std::string& nameB,
                            std::uint64_t guidB) {
  const int order = strverscmp(nameA.c_str(), nameB.c_str());
  if (order != 0) return order;
  return guidA < guidB ? -1 : static_cast<int>(guidA > guidB);
}

}  // namespace fabscope
