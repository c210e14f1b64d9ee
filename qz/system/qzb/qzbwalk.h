#pragma once

#include <cstring>
#include <string_view>

#include "qz/system/qzb/qzb.h"
#include "qz/system/qzb/qzbform.h"

namespace QZSystem {

/// One entry of an object item, as views of the bytes that it stands in.
struct QZBEntry {
  /// The name as it stands in the stream; of a code its name, or "UnknownQZB60" for one that has none. In an object a
  /// name counts up to its first zero byte.
  std::string_view name;
  /// The code byte, 0 where the name stands as text.
  unsigned char code = 0;
  unsigned char type = 0;
  /// What the type says; `Handled` also for the second half of a handled value that stands alone.
  QZBForm form;
  /// Whether the elements are in another byte order than this machine's.
  bool swapped = false;
  /// The elements, the text, or the payload; of an array only the whole elements.
  std::string_view body;

  /// The number of elements of an array or vector.
  [[nodiscard]] unsigned long Count() const { return form.size == 0 ? 0 : body.size() / form.size; }

  /// Element `index` in this machine's order. REQUIRES: `T` has the size of an element; index < Count().
  template <class T>
  [[nodiscard]] T Get(unsigned long index = 0) const;

  /// All elements into `to`, which has room for Count() of them, in this machine's order. One copy, where nothing is to
  /// be swapped.
  template <class T>
  void CopyTo(T* to) const;
};

/// Walks the values of an object item where its bytes stand, without an object, an allocation or a copy.
///
///     QZBWalk walk(bytes.data(), bytes.size());  // from the int flag on
///     QZBEntry entry;
///     while (walk.Next(entry))
///       if (entry.name == "energy" && entry.type == QZBType::Double) total += entry.Get<double>();
///     if (walk.Status() != QZBReturn::Success) return false;
///
/// The bytes must outlive the walk and its entries. Lengths that can't be read send the messages of QZBReadDataLength.
/// One thread at a time.
class QZBWalk {
 public:
  /// Stands at the first entry of an item of `count` bytes, flags included.
  QZBWalk(const char* bytes, unsigned long count) : start(bytes), at(bytes), end(bytes + count) {
    if (count < 2) {
      status = QZBReturn::IncorrectSize;
      return;
    }
    swapInts = QZBIntEndian(static_cast<unsigned int>(get()));
    swapFloats = QZBFloatEndian(static_cast<unsigned int>(get()));
  }

  /// Takes the next entry. False at the end and at the first damage, as Status tells.
  bool Next(QZBEntry& entry) {
    if (at == end || status != QZBReturn::Success) return false;
    entryStart = at;
    if (!tag(entry)) return false;
    entry.type = static_cast<unsigned char>(*at++);
    entry.form = QZGetQZBForm(entry.type);
    entry.swapped = false;
    if (entry.name[0] == '!' && isHandledHalf(entry)) return handled(entry, false);
    if (entry.form.shape == QZBShape::Scalar) {
      entry.swapped = entry.form.flag == QZBFlag::Int ? swapInts : entry.form.flag == QZBFlag::Float && swapFloats;
      return bytes(entry, entry.form.size);
    }
    return counted(entry);
  }

  /// The return code: 0 at the end and as long as nothing was damaged.
  [[nodiscard]] unsigned int Status() const { return status; }

  /// The positions, from the start of the item, of the entry that Next took last or failed at, and of the byte behind
  /// what has been read.
  [[nodiscard]] unsigned long EntryOffset() const { return static_cast<unsigned long>(entryStart - start); }
  [[nodiscard]] unsigned long Offset() const { return static_cast<unsigned long>(at - start); }

 private:
  template <class Source>
  friend bool ReadLength(Source& in, unsigned long largest, unsigned long& length);

  int get() { return at == end ? -1 : static_cast<unsigned char>(*at++); }
  bool fail(unsigned int code) {
    status = code;
    return false;
  }

  // A name as text of less than 128 bytes is the usual case.
  bool tag(QZBEntry& entry) {
    const unsigned long left = static_cast<unsigned long>(end - at);
    const unsigned long size = left > 2 ? static_cast<unsigned char>(at[1]) & 0x7FU : 0;
    if (*at != 0 || size == 0 || !(at[1] & 0x80) || size >= left - 2 || at[2] == 0) return otherTag(entry);
    entry.code = 0;
    entry.name = std::string_view(at + 2, size);
    at += 2 + size;
    return true;
  }

  bool bytes(QZBEntry& entry, unsigned long count) {
    if (count > static_cast<unsigned long>(end - at)) return cut();
    entry.body = std::string_view(at, count);
    at += count;
    return true;
  }

  bool cut();
  bool otherTag(QZBEntry& entry);
  static bool isHandledHalf(const QZBEntry& entry);
  bool counted(QZBEntry& entry);
  bool handled(QZBEntry& entry, bool hasSecondTag);

  const char* start;
  const char* at;
  const char* end;
  const char* entryStart = start;
  unsigned int status = QZBReturn::Success;
  bool swapInts = false;
  bool swapFloats = false;
};

template <class T>
T QZBEntry::Get(unsigned long index) const {
  T value;
  std::memcpy(static_cast<void*>(&value), body.data() + index * sizeof value, sizeof value);
  return swapped ? QZBSwapped(value) : value;
}

template <class T>
void QZBEntry::CopyTo(T* to) const {
  const unsigned long count = Count();
  if (count == 0) return;
  std::memcpy(static_cast<void*>(to), body.data(), count * sizeof(T));
  for (unsigned long i = 0; swapped && i < count; ++i) to[i] = QZBSwapped(to[i]);
}

}  // namespace QZSystem
