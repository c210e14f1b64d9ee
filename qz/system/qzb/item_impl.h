#pragma once

#include <string>

#include "qz/platform/stream.h"
#include "qz/system/qzb/qzbhand.h"

namespace QZSystem {

/// The head of an item, and who reads it.
struct ItemHead {
  std::string tag;
  unsigned char code = 0;
  unsigned long length = 0;
  const QZReadFxnBase* reader = nullptr;  ///< null if nobody does
};

/// Reads tag and length of an item, and looks for the first reader of that tag and type. Returns a code of QZBReturn:
/// 6 for the tag, 8 where the stream ends, 9 for the length. Keeps the large buffer out of the recursive frames.
unsigned int ReadItemHead(qzistream& in, const void* type, const QZBinaryIOHandlerBase& handler, ItemHead& head);

/// What became of reading the name of a value in a payload.
enum class NameOutcome {
  Read,     ///< the name is there
  Missing,  ///< it can't be read, or it is empty
  Refused   ///< a code byte of 128 or more
};

/// Reads the name of a value, which may be the last thing in the stream. What there is of a name that is cut short is
/// given too, as missing.
NameOutcome ReadValueName(qzistream& in, std::string& name);

/// The first writer of a type, null if there is none.
const QZWriteFxnBase* FindWriter(const QZBinaryIOHandlerBase& handler, const void* type);
const QZWriteFxn<QZBaseData>* FindBaseWriter(const QZBinaryIOHandlerBase& handler, const void* type);

}  // namespace QZSystem
