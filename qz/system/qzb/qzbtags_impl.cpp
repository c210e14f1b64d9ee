#include "qz/system/qzb/qzbtags_impl.h"

#include <algorithm>
#include <array>

namespace QZSystem {

namespace {

struct Code {
  unsigned char code;
  std::string_view name;
};

constexpr Code codes[] = {{1, "QZBasePOD"},
                          {10, "QZMolBase"},
                          {11, "QZMCMolBase"},
                          {12, "QZAtomPOD"},
                          {13, "QZBondPOD"},
                          {14, "QZConfPOD"},
                          {15, "QZConfSDData"},
                          {16, "QZMCMolCartConf"},
                          {17, "QZMolAtomNames"},
                          {18, "QZMolAtomTypes"},
                          {19, "QZMolCT"},
                          {20, "QZMolFloatCoord"},
                          {21, "QZMolPartialCharge"},
                          {22, "QZMolRadii"},
                          {23, "QZMolResidue"},
                          {24, "QZMolSDData"},
                          {25, "QZMolTitle"},
                          {26, "QZConfTitle"},
                          {27, "MDLParity"},
                          {28, "QZBondStereo"},
                          {29, "QZMolComment"},
                          {30, "QZConfEnergy"},
                          {31, "QZBase"},
                          {32, "QZMolDimension"},
                          {33, "QZConfDimension"},
                          {34, "zQZMCMolBase"},
                          {35, "QZMolAtomIntType"},
                          {36, "QZMolBondIntType"},
                          {37, "QZMolRotor"},
                          {38, "QZConfTorsion"},
                          {39, "QZMCMolRotorCart"},
                          {40, "QZMolEnergy"},
                          {41, "QZStyleList"},
                          {42, "QZStyleMap"},
                          {43, "QZStyleAtomID"},
                          {44, "QZStyleConfs"},
                          {45, "QZStyleID"},
                          {46, "QZMCMolCartConfHalfFloat"},
                          {47, "QZMCMolCartConfDouble"},
                          {48, "QZConfTorsionHalfFloat"},
                          {49, "QZConfTorsionDouble"},
                          {50, "QZConfTorsionCompressed"},
                          {51, "QZConfTorsionHalfFloatCompressed"},
                          {52, "QZConfTorsionDoubleCompressed"},
                          {53, "QZContainer"},
                          {54, "QZGroup"},
                          {55, "zstdQZMCMolBase"},
                          {56, "QZPrimarySubSearchScreen"}};

constexpr std::size_t codeLimit = 57;
constexpr std::size_t unknownLimit = 128;

constexpr std::array<std::string_view, codeLimit> namesByCode() {
  std::array<std::string_view, codeLimit> names;
  for (const Code& each : codes) names[each.code] = each.name;
  return names;
}
constexpr std::array<std::string_view, codeLimit> tagNames = namesByCode();

// "UnknownQZB1" to "UnknownQZB127", in rows of one length.
constexpr std::size_t longestUnknown = UnknownCodePrefix.size() + 3;
using UnknownRow = std::array<char, longestUnknown>;

constexpr std::array<UnknownRow, unknownLimit> unknownRows() {
  std::array<UnknownRow, unknownLimit> rows{};
  for (std::size_t code = 1; code < unknownLimit; ++code) {
    std::size_t at = 0;
    for (char letter : UnknownCodePrefix) rows[code][at++] = letter;
    if (code >= 100) rows[code][at++] = '1';
    if (code >= 10) rows[code][at++] = static_cast<char>('0' + code / 10 % 10);
    rows[code][at] = static_cast<char>('0' + code % 10);
  }
  return rows;
}
constexpr std::array<UnknownRow, unknownLimit> unknownNames = unknownRows();

std::size_t digitsOf(unsigned char code) { return code >= 100 ? 3 : code >= 10 ? 2 : 1; }

}  // namespace

std::string_view TagName(unsigned char code) { return code < codeLimit ? tagNames[code] : std::string_view(); }

unsigned char TagCode(std::string_view name) {
  if (name.empty() || !MayHaveCode(name[0])) return 0;
  const auto* const found =
      std::find_if(std::begin(codes), std::end(codes), [name](const Code& each) { return each.name == name; });
  return found == std::end(codes) ? 0 : found->code;
}

std::string_view EntryName(unsigned char code) {
  const std::string_view name = TagName(code);
  if (!name.empty() || code == 0 || code >= unknownLimit) return name;
  return {unknownNames[code].data(), UnknownCodePrefix.size() + digitsOf(code)};
}

// Only the decimal form without leading zeros stands for a code, so that no other name is lost.
unsigned char UnknownCodeOf(std::string_view name) {
  if (name.empty() || name[0] != 'U' || !StartsWith(name, UnknownCodePrefix)) return 0;
  const std::string_view digits = name.substr(UnknownCodePrefix.size());
  if (digits.empty() || digits.size() > 3 || digits[0] == '0') return 0;
  unsigned int code = 0;
  for (char digit : digits) {
    if (digit < '0' || digit > '9') return 0;
    code = code * 10 + static_cast<unsigned int>(digit - '0');
  }
  return code <= 255 ? static_cast<unsigned char>(code) : 0;
}

}  // namespace QZSystem
