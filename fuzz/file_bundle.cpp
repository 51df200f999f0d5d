#include "fuzz/file_bundle.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace fabscope::internal::fuzz {
namespace {

constexpr char separator = '\x1e';

using Lines = std::vector<std::string>;

Lines LinesOf(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  return lines;
}

std::string TextOf(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += line;
  return text;
}

// --- Cables of a dump.

// [5]	"S-000000000020000e"[2]		# "mid-p3m0" lid 22 4xHDR: the near port, and where the far
// end is told.
struct PortLine {
  std::string near;  // "S-..."[5]
  std::size_t farBegin = 0;
  std::size_t farEnd = 0;

  std::string Far(const std::string& line) const {
    return line.substr(farBegin, farEnd - farBegin);
  }
};

// "S-000000000020000e" at the first quote of a line, or nothing.
std::optional<std::pair<std::size_t, std::size_t>> QuotedIn(const std::string& line) {
  const std::size_t begin = line.find('"');
  const std::size_t end = begin == std::string::npos ? begin : line.find('"', begin + 1);
  if (end == std::string::npos) return std::nullopt;
  return std::pair(begin, end + 1);
}

std::map<std::size_t, PortLine> PortLinesOf(const Lines& lines) {
  std::map<std::size_t, PortLine> ports;
  std::string node;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::string& line = lines[i];
    const auto quoted = QuotedIn(line);
    if (!quoted) continue;
    const auto [begin, end] = *quoted;
    const std::size_t bracket = line.find(']');
    if (line[0] != '[' || bracket > begin) {
      node = line.substr(begin, end - begin);
      continue;
    }
    const std::size_t close = line.find(']', end);
    if (close == std::string::npos) continue;
    ports[i] = {node + line.substr(0, bracket + 1), begin, close + 1};
  }
  return ports;
}

class CableChanger {
 public:
  CableChanger(Lines& lines, std::minstd_rand& random)
      : lines_(lines), random_(random), ports_(PortLinesOf(lines)) {}

  // Two cables change their far ends, as when somebody mixes them up.
  void Swap() {
    if (ports_.size() < 4) return;
    const std::size_t a = Any();
    const std::size_t b = Any();
    const std::string farOfA = Far(a);
    const std::string farOfB = Far(b);
    Lead(a, farOfB);
    Lead(b, farOfA);
    if (const auto other = LineOf(farOfA)) Lead(*other, ports_.at(b).near);
    if (const auto other = LineOf(farOfB)) Lead(*other, ports_.at(a).near);
  }

  // Both lines of a cable go.
  void Remove() {
    if (ports_.empty()) return;
    const std::size_t at = Any();
    if (const auto other = LineOf(Far(at))) lines_[*other].clear();
    lines_[at].clear();
  }

  // A cable is plugged into another port of the node.
  void Replug() {
    if (ports_.empty()) return;
    const std::size_t at = Any();
    const std::string number = "[" + std::to_string(1 + random_() % 40) + "]";
    const std::string& near = ports_.at(at).near;
    const std::string moved = near.substr(0, near.find('[')) + number;
    if (const auto other = LineOf(Far(at))) Lead(*other, moved);
    lines_[at].replace(0, lines_[at].find(']') + 1, number);
  }

 private:
  std::size_t Any() {
    return std::next(ports_.begin(), static_cast<std::ptrdiff_t>(random_() % ports_.size()))->first;
  }
  std::string Far(std::size_t at) const { return ports_.at(at).Far(lines_[at]); }
  std::optional<std::size_t> LineOf(const std::string& near) const {
    for (const auto& [at, port] : ports_) {
      if (port.near == near) return at;
    }
    return std::nullopt;
  }
  void Lead(std::size_t at, const std::string& far) {
    PortLine& port = ports_.at(at);
    lines_[at].replace(port.farBegin, port.farEnd - port.farBegin, far);
    port.farEnd = port.farBegin + far.size();
  }

  Lines& lines_;
  std::minstd_rand& random_;
  std::map<std::size_t, PortLine> ports_;
};

// --- Words.

bool IsWordPart(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' ||
         c == '_';
}

struct Word {
  std::size_t at;
  std::size_t size;
};

std::vector<Word> WordsOf(const std::string& line) {
  std::vector<Word> words;
  for (std::size_t at = 0; at < line.size();) {
    const auto* begin = line.data() + at;
    const auto* end = std::find_if_not(begin, line.data() + line.size(), IsWordPart);
    const auto size = static_cast<std::size_t>(end - begin);
    if (size != 0) words.push_back({at, size});
    at += size + 1;
  }
  return words;
}

