#include <set>
#include <string>

#include "reference/reference_check.h"

namespace fabscope::internal::reference {
namespace {

using Rules = std::set<std::string>;

const Rules kWalking = {
    "asymmetric cable left out",
    "cable at an FNM port left out",
    "cable at an FNM1 port left out",
    "name cut at /A",
    "name cut at /A though /U comes first",
    "name cut at /U",
    "node text with an ASIC",
    "node text with the node GUID",
    "node text with the system GUID",
    "node text without GUID",
};

const Rules kRoots = {
    "multi-ASIC switch on another plane ranked",
    "no root by database rank",
    "no root by regular expression",
    "root on another plane left out",
    "roots by classification",
    "roots by database rank",
    "roots by regular expression",
    "switch on another plane not ranked",
    "switch two ranks back not ranked again",
};

const Rules kClassification = {
    "agreed after more than one try",
    "candidate near an earlier leaf",
    "candidate that an earlier leaf did not reach",
    "candidate that an earlier leaf did not reach after one said no",
    "candidate without hosts",
    "classification of another height has no ranks",
    "classification of four levels",
    "classification of three levels",
    "classification of two levels",
    "classification without ranks accepted",
    "classification without ranks equals nothing",
    "classifications of different heights",
    "classifications with different roots",
    "classifications with equal roots and different leaves",
    "distance 4 of 6 is far",
    "equal classifications",
    "equal classifications with different ranks in between",
    "four levels: distance 2 is a leaf",
    "four levels: distance 2 is on rank 1",
    "four levels: distance 3 is a root",
    "four levels: distance 3 is on rank 2",
    "four levels: distance 4 is a leaf",
    "four levels: distance 4 is on rank 1",
    "greatest distance has too few switches",
    "last of equal leaves comes first",
    "more switch links make the better leaf",
    "neighbour without distance passed over",
    "next leaf is not of the most leaf-like",
    "no candidate has hosts",
    "no candidate is far from all",
    "no leaf switch",
    "no retries allowed",
    "output format of node GUIDs",
    "output format of system GUIDs",
    "search kept on the plane at a multi-ASIC switch",
    "search leaves the plane at an ordinary switch",
    "special host makes no leaf",
    "three levels: distance 2 is a leaf",
    "three levels: distance 2 is a root",
    "threshold for 101 to 1000 switches",
    "threshold for 26 to 50 switches",
    "threshold for 51 to 100 switches",
    "threshold for 6 to 25 switches",
    "threshold for more than 1000 switches",
    "threshold for up to 5 switches",
    "too few equal classifications",
    "unexpected greatest distance",
};

const Rules kGroups = {
    "cross link taken out",
    "each parallel cable is a cross link",
    "exactly 2048 upper switches",
    "faulty link to a switch in no group",
    "group without spines",
    "invalid link between two connectivity groups",
    "invalid link between two neighborhoods",
    "invalid link inside a connectivity group",
    "invalid link inside a neighborhood",
    "invalid link of the full level",
    "invalid link of the mild level",
    "link between roots",
    "link between roots known already",
    "link inside the lower rank",
    "link inside the lower rank known already",
    "link over more than one rank ignored",
    "link to a switch without rank ignored",
    "lower switch cabled to itself",
    "lower switch without up-link",
    "lower switches with the same up-hops share a set",
    "merge into a later set",
    "merge into an earlier set",
    "merge of a part",
    "merge of a set without upper switches",
    "merge of disjoint sets",
    "merge refused just at the limit",
    "merge with extra spines",
    "missing link in a connectivity group",
    "missing link in a neighborhood",
    "more than 2048 upper switches",
    "parallel cables make one up-hop",
    "rank without switches",
    "root cabled to itself",
    "set left without upper switches by cross links",
    "set that has absorbed others is merged itself",
    "set that no other accepts",
    "several connectivity groups",
    "several cross links to one upper switch",
    "several neighborhoods",
    "shared switch kept",
    "shared switch kept at exactly twice",
    "spine of two groups",
    "upper switch in no group",
};

const Rules kLinkCounts = {
    "equal totals do not block",
    "exactly eight deviating switches",
    "leaf's link past the rank above not counted",
    "lines of a connectivity group agree in downlinks",
    "lines of a connectivity group agree in uplinks",
    "lines of a connectivity group differ in downlinks",
    "lines of a connectivity group differ in uplinks",
    "lines of a neighborhood agree in downlinks",
    "lines of a neighborhood agree in uplinks",
    "lines of a neighborhood differ in downlinks",
    "lines of a neighborhood differ in uplinks",
    "middle switch's link past its neighbour ranks not counted",
    "more than eight deviating switches",
    "more uplinks do not block",
    "multi-ASIC leaf: host counted",
    "multi-ASIC leaf: host not counted again",
    "multi-ASIC leaf: host port of group below 1 counted each time",
    "multi-ASIC leaf: host port without group record counted each time",
    "root's link past rank 1 not counted",
    "router not counted",
    "special host not counted",
    "spines of a connectivity group agree in downlinks",
    "spines of a connectivity group agree in uplinks",
    "spines of a connectivity group differ in downlinks",
    "spines of a connectivity group differ in uplinks",
    "spines of a neighborhood agree in downlinks",
    "spines of a neighborhood agree in uplinks",
    "spines of a neighborhood differ in downlinks",
    "spines of a neighborhood differ in uplinks",
    "suspected blocking configuration",
    "three or more different counts",
};

const Rules kAPortsAndFlids = {
    "FLID of more than two neighborhoods",
    "FLID of one neighborhood",
    "FLID of two lines of one neighborhood",
    "FLID of two neighborhoods",
    "asymmetric APort of a line",
    "asymmetric APort of a spine",
    "asymmetric APort out of the group passed over",
    "asymmetric APort to hosts not counted again",
    "asymmetric APorts inside a connectivity group",
    "asymmetric APorts inside a neighborhood",
    "asymmetric APorts to hosts",
    "one asymmetric APort inside a connectivity group",
    "one asymmetric APort inside a neighborhood",
    "one asymmetric APort to hosts",
    "plane port of the FNM kind passed over",
    "plane port of the FNM1 kind passed over",
    "plane port outside the sub-fabric passed over",
    "plane port without cable passed over",
};

const Rules kOutcome = {
    "0 levels",
    "1 levels",
    "2 levels",
    "3 levels",
    "4 levels",
    "double quote doubled in the CSV file",
    "dump of a rank in between",
    "dump of link totals",
    "fewer than two ranks do not validate",
    "findings",
    "more than four levels",
    "nothing found",
    "records before the failure stand",
};

}  // namespace

const std::set<std::string>& AllRules() {
  static const Rules all = [] {
    Rules rules;
    for (const Rules* part : {&kWalking, &kRoots, &kClassification, &kGroups, &kLinkCounts,
                              &kAPortsAndFlids, &kOutcome}) {
      rules.insert(part->begin(), part->end());
    }
    return rules;
  }();
  return all;
}

}  // namespace fabscope::internal::reference
