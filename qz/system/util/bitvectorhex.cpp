// The hexadecimal text of bit vectors.
//
//   text   = digit* marker?                 line feeds and other bytes may stand anywhere
//   digit  = four bits, the lowest of them with the value 1
//   marker = the last byte, if it is one of these; it tells which end the digits begin at, and how many bits of the
//            highest digit belong to no position:
//                                           0    1    2    3 bits
//            first digit has lowest bits   "J"  "G"  "H"  "I"      what is written
//            last digit has lowest bits    "N"  "K"  "L"  "M"      without a marker as "N"

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "qz/system/util/bitvector.h"
#include "qz/system/util/bitvector_impl.h"

namespace QZSystem {

namespace {

using Storage = BitVectorStorage;

constexpr char Digits[] = "0123456789ABCDEF";
constexpr char Markers[] = "JGHI";
constexpr char ReverseMarkers[] = "NKLM";
constexpr unsigned long DigitBits = 4;
constexpr unsigned int WordDigits = 16;
constexpr std::uint8_t NoDigit = 0xFF;

struct DigitPair {
  char low, high;
};

constexpr std::array<DigitPair, 256> MakePairs() {
  std::array<DigitPair, 256> pairs{};
  for (std::size_t byte = 0; byte < pairs.size(); ++byte) pairs[byte] = {Digits[byte % 16], Digits[byte / 16]};
  return pairs;
}

constexpr std::array<std::uint8_t, 256> MakeValues() {
  std::array<std::uint8_t, 256> values{};
  for (std::uint8_t& value : values) value = NoDigit;
  for (std::uint8_t value = 0; value < 16; ++value) {
    const auto digit = static_cast<unsigned char>(Digits[value]);
    values[digit] = value;
    if (value >= 10) values[digit + ('a' - 'A')] = value;
  }
  return values;
}

constexpr std::array<DigitPair, 256> PairOfByte = MakePairs();
constexpr std::array<std::uint8_t, 256> ValueOfByte = MakeValues();

// The room that the text of so many bits takes: digits, marker, line feeds.
class TextRoom {
 public:
  TextRoom(std::string& text, unsigned long bits, unsigned int lineLength)
      : line(lineLength), length((bits + DigitBits - 1) / DigitBits + 1), feeds(line == 0 ? 0 : (length - 1) / line) {
    text.resize(length + feeds);
    start = text.data();
    start[length + feeds - 1] = Markers[length * DigitBits - DigitBits - bits];
  }

  // Where the digits go; behind them there is the marker.
  char* DigitsStart() { return start + feeds; }
  unsigned long DigitCount() const { return length - 1; }

  // The text stands at the end of the room, and its lines move to the front one by one.
  void PartLines() {
    for (unsigned long i = 0; i < feeds; ++i) {
      char* const to = start + i * (line + 1UL);
      std::memmove(to, start + feeds + i * line, line);
      to[line] = '\n';
    }
  }

 private:
  unsigned long line;
  unsigned long length;
  unsigned long feeds;
  char* start;
};

// What the last byte says of the digits before it.
struct Layout {
  explicit Layout(const std::string& text) : digits(text.size()) {
    if (Find(Markers, text.back())) return;
    reversed = true;
    Find(ReverseMarkers, text.back());
  }

  bool Find(const char* markers, char last) {
    const char* const found = last == '\0' ? nullptr : std::strchr(markers, last);
    if (found == nullptr) return false;
    padding = static_cast<unsigned long>(found - markers);
    --digits;
    return true;
  }

  std::size_t digits;  // the bytes that may be digits
  unsigned long padding = 0;
  bool reversed = false;
};

// The value of 16 digits that begin at `at` and go on by `step`, 1 or -1. False, with `word` untouched, if a byte isn't
// a digit. All 16 are taken at a time: those that are digits by their distance from "0", or letters by that from "a".
template <int step>
bool ReadWord(const char* at, std::uint64_t& word) {
  const char* const first = step > 0 ? at : at - (WordDigits - 1);
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(first));
  const __m128i number = _mm_sub_epi8(bytes, _mm_set1_epi8('0'));
  const __m128i letter = _mm_sub_epi8(_mm_or_si128(bytes, _mm_set1_epi8('a' ^ 'A')), _mm_set1_epi8('a'));
  const __m128i isNumber = _mm_cmpeq_epi8(_mm_min_epu8(number, _mm_set1_epi8(9)), number);
  const __m128i isLetter = _mm_cmpeq_epi8(_mm_min_epu8(letter, _mm_set1_epi8(5)), letter);
  if (_mm_movemask_epi8(_mm_or_si128(isNumber, isLetter)) != 0xFFFF) return false;
  const __m128i values =
      _mm_or_si128(_mm_and_si128(isNumber, number), _mm_and_si128(isLetter, _mm_add_epi8(letter, _mm_set1_epi8(10))));
  // Each pair of digits becomes a byte; the lower one is the first, or the second where digits go down.
  const __m128i high = step > 0 ? _mm_srli_epi16(values, DigitBits) : _mm_slli_epi16(values, DigitBits);
  const __m128i low = step > 0 ? values : _mm_srli_epi16(values, 8);
  const __m128i pairs = _mm_and_si128(_mm_or_si128(low, high), _mm_set1_epi16(0xFF));
  const auto value = static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_packus_epi16(pairs, pairs)));
  word = step > 0 ? value : __builtin_bswap64(value);
  return true;
}

