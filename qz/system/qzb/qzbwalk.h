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
      Stop(QZBReturn::IncorrectSize);
      return;
    }
    swapsInts = QZBIntEndian(static_cast<unsigned int>(get()));
    swapsFloats = QZBFloatEndian(static_cast<unsigned int>(get()));
  }

  /// Takes the next entry. False at the end and at the first damage, as Status tells.
  [[gnu::always_inline]] bool Next(QZBEntry& entry) {
    if (at == end) return false;
    entryStart = at;
    if (TakeShort(entry)) return true;
    // By way of copies, so that a loop can keep the walk and the entry itself in registers.
    QZBWalk walk(*this);
    QZBEntry any;
    const bool taken = walk.TakeAny(any);
    *this = walk;
    entry = any;
    return taken;
  }

  /// The return code: 0 at the end and as long as nothing was damaged.
  [[nodiscard]] unsigned int Status() const { return status; }

  /// The positions, from the start of the item, of the entry that Next took last or failed at, and of the byte behind
  /// what has been read.
  [[nodiscard]] unsigned long EntryOffset() const { return static_cast<unsigned long>(entryStart - start); }
  [[nodiscard]] unsigned long Offset() const {
    return static_cast<unsigned long>((status == QZBReturn::Success ? at : stopped) - start);
  }

 private:
  template <class Source>
  friend bool ReadLength(Source& in, unsigned long largest, unsigned long& length);

  int get() { return at == end ? -1 : static_cast<unsigned char>(*at++); }

  // The usual entry: the name is text, the value a single one, a text or bytes, and each has less than 128 bytes.
  // False, with nothing consumed, for any other one. For the types that come most often all that the form tells is
  // constant: the place of the next entry then waits for no table.
  [[gnu::always_inline]] bool TakeShort(QZBEntry& entry) {
    const unsigned long left = static_cast<unsigned long>(end - at);
    if (left < 5 || at[0] != 0 || static_cast<signed char>(at[1]) >= 0) return false;
    const unsigned long nameSize = static_cast<unsigned char>(at[1]) & 0x7FU;
    if (nameSize == 0 || nameSize + 4 > left || at[2] == 0 || at[2] == '!') return false;
    const unsigned char type = static_cast<unsigned char>(at[2 + nameSize]);
    if (type == QZBType::Int) return TakeShort(entry, nameSize, QZBType::Int);
    if (type == QZBType::Double) return TakeShort(entry, nameSize, QZBType::Double);
    if (type == QZBType::String) return TakeShort(entry, nameSize, QZBType::String);
    return TakeShort(entry, nameSize, type);
  }
  [[gnu::always_inline]] bool TakeShort(QZBEntry& entry, unsigned long nameSize, unsigned char type) {
    const char* body = at + 2 + nameSize + 1;
    const QZBForm form = QZGetQZBForm(type);
    unsigned long size = form.size;
    if (form.shape != QZBShape::Scalar) {
      const bool isOfBytes = form.size == 1 && form.shape != QZBShape::Handled;
      if (!isOfBytes || static_cast<signed char>(*body) >= 0) return false;
      size = static_cast<unsigned char>(*body++) & 0x7FU;
      if (size == 0 && form.shape == QZBShape::Array) return false;
    }
    if (size > static_cast<unsigned long>(end - body)) return false;
    entry.name = std::string_view(at + 2, nameSize);
    entry.code = 0;
    entry.type = type;
    entry.form = form;
    entry.swapped = IsSwapped(form.flag);
    entry.body = std::string_view(body, size);
    at = body + size;
    return true;
  }
  // By the flag of the item that governs.
  [[nodiscard]] bool IsSwapped(QZBFlag flag) const {
    return (flag == QZBFlag::Int && swapsInts) || (flag == QZBFlag::Float && swapsFloats);
  }

  bool TakeAny(QZBEntry& entry);
  bool Stop(unsigned int code);
  bool Cut();
  bool Tag(QZBEntry& entry);
  bool Counted(QZBEntry& entry);
  bool Handled(QZBEntry& entry, bool hasSecondTag);
  bool Bytes(QZBEntry& entry, unsigned long count);

  const char* start;
  const char* at;
  const char* end;
  const char* entryStart = start;
  const char* stopped = start;
  unsigned int status = QZBReturn::Success;
  bool swapsInts = false;
  bool swapsFloats = false;
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
