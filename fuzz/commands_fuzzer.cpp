// Whole commands over files that people and hosts have had their hands in: dumps, documents, side
// files and plans in which cables, records, lines, words and digits were changed. Whatever the
// files, check, repair and diff end with a status of theirs, and readers of other hands understand
// all that they write.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "cli/check_options.h"
#include "cli/command_line.h"
#include "cli/exit_status.h"
#include "compare/plan_progress.h"
#include "fuzz/file_bundle.h"
#include "fuzz/files.h"
#include "fuzz/loading.h"
#include "fuzz/output_readers.h"
#include "fuzz/require.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

using namespace fabscope::internal;
using namespace fabscope::internal::fuzz;

// --- Where commands find and leave their files.

// A folder in memory, which goes with the process.
const std::filesystem::path& Folder() {
  static const std::filesystem::path folder = [] {
    std::string name = "/dev/shm/fabscope-fuzz-XXXXXX";
    Require(mkdtemp(name.data()) != nullptr, "a folder can be made");
    std::atexit([] { std::filesystem::remove_all(Folder()); });
    return name;
  }();
  return folder;
}

std::string PathOf(const std::string& name) { return Folder() / name; }

void WriteText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::string ReadText(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

// What a command has written to a file, which is taken away; nothing if it did not.
std::optional<std::string> TakeOutput(const std::string& name) {
  const std::string path = PathOf(name);
  if (!std::filesystem::exists(path)) return std::nullopt;
  std::string text = ReadText(path);
  std::filesystem::remove(path);
  return text;
}

// --- Running a command.

// As long as it lives, standard output is a file, and standard error a text.
class CaughtStreams {
 public:
  CaughtStreams() : saved_(dup(STDOUT_FILENO)), savedError_(std::cerr.rdbuf(error_.rdbuf())) {
    const int file = open(output_.Path().c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    Require(file >= 0 && dup2(file, STDOUT_FILENO) >= 0, "standard output can be caught");
    close(file);
  }
  CaughtStreams(const CaughtStreams&) = delete;
  CaughtStreams& operator=(const CaughtStreams&) = delete;
  ~CaughtStreams() {
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
    std::cerr.rdbuf(savedError_);
  }

  std::string Output() const { return ReadText(output_.Path()); }
  std::string Error() const { return error_.str(); }

 private:
  MemoryFile output_;
  int saved_;
  std::ostringstream error_;
  std::streambuf* savedError_;
};

struct Ended {
  int status = 0;
  std::string output;
  std::string error;
};

Ended Run(const std::vector<std::string>& words) {
  std::vector<const char*> arguments{"fabscope"};
  for (const std::string& word : words) arguments.push_back(word.c_str());
  const CaughtStreams streams;
  Ended ended;
  ended.status = RunCommandLine(static_cast<int>(arguments.size()), arguments.data());
  ended.output = streams.Output();
  ended.error = streams.Error();
  return ended;
}

void RequireSound(const Ended& ended) {
  Require(ended.status == ExitClean || ended.status == ExitFindings || ended.status == ExitFailed,
          "a command ends with a status of its own");
  Require(ended.status != ExitFailed || !ended.error.empty(), "a command that failed says why");
  RequirePlainText(ended.output);
  RequirePlainText(ended.error);
}

// --- The commands.

class Commands {
 public:
  explicit Commands(const FileBundle& bundle) : bundle_(bundle) {
    Write(FileBundle::fabric, "fabric");
    Write(FileBundle::newFabric, "new");
    Write(FileBundle::ranks, "ranks");
    Write(FileBundle::flids, "flids");
    Write(FileBundle::names, "names");
    Write(FileBundle::plan, "plan");
  }
  Commands(const Commands&) = delete;
  Commands& operator=(const Commands&) = delete;
  ~Commands() {
    for (const auto& entry : std::filesystem::directory_iterator(Folder())) {
      std::filesystem::remove(entry.path());
    }
  }

  void Check();
  void Repair();
  void Diff();

 private:
  using Words = std::vector<std::string>;

  void Write(char role, const char* name) {
    if (const FileBundle::File* file = bundle_.Find(role)) WriteText(PathOf(name), file->text);
  }
  bool Has(char role) const { return bundle_.Find(role) != nullptr; }
  unsigned Option(std::size_t at) const { return bundle_.options.at(at); }

  // What all commands take. Some of it contradicts itself, which is a status as well.
  Words Common(const char* command) const {
    static const std::array<const char*, 6> roots{"",     "search", "inferred",
                                                  "smdb", "auto",   "regex"};
    static const std::array<const char*, 3> guids{"none", "system", "node"};
    Words words{command};
    const std::string method = roots.at(Option(1) % roots.size());
    if (method == "regex") words.insert(words.end(), {"--root-regex", "^spine|root|0$"});
    if (!method.empty()) words.insert(words.end(), {"--roots", method});
    if (Has(FileBundle::ranks)) words.insert(words.end(), {"--ranks", PathOf("ranks")});
    if (Has(FileBundle::names)) words.insert(words.end(), {"--node-name-map", PathOf("names")});
    words.insert(words.end(), {"--merge-percent", std::to_string(Option(2) % 101)});
    if (words[0] != "diff") {
      words.insert(words.end(), {"--show-guid", guids.at(Option(3) / 16 % guids.size())});
    }
    return words;
  }
  bool IsQuiet() const { return Option(3) % 2 == 1; }

  const FileBundle& bundle_;
};

void Commands::Check() {
  Words words = Common("check");
  for (const Output<CheckRun>& output : CheckOutputs()) {
    const std::string option = output.text.name;
    words.insert(words.end(), {option, PathOf("a." + option.substr(2))});
  }
  if (Has(FileBundle::flids)) words.insert(words.end(), {"--flids", PathOf("flids")});
  if (IsQuiet()) words.emplace_back("--quiet");
  if (Option(3) % 4 > 1) words.emplace_back("--summary");
  words.push_back(PathOf("fabric"));
  const Ended ended = Run(words);
  RequireSound(ended);
  // A wrong usage leaves nothing, and an input that cannot be read a log.
  if (const auto log = TakeOutput("a.log")) RequireSame(*log, ended.error, "the log has it all");
  const auto json = TakeOutput("a.json");
  if (!json) {
    Require(ended.status == ExitFailed && ended.output.empty(), "what was done is told as JSON");
    return;
  }
  constexpr std::array<const char*, 3> statuses{"clean", "findings", "failed"};
  RequireSame(RequireJson(*json, "status"), statuses.at(static_cast<std::size_t>(ended.status)),
              "the status is that of the JSON");
  RequireSame(AsPeopleSee(ReportInJson(*json)), AsPeopleSee(ended.output),
              "the JSON has the report");
  if (const auto html = TakeOutput("a.html")) RequireHtml(*html);
  if (const auto svg = TakeOutput("a.svg")) RequireSvg(*svg);
  if (const auto csv = TakeOutput("a.csv")) RequireCsv(*csv);
  const auto dump = TakeOutput("a.dump");
  const auto numbers = TakeOutput("a.prometheus");
  Require((ended.status != ExitFailed) == (dump && numbers), "a check that is done tells it all");
  if (dump) RequirePlainText(*dump);
  if (numbers) RequirePrometheus(*numbers);
}

// A plan that was carried out is one that is done.
void RequireDone(const std::string& planFile, const std::string& after, const std::string& before) {
  RepairDocument plan;
  const MaybeError error = LoadRepairDocument(planFile, plan);
  RequireSame(error ? error->Text() : "", "", "a plan that was written can be read");
  const Loaded repaired = LoadPath(after);
  RequireSame(repaired.error, "", "a fabric that was written can be read");
  if (repaired.document == LoadPath(before).document) return;  // nothing that could be done
  for (const StepProgress& step : FollowPlan(plan, *repaired.fabric)) {
    Require(step.state == StepState::Done && !step.alternative,
            "what a plan leads to is the plan done");
  }
}

void Commands::Repair() {
  Words words = Common("repair");
  words.insert(words.end(), {"--json", PathOf("a.json"), "--csv", PathOf("a.csv")});
  words.insert(words.end(), {"--after", PathOf("after.json"), PathOf("fabric")});
  const Ended ended = Run(words);
  RequireSound(ended);
  if (std::filesystem::exists(PathOf("a.json"))) {
    const std::string status = RequireJson(ReadText(PathOf("a.json")), "status");
    Require((status == "failed") == (ended.status == ExitFailed), "a plan tells whether it is one");
  }
  if (const auto csv = TakeOutput("a.csv")) RequireCsv(*csv);
  if (ended.status != ExitFailed) {
    RequireDone(PathOf("a.json"), PathOf("after.json"), PathOf("fabric"));
  }
  if (!Has(FileBundle::plan)) return;
  words = Common("repair");
  words.insert(words.end(), {"--verify", PathOf("plan"), PathOf("fabric")});
  RequireSound(Run(words));
}

void Commands::Diff() {
  Words words = Common("diff");
  words.insert(words.end(), {"--json", PathOf("a.json")});
  if (Has(FileBundle::plan)) words.insert(words.end(), {"--plan", PathOf("plan")});
  if (IsQuiet()) words.emplace_back("--quiet");
  words.push_back(PathOf("fabric"));
  words.push_back(PathOf(Has(FileBundle::newFabric) ? "new" : "fabric"));
  const Ended ended = Run(words);
  RequireSound(ended);
  const auto json = TakeOutput("a.json");
  if (!json) {
    Require(ended.status == ExitFailed, "a difference is told as JSON");
    return;
  }
  const std::string status = RequireJson(*json, "status");
  Require((status == "failed") == (ended.status == ExitFailed),
          "a difference tells whether it is whole");
  Require(Has(FileBundle::newFabric) || ended.status != ExitFindings,
          "nothing differs from itself");
}

// --- Mutation.

std::string MutatedByBytes(std::string text) {
  const std::size_t size = text.size();
  text.resize(size + 16);
  auto* bytes = reinterpret_cast<std::uint8_t*>(text.data());
  text.resize(LLVMFuzzerMutate(bytes, size, text.size()));
  return text;
}

// Answers the size; a bundle that has become too large loses its end.
std::size_t Put(const FileBundle& bundle, std::uint8_t* data, std::size_t maxSize) {
  const std::string bytes = bundle.Write();
  const std::size_t size = std::min(bytes.size(), maxSize);
  std::copy_n(bytes.begin(), size, data);
  return size;
}

std::string_view TextOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  // Nobody watches.
  Require(setenv("TERM", "dumb", 1) == 0, "the environment can be changed");
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed) {
  std::minstd_rand random(seed);
  FileBundle bundle = FileBundle::Read(TextOf(data, size));
  MutateBundle(bundle, random, MutatedByBytes);
  return Put(bundle, data, maxSize);
}

extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* data1, std::size_t size1,
                                                 const std::uint8_t* data2, std::size_t size2,
                                                 std::uint8_t* out, std::size_t maxOutSize,
                                                 unsigned seed) {
  std::minstd_rand random(seed);
  return Put(SplicedBundle(FileBundle::Read(TextOf(data1, size1)),
                           FileBundle::Read(TextOf(data2, size2)), random),
             out, maxOutSize);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const FileBundle bundle = FileBundle::Read(TextOf(data, size));
  if (bundle.Find(FileBundle::fabric) == nullptr) return -1;
  Commands commands(bundle);
  switch (bundle.options[0] % 3) {
    case 0:
      commands.Check();
      break;
    case 1:
      commands.Repair();
      break;
    default:
      commands.Diff();
  }
  return 0;
}
