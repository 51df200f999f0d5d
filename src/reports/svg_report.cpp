// From back to front: boxes of groups, cables, faulty links, switches, names, and the badges of
// what is not a link. Every kind of finding has a colour and a form of its own, so that print
// without colours tells them too.

#include "reports/svg_report.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "fat_tree/group_label.h"
#include "fat_tree/node_record.h"
#include "reports/finding_counts.h"
#include "reports/tree_cables.h"
#include "reports/tree_layout.h"
#include "text/escaped_text.h"

namespace fabscope::internal {
namespace {

constexpr double margin = 24;
constexpr double leftMargin = 150;  // behind the names of the ranks
constexpr double top = 130;         // below the title
constexpr double titleHeight = 84;
constexpr double legendStep = 26;
constexpr double leastWidth = 720;

constexpr std::string_view styleSheet =
    "text{font-family:sans-serif;font-size:12px;fill:#1c2733}"
    ".title{font-size:22px;font-weight:bold}"
    ".rank{fill:#52606d}"
    ".box{fill:#f3f6f9;stroke:#c3cdd8}"
    ".cable{stroke:#7b8794;fill:none}"
    ".missing{stroke:#b42318;stroke-width:2.5;stroke-dasharray:7 5;fill:none}"
    ".invalid{stroke:#b42318;stroke-width:3;fill:none}"
    ".cross{stroke:#b42318;stroke-width:2.5}"
    ".switch{fill:#ffffff;stroke:#243b53;stroke-width:1.5}"
    ".count{text-anchor:middle}"
    ".name, .group{font-size:10px;paint-order:stroke;stroke:#ffffff;stroke-width:3px}"
    ".group{fill:#52606d;stroke:#f3f6f9}"
    ".uneven{fill:#f0b429;stroke:#513c06}"
    ".badge{fill:#b42318}"
    ".badgetext{fill:#ffffff;font-weight:bold;text-anchor:middle;font-size:11px}";

// Cut between two characters.
std::string ShortName(const std::string& name, std::size_t most) {
  std::size_t characters = 0;
  for (std::size_t at = 0; at < name.size(); ++at) {
    const bool isFirstByte = (static_cast<unsigned char>(name[at]) & 0xc0U) != 0x80U;
    if (isFirstByte && characters++ == most) return name.substr(0, at) + "\u2026";
  }
  return name;
}

// A group among those of both kinds.
using GroupKey = std::pair<bool, std::uint64_t>;

class Picture {
 public:
  Picture(const CheckResult& result, const TreeLayout& layout)
      : result_(result), topology_(*result.topology), layout_(layout) {
    for (const Finding& finding : result.findings) {
      std::visit([this](const auto& found) { Mark(found); }, finding);
      for (const std::uint64_t group : GroupsOf(finding)) {
        ++found_[{IsOfNeighborhoods(finding), group}];
      }
    }
  }

