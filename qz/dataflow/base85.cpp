#include "qz/dataflow/base85.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "qz/dataflow/base85_impl.h"
#include "qz/system/frame/error.h"

namespace QZDataFlow {

namespace Base85 {

namespace {

constexpr char kInvalidCharacter[] = "Base85: invalid character at offset %lu";

constexpr std::string_view kAlphabet =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz!#$%&()*+-;<=>?@^_`{|}~";

constexpr std::uint64_t kBase = 85;
constexpr std::size_t kBytes = 4;   // of a group
constexpr std::size_t kDigits = 5;  // of a group
constexpr unsigned char kNoDigit = 0xFF;

/// The value of each character, or kNoDigit.
constexpr auto kValues = [] {
  std::array<unsigned char, 256> values{};
  for (auto& value : values) value = kNoDigit;
  for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
    values[static_cast<unsigned char>(kAlphabet[i])] = static_cast<unsigned char>(i);
  }
  return values;
}();

/// The digits of up to four bytes, filled up with zeros.
std::array<char, kDigits> EncodeGroup(const unsigned char* data, std::size_t count) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < kBytes; ++i) number = number << 8 | (i < count ? data[i] : 0U);
  std::array<char, kDigits> digits{};
  for (std::size_t i = kDigits; i-- > 0; number /= kBase) digits[i] = kAlphabet[number % kBase];
  return digits;
}

/// The number of up to five digits, filled up with the highest; false at one that isn't a digit, with its place.
bool DecodeGroup(std::string_view digits, std::uint64_t& number, std::size_t& place) {
  number = 0;
  for (std::size_t i = 0; i < kDigits; ++i) {
    const unsigned char value =
        i < digits.size() ? kValues[static_cast<unsigned char>(digits[i])] : static_cast<unsigned char>(kBase - 1);
    if (value == kNoDigit) {
      place = i;
      return false;
    }
    number = number * kBase + value;
  }
  place = 0;
  return number <= 0xFFFFFFFF;
}

}  // namespace

void Encode(const unsigned char* data, std::size_t size, char* out) {
  for (; size >= kBytes; size -= kBytes, data += kBytes) {
    const auto digits = EncodeGroup(data, kBytes);
    out = std::copy(digits.begin(), digits.end(), out);
  }
  if (size != 0) std::copy_n(EncodeGroup(data, size).begin(), size + 1, out);
}

bool Decode(std::string_view text, std::vector<unsigned char>& out) {
  const std::size_t before = out.size();
  out.reserve(before + text.size() / kDigits * kBytes + kBytes);
  for (std::size_t at = 0; at < text.size(); at += kDigits) {
    const std::string_view digits = text.substr(at, kDigits);
    std::uint64_t number;
    std::size_t place;
    if (!DecodeGroup(digits, number, place)) {
      QZThrow.Warning(kInvalidCharacter, static_cast<unsigned long>(at + place));
      out.resize(before);
      return false;
    }
    for (std::size_t i = 0; i + 1 < digits.size(); ++i) {
      out.push_back(static_cast<unsigned char>(number >> (24 - 8 * i)));
    }
  }
  return true;
}

}  // namespace Base85

std::string QZBase85Encode(const std::vector<unsigned char>& bytes) {
  std::string text(Base85::EncodedSize(bytes.size()), '\0');
  Base85::Encode(bytes.data(), bytes.size(), text.data());
  return text;
}

std::vector<unsigned char> QZBase85Decode(const std::string& text) {
  std::vector<unsigned char> bytes;
  if (!Base85::Decode(text, bytes)) bytes.clear();
  return bytes;
}

}  // namespace QZDataFlow
