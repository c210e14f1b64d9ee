#pragma once

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <string>

#include "qz/system/frame/names.h"

namespace QZSystem {

/// Writes JSON without white space, numbers in the shortest form, and the words NaN, Infinity and -Infinity.
using QZJSONWriter = rapidjson::Writer<rapidjson::StringBuffer, rapidjson::UTF8<>, rapidjson::UTF8<>,
                                       rapidjson::CrtAllocator, rapidjson::kWriteNanAndInfFlag>;

/// The compact text of a value.
///
///     const std::string text = QZJSONText(*attr.value);
///
/// The stack that it takes doesn't depend on how deep the value nests. Const values may be written in parallel: safe
/// from any thread.
std::string QZJSONText(const rapidjson::Value& value);

}  // namespace QZSystem