  std::string Draw() {
    const double width = std::max(layout_.right + margin, leastWidth);
    // A large picture is looked at from afar: its words grow with it.
    const double scale = std::clamp(width / 1600, 1.0, 4.0);
    const double begin = titleHeight * (1 - scale);
    const double end = Bottom() + LegendHeight() * scale;
    Add(R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 {:.0f} {:.0f} {:.0f}" width="{:.0f}" height="{:.0f}">)",
        begin, width, end - begin, width, end - begin);
    Add("<style>{}</style>", styleSheet);
    Add(R"(<rect y="{:.0f}" width="100%" height="100%" fill="#ffffff"/>)", begin);
    BeginScaled(begin, scale);
    DrawTitle(width / scale);
    Add("</g>");
    DrawRanks();
    for (const TreeLayout::Box& box : layout_.boxes) DrawBox(box);
    DrawCables();
    DrawFaultyLinks();
    for (const TreeLayout::Box& box : layout_.boxes) DrawGroupName(box);
    for (const TreeLayout::Mark& mark : layout_.marks) DrawMark(mark);
    for (const std::int32_t mark : uneven_) DrawDiamond(layout_.marks[Place(mark)]);
    for (const TreeLayout::Box& box : layout_.boxes) DrawBadge(box);
    BeginScaled(Bottom(), scale);
    DrawLegend(20);
    Add("</g>\n</svg>");
    return fmt::to_string(svg_);
  }

 private:
  // A pair of marks, the earlier one first.
  using Line = std::pair<std::int32_t, std::int32_t>;

  template <typename... Values>
  void Add(fmt::format_string<Values...> format, Values&&... values) {
    fmt::format_to(std::back_inserter(svg_), format, std::forward<Values>(values)...);
    svg_.push_back('\n');
  }

  static std::size_t Place(std::int32_t mark) { return static_cast<std::size_t>(mark); }
  Line Between(const IBNode& a, const IBNode& b) const {
    return std::minmax(layout_.markOf.Get(a), layout_.markOf.Get(b));
  }

  void Mark(const MissingLink& found) { missing_.insert(Between(*found.spine, *found.line)); }
  void Mark(const InvalidLink& found) {
    invalid_.insert(Between(*found.link.node1, *found.link.node2));
  }
  void Mark(const UnevenLinks& found) {
    for (const LinkCount& other : found.others) {
      for (const IBNode* node : other.nodes) uneven_.insert(layout_.markOf.Get(*node));
    }
  }
  // The others show in the number of their group.
  template <typename Kind>
  void Mark(const Kind& /*found*/) {}

  double LegendHeight() const {
    const int items = (missing_.empty() ? 0 : 1) + (invalid_.empty() ? 0 : 1) +
                      (uneven_.empty() ? 0 : 1) + (found_.empty() ? 0 : 1) +
                      (layout_.isFolded ? 1 : 0);
    return margin + legendStep * items;
  }
  double Bottom() const {
    const double lastRow = layout_.rowY.empty() ? top : layout_.rowY.back();
    return lastRow + layout_.labelHeight + 30;
  }

  void BeginScaled(double y, double scale) {
    Add(R"svg(<g transform="translate(0 {:.1f})scale({:.2f})">)svg", y, scale);
  }
  void DrawTitle(double width);
  void DrawRanks();
  void DrawBox(const TreeLayout::Box& box);
  void DrawGroupName(const TreeLayout::Box& box);
  void DrawBadge(const TreeLayout::Box& box);
  void DrawCables();
  void DrawFaultyLinks();
  void DrawLink(const Line& line, std::string_view kind, double width);
  void DrawCross(double x, double y);
  void DrawMark(const TreeLayout::Mark& mark);
  void DrawName(const TreeLayout::Mark& mark);
  void DrawDiamond(const TreeLayout::Mark& mark) { DrawDiamond(mark.x - 11, mark.y - 10); }
  void DrawDiamond(double x, double y) {
    Add(R"(<path class="uneven" d="M{:.1f} {:.1f}l6 6l-6 6l-6 -6z"/>)", x, y - 6);
  }
  void DrawLegend(double y);

  // Links inside a rank go round what stands between them, away from the names.
  double BendOf(const TreeLayout::Mark& a, const TreeLayout::Mark& b) const {
    if (a.rank != b.rank) return 0;
    return IsLeaf(a) ? -50 : 50;
  }
  bool IsLeaf(const TreeLayout::Mark& mark) const { return mark.rank + 1 == layout_.rowY.size(); }

  double BoxTop(const TreeLayout::Box& box) const {
    return layout_.rowY[box.topRank] - layout_.labelHeight - 24;
  }
  std::size_t FindingsOf(const TreeLayout::Box& box) const {
    const bool isNeighborhood = topology_.IsLastRankNeighborhood(box.group->GetRank());
    const auto found = found_.find({isNeighborhood, box.group->GetId()});
    return found == found_.end() ? 0 : found->second;
  }

  const CheckResult& result_;
  const FTTopology& topology_;
  const TreeLayout& layout_;
  std::set<Line> missing_;
  std::set<Line> invalid_;
  std::set<std::int32_t> uneven_;  // marks
  std::map<GroupKey, std::size_t> found_;
  fmt::memory_buffer svg_;
};

void Picture::DrawTitle(double width) {
  std::string verdict = "No faults found";
  if (result_.HasFindings()) verdict = CountsByKind(result_.findings);
  const std::uint64_t notListed = result_.findings.RecordsNotListed();
  if (notListed != 0) verdict += fmt::format(" ({} more not listed)", notListed);
  if (result_.status != CheckStatus::Done) verdict = "Not validated: " + result_.message;
  std::size_t groups = 0;
  for (const auto& rank : topology_.GetNeighborhoods()) groups += rank.size();
  std::size_t ranked = 0;
  for (const NodeSet& rank : topology_.GetRanks()) ranked += rank.size();
  std::string facts =
      fmt::format("{}: {}, {}, {}", ShortName(result_.input, 60),
                  Counted(topology_.GetRanks().size(), "level", "levels"),
                  Counted(ranked, "switch", "switches"), Counted(groups, "group", "groups"));
  const std::size_t others = topology_.GetFabric().switches.size() - ranked;
  if (others != 0) facts += fmt::format(" ({} more are not part of the tree)", others);
  Add("<title>{}</title>", XmlText(verdict));
  // A letter is about half as wide as it is high.
  const auto letters = static_cast<double>(verdict.size());
  const double size = std::clamp((width - 2 * margin) / (0.56 * letters), 11.0, 22.0);
  Add(R"(<text class="title" x="{}" y="42" style="font-size:{:.0f}px">{}</text>)", margin, size,
      XmlText(verdict));
  Add(R"(<text class="rank" x="{}" y="66">{}</text>)", margin, XmlText(facts));
}

void Picture::DrawRanks() {
  const auto& ranks = topology_.GetRanks();
  for (std::size_t rank = 0; rank < ranks.size(); ++rank) {
    std::string name = "rank " + std::to_string(rank);
    if (rank + 1 == ranks.size()) name = "leaves";
    if (rank == 0) name = "roots";
    Add(R"(<text class="rank" x="{}" y="{:.1f}">{}: {}</text>)", margin, layout_.rowY[rank] + 4,
        name, ranks[rank].size());
  }
}

void Picture::DrawBox(const TreeLayout::Box& box) {
  const bool holdsLeaves = box.bottomRank + 1 == layout_.rowY.size();
  const double boxTop = BoxTop(box);
  const double below = holdsLeaves ? layout_.labelHeight + 18 : 18;
  Add(R"(<rect class="box" x="{:.1f}" y="{:.1f}" width="{:.1f}" height="{:.1f}" rx="6"/>)",
      box.left, boxTop, box.right - box.left, layout_.rowY[box.bottomRank] + below - boxTop);
}

void Picture::DrawGroupName(const TreeLayout::Box& box) {
  const bool isNeighborhood = topology_.IsLastRankNeighborhood(box.group->GetRank());
  const std::string name = GroupLabel(isNeighborhood, box.group->GetId());
  // Where there is no room for its kind, the number alone has to do.
  const bool hasRoom = box.right - box.left > 5.5 * static_cast<double>(name.size()) + 10;
  Add(R"(<text class="group" x="{:.1f}" y="{:.1f}"><title>{}</title>{}</text>)", box.left + 6,
      BoxTop(box) + 13, name, hasRoom ? name : std::to_string(box.group->GetId()));
}

void Picture::DrawBadge(const TreeLayout::Box& box) {
  const std::size_t count = FindingsOf(box);
  if (count == 0) return;
  const std::string text = std::to_string(count);
  const double half = 7 + 3.5 * static_cast<double>(text.size());
  Add(R"(<rect class="badge" x="{:.1f}" y="{:.1f}" width="{:.1f}" height="18" rx="9"/>)",
      box.right - 2 * half + 6, BoxTop(box) - 9, 2 * half);
  Add(R"(<text class="badgetext" x="{:.1f}" y="{:.1f}">{}</text>)", box.right - half + 6,
      BoxTop(box) + 4, text);
}

void Picture::DrawCables() {
  std::map<Line, std::size_t> cables;
  ForEachTreeCable(topology_, [&](const IBNode& node, const TreeLink& link) {
    const IBNode& remote = topology_.GetFabric().GetNodes()[link.remote];
    if (layout_.markOf.Has(node) && layout_.markOf.Has(remote)) ++cables[Between(node, remote)];
  });
  // Many lines one above the other would be a wall.
  const double opacity = std::clamp(100.0 / static_cast<double>(cables.size()), 0.1, 0.45);
  Add(R"(<g stroke-opacity="{:.2f}">)", opacity);
  for (const auto& [line, count] : cables) {
    // Those inside a mark have no room, and faulty ones have a line of their own.
    if (line.first != line.second && !invalid_.contains(line)) {
      DrawLink(line, "cable", std::min(1.0 + std::log2(static_cast<double>(count)) / 2, 4.0));
    }
  }
  Add("</g>");
}

void Picture::DrawFaultyLinks() {
  for (const Line& line : missing_) DrawLink(line, "missing", 0);
  for (const Line& line : invalid_) {
    DrawLink(line, "invalid", 0);
    const TreeLayout::Mark& a = layout_.marks[Place(line.first)];
    const TreeLayout::Mark& b = layout_.marks[Place(line.second)];
    DrawCross((a.x + b.x) / 2, (a.y + b.y + BendOf(a, b)) / 2);
  }
}

// `width` 0: as the kind has it.
void Picture::DrawLink(const Line& line, std::string_view kind, double width) {
  const TreeLayout::Mark& a = layout_.marks[Place(line.first)];
  const TreeLayout::Mark& b = layout_.marks[Place(line.second)];
  const std::string thickness =
      width == 0 ? std::string() : fmt::format(R"( stroke-width="{:.1f}")", width);
  Add(R"(<path class="{}"{} d="M{:.1f} {:.1f}Q{:.1f} {:.1f} {:.1f} {:.1f}"/>)", kind, thickness,
      a.x, a.y, (a.x + b.x) / 2, (a.y + b.y) / 2 + BendOf(a, b), b.x, b.y);
}

void Picture::DrawCross(double x, double y) {
  Add(R"(<path class="cross" d="M{:.1f} {:.1f}l12 12m0 -12l-12 12"/>)", x - 6, y - 6);
}

void Picture::DrawMark(const TreeLayout::Mark& mark) {
  if (layout_.isFolded) {
    Add(R"(<rect class="switch" x="{:.1f}" y="{:.1f}" width="32" height="20" rx="4"/>)",
        mark.x - 16, mark.y - 10);
    Add(R"(<text class="count" x="{:.1f}" y="{:.1f}">{}</text>)", mark.x, mark.y + 4,
        mark.nodes.size());
    return;
  }
  Add(R"(<circle class="switch" cx="{:.1f}" cy="{:.1f}" r="7"><title>{}</title></circle>)", mark.x,
      mark.y, XmlText(GetNodeRecord(mark.nodes.front(), result_.showGuid)));
  DrawName(mark);
}

// Above its switch, but for the leaves: there all cables come from above.
void Picture::DrawName(const TreeLayout::Mark& mark) {
  const bool isLeaf = IsLeaf(mark);
  const double x = mark.x + 2;
  const double y = mark.y + (isLeaf ? 17 : -11);
  Add(R"svg(<text class="name" transform="translate({:.1f} {:.1f})rotate({})">{}</text>)svg", x, y,
      isLeaf ? 50 : -50,
      XmlText(ShortName(GetNodeRecord(mark.nodes.front(), result_.showGuid), mostShownOfAName)));
}

void Picture::DrawLegend(double y) {
  const double x = margin;
  const auto text = [&](std::string_view words) {
    Add(R"(<text x="{:.1f}" y="{:.1f}">{}</text>)", x + 44, y + 4, words);
    y += legendStep;
  };
  if (!missing_.empty()) {
    Add(R"(<path class="missing" d="M{:.1f} {:.1f}h32"/>)", x, y);
    text("missing cable");
  }
  if (!invalid_.empty()) {
    Add(R"(<path class="invalid" d="M{:.1f} {:.1f}h32"/>)", x, y);
    DrawCross(x + 16, y);
    text("cable that does not belong there");
  }
  if (!uneven_.empty()) {
    DrawDiamond(x + 16, y);
    text("fewer links than its neighbours");
  }
  if (!found_.empty()) {
    Add(R"(<rect class="badge" x="{:.1f}" y="{:.1f}" width="22" height="18" rx="9"/>)", x + 5,
        y - 9);
    Add(R"(<text class="badgetext" x="{:.1f}" y="{:.1f}">n</text>)", x + 16, y + 4);
    text("findings in a group");
  }
  if (layout_.isFolded) {
    Add(R"(<rect class="switch" x="{:.1f}" y="{:.1f}" width="32" height="18" rx="4"/>)", x, y - 9);
    Add(R"(<text class="count" x="{:.1f}" y="{:.1f}">n</text>)", x + 16, y + 4);
    text("switches of a group, folded");
  }
}

}  // namespace

void WriteSvgReport(const CheckResult& result, std::ostream& stream) {
  const TreeLayout layout = LayOutTree(*result.topology, leftMargin, top);
  stream << Picture(result, layout).Draw();
}

}  // namespace fabscope::internal
