#include "qz/system/cli/configureline_impl.h"

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "qz/system/text/qzstring.h"

namespace QZSystem {

namespace {

constexpr std::size_t kAnyCount = ConfigureEntry::kAnyCount;

constexpr std::array<ConfigureEntry, 19> kEntries{{
    {"!LEGAL_VALUE", EntryKeyword::kLegalValue, 2},
    {"!DEFAULT", EntryKeyword::kDefault, 2},
    {"!BRIEF", EntryKeyword::kBrief, kAnyCount},
    {"!TYPE", EntryKeyword::kType, kAnyCount},
    {"!END", EntryKeyword::kEnd, kAnyCount},
    {"!SIMPLE", EntryKeyword::kSimple, 2},
    {"!REQUIRED", EntryKeyword::kRequired, 2},
    {"!LIST", EntryKeyword::kList, kAnyCount},
    {"!LEGAL_RANGE", EntryKeyword::kLegalRange, 3},
    {"!ALIAS", EntryKeyword::kAlias, 2},
    {"!DETAIL", EntryKeyword::kDetail, kAnyCount},
    {"!KEYLESS", EntryKeyword::kKeyless, 2},
    {"!VISIBILITY", EntryKeyword::kVisibility, 2},
    {"!INPUT", EntryKeyword::kInput, 2},
    {"!OUTPUT", EntryKeyword::kOutput, 2},
    {"!ILLEGAL_VALUE", EntryKeyword::kIllegalValue, 2},
    {"!ILLEGAL_RANGE", EntryKeyword::kIllegalRange, 3},
    {"!COMMAND", EntryKeyword::kCommand, kAnyCount},
    {"!ELEMENT", EntryKeyword::kElement, kAnyCount},
}};

constexpr ConfigureEntry kNoEntry{{}, EntryKeyword::kNone, kAnyCount};

constexpr std::ptrdiff_t kStep = 32;

/// A bit for each of 32 bytes: whether it is part of a word, and whether it is a line feed.
struct Bits {
  std::uint32_t words = 0;
  std::uint32_t lineFeeds = 0;
};

std::uint32_t EqualTo(__m128i bytes, char c) {
  return static_cast<unsigned int>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(c))));
}

Bits BitsOf(const char* bytes) {
  constexpr int kWidth = sizeof(__m128i);
  Bits bits;
  for (int i = 0; i < kStep; i += kWidth) {
    const __m128i part = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
    const std::uint32_t lineFeeds = EqualTo(part, '\n');
    bits.lineFeeds |= lineFeeds << i;
    bits.words |= (lineFeeds | EqualTo(part, ' ') | EqualTo(part, '\t')) << i;
  }
  bits.words = ~bits.words;
  return bits;
}

Bits LowestOf(Bits bits, int count) {
  const std::uint32_t mask = (std::uint32_t{1} << count) - 1;
  return {bits.words & mask, bits.lineFeeds & mask};
}

/// Clears the lowest bit that is set, and returns its place.
int TakeLowest(std::uint32_t& bits) {
  const int place = __builtin_ctz(bits);
  bits &= bits - 1;
  return place;
}

Bits BitsOfFew(const char* bytes, std::ptrdiff_t count) {
  char padded[kStep] = {};
  std::memcpy(padded, bytes, static_cast<std::size_t>(count));
  return LowestOf(BitsOf(padded), static_cast<int>(count));
}

/// A table of the entries by a hash of their words that gives each its own slot.
constexpr std::size_t kSlots = 64;

/// The factors are the smallest that do it, found by trying.
constexpr std::size_t SlotOf(std::string_view word) {
  const auto code = [word](std::size_t i) { return static_cast<std::size_t>(static_cast<unsigned char>(word[i])); };
  return (word.size() + 4 * code(1) + 10 * code(word.size() - 2)) % kSlots;
}

constexpr auto kTable = [] {
  std::array<const ConfigureEntry*, kSlots> table{};
  for (const ConfigureEntry*& slot : table) slot = &kNoEntry;
  for (const ConfigureEntry& entry : kEntries) table[SlotOf(entry.word)] = &entry;
  return table;
}();

