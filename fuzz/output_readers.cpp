#include "fuzz/output_readers.h"

#include <algorithm>
#include <expat.h>
#include <set>
#include <simdjson.h>

#include "fuzz/plain_text.h"
#include "fuzz/require.h"

namespace fabscope::internal::fuzz {
namespace {

namespace dom = simdjson::dom;

// One text is read at a time.
dom::element Parsed(std::string_view text) {
  static dom::parser parser;
  dom::element json;
  const auto error = parser.parse(text.data(), text.size(), true).get(json);
  Require(error == simdjson::SUCCESS, "JSON is JSON");
  return json;
}

// Calls take(line) for every line; each has its end.
template <typename Take>
void ForEachLine(std::string_view text, Take take) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    Require(end != std::string_view::npos, "every line has its end");
    take(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
}

// --- SVG.

struct Svg {
  std::size_t depth = 0;
  bool isSvg = false;
};

void XMLCALL OnStart(void* data, const XML_Char* element, const XML_Char** /*attributes*/) {
  auto& svg = *static_cast<Svg*>(data);
  if (svg.depth++ == 0) svg.isSvg = std::string_view(element) == "svg";
  Require(std::string_view(element) != "script", "a picture has no script");
}

void XMLCALL OnEnd(void* data, const XML_Char* /*element*/) { --static_cast<Svg*>(data)->depth; }

// --- CSV.

// Takes a field from the front, and answers whether another follows in its line.
bool TakeField(std::string_view& text, std::string& field) {
  field.clear();
  if (text.starts_with('"')) {
    for (text.remove_prefix(1);; text.remove_prefix(1)) {
      Require(!text.empty(), "quotes of a CSV field are closed");
      if (text.front() == '"') {
        text.remove_prefix(1);
        if (!text.starts_with('"')) break;
      }
      field += text.front();
    }
  } else {
    const std::size_t size = text.find_first_of(",\n");
    Require(size != std::string_view::npos, "every CSV line has its end");
    field = text.substr(0, size);
    Require(field.find_first_of("\"\r") == std::string::npos, "a CSV field with quotes is quoted");
    text.remove_prefix(size);
  }
  Require(text.starts_with(',') || text.starts_with('\n'), "a CSV field ends where it ends");
  const bool isMore = text.front() == ',';
  text.remove_prefix(1);
  return isMore;
}

// --- Prometheus.

bool IsNamePart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

std::string_view TakeName(std::string_view& text) {
  const auto* end = std::find_if_not(text.begin(), text.end(), IsNamePart);
  const auto size = static_cast<std::size_t>(end - text.begin());
  Require(size != 0 && (text[0] < '0' || text[0] > '9'), "a name begins with a letter");
  const std::string_view name = text.substr(0, size);
  text.remove_prefix(size);
  return name;
}

void Take(std::string_view& text, std::string_view expected) {
  Require(text.starts_with(expected), "a line of numbers has its form");
  text.remove_prefix(expected.size());
}

void TakeLabelValue(std::string_view& text) {
  Take(text, "\"");
  while (!text.starts_with('"')) {
    Require(!text.empty(), "the value of a label has its end");
    if (text.starts_with('\\')) {
      text.remove_prefix(1);
      Require(text.starts_with('\\') || text.starts_with('"') || text.starts_with('n'),
              "only known escapes are used");
    }
    text.remove_prefix(1);
  }
  text.remove_prefix(1);
}

// {fabric="a",rank="0"}
void TakeLabels(std::string_view& text) {
  std::set<std::string_view> names;
  Take(text, "{");
  for (;;) {
    Require(names.insert(TakeName(text)).second, "a label is given once");
    Take(text, "=");
    TakeLabelValue(text);
    if (text.starts_with('}')) break;
    Take(text, ",");
  }
  Take(text, "}");
}

void RequireNumber(std::string_view text) {
  const std::size_t digits = text.find_first_not_of("0123456789");
  Require(!text.empty() && digits != 0, "a number has digits");
  if (digits == std::string_view::npos) return;
  Require(text[digits] == '.' && digits + 1 < text.size() &&
              text.find_first_not_of("0123456789", digits + 1) == std::string_view::npos,
          "a number is one");
}

class Numbers {
 public:
  void Read(std::string_view line) {
    if (line.starts_with("# HELP ")) {
      line.remove_prefix(7);
      helped_ = TakeName(line);
      Require(line.starts_with(' '), "help has a text");
    } else if (line.starts_with("# TYPE ")) {
      line.remove_prefix(7);
      typed_ = TakeName(line);
      Require(typed_ == helped_ && line == " gauge", "a name has its type behind its help");
      Require(names_.insert(typed_).second, "a name is told once");
    } else {
      ReadValue(line);
    }
  }

