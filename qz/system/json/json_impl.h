#pragma once

#include <rapidjson/document.h>

#include <string_view>

#include "qz/system/data/base.h"
#include "qz/system/json/write.h"

/// What the codec of attached data and its handler for containers share.
namespace QZSystem::JSONImpl {

/// The objects that may stand inside each other, the document included.
inline constexpr int kMaxObjectDepth = 256;

/// A sorted list of keys that a document keeps for itself; `first` is null when there are none.
struct ReservedKeys {
  const char* const* first;
  unsigned long count;
};
extern const ReservedKeys kDocumentKeys;

/// Whether the key itself is in the list.
bool IsReserved(const ReservedKeys& keys, std::string_view key);
/// Whether the key without its leading underscores is in the list.
bool foundExtendedTag(const ReservedKeys& keys, std::string_view key);

/// The members of a document, hints included.
void genQZBase(QZJSONWriter& writer, const QZBase& base, const ReservedKeys& keys, unsigned int flavor);
/// Reads members into `base`. False where they can't be read further.
bool parseQZBase(QZBase& base, rapidjson::Value& value, const ReservedKeys& keys);

/// The members of a document of the present version, and these read again from one of a version that fits.
void genQZBaseVersioned(QZJSONWriter& writer, const QZBase& base, unsigned int flavor);
bool parseQZBaseValid(QZBase& base, rapidjson::Value& value);

}  // namespace QZSystem::JSONImpl
