#include "tools/common/fingerprint.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace QZTools {

using namespace QZSystem;
using namespace QZDataFlow;

namespace {

constexpr unsigned long textBits = 2048;
constexpr std::size_t groupLetters = 3;

bool isDigitOrBlank(char letter) {
  const auto byte = static_cast<unsigned char>(letter);
  return std::isxdigit(byte) != 0 || std::isspace(byte) != 0;
}

// FNV-1a, 64 bits (Fowler, Noll and Vo).
std::uint64_t hashOf(std::string_view text) {
  std::uint64_t hash = 0xCBF29CE484222325U;
  for (const char letter : text) hash = (hash ^ static_cast<unsigned char>(letter)) * 0x100000001B3U;
  return hash;
}

}  // namespace

std::optional<QZBitVector> PrintOfHex(const std::string& text) {
  const std::size_t other =
      static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isDigitOrBlank) - text.begin());
  const bool isMarked = other + 1 == text.size() && text.back() >= 'G' && text.back() <= 'N';
  QZBitVector print;
  if (text.empty() || (other < text.size() && !isMarked) || !QZParseHex(print, text)) return std::nullopt;
  return print;
}

void AddTrigrams(QZBitVector& print, std::string_view text) {
  const std::string padded = " " + QZStringLower(std::string(text)) + " ";
  for (std::size_t at = 0; at + groupLetters <= padded.size(); ++at)
    print.SetBit(hashOf(std::string_view(padded).substr(at, groupLetters)) % print.GetSize());
}

const QZFieldBase* PrintReader::find(const std::string& name) const {
  for (const QZFieldBase& field : watch.Fields()) {
    if (field.GetName() == name) return &field;
  }
  return nullptr;
}

std::string PrintReader::Text(const QZRecord& record, const std::string& name) {
  const QZFieldBase* const field = find(name);
  return field ? std::string(texts.Of(record, *field).value_or(std::string_view())) : std::string();
}

std::optional<QZBitVector> PrintReader::Of(const QZRecord& record) {
  watch.See(record);
  if (wanted.textFields.empty()) {
    const std::string text = Text(record, wanted.hexField);
    if (text.empty()) return std::nullopt;
    std::optional<QZBitVector> print = PrintOfHex(text);
    if (!print) throw std::invalid_argument(text);
    return print;
  }
  QZBitVector print(textBits);
  for (const std::string& name : wanted.textFields) {
    const std::string text = Text(record, name);
    if (!text.empty()) AddTrigrams(print, text);
  }
  if (print.IsEmpty()) return std::nullopt;
  return print;
}

}  // namespace QZTools
