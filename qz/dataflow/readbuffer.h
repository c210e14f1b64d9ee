#pragma once

#include <cassert>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "qz/dataflow/bufferforms_impl.h"

namespace QZDataFlow {

/// A run of bytes that somebody else owns: it lives as long as the bytes it points into stay where they are.
struct QZByteSlice {
  const unsigned char* data = nullptr;
  std::size_t size = 0;
};

/// Reads what QZWriteBuffer wrote, over bytes that it doesn't own and never reads past.
///
///     QZReadBuffer in(bytes);
///     while (in.IsValid()) {
///       bool none = false;
///       const long value = in.ReadInt(none);
///       if (!none) sum += value;
///     }
///
/// Each `none` is false after a value and true after a "no value" marker; a value that is cut short counts as none and
/// moves to the end. One thread at a time.
class QZReadBuffer {
 public:
  QZReadBuffer() = default;
  /// Reads `bytes`, which REQUIRES that they outlive the buffer and stay as they are.
  explicit QZReadBuffer(const std::vector<unsigned char>& bytes) : QZReadBuffer(bytes.data(), bytes.size()) {}
  QZReadBuffer(const unsigned char* data, std::size_t size)
      : cursor(size == 0 ? nullptr : data), end(size == 0 ? nullptr : data + size) {}

  /// Whether a byte is left to read.
  bool IsValid() const { return cursor != nullptr && cursor < end; }
  /// The place of the next byte, null in a buffer over nothing.
  const unsigned char* Position() const { return cursor; }
  std::size_t Remaining() const { return static_cast<std::size_t>(end - cursor); }

  /// The next integer. A head byte above 0x88, which is never written, is none like 0x80, and nothing behind it is
  /// consumed.
  long ReadInt(bool& none);
  long ReadInt();
  /// An integer that measures what follows: 0 for none, and all ones, with `none` false, for one below 0, above 2^43
  /// or above the bytes that remain.
  unsigned long ReadLength(bool& none);
  unsigned long ReadLength();
  double ReadFloat(bool& none);
  double ReadFloat();
  /// True for any byte but 0 and the marker.
  bool ReadBool(bool& none);
  bool ReadBool();
  /// The next string; empty for none. A length above `max`, unless that is 0, is none too, with the cursor behind the
  /// length. Throws std::length_error when the length is the error value of ReadLength.
  std::string ReadString(bool& none, unsigned long max = 0) { return std::string(ReadText(none, max)); }
  std::string ReadString(unsigned long max = 0);
  /// The same bytes without a copy, living as long as those under the buffer.
  std::string_view ReadText(bool& none, unsigned long max = 0);
  /// The next blob; empty for none. Throws std::length_error as ReadString does.
  std::vector<unsigned char> ReadBlob(bool& none);
  std::vector<unsigned char> ReadBlob();
  /// The same bytes without a copy, living as long as those under the buffer. The second form doesn't throw: it gives
  /// false, with `slice` as it was and the cursor behind the length.
  QZByteSlice ReadSlice(bool& none);
  [[nodiscard]] bool ReadSlice(QZByteSlice& slice, bool& none);

  /// ReadInt, ReadFloat, ReadBool or ReadString, chosen by the type: `long`, `double`, `bool` or `std::string`.
  template <class T>
  T Read() = delete;
  /// The encoded form of the next `long`, `double` or `std::string` as it stands. One that is cut short gives the form
  /// of "no value". A string throws std::length_error as ReadString does.
  template <class T>
  std::vector<unsigned char> ReadRawBytes() = delete;
  /// The same bytes without a copy; for one that is cut short the slice is empty.
  template <class T>
  QZByteSlice ReadRawSlice() = delete;

  /// Takes the next wrapper: its name, and `content` over its content, which shares the bytes under this buffer. False,
  /// with `content` as it was, when there is none, when the name has more than 16 bytes, or when the content is longer
  /// than what remains.
  [[nodiscard]] bool Unwrap(std::string& name, QZReadBuffer& content);
  /// The same with a name that lives as long as the bytes under the buffer.
  [[nodiscard]] bool Unwrap(std::string_view& name, QZReadBuffer& content);
  /// The next wrapper whole, name and lengths included; empty for a "no value" marker. Throws std::length_error as
  /// ReadString does, also for the content.
  std::vector<unsigned char> ReadContainer();
  /// The same bytes without a copy.
  QZByteSlice ReadContainerSlice();

 private:
  static constexpr unsigned long kMaxLength = 0x80000000000;

  QZByteSlice Take(std::size_t size);
  void ToEnd() { cursor = end; }
  [[noreturn]] static void ThrowLengthError();

