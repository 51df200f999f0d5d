#include "compare/repair_document.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <tuple>
#include <utility>

#include "formats/input.h"
#include "formats/json_reader.h"

namespace fabscope::internal {
namespace {

constexpr std::array<std::string_view, 13> documentKeys{
    "format", "version", "fabric", "status",     "ranks", "steps", "tool",
    "input",  "message", "roots",  "lowerBound", "after", "notes"};
constexpr std::array<std::string_view, 7> stepKeys{"id",     "action", "class",       "cables",
                                                   "reason", "cures",  "alternatives"};
constexpr std::array<std::string_view, 2> changeKeys{"before", "after"};
constexpr std::array<std::string_view, 3> endKeys{"guid", "port", "name"};

constexpr std::array<std::string_view, 4> statusNames{"clean", "repairs", "abstained", "failed"};

// No fabric has longer ones, and every line that names the switch would be as long.
constexpr std::size_t mostOfAName = 4096;

bool IsAsItsAction(const KeptStep& step) {
  const std::size_t count = step.action == RepairAction::Swap ? 2 : 1;
  const bool isNew = step.action == RepairAction::Connect;
  const bool isGone = step.action == RepairAction::Disconnect;
  return step.cables.size() == count &&
         std::all_of(step.cables.begin(), step.cables.end(), [&](const KeptChange& change) {
           return change.before.has_value() != isNew && change.after.has_value() != isGone;
         });
}

class RepairDocumentLoader final : JsonReader {
 public:
  RepairDocumentLoader(const InputText& input, RepairDocument& plan)
      : JsonReader(input), plan_(plan) {}

  MaybeError Load();

 private:
  bool ReadMember(std::string_view key, Value value);
  bool ReadFormat(Value value);
  bool ReadStatus(Value value);
  // One of the words, as the place that it has among them.
  template <typename Words, typename Enum>
  bool ReadWord(Value value, const Words& words, const char* expected, Enum& word);

  bool ReadStep(Value value);
  bool ReadStepMember(std::string_view key, Value value, KeptStep& step);
  bool ReadChanges(Value value, KeptChanges& changes);
  bool ReadChange(Value value, KeptChange& change);
  bool ReadCable(Value value, std::optional<KeptCable>& cable);
  bool ReadEnd(Value value, KeptEnd& end);
  bool CheckStep(std::size_t offset, const KeptStep& step);