constexpr bool TableIsGood() {
  for (const ConfigureEntry& entry : kEntries)
    if (kTable[SlotOf(entry.word)] != &entry || entry.word.size() < 4 || entry.word.size() > 16) return false;
  return true;
}
static_assert(TableIsGood(), "two keywords share a slot, or one is too short or long");

template <class Number>
Number Load(const char* bytes) {
  Number number = 0;
  std::memcpy(&number, bytes, sizeof number);
  return number;
}

/// Whether the numbers at the begin and at the end are the same; between them they have all bytes of up to twice their
/// size.
template <class Number>
bool SameEnds(std::string_view a, std::string_view b) {
  const std::size_t last = a.size() - sizeof(Number);
  return Load<Number>(a.data()) == Load<Number>(b.data()) &&
         Load<Number>(a.data() + last) == Load<Number>(b.data() + last);
}

/// Every keyword has 4 to 16 bytes, and every line asks for one.
const ConfigureEntry& EntryOf(std::string_view word) {
  if (word.size() < sizeof(std::uint32_t)) return kNoEntry;
  const ConfigureEntry& entry = *kTable[SlotOf(word)];
  if (entry.word.size() != word.size()) return kNoEntry;
  const bool same = word.size() < sizeof(std::uint64_t) ? SameEnds<std::uint32_t>(entry.word, word)
                                                        : SameEnds<std::uint64_t>(entry.word, word);
  return same ? entry : kNoEntry;
}

}  // namespace

// The words of QZStringTokenize at " \t\n" and the end of the line in one pass, 32 bytes at a time: of the bits that
// tell words from white space only those are walked at which one ends and the other begins, so no branch hangs on a
// byte.
const char* ConfigureLine::Scan(const char* start, const char* end) {
  words.clear();
  const char* word = nullptr;  // the one that is open
  const char* at = start;
  for (bool ends = false; !ends && at != end;) {
    const std::ptrdiff_t left = end - at;
    Bits bits = left >= kStep ? BitsOf(at) : BitsOfFew(at, left);
    std::ptrdiff_t size = std::min(left, kStep);
    ends = bits.lineFeeds != 0;
    if (ends) {
      size = __builtin_ctz(bits.lineFeeds);
      bits = LowestOf(bits, static_cast<int>(size));
    }
    std::uint32_t edges = bits.words ^ (bits.words << 1 | (word != nullptr ? 1U : 0U));
    while (edges != 0) {
      if (word == nullptr) word = at + TakeLowest(edges);
      if (edges == 0) break;
      const char* behind = at + TakeLowest(edges);
      words.emplace_back(word, static_cast<std::size_t>(behind - word));
      word = nullptr;
    }
    at += size;
  }
  if (word != nullptr) words.emplace_back(word, static_cast<std::size_t>(at - word));
  text = std::string_view(start, static_cast<std::size_t>(at - start));
  entry = words.empty() ? &kNoEntry : &EntryOf(words.front());
  return at;
}

bool ConfigureSource::Read(ConfigureLine& line) {
  if (stream != nullptr) {
    if (!stream->getline(line.copy)) return false;
    line.Scan(line.copy.data(), line.copy.data() + line.copy.size());
    return true;
  }
  if (at == end) return false;
  at = line.Scan(at, end);
  if (at != end) ++at;
  return true;
}

const std::string& ConfigureLine::Brief() {
  std::size_t size = 0;
  for (std::size_t i = 1; i < words.size(); ++i) size += words[i].size() + 1;
  brief.assign(size, ' ');
  char* to = brief.data();
  for (std::size_t i = 1; i < words.size(); ++i) to = std::copy(words[i].begin(), words[i].end(), to) + 1;
  return brief;
}

int ConfigureLine::Order() const {
  int order = 0;
  if (words.size() == 3 && !QZStringToNumber(words[2], order, 10)) order = 0;
  return order;
}

}  // namespace QZSystem
