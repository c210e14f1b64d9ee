#include "qz/system/qzb/qzbwalk.h"

#include <algorithm>

#include "qz/system/qzb/qzblength_impl.h"
#include "qz/system/qzb/qzbtags_impl.h"

namespace QZSystem {

// Nothing more is taken then.
bool QZBWalk::Stop(unsigned int code) {
  status = code;
  stopped = at;
  at = end;
  return false;
}

// What is claimed and isn't there: the rest is used up, as by a short read.
bool QZBWalk::Cut() {
  at = end;
  return Stop(QZBReturn::IncorrectSize);
}

bool QZBWalk::Bytes(QZBEntry& entry, unsigned long count) {
  if (count > static_cast<unsigned long>(end - at)) return Cut();
  entry.body = std::string_view(at, count);
  at += count;
  return true;
}

bool QZBWalk::TakeAny(QZBEntry& entry) {
  if (!Tag(entry)) return false;
  entry.type = static_cast<unsigned char>(*at++);
  entry.form = QZGetQZBForm(entry.type);
  entry.swapped = IsSwapped(entry.form.flag);
  if (entry.name[0] == '!' && StartsWith(entry.name, HandledPrefix)) return Handled(entry, false);
  switch (entry.form.shape) {
    case QZBShape::Unknown:
      return Bytes(entry, 0);
    case QZBShape::Scalar:
      return Bytes(entry, entry.form.size);
    case QZBShape::Handled:
      return Handled(entry, true);
    default:
      return Counted(entry);
  }
}

// A tag is never the last thing of an item.
bool QZBWalk::Tag(QZBEntry& entry) {
  if (at == end) return Stop(QZBReturn::ReadTagFailed);
  entry.code = static_cast<unsigned char>(*at++);
  if (at == end) return Stop(QZBReturn::ReadTagFailed);
  if (entry.code == 0) {
    unsigned long size;
    ReadLength(*this, QZBLargestLength, size);
    if (size == 0 || size >= QZBTagBufferSize) {
      SendTagCorrupt(size);
      return Stop(QZBReturn::ReadTagFailed);
    }
    const unsigned long held = std::min(size, static_cast<unsigned long>(end - at));
    entry.name = std::string_view(at, held);
    at += held;
  } else {
    entry.name = EntryName(entry.code);
  }
  if (entry.name.empty() || entry.name[0] == '\0' || at == end) return Stop(QZBReturn::ReadTagFailed);
  return true;
}

// Of arrays of bool, and of what has no elements of its own, a length of 0 means nothing but that; arrays of numbers
// were never written without elements by those who mean to read them again.
bool QZBWalk::Counted(QZBEntry& entry) {
  if (entry.form.flag == QZBFlag::Short) {
    if (at == end) return Stop(QZBReturn::IncorrectSize);
    entry.swapped = QZBShortEndian(static_cast<unsigned int>(get()));
  }
  unsigned long length;
  const bool isLength = ReadLength(*this, QZBLargestLength, length);
  if (entry.type != QZBType::BoolArray) {
    const bool needsElements = entry.form.shape == QZBShape::Array;
    const bool isWhole = entry.form.shape != QZBShape::Vector || length % entry.form.size == 0;
    if (!isLength || !isWhole || (needsElements && length == 0)) return Stop(QZBReturn::IncorrectSize);
  }
  if (!Bytes(entry, length)) return false;
  entry.body.remove_suffix(length % entry.form.size);
  return true;
}

bool QZBWalk::Handled(QZBEntry& entry, bool hasSecondTag) {
  entry.form = QZGetQZBForm(QZBType::Handled);
  if (hasSecondTag) {
    QZBEntry second;
    if (!Tag(second)) return false;
    if (get() != QZBType::CharVector) return Stop(QZBReturn::ReadTagFailed);
  }
  unsigned long length;
  ReadLength(*this, QZBLargestLength, length);
  if (at == end) return Stop(QZBReturn::IncorrectSize);
  return Bytes(entry, length);
}

}  // namespace QZSystem
