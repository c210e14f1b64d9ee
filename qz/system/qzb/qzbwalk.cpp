#include "qz/system/qzb/qzbwalk.h"

#include <algorithm>

#include "qz/system/qzb/qzblength_impl.h"
#include "qz/system/qzb/qzbtags_impl.h"

namespace QZSystem {

// What is claimed and isn't there: the rest is used up, as by a short read.
bool QZBWalk::cut() {
  at = end;
  return fail(QZBReturn::IncorrectSize);
}

// Anything but a short text. A tag is never the last thing of an item.
bool QZBWalk::otherTag(QZBEntry& entry) {
  entry.code = static_cast<unsigned char>(*at++);
  if (at == end) return fail(QZBReturn::ReadTagFailed);
  if (entry.code == 0) {
    unsigned long size;
    ReadLength(*this, QZBLargestLength, size);
    if (size == 0 || size >= QZBTagBufferSize) {
      SendTagCorrupt(size);
      return fail(QZBReturn::ReadTagFailed);
    }
    const unsigned long held = std::min(size, static_cast<unsigned long>(end - at));
    entry.name = std::string_view(at, held);
    at += held;
    if (held == 0 || entry.name[0] == '\0') return fail(QZBReturn::ReadTagFailed);
  } else {
    entry.name = EntryName(entry.code);
  }
  if (entry.name.empty() || at == end) return fail(QZBReturn::ReadTagFailed);
  return true;
}

bool QZBWalk::isHandledHalf(const QZBEntry& entry) { return StartsWith(entry.name, HandledPrefix); }

// Of arrays of bool and of what has no elements of its own a length of 0 means nothing but that; arrays of numbers were
// never written without elements by those who mean to read them again.
bool QZBWalk::counted(QZBEntry& entry) {
  if (entry.form.shape == QZBShape::Unknown) return bytes(entry, 0);
  if (entry.form.shape == QZBShape::Handled) return handled(entry, true);
  if (entry.form.flag == QZBFlag::Short) {
    if (at == end) return fail(QZBReturn::IncorrectSize);
    entry.swapped = QZBShortEndian(static_cast<unsigned int>(get()));
  } else if (entry.form.flag != QZBFlag::None) {
    entry.swapped = entry.form.flag == QZBFlag::Int ? swapInts : swapFloats;
  }
  unsigned long length;
  const bool isLength = ReadLength(*this, QZBLargestLength, length);
  if (entry.type != QZBType::BoolArray) {
    const bool needsElements = entry.form.shape == QZBShape::Array;
    const bool isWhole = entry.form.shape != QZBShape::Vector || length % entry.form.size == 0;
    if (!isLength || !isWhole || (needsElements && length == 0)) return fail(QZBReturn::IncorrectSize);
  }
  if (!bytes(entry, length)) return false;
  entry.body.remove_suffix(length % entry.form.size);
  return true;
}

bool QZBWalk::handled(QZBEntry& entry, bool hasSecondTag) {
  entry.form = QZGetQZBForm(QZBType::Handled);
  if (hasSecondTag) {
    QZBEntry second;
    if (at == end) return fail(QZBReturn::ReadTagFailed);
    if (!tag(second)) return false;
    if (get() != QZBType::CharVector) return fail(QZBReturn::ReadTagFailed);
  }
  unsigned long length;
  ReadLength(*this, QZBLargestLength, length);
  if (at == end) return fail(QZBReturn::IncorrectSize);
  return bytes(entry, length);
}

}  // namespace QZSystem
