#pragma once

#include <rapidjson/document.h>

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "qz/system/data/base.h"
#include "qz/system/json/write.h"

/// What the codec of attached data and its handler for containers share.
namespace QZSystem::JSONImpl {

/// The objects that may stand inside each other, the document included.
inline constexpr int kMaxObjectDepth = 256;

/// A list of keys that a document keeps for itself.
class ReservedKeys {
 public:
  /// `list` may be null for none, and stays the caller's.
  ReservedKeys(const char* const* list, unsigned long size) : first(list), count(list ? size : 0) {
    for (unsigned long i = 0; i < count; ++i) initials |= Bit(*list[i]);
  }

  /// Whether the key itself is in the list.
  bool Has(std::string_view key) const { return !key.empty() && (initials & Bit(key.front())) != 0 && IsListed(key); }
  /// Whether the key without its leading underscores is in the list.
  bool foundExtendedTag(std::string_view key) const {
    const bool mayBe = !key.empty() && (key.front() == '_' || (initials & Bit(key.front())) != 0);
    return mayBe && Has(key.substr(std::min(key.find_first_not_of('_'), key.size())));
  }

 private:
  static std::uint64_t Bit(char character) { return std::uint64_t{1} << (static_cast<unsigned char>(character) & 63); }
  bool IsListed(std::string_view key) const;

  const char* const* first;
  unsigned long count;
  /// The first letters, which hardly another key shares.
  std::uint64_t initials = 0;
};

/// The keys of a document.
ReservedKeys DocumentKeys();

/// The members of a document, hints included.
void genQZBase(QZJSONWriter& writer, const QZBase& base, const ReservedKeys& keys, unsigned int flavor);
/// Reads members into `base`. False where they can't be read further.
bool parseQZBase(QZBase& base, rapidjson::Value& value, const ReservedKeys& keys);

/// The members of a document of the present version, and these read again from one of a version that fits.
void genQZBaseVersioned(QZJSONWriter& writer, const QZBase& base, unsigned int flavor);
bool parseQZBaseValid(QZBase& base, rapidjson::Value& value);

}  // namespace QZSystem::JSONImpl