 private:
  void ReadValue(std::string_view line) {
    const std::string_view whole = line;
    Require(TakeName(line) == typed_, "values stand behind their type");
    TakeLabels(line);
    Require(values_.insert(whole.substr(0, whole.size() - line.size())).second,
            "no value is given twice");
    Take(line, " ");
    RequireNumber(line);
  }

  std::string_view helped_;
  std::string_view typed_;
  std::set<std::string_view> names_;
  std::set<std::string_view> values_;
};

}  // namespace

std::string RequireJson(std::string_view text, std::string_view member) {
  std::string_view value;
  Require(Parsed(text)[member].get(value) == simdjson::SUCCESS, "JSON has its members");
  return std::string(value);
}

std::string ReportInJson(std::string_view text) {
  dom::array report;
  Require(Parsed(text)["report"].get(report) == simdjson::SUCCESS, "a result has its report");
  std::string lines;
  for (const dom::element line : report) {
    std::string_view value;
    Require(line.get(value) == simdjson::SUCCESS, "the lines of a report are texts");
    lines.append(value).append("\n");
  }
  return lines;
}

void RequireSvg(std::string_view text) {
  Svg svg;
  XML_Parser parser = XML_ParserCreate(nullptr);
  XML_SetUserData(parser, &svg);
  XML_SetElementHandler(parser, OnStart, OnEnd);
  const auto status = XML_Parse(parser, text.data(), static_cast<int>(text.size()), XML_TRUE);
  XML_ParserFree(parser);
  Require(status == XML_STATUS_OK && svg.isSvg, "a picture is SVG");
}

void RequireHtml(std::string_view text) {
  constexpr std::string_view start = R"(<script id="data" type="application/json">)";
  constexpr std::string_view end = "</script>";
  const std::size_t begin = text.find(start);
  Require(begin != std::string_view::npos, "a page has data");
  const std::size_t close = text.find(end, begin);
  Require(close != std::string_view::npos, "the data of a page have their end");
  const std::string_view data = text.substr(begin + start.size(), close - begin - start.size());
  Require(data.find('<') == std::string_view::npos, "the data of a page begin no element");
  Require(!HasBidirectionalControls(data), "the data of a page turn nothing");
  Parsed(data);
  const std::string around =
      std::string(text.substr(0, begin + start.size())).append(text.substr(close));
  static const std::string page = around;
  Require(around == page, "a page is the same around its data");
}

std::vector<std::vector<std::string>> RequireCsv(std::string_view text) {
  std::vector<std::vector<std::string>> records;
  while (!text.empty()) {
    std::vector<std::string>& fields = records.emplace_back();
    while (TakeField(text, fields.emplace_back())) continue;
    Require(fields.size() == records[0].size(), "every line of a table is as long as its header");
  }
  Require(!records.empty(), "a table has a header");
  records.erase(records.begin());
  return records;
}

void RequirePrometheus(std::string_view text) {
  Require(IsUtf8(text), "numbers are told in UTF-8");
  Numbers numbers;
  ForEachLine(text, [&](std::string_view line) { numbers.Read(line); });
}

void RequirePlainText(std::string_view text) {
  ForEachLine(text, [](std::string_view line) {
    std::string plain(line);
    std::replace(plain.begin(), plain.end(), '\t', ' ');
    Require(!HasControls(plain), "no terminal is told anything");
    Require(!HasBidirectionalControls(plain), "what people see has its order");
  });
}

std::string AsPeopleSee(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    std::string_view rest = text;
    const bool isCharacter = TakeCharacter(rest).has_value();
    const std::string_view taken = text.substr(0, text.size() - rest.size());
    if (HasBidirectionalControls(taken)) {
      shown += '?';
    } else {
      shown += isCharacter ? taken : "\xef\xbf\xbd";
    }
    text = rest;
  }
  return shown;
}

}  // namespace fabscope::internal::fuzz
