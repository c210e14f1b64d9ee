#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "qz/dataflow/bufferforms_impl.h"

namespace QZDataFlow {

/// Writes the primitives of every binary form of a record: integers in as few bytes as they need, floats, bools,
/// strings, blobs, a "no value" marker for each of them, and wrappers that name and measure a section.
///
///     QZWriteBuffer section("fields");
///     section.WriteString("count");
///     section.WriteInt(7);
///     std::vector<unsigned char> bytes;
///     section.CopyWrapped(bytes, false);
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZWriteBuffer {
 public:
  /// The most bytes that an integer takes: a head byte and the value.
  static constexpr std::size_t kMaxIntSize = 9;

  QZWriteBuffer() = default;
  /// A buffer whose content CopyWrapped puts under `name`. Readers take names of at most 16 bytes.
  explicit QZWriteBuffer(const std::string& wrapperName) : name(wrapperName) {}

  /// Appends an integer: 0 to 127 as one byte, any other as the byte 0x80 + k and k bytes of two's complement, least
  /// significant first. Narrower forms widen; an unsigned long is taken as a long.
  void WriteInt(long value);
  void WriteInt(int value) { WriteInt(static_cast<long>(value)); }
  void WriteInt(unsigned int value) { WriteInt(static_cast<long>(value)); }
  void WriteInt(unsigned long value) { WriteInt(static_cast<long>(value)); }
  /// Appends the 8 bytes of the IEEE double. A NaN with the bits of "no float" reads back as no value.
  void WriteFloat(double value);
  /// Appends one byte, 1 for true and 0 for false.
  void WriteBool(bool value) { bytes.push_back(value ? 1 : 0); }
  /// Appends the length as an integer, then the bytes. The pointer form REQUIRES bytes outside this buffer.
  void WriteString(const std::string& value) { WriteBlob(AsBytes(value.data()), value.size()); }
  void WriteBlob(const std::vector<unsigned char>& value);
  void WriteBlob(const unsigned char* data, std::size_t size);

  /// Append the marker of a value that isn't there: the byte 0x80, for a float a NaN of its own.
  void WriteNoneInt() { bytes.push_back(BufferImpl::kNone); }
  void WriteNoneString() { bytes.push_back(BufferImpl::kNone); }
  void WriteNoneBool() { bytes.push_back(BufferImpl::kNone); }
  void WriteNoneBlob() { bytes.push_back(BufferImpl::kNone); }
  void WriteNoneFloat();

  /// Append the count as an integer, then each element in its own form.
  void WriteIntVec(const std::vector<long>& values) { WriteInts(values); }
  void WriteIntVec(const std::vector<int>& values) { WriteInts(values); }
  void WriteIntVec(const std::vector<unsigned int>& values) { WriteInts(values); }
  void WriteFloatVec(const std::vector<double>& values) { WriteFloats(values); }
  void WriteFloatVec(const std::vector<float>& values) { WriteFloats(values); }
  void WriteBoolVec(const std::vector<bool>& values);
  void WriteStringVec(const std::vector<std::string>& values);

  /// WriteInt, WriteFloat or WriteString, chosen by the type: `long`, `double` or `std::string`.
  template <class T>
  void Write(const T& value) = delete;

  /// Append raw bytes, with no length. The pointer form REQUIRES bytes outside this buffer.
  void Append(const std::vector<unsigned char>& raw);
  void Append(const QZWriteBuffer& other) { Append(other.bytes); }
  void Append(const unsigned char* data, std::size_t size);

  /// The bytes written so far; valid until the next change.
  const std::vector<unsigned char>& Get() const { return bytes; }
  /// Empties the bytes. The name stays.
  void Clear() { bytes.clear(); }
  /// The size of the bytes, and of the name plus 1 when there is a name.
  std::size_t WrappedSize() const { return bytes.size() + (name.empty() ? 0 : name.size() + 1); }
  /// Appends to `dst` the name as a string, the length of the content as an integer, and the content. With no content
  /// it appends nothing unless `force` is set.
  void CopyWrapped(QZWriteBuffer& dst, bool force = false) const;
  void CopyWrapped(std::vector<unsigned char>& dst, bool force = false) const;

  /// The bytes that WriteInt takes for `value`, 1 to kMaxIntSize.
  static std::size_t IntSize(long value);
  /// Writes the form of WriteInt to `out`, which REQUIRES room for kMaxIntSize bytes, and returns its size.
  static std::size_t EncodeInt(long value, unsigned char* out);
  /// The bytes of two's complement that hold `value` behind a head byte, 1 to 8: one more than an eighth of the
  /// significant bits of the absolute value.
  static std::size_t PayloadSize(long value);

 private:
  static const unsigned char* AsBytes(const char* text) { return reinterpret_cast<const unsigned char*>(text); }
  template <class T>
  void WriteInts(const std::vector<T>& values);
  template <class T>
  void WriteFloats(const std::vector<T>& values);

  std::vector<unsigned char> bytes;
  std::string name;
};

inline std::size_t QZWriteBuffer::PayloadSize(long value) {
  const std::uint64_t bits = static_cast<std::uint64_t>(value);
  const std::uint64_t magnitude = value < 0 ? 0 - bits : bits;
  if (magnitude == 0) return 1;
  const std::size_t significant = 64 - static_cast<std::size_t>(__builtin_clzl(magnitude));
  // Only -2^63 has 64 significant bits; it fits the 8 bytes all the same.
  return significant == 64 ? 8 : (significant >> 3) + 1;
}

inline std::size_t QZWriteBuffer::IntSize(long value) {
  return value >= 0 && value < BufferImpl::kNone ? 1 : 1 + PayloadSize(value);
}

inline std::size_t QZWriteBuffer::EncodeInt(long value, unsigned char* out) {
  if (value >= 0 && value < BufferImpl::kNone) {
    out[0] = static_cast<unsigned char>(value);
    return 1;
  }
  const std::size_t size = PayloadSize(value);
  out[0] = static_cast<unsigned char>(BufferImpl::kNone + size);
  std::memcpy(out + 1, &value, sizeof value);
  return 1 + size;
}

inline void QZWriteBuffer::WriteInt(long value) {
  if (value >= 0 && value < BufferImpl::kNone) {
    bytes.push_back(static_cast<unsigned char>(value));
    return;
  }
  unsigned char form[kMaxIntSize];
  Append(form, EncodeInt(value, form));
}

inline void QZWriteBuffer::WriteFloat(double value) {
  const std::size_t at = bytes.size();
  bytes.resize(at + sizeof value);
  std::memcpy(bytes.data() + at, &value, sizeof value);
}

inline void QZWriteBuffer::Append(const unsigned char* data, std::size_t size) {
  bytes.insert(bytes.end(), data, data + size);
}

inline void QZWriteBuffer::WriteBlob(const unsigned char* data, std::size_t size) {
  WriteInt(size);
  Append(data, size);
}

template <>
inline void QZWriteBuffer::Write<long>(const long& value) {
  WriteInt(value);
}
template <>
inline void QZWriteBuffer::Write<double>(const double& value) {
  WriteFloat(value);
}
template <>
inline void QZWriteBuffer::Write<std::string>(const std::string& value) {
  WriteString(value);
}

}  // namespace QZDataFlow
