#include "tools/common/colors.h"

#include <algorithm>

#include "tools/common/tool.h"
#include "tools/common/toolerror.h"

namespace QZTools {

using namespace QZSystem;

namespace {

constexpr const char* prefix = "qz";

// In lower case and without the prefix.
std::string plainName(const std::string& name) {
  std::string plain = QZStringLower(name);
  if (plain.compare(0, 2, prefix) == 0) plain.erase(0, 2);
  return plain;
}

bool isColorText(const std::string& text) {
  return (text.size() == 7 || text.size() == 9) && text.front() == '#' &&
         text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos;
}

std::string advice(const std::string& text) {
  std::vector<std::string> names;
  for (const NamedColor& each : NamedColors()) names.push_back(std::string(each.name).substr(2));
  const std::vector<std::string> near = NearWords(plainName(text), names);
  return near.empty() ? "give it as #rrggbb or by name" : "did you mean " + QZStringJoin(near, ", ") + "?";
}

}  // namespace

const std::vector<NamedColor>& NamedColors() {
  static const std::vector<NamedColor> all = {
      {"QZBlack", QZBlack},
      {"QZWhite", QZWhite},
      {"QZRed", QZRed},
      {"QZGreen", QZGreen},
      {"QZBlue", QZBlue},
      {"QZYellow", QZYellow},
      {"QZCyan", QZCyan},
      {"QZMagenta", QZMagenta},
      {"QZOrange", QZOrange},
      {"QZPink", QZPink},
      {"QZGrey", QZGrey},
      {"QZPurple", QZPurple},
      {"QZRoyalBlue", QZRoyalBlue},
      {"QZOliveBrown", QZOliveBrown},
      {"QZOliveGreen", QZOliveGreen},
      {"QZOliveGrey", QZOliveGrey},
      {"QZLimeGreen", QZLimeGreen},
      {"QZDarkRed", QZDarkRed},
      {"QZDarkGreen", QZDarkGreen},
      {"QZDarkBlue", QZDarkBlue},
      {"QZDarkYellow", QZDarkYellow},
      {"QZDarkCyan", QZDarkCyan},
      {"QZDarkMagenta", QZDarkMagenta},
      {"QZDarkOrange", QZDarkOrange},
      {"QZDarkGrey", QZDarkGrey},
      {"QZDarkRose", QZDarkRose},
      {"QZDarkBrown", QZDarkBrown},
      {"QZDarkSalmon", QZDarkSalmon},
      {"QZDarkPurple", QZDarkPurple},
      {"QZMediumBrown", QZMediumBrown},
      {"QZMediumBlue", QZMediumBlue},
      {"QZMediumYellow", QZMediumYellow},
      {"QZMediumGreen", QZMediumGreen},
      {"QZMediumOrange", QZMediumOrange},
      {"QZMediumPurple", QZMediumPurple},
      {"QZMediumSalmon", QZMediumSalmon},
      {"QZLightBlue", QZLightBlue},
      {"QZLightGrey", QZLightGrey},
      {"QZLightPurple", QZLightPurple},
      {"QZLightSalmon", QZLightSalmon},
      {"QZLightBrown", QZLightBrown},
      {"QZLightOrange", QZLightOrange},
      {"QZLightGreen", QZLightGreen},
      {"QZBlueTint", QZBlueTint},
      {"QZBrown", QZBrown},
      {"QZMandarin", QZMandarin},
      {"QZGreenBlue", QZGreenBlue},
      {"QZGreenTint", QZGreenTint},
      {"QZHotPink", QZHotPink},
      {"QZPinkTint", QZPinkTint},
      {"QZRedOrange", QZRedOrange},
      {"QZSeaGreen", QZSeaGreen},
      {"QZSkyBlue", QZSkyBlue},
      {"QZViolet", QZViolet},
      {"QZYellowTint", QZYellowTint},
      {"QZTransparentColor", QZTransparentColor},
      {"QZCopper", QZCopper},
      {"QZGold", QZGold},
      {"QZSilver", QZSilver},
      {"QZPewter", QZPewter},
      {"QZBrass", QZBrass},
  };
  return all;
}

QZColor ColorSetting(const QZInterface& settings, const std::string& key) {
  const std::string text = TextSetting(settings, key);
  if (isColorText(text)) return QZColor(text);
  const std::string wanted = plainName(text);
  for (const NamedColor& each : NamedColors()) {
    if (plainName(each.name) == wanted) return each.color;
  }
  throw ToolError(key + ": '" + text + "' is no colour; " + advice(text));
}

}  // namespace QZTools
