#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qz/platform.h"
#include "qz/system/qzb/qzb.h"
#include "qz/system/qzb/qzbwalk.h"

namespace QZTools {

/// Where and why bytes of the tag-length format can't be read.
struct QzbDamage {
  unsigned long offset;
  unsigned int code;  ///< of QZBReturn
};

/// A thing in a file of the tag-length format: an item, a value of an object, or a payload.
struct QzbNode {
  /// What stands in it.
  enum class Kind {
    Object,   ///< an item of values; `parts` are the values
    Group,    ///< an item of items, the `parts`
    Payload,  ///< an item, or the rest of a payload, that has no form of its own; `entry.body` are the bytes
    Value,    ///< an entry of an object, in `entry`
    Handled,  ///< an entry whose payload an unknown function has written; `writer` is its name, `parts` the content
    Unknown   ///< an entry of a type that the format doesn't know
  };

  unsigned long offset = 0;  ///< of the tag
  Kind kind = Kind::Payload;
  std::string tag;
  unsigned char code = 0;
  unsigned long length = 0;  ///< of an item or a body
  unsigned long bodyOffset = 0;
  QZSystem::QZBEntry entry;
  std::string writer;
  std::vector<QzbNode> parts;
};

/// Takes a file of items apart, knowing nothing but the format.
///
///     const std::optional<QzbDamage> damage = ReadQzbItems(in, [&](const QzbNode& item) { print(item); });
///
/// Items are handed out one by one, each with all that stands in it as far as it can be read; the views in a node end
/// with the call. Whether a payload is an object or a group of items is seen by its bytes, or by its name where that is
/// one of the format's own. Reading stops at the first damage. Payloads are opened 256 deep. One thread at a time.
std::optional<QzbDamage> ReadQzbItems(QZPlatform::qzistream& in, const std::function<void(const QzbNode&)>& use);

}  // namespace QZTools
