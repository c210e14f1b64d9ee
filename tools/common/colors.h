#pragma once

#include <string>
#include <vector>

#include "qz/system.h"
#include "qz/system/util/color.h"

namespace QZTools {

struct NamedColor {
  const char* name;
  QZSystem::QZColor color;
};

/// The colours of the library that have a name, "QZBlack" for instance, in its order.
const std::vector<NamedColor>& NamedColors();

/// The colour that a setting tells: by its text form, or by a name with or without the QZ, in letters of either case.
/// Throws ToolError for anything else.
QZSystem::QZColor ColorSetting(const QZSystem::QZInterface& settings, const std::string& key);

}  // namespace QZTools