// Puts the digits among `count` bytes into words that are all 0, and returns how many there are; those beyond the words
// are counted only.
template <int step>
unsigned long ReadDigits(const char* at, std::size_t count, std::uint64_t* words, std::size_t wordCount) {
  unsigned long digits = 0;
  for (unsigned int used = 0; count > 0; at += step * static_cast<int>(used), count -= used) {
    used = 1;
    const std::uint64_t digit = ValueOfByte[static_cast<unsigned char>(*at)];
    if (digit == NoDigit) continue;
    const std::size_t index = digits / WordDigits;
    const unsigned long place = digits % WordDigits;
    if (index < wordCount) {
      if (place == 0 && count >= WordDigits && ReadWord<step>(at, words[index])) {
        used = WordDigits;
      } else {
        words[index] |= digit << (place * DigitBits);
      }
    }
    digits += used;
  }
  return digits;
}

unsigned long CountDigits(const std::string& text, std::size_t count) {
  return static_cast<unsigned long>(
      std::count_if(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(count),
                    [](char byte) { return ValueOfByte[static_cast<unsigned char>(byte)] != NoDigit; }));
}

// Four bits for each byte, none set. Where that is too much the size stays, with the message, and then becomes what the
// digits need or the most there is.
void MakeRoom(QZBitVector& vector, const std::string& text, std::size_t count) {
  constexpr unsigned long most = QZBitVector::MaxSize;
  const bool tooLarge = count > most / DigitBits;
  vector.SetSize(tooLarge ? most + 1 : count * DigitBits);
  vector.ClearBits();
  if (tooLarge) Storage::Resize(vector, std::min(most, CountDigits(text, count) * DigitBits));
}

}  // namespace

bool QZMakeHex(std::string& text, const QZBitVector& vector, unsigned int lineLength) {
  TextRoom room(text, vector.GetSize(), lineLength);
  const auto* const bytes = reinterpret_cast<const unsigned char*>(Storage::Words(vector));
  char* const to = room.DigitsStart();
  const unsigned long pairs = room.DigitCount() / 2;
  for (unsigned long i = 0; i < pairs; ++i) std::memcpy(to + 2 * i, &PairOfByte[bytes[i]], 2);
  if (room.DigitCount() % 2 != 0) to[2 * pairs] = PairOfByte[bytes[pairs]].low;
  room.PartLines();
  return true;
}

bool QZMakeHex(std::string& text, const std::vector<bool>& vector, unsigned int lineLength) {
  TextRoom room(text, vector.size(), lineLength);
  char* const to = room.DigitsStart();
  for (unsigned long digit = 0; digit < room.DigitCount(); ++digit) {
    const unsigned long first = digit * DigitBits;
    unsigned int value = 0;
    for (unsigned int i = 0; i < DigitBits && first + i < vector.size(); ++i)
      value |= static_cast<unsigned int>(vector[first + i]) << i;
    to[digit] = Digits[value];
  }
  room.PartLines();
  return true;
}

bool QZParseHex(QZBitVector& vector, const std::string& text) {
  if (text.empty()) return true;
  const Layout layout(text);
  MakeRoom(vector, text, layout.digits);
  std::uint64_t* const words = Storage::Words(vector);
  const std::size_t wordCount = Storage::WordCount(vector);
  const unsigned long digits = layout.reversed
                                   ? ReadDigits<-1>(text.data() + layout.digits - 1, layout.digits, words, wordCount)
                                   : ReadDigits<1>(text.data(), layout.digits, words, wordCount);
  const unsigned long filled = digits * DigitBits;
  if (layout.padding > filled) {
    vector.ClearBits();
    return false;
  }
  Storage::Resize(vector, std::min(filled - layout.padding, QZBitVector::MaxSize));
  return true;
}

bool QZParseHex(std::vector<bool>& vector, const std::string& text) {
  QZBitVector parsed;
  if (!QZParseHex(parsed, text)) return false;
  QZCopyBits(vector, parsed);
  return true;
}

}  // namespace QZSystem
