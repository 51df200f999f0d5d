// A fabric is the same whether it is read from memory, from a file or from a pipe in pieces, as it
// is or packed by gzip in one go or in several. Of a packed one that was cut or damaged nothing is
// read; whatever is not packed well is an error.

#include <algorithm>
#include <array>
#include <cstdint>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>
#include <vector>
#include <zlib.h>

#include "fuzz/files.h"
#include "fuzz/loading.h"
#include "fuzz/require.h"

namespace {

using namespace fabscope::internal::fuzz;

constexpr std::size_t gzipMarkSize = 2;

// Input reads a file in pieces of this size.
constexpr std::size_t pieceSize = std::size_t{1} << 18;

struct Packing {
  int level = 0;
  int strategy = 0;
  bool withName = false;
};

// One gzip member.
std::string Packed(const Packing& packing, std::string text) {
  z_stream stream{};
  constexpr int gzipOnly = 16 + MAX_WBITS;
  Require(deflateInit2(&stream, packing.level, Z_DEFLATED, gzipOnly, 8, packing.strategy) == Z_OK,
          "a text can be packed");
  gz_header header{};
  std::string name = "fabric";
  header.name = reinterpret_cast<Bytef*>(name.data());
  header.hcrc = 1;
  if (packing.withName) deflateSetHeader(&stream, &header);
  std::string packed(deflateBound(&stream, text.size()) + 64, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(text.data());
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  Require(deflate(&stream, Z_FINISH) == Z_STREAM_END, "a text can be packed to its end");
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

bool IsDocument(std::string_view text) {
  if (text.starts_with("\xef\xbb\xbf")) text.remove_prefix(3);
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  return first != std::string_view::npos && text[first] == '{';
}

Loaded LoadText(const std::string& text) {
  return IsDocument(text) ? LoadDocument(text) : LoadDump(text);
}

Loaded LoadFile(const std::string& bytes) {
  static const MemoryFile file;
  file.Write(bytes);
  return LoadPath(file.Path());
}

Loaded LoadInPieces(const std::string& bytes, const std::vector<std::size_t>& sizes) {
  const StandardInputInPieces input(bytes, sizes);
  return LoadPath("-");
}

std::vector<std::size_t> Sizes(FuzzedDataProvider& bytes) {
  std::vector<std::size_t> sizes(bytes.ConsumeIntegralInRange<std::size_t>(0, 16));
  for (std::size_t& size : sizes) size = bytes.ConsumeIntegral<std::uint8_t>();
  return sizes;
}

// What is packed in several members, and where each of them begins.
struct Archive {
  std::string bytes;
  std::vector<std::size_t> members;
};

Archive Pack(FuzzedDataProvider& bytes, const std::string& text,
             const std::vector<std::size_t>& cuts) {
  Archive archive;
  std::size_t at = 0;
  for (std::size_t i = 0; i <= cuts.size(); ++i) {
    const std::size_t size = i < cuts.size() ? std::min(cuts[i], text.size() - at) : text.size();
    Packing packing;
    packing.level = bytes.ConsumeIntegralInRange(0, 9);
    packing.strategy = bytes.ConsumeIntegralInRange(Z_DEFAULT_STRATEGY, Z_FIXED);
    packing.withName = bytes.ConsumeBool();
    archive.members.push_back(archive.bytes.size());
    archive.bytes += Packed(packing, text.substr(at, size));
    at += std::min(size, text.size() - at);
  }
  return archive;
}

void RequireDamageTold(const Loaded& loaded) {
  Require(
      loaded.error ==
          "the gzip data is damaged or cut short: this is the last place that could be unpacked",
      "damage of gzip data is an error");
}

// Whether an archive that ends there is whole, but for what counts as padding.
bool IsWhole(const Archive& archive, std::size_t size) {
  return std::any_of(archive.members.begin(), archive.members.end(), [&](std::size_t member) {
    return size >= member && size < member + gzipMarkSize;
  });
}

// What the bytes ask for, apart from the text.
struct Plan {
  std::vector<std::size_t> sizes;  // of the pieces
  std::vector<std::size_t> cuts;   // sizes of all members but the last
  std::uint32_t place = 0;         // where a packed file is cut or damaged
  std::uint8_t damage = 1;         // the bits that are wrong there
  std::size_t padding = 0;         // behind the last member
};

void LookAtFile(const std::string& bytes, const Plan& plan, const Loaded& expected) {
  RequireSame(LoadFile(bytes), expected, "a file says what its text says");
  RequireSame(LoadInPieces(bytes, plan.sizes), expected, "the pieces of a file do not matter");
}

void LookAtPlain(FuzzedDataProvider&, const Plan& plan, const std::string& text) {
  if (!text.starts_with("\x1f\x8b")) LookAtFile(text, plan, LoadText(text));
}

void LookAtPacked(FuzzedDataProvider& bytes, const Plan& plan, const std::string& text) {
  const Archive archive = Pack(bytes, text, plan.cuts);
  LookAtFile(archive.bytes + std::string(plan.padding, '\0'), plan, LoadText(text));
}

void LookAtCut(FuzzedDataProvider& bytes, const Plan& plan, const std::string& text) {
  const Archive archive = Pack(bytes, text, plan.cuts);
  const std::size_t size = plan.place % archive.bytes.size();
  if (IsWhole(archive, size)) return;
  const Loaded loaded = LoadFile(archive.bytes.substr(0, size));
  RequireDamageTold(loaded);
  RequirePlaceIn(text, loaded.line, loaded.column);
  LookAtFile(archive.bytes.substr(0, size), plan, loaded);
}

// Bits that say nothing of the text, such as those of a member's name, may be wrong.
void LookAtDamaged(FuzzedDataProvider& bytes, const Plan& plan, const std::string& text) {
  Archive archive = Pack(bytes, text, plan.cuts);
  const std::size_t place = plan.place % archive.bytes.size();
  if (IsWhole(archive, place)) return;
  archive.bytes[place] = static_cast<char>(archive.bytes[place] ^ plan.damage);
  const Loaded loaded = LoadFile(archive.bytes);
  if (loaded != LoadText(text)) RequireDamageTold(loaded);
  LookAtFile(archive.bytes, plan, loaded);
}

// Bytes that nobody packed, perhaps.
void LookAtBytes(FuzzedDataProvider&, const Plan& plan, const std::string& bytes) {
  LookAtFile(bytes, plan, LoadFile(bytes));
}

using Look = void (*)(FuzzedDataProvider& bytes, const Plan& plan, const std::string& text);
constexpr std::array<Look, 5> looks{LookAtPlain, LookAtPacked, LookAtCut, LookAtDamaged,
                                    LookAtBytes};

// What follows stands where one piece ends and the next begins.
std::string Filler(FuzzedDataProvider& bytes, bool isDocument) {
  const std::size_t size = pieceSize - bytes.ConsumeIntegralInRange<std::size_t>(2, 300);
  return isDocument ? std::string(size, ' ') : "#" + std::string(size, 'x') + "\n";
}

}  // namespace

// What tells how to read the text stands behind it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider bytes(data, size);
  const Look look = looks[bytes.ConsumeIntegralInRange<std::size_t>(0, looks.size() - 1)];
  const bool isLong = bytes.ConsumeIntegralInRange(0, 31) == 1;
  Plan plan;
  plan.sizes = Sizes(bytes);
  plan.cuts.resize(bytes.ConsumeIntegralInRange<std::size_t>(0, 3));
  for (std::size_t& cut : plan.cuts) cut = bytes.ConsumeIntegral<std::uint16_t>();
  plan.place = bytes.ConsumeIntegral<std::uint32_t>();
  plan.damage = bytes.ConsumeIntegralInRange<std::uint8_t>(1, 255);
  plan.padding = bytes.ConsumeIntegral<std::uint16_t>() % 1024;
  const std::string packing = bytes.ConsumeBytesAsString(12);
  std::string text = bytes.ConsumeRemainingBytesAsString();
  FuzzedDataProvider rest(reinterpret_cast<const std::uint8_t*>(packing.data()), packing.size());
  if (isLong) text.insert(0, Filler(rest, IsDocument(text)));
  look(rest, plan, text);
  return 0;
}