class FileMutator {
 public:
  FileMutator(std::string& text, std::minstd_rand& random, MutateBytes mutateBytes)
      : text_(text), random_(random), mutateBytes_(mutateBytes), lines_(LinesOf(text)) {}

  void Mutate() {
    if (lines_.empty()) {
      text_ = mutateBytes_(text_);
      return;
    }
    using Change = void (FileMutator::*)();
    constexpr std::array<Change, 18> changes{
        &FileMutator::RemoveLine,   &FileMutator::RepeatLine,    &FileMutator::MoveLine,
        &FileMutator::RemoveRecord, &FileMutator::RepeatRecord,  &FileMutator::SwapWords,
        &FileMutator::SwapWords,    &FileMutator::SwapLikeWords, &FileMutator::SwapLikeWords,
        &FileMutator::ChangeDigit,  &FileMutator::ChangeDigit,   &FileMutator::ChangeNumber,
        &FileMutator::SwapCables,   &FileMutator::SwapCables,    &FileMutator::RemoveCable,
        &FileMutator::ReplugCable,  &FileMutator::ChangeBytes,   &FileMutator::CutFile};
    (this->*changes[Below(changes.size())])();
    text_ = TextOf(lines_);
  }

 private:
  std::size_t Below(std::size_t limit) { return random_() % limit; }
  std::ptrdiff_t Place() { return static_cast<std::ptrdiff_t>(Below(lines_.size())); }
  std::string& AnyLine() { return lines_[Below(lines_.size())]; }

  void RemoveLine() { lines_.erase(lines_.begin() + Place()); }
  void RepeatLine() {
    const std::string line = AnyLine();
    lines_.insert(lines_.begin() + Place(), line);
  }
  void MoveLine() {
    const std::string line = AnyLine();
    RemoveLine();
    if (!lines_.empty()) lines_.insert(lines_.begin() + Place(), line);
  }

  // The lines between two empty ones; in files without such, some lines.
  std::pair<std::size_t, std::size_t> AnyRecord() {
    const auto isEmpty = [](const std::string& line) { return line == "\n" || line == "\r\n"; };
    std::size_t begin = Below(lines_.size());
    std::size_t end = begin + 1;
    if (std::none_of(lines_.begin(), lines_.end(), isEmpty)) {
      return {begin, std::min(begin + Below(6), lines_.size())};
    }
    while (begin > 0 && !isEmpty(lines_[begin])) --begin;
    while (end < lines_.size() && !isEmpty(lines_[end])) ++end;
    return {begin, end};
  }
  void RemoveRecord() {
    const auto [begin, end] = AnyRecord();
    lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(begin),
                 lines_.begin() + static_cast<std::ptrdiff_t>(end));
  }
  void RepeatRecord() {
    const auto [begin, end] = AnyRecord();
    const Lines record(lines_.begin() + static_cast<std::ptrdiff_t>(begin),
                       lines_.begin() + static_cast<std::ptrdiff_t>(end));
    lines_.insert(lines_.begin() + Place(), record.begin(), record.end());
  }

  // Of one line the word that stands first is `first`.
  void Swap(std::string& a, Word first, std::string& b, Word second) {
    if (&a == &b && first.at > second.at) std::swap(first, second);
    const std::string textOfFirst = a.substr(first.at, first.size);
    const std::string textOfSecond = b.substr(second.at, second.size);
    b.replace(second.at, second.size, textOfFirst);
    a.replace(first.at, first.size, textOfSecond);
  }
  // Any two, also of one line.
  void SwapWords() {
    std::string& a = AnyLine();
    std::string& b = Below(2) == 0 ? a : AnyLine();
    const std::vector<Word> wordsOfA = WordsOf(a);
    const std::vector<Word> wordsOfB = WordsOf(b);
    if (wordsOfA.empty() || wordsOfB.empty()) return;
    Swap(a, wordsOfA[Below(wordsOfA.size())], b, wordsOfB[Below(wordsOfB.size())]);
  }
  // Those that stand at the same place of two lines with as many, such as the ends of two links.
  void SwapLikeWords() {
    std::string& a = AnyLine();
    const std::vector<Word> wordsOfA = WordsOf(a);
    if (wordsOfA.empty()) return;
    for (int tries = 0; tries < 8; ++tries) {
      std::string& b = AnyLine();
      const std::vector<Word> wordsOfB = WordsOf(b);
      if (wordsOfA.size() != wordsOfB.size() || &a == &b) continue;
      const std::size_t at = Below(wordsOfA.size());
      return Swap(a, wordsOfA[at], b, wordsOfB[at]);
    }
  }
  void ChangeDigit() {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string& line = AnyLine();
    const std::size_t from = Below(line.size());
    const std::size_t at = line.find_first_of(digits, from);
    if (at != std::string::npos) line[at] = digits[Below(line[at] <= '9' ? 10 : digits.size())];
  }
  void ChangeNumber() {
    static const std::array<const char*, 14> numbers{
        "0",   "1",   "-1",    "2",          "3",          "36",    "64",
        "255", "256", "65535", "4294967295", "4294967296", "1e400", "18446744073709551616"};
    std::string& line = AnyLine();
    std::vector<Word> words = WordsOf(line);
    std::erase_if(words, [&](const Word& word) {
      return line.find_first_not_of("0123456789", word.at) < word.at + word.size;
    });
    if (words.empty()) return;
    const Word word = words[Below(words.size())];
    line.replace(word.at, word.size, numbers[Below(numbers.size())]);
  }

  void SwapCables() { CableChanger(lines_, random_).Swap(); }
  void RemoveCable() { CableChanger(lines_, random_).Remove(); }
  void ReplugCable() { CableChanger(lines_, random_).Replug(); }

  void ChangeBytes() {
    std::string& line = AnyLine();
    line = mutateBytes_(line);
  }
  void CutFile() {
    lines_.resize(Below(lines_.size()) + 1);
    lines_.back().resize(Below(lines_.back().size()) + 1);
  }

  std::string& text_;
  std::minstd_rand& random_;
  MutateBytes mutateBytes_;
  Lines lines_;
};

}  // namespace

