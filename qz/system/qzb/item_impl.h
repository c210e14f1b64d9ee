#pragma once

#include <memory>
#include <string>

#include "qz/platform/stream.h"
#include "qz/system/qzb/payload_impl.h"
#include "qz/system/qzb/qzbhand.h"
#include "qz/system/qzb/unknowndata.h"

namespace QZSystem {

/// The head of an item, and who reads it.
struct ItemHead {
  std::string tag;
  unsigned char code = 0;
  unsigned long length = 0;
  const QZReadFxnBase* reader = nullptr;  ///< null if nobody does
};

/// Reads tag and length of an item, and looks for the first reader of that tag and type. Returns a code of QZBReturn:
/// 6 for the tag, 8 where the stream ends, 9 for the length.
unsigned int ReadItemHead(qzistream& in, const void* type, const QZBinaryIOHandlerBase& handler, ItemHead& head);

/// An item that somebody reads, or that was read as unknown data: small enough for a recursive frame.
struct FoundItem {
  const QZReadFxnBase* reader = nullptr;
  unsigned long length = 0;
  std::unique_ptr<QZUnknownQZBData> unknown;  ///< where there is no reader
  unsigned int status = 0;
};

/// Reads the head of an item, and all of it where nobody else does.
FoundItem FindItem(qzistream& in, const void* type, const QZBinaryIOHandlerBase& handler);

/// What became of reading the name of a value in a payload.
enum class NameOutcome {
  Read,     ///< the name is there
  Missing,  ///< it can't be read, or it is empty
  Refused   ///< a code byte of 128 or more
};

/// Reads the name of a value, which may be the last thing in the stream. What there is of a name that is cut short is
/// given too, as missing.
NameOutcome ReadValueName(qzistream& in, std::string& name);

/// The payload of a value that was attached to an object: a name, and behind it the item of the value.
struct NamedPayload {
  NamedPayload(qzistream& in, unsigned long length);

  Payload bytes;  ///< the stream stands behind the name
  std::string name;
  unsigned int status = 0;
  bool hasName = false;
  bool isNameAlone = false;
};

/// The first writer of a type, null if there is none.
const QZWriteFxnBase* FindWriter(const QZBinaryIOHandlerBase& handler, const void* type);
const QZWriteFxn<QZBaseData>* FindBaseWriter(const QZBinaryIOHandlerBase& handler, const void* type);

}  // namespace QZSystem
