#pragma once

#include <string>

namespace QZTools {

/// The name of the first field of a record document that holds a whole number of more than 32 bits, which the document
/// reader would make null or cut; "" if there is none, or the text is no such document. Child records and records in
/// fields are looked at too; their fields are named with a dot behind the outer one's.
std::string FindWideNumber(const std::string& document);

}  // namespace QZTools