FileBundle FileBundle::Read(std::string_view bytes) {
  FileBundle bundle;
  for (std::size_t i = 0; i < std::min(bytes.size(), optionsSize); ++i) {
    bundle.options.at(i) = static_cast<std::uint8_t>(bytes[i]);
  }
  bytes.remove_prefix(std::min(bytes.find(separator), bytes.size()));
  while (bytes.size() > 1) {
    const std::size_t end = std::min(bytes.find(separator, 1), bytes.size());
    if (end > 1) bundle.files.push_back({bytes[1], std::string(bytes.substr(2, end - 2))});
    bytes.remove_prefix(end);
  }
  return bundle;
}

std::string FileBundle::Write() const {
  std::string bytes;
  for (const std::uint8_t option : options) {
    bytes += option == separator ? '\0' : static_cast<char>(option);
  }
  for (const File& file : files) {
    bytes += separator;
    bytes += file.role;
    std::copy_if(file.text.begin(), file.text.end(), std::back_inserter(bytes),
                 [](char c) { return c != separator; });
  }
  return bytes;
}

const FileBundle::File* FileBundle::Find(char role) const {
  const auto found = std::find_if(files.begin(), files.end(),
                                  [role](const File& file) { return file.role == role; });
  return found == files.end() ? nullptr : &*found;
}

void MutateBundle(FileBundle& bundle, std::minstd_rand& random, MutateBytes mutateBytes) {
  constexpr std::string_view roles = "FGRLNP";
  const std::size_t what = random() % 32;
  if (what == 0 || bundle.files.empty()) {
    bundle.options.at(random() % FileBundle::optionsSize) = static_cast<std::uint8_t>(random());
    if (!bundle.files.empty()) return;
    bundle.files.push_back({FileBundle::fabric, mutateBytes({})});
    return;
  }
  FileBundle::File& file = bundle.files[random() % bundle.files.size()];
  if (what == 1) {
    file.role = roles[random() % roles.size()];
  } else if (what == 2 && bundle.files.size() < roles.size()) {
    // A file again, as another one: two days of a fabric.
    FileBundle::File copy{roles[random() % roles.size()], file.text};
    bundle.files.push_back(std::move(copy));
  } else {
    for (std::size_t count = 1 + random() % 3; count != 0; --count) {
      FileMutator(file.text, random, mutateBytes).Mutate();
    }
  }
}

FileBundle SplicedBundle(const FileBundle& one, const FileBundle& other, std::minstd_rand& random) {
  FileBundle spliced = one;
  for (FileBundle::File& file : spliced.files) {
    const FileBundle::File* same = other.Find(file.role);
    if (same == nullptr || random() % 2 == 0) continue;
    // The beginning of one, and the end of the other.
    Lines lines = LinesOf(file.text);
    const Lines rest = LinesOf(same->text);
    lines.resize(random() % (lines.size() + 1));
    const auto from = static_cast<std::ptrdiff_t>(random() % (rest.size() + 1));
    lines.insert(lines.end(), rest.begin() + from, rest.end());
    file.text = TextOf(lines);
  }
  for (const FileBundle::File& file : other.files) {
    if (spliced.Find(file.role) == nullptr && random() % 2 == 0) spliced.files.push_back(file);
  }
  return spliced;
}

}  // namespace fabscope::internal::fuzz
