#pragma once

#include <map>
#include <string>

#include "qz/dataflow.h"

namespace QZTools {

/// Reads the text of the option -meta, "column:Units.Mass.Da; column:Annotation.Description=text": for each column the
/// metadata that was named. Throws ToolError for an item that isn't of this form and for an unknown name, with near
/// ones.
std::map<std::string, QZDataFlow::QZFieldMeta> ParseMeta(const std::string& text);

}  // namespace QZTools