  const unsigned char* cursor = nullptr;
  const unsigned char* end = nullptr;
};

inline long QZReadBuffer::ReadInt(bool& none) {
  none = false;
  if (!IsValid()) {
    none = true;
    return 0;
  }
  const unsigned char head = *cursor++;
  if (head < BufferImpl::kNone) return head;
  const std::size_t size = head & 0x7Fu;
  if (size == 0 || size > sizeof(long)) {
    none = true;
    return 0;
  }
  if (size > Remaining()) {
    ToEnd();
    none = true;
    return 0;
  }
  long value = (cursor[size - 1] & BufferImpl::kNone) != 0 ? -1 : 0;
  std::memcpy(&value, cursor, size);
  cursor += size;
  return value;
}

inline long QZReadBuffer::ReadInt() {
  bool none;
  return ReadInt(none);
}

inline unsigned long QZReadBuffer::ReadLength(bool& none) {
  const unsigned long length = static_cast<unsigned long>(ReadInt(none));
  return length > kMaxLength || length > Remaining() ? ~0UL : length;
}

inline unsigned long QZReadBuffer::ReadLength() {
  bool none;
  return ReadLength(none);
}

inline double QZReadBuffer::ReadFloat(bool& none) {
  double value = 0.0;
  if (Remaining() < sizeof value) {
    ToEnd();
    none = true;
    return 0.0;
  }
  std::memcpy(&value, cursor, sizeof value);
  cursor += sizeof value;
  none = BufferImpl::BitsOf(value) == BufferImpl::kNoFloat;
  return none ? 0.0 : value;
}

inline double QZReadBuffer::ReadFloat() {
  bool none;
  return ReadFloat(none);
}

inline bool QZReadBuffer::ReadBool(bool& none) {
  none = !IsValid();
  if (none) return false;
  const unsigned char byte = *cursor++;
  none = byte == BufferImpl::kNone;
  return !none && byte != 0;
}

inline bool QZReadBuffer::ReadBool() {
  bool none;
  return ReadBool(none);
}

inline QZByteSlice QZReadBuffer::Take(std::size_t size) {
  assert(size <= Remaining());
  const QZByteSlice taken{cursor, size};
  cursor += size;
  return taken;
}

inline bool QZReadBuffer::ReadSlice(QZByteSlice& slice, bool& none) {
  const unsigned long length = ReadLength(none);
  if (length > Remaining()) return false;
  slice = Take(length);
  return true;
}

inline QZByteSlice QZReadBuffer::ReadSlice(bool& none) {
  QZByteSlice slice;
  if (!ReadSlice(slice, none)) ThrowLengthError();
  return slice;
}

inline std::string_view QZReadBuffer::ReadText(bool& none, unsigned long max) {
  const unsigned long length = ReadLength(none);
  if (max != 0 && length > max) {
    none = true;
    return {};
  }
  if (length > Remaining()) ThrowLengthError();
  const QZByteSlice text = Take(length);
  return {reinterpret_cast<const char*>(text.data), text.size};
}

inline std::string QZReadBuffer::ReadString(unsigned long max) {
  bool none;
  return ReadString(none, max);
}

inline std::vector<unsigned char> QZReadBuffer::ReadBlob(bool& none) {
  const QZByteSlice slice = ReadSlice(none);
  return std::vector<unsigned char>(slice.data, slice.data + slice.size);
}

inline std::vector<unsigned char> QZReadBuffer::ReadBlob() {
  bool none;
  return ReadBlob(none);
}

inline bool QZReadBuffer::Unwrap(std::string_view& name, QZReadBuffer& content) {
  constexpr unsigned long kMaxNameSize = 16;
  bool none;
  name = ReadText(none, kMaxNameSize);
  if (none) return false;
  const unsigned long length = ReadLength(none);
  if (none || length > Remaining()) return false;
  const QZByteSlice inside = Take(length);
  content = QZReadBuffer(inside.data, inside.size);
  return true;
}

template <>
inline long QZReadBuffer::Read<long>() {
  return ReadInt();
}
template <>
inline double QZReadBuffer::Read<double>() {
  return ReadFloat();
}
template <>
inline bool QZReadBuffer::Read<bool>() {
  return ReadBool();
}
template <>
inline std::string QZReadBuffer::Read<std::string>() {
  return ReadString();
}

template <>
QZByteSlice QZReadBuffer::ReadRawSlice<long>();
template <>
QZByteSlice QZReadBuffer::ReadRawSlice<double>();
template <>
QZByteSlice QZReadBuffer::ReadRawSlice<std::string>();
template <>
std::vector<unsigned char> QZReadBuffer::ReadRawBytes<long>();
template <>
std::vector<unsigned char> QZReadBuffer::ReadRawBytes<double>();
template <>
std::vector<unsigned char> QZReadBuffer::ReadRawBytes<std::string>();

}  // namespace QZDataFlow
