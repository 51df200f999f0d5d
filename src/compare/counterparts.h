#pragma once

#include <cstdint>
#include <vector>

#include "fabric/ib_fabric.h"

namespace fabscope::internal {

// Which node of a fabric as it was is which of the fabric as it is. Nodes of one type with one
// GUID are the same. When hardware is replaced the GUID changes and the place does not: a node that
// went and one that came are the same place if they have one type and one name, which no other node
// of that type has in either fabric; so the cables of a replaced switch need not all be told as
// moved.
class Counterparts {
 public:
  Counterparts(const IBFabric& was, const IBFabric& is);

  // Null when there is none.
  const IBNode* Now(const IBNode& was) const { return now_[was.index]; }
  const IBNode* Then(const IBNode& is) const { return then_[is.index]; }

  // A number for a node that its counterpart has, too.
  std::uint64_t IdentityOfOld(const IBNode& was) const { return was.guid; }
  std::uint64_t IdentityOfNew(const IBNode& is) const {
    const IBNode* then = Then(is);
    return then != nullptr ? then->guid : is.guid;
  }

 private:
  void Join(const IBNode& was, const IBNode& is) {
    now_[was.index] = &is;
    then_[is.index] = &was;
  }

  // By the node's index.
  std::vector<const IBNode*> now_;
  std::vector<const IBNode*> then_;
};

}  // namespace fabscope::internal
