#pragma once

#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

#include "fat_tree/up_hop_histogram.h"
#include "support/test_peer.h"

// The illegal links that a histogram has recorded, as texts.

namespace fabscope::internal {

// "root0 port 1 rank 0 - leaf0 port 2 rank 1"
inline std::string Text(const FTLinkIssue& issue) {
  std::ostringstream text;
  text << issue.node1->name << " port " << int{issue.port1} << " rank " << issue.rank1 << " - "
       << issue.node2->name << " port " << int{issue.port2} << " rank " << issue.rank2;
  return text.str();
}

inline std::vector<std::string> Issues(FTUpHopHistogram& histogram) {
  std::vector<std::string> texts;
  for (const FTLinkIssue& issue : TestPeer::LinkIssues(histogram)) texts.push_back(Text(issue));
  return texts;
}

inline std::string Numbered(const std::string& name, std::size_t number) {
  return name + std::to_string(number);
}

}  // namespace fabscope::internal