  RepairDocument& plan_;
  // What was read, and where: by all ends before and after.
  std::map<std::vector<std::uint64_t>, std::uint32_t> known_;
};

MaybeError RepairDocumentLoader::Load() {
  ReadDocument(documentKeys, 6,
               [this](std::string_view key, Value value) { return ReadMember(key, value); });
  return std::move(Error());
}

bool RepairDocumentLoader::ReadMember(std::string_view key, Value value) {
  if (key == "format") return ReadFormat(value);
  if (key == "version") return ReadVersion(value);
  if (key == "fabric") return ReadText(value, plan_.fabric);
  if (key == "status") return ReadStatus(value);
  if (key == "message") return ReadText(value, plan_.message);
  if (key == "steps") return ReadArray(value, [this](Value step) { return ReadStep(step); });
  if (key != "ranks") return ReadAny(value);
  return ReadArray(value, [this](Value rank) {
    return ReadArray(rank,
                     [this](Value item) { return ReadGuid(item, plan_.switches.emplace_back()); });
  });
}

bool RepairDocumentLoader::ReadFormat(Value value) {
  const std::size_t offset = OffsetOf(value);
  std::string_view format;
  if (!ReadString(value, format)) return false;
  return format == "fabscope-repair" ||
         Fail(offset, "not a plan of repairs, expected \"fabscope-repair\"");
}

bool RepairDocumentLoader::ReadStatus(Value value) {
  std::size_t place = 0;
  const char* expected = R"(expected "clean", "repairs", "abstained" or "failed")";
  if (!ReadWord(value, statusNames, expected, place)) return false;
  plan_.status = statusNames.at(place);
  return true;
}

template <typename Words, typename Enum>
bool RepairDocumentLoader::ReadWord(Value value, const Words& words, const char* expected,
                                    Enum& word) {
  const std::size_t offset = OffsetOf(value);
  std::string_view text;
  if (!ReadString(value, text)) return false;
  const auto found = std::find(words.begin(), words.end(), text);
  if (found == words.end()) return Fail(offset, expected);
  word = static_cast<Enum>(found - words.begin());
  return true;
}

bool RepairDocumentLoader::ReadStep(Value value) {
  const std::size_t offset = OffsetOf(value);
  KeptStep step;
  const auto read = [&](std::string_view key, Value member) {
    return ReadStepMember(key, member, step);
  };
  if (!ReadObject(value, "a step", stepKeys, 4, read) || !CheckStep(offset, step)) return false;
  plan_.steps.push_back(std::move(step));
  return true;
}

bool RepairDocumentLoader::ReadStepMember(std::string_view key, Value value, KeptStep& step) {
  if (key == "id") return ReadUnsigned<std::uint32_t>(value, step.id, 1);
  if (key == "action") {
    return ReadWord(value, RepairActionNames,
                    R"(expected "swap", "move", "connect" or "disconnect")", step.action);
  }
  if (key == "class") {
    return ReadWord(value, RepairClassNames, R"(expected "sure", "likely" or "ask")", step.trust);
  }
  if (key == "cables") return ReadChanges(value, step.cables);
  if (key != "alternatives") return ReadAny(value);
  return ReadArray(value,
                   [&](Value item) { return ReadChanges(item, step.alternatives.emplace_back()); });
}

bool RepairDocumentLoader::ReadChanges(Value value, KeptChanges& changes) {
  const std::size_t offset = OffsetOf(value);
  if (!ReadArray(value, [&](Value item) { return ReadChange(item, changes.emplace_back()); })) {
    return false;
  }
  return !changes.empty() || Fail(offset, "expected the cables that change");
}

bool RepairDocumentLoader::ReadChange(Value value, KeptChange& change) {
  const std::size_t offset = OffsetOf(value);
  const auto read = [&](std::string_view key, Value cable) {
    return ReadCable(cable, key == "before" ? change.before : change.after);
  };
  if (!ReadObject(value, "a cable", changeKeys, 2, read)) return false;
  if (change.before == change.after) return Fail(offset, "the cable is the same before and after");
  return true;
}

bool RepairDocumentLoader::ReadCable(Value value, std::optional<KeptCable>& cable) {
  const std::size_t offset = OffsetOf(value);
  bool isNull = false;
  if (const auto code = value.is_null().get(isNull)) return FailJson(code);
  if (isNull) return true;
  KeptCable& ends = cable.emplace();
  std::size_t count = 0;
  const bool isRead = ReadArray(value, [&](Value item) {
    if (count == ends.size()) return Fail(offset, "expected the two ends of a cable");
    return ReadEnd(item, ends.at(count++));
  });
  if (!isRead) return false;
  if (count != ends.size()) return Fail(offset, "expected the two ends of a cable");
  return ends[0] != ends[1] || Fail(offset, "the cable leads to its own port");
}

bool RepairDocumentLoader::ReadEnd(Value value, KeptEnd& end) {
  return ReadObject(value, "an end", endKeys, 2, [&](std::string_view key, Value member) {
    if (key == "guid") return ReadGuid(member, end.guid);
    if (key == "port") return ReadPortNumber(member, end.port);
    const std::size_t offset = OffsetOf(member);
    if (!ReadText(member, end.name)) return false;
    return end.name.size() <= mostOfAName ||
           Fail(offset, "the name is longer than " + std::to_string(mostOfAName) + " bytes");
  });
}

bool RepairDocumentLoader::CheckStep(std::size_t offset, const KeptStep& step) {
  if (!plan_.steps.empty() && step.id <= plan_.steps.back().id) {
    return Fail(offset, "step " + std::to_string(step.id) + " does not follow step " +
                            std::to_string(plan_.steps.back().id) + ": ids must rise");
  }
  if (!IsAsItsAction(step)) {
    return Fail(offset, std::string("step ") + std::to_string(step.id) + " is not a " +
                            NameOf(step.action) +
                            ": a swap changes two cables, the others one, a connect has none "
                            "before, a disconnect none after");
  }
  std::vector<std::uint64_t> key;
  for (const KeptChange& change : step.cables) {
    for (const auto* cable : {&change.before, &change.after}) {
      for (const KeptEnd& end : cable->value_or(KeptCable())) {
        key.insert(key.end(), {end.guid, end.port});
      }
    }
  }
  const auto [known, isNew] = known_.emplace(std::move(key), step.id);
  return isNew || Fail(offset, "step " + std::to_string(step.id) + " repeats step " +
                                   std::to_string(known->second));
}

}  // namespace

MaybeError LoadRepairDocument(const std::string& path, RepairDocument& plan) {
  Input input;
  if (MaybeError error = input.Open(path)) return error;
  InputText text;
  if (MaybeError error = ReadAll(input, text)) return error;
  plan.file = text.file;
  return RepairDocumentLoader(text, plan).Load();
}

}  // namespace fabscope::internal
