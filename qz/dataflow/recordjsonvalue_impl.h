#pragma once

#include <optional>
#include <string>
#include <vector>

#include "qz/dataflow/names.h"
#include "qz/system/json/parse.h"

namespace QZDataFlow {

/// The bytes of the member "value", which isn't null, of the document of a field of that type, which isn't of records;
/// none for a value of the wrong kind, after a warning, and for a type that nobody registered. False, after a warning,
/// for a value that no registered type has.
bool ReadJSONValue(rapidjson::Value& field, const std::string& type, std::optional<std::vector<unsigned char>>& bytes);

}  // namespace QZDataFlow
