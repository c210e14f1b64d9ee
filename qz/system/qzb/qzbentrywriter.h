#pragma once

#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "qz/system/qzb/qzb.h"
#include "qz/system/qzb/qzbform.h"

namespace QZSystem {

/// The type byte of a vector of `T`, 0 if the format has none.
template <class T>
inline constexpr unsigned char QZBVectorType = 0;
template <>
inline constexpr unsigned char QZBVectorType<bool> = QZBType::BoolVector;
template <>
inline constexpr unsigned char QZBVectorType<char> = QZBType::CharVector;
template <>
inline constexpr unsigned char QZBVectorType<unsigned char> = QZBType::UCharVector;
template <>
inline constexpr unsigned char QZBVectorType<short> = QZBType::ShortVector;
template <>
inline constexpr unsigned char QZBVectorType<unsigned short> = QZBType::UShortVector;
template <>
inline constexpr unsigned char QZBVectorType<int> = QZBType::IntVector;
template <>
inline constexpr unsigned char QZBVectorType<unsigned int> = QZBType::UIntVector;
template <>
inline constexpr unsigned char QZBVectorType<float> = QZBType::FloatVector;
template <>
inline constexpr unsigned char QZBVectorType<double> = QZBType::DoubleVector;
template <>
inline constexpr unsigned char QZBVectorType<QZHalfFloat> = QZBType::HalfFloatVector;

/// The type byte of an array of `T`, 0 if the format has none.
template <class T>
inline constexpr unsigned char QZBArrayType = 0;
template <>
inline constexpr unsigned char QZBArrayType<bool> = QZBType::BoolArray;
template <>
inline constexpr unsigned char QZBArrayType<char> = QZBType::CharArray;
template <>
inline constexpr unsigned char QZBArrayType<unsigned char> = QZBType::UCharArray;
template <>
inline constexpr unsigned char QZBArrayType<int> = QZBType::IntArray;
template <>
inline constexpr unsigned char QZBArrayType<unsigned int> = QZBType::UIntArray;
template <>
inline constexpr unsigned char QZBArrayType<float> = QZBType::FloatArray;
template <>
inline constexpr unsigned char QZBArrayType<double> = QZBType::DoubleArray;
template <>
inline constexpr unsigned char QZBArrayType<QZHalfFloat> = QZBType::HalfFloatArray;

/// Writes an object item value by value, without an object.
///
///     QZBEntryWriter item;
///     item.Add("charge", -1);
///     item.Add("origin", "crystal");
///     item.AddArray("masses", masses.data(), masses.size());
///     item.Write(out, "QZBasePOD");
///
/// Small values are collected, large ones are written from where they stand: elements, texts and payloads that are
/// added must be there until Write. An `Add` returns false, and adds nothing, for a name that can't be written: one
/// that has not 1 to 1023 bytes (1008 for a handled value), and "UnknownQZB" followed by 128 to 255; and for a value of
/// 4 GiB or more. Under a name that begins with "!HandledQZBTag:" a reader takes any value for a handled one: of a
/// vector of `char` its elements are the payload, all else ends the reading. One thread at a time.
class QZBEntryWriter {
 public:
  QZBEntryWriter() = default;
  QZBEntryWriter(const QZBEntryWriter&) = delete;
  QZBEntryWriter& operator=(const QZBEntryWriter&) = delete;

  /// Single values. A `bool` that is false has no entry: to a reader it is false as a missing value is.
  bool Add(std::string_view name, int value) { return AddScalar(name, QZBType::Int, value); }
  bool Add(std::string_view name, unsigned int value) { return AddScalar(name, QZBType::Int, value); }
  bool Add(std::string_view name, float value) { return AddScalar(name, QZBType::Float, value); }
  bool Add(std::string_view name, double value) { return AddScalar(name, QZBType::Double, value); }
  bool Add(std::string_view name, bool value) { return !value || AddScalar(name, QZBType::Bool, value); }
  bool Add(std::string_view name, std::string_view text) {
    return AddBytes(name, QZBType::String, text.data(), text.size());
  }
  bool Add(std::string_view name, const std::string& text) { return Add(name, std::string_view(text)); }
  bool Add(std::string_view name, const char* text) { return Add(name, std::string_view(text)); }

  /// Vectors. They read back as such also without elements.
  bool Add(std::string_view name, const std::vector<bool>& elements);
  template <class T>
  bool Add(std::string_view name, const std::vector<T>& elements) {
    static_assert(QZBVectorType<T> != 0, "the format has no vector of this type");
    return AddBytes(name, QZBVectorType<T>, elements.data(), elements.size() * sizeof(T));
  }

  /// Arrays. One without elements, other than of `bool`, stops every reader with code 4.
  template <class T>
  bool AddArray(std::string_view name, const T* elements, unsigned long count) {
    static_assert(QZBArrayType<T> != 0, "the format has no array of this type");
    return AddBytes(name, QZBArrayType<T>, elements, count * sizeof(T));
  }

  /// A value in the handled form: the payload is what a base writer wrote or a reader kept.
  bool AddHandled(std::string_view name, std::string_view payload);
  /// The same, with the memory of the payload.
  bool AddHandled(std::string_view name, std::unique_ptr<char[]> payload, unsigned long size);

  /// The bytes of the item behind its length: two flags and the entries.
  [[nodiscard]] unsigned long Size() const { return (start ? Collected() : flagBytes) + referred; }
  /// Whether nothing was added.
  [[nodiscard]] bool IsEmpty() const { return Size() == flagBytes; }

  /// Writes the item: tag, length and body, or the body alone for an empty tag. Without values it writes nothing and
  /// returns true. False, with nothing written, if the tag has more than 1023 bytes or the item 4 GiB or more. A
  /// failure of the stream shows in the stream.
  bool Write(qzostream& out, const std::string& tag) const;

  /// Forgets all values; the memory stays.
  void Clear();

 private:
  static constexpr unsigned long flagBytes = 2;

  friend class ObjectItem;

  // Collects in memory of the caller first, which outlives the writer. REQUIRES: size >= flagBytes.
  QZBEntryWriter(char* memory, unsigned long size) : start(memory), limit(memory + size) { Begin(); }

  // Bytes that go out between the collected ones, in front of the one at `position`.
  struct Piece {
    unsigned long position;
    const char* bytes;
    unsigned long size;
  };

  // The end of what is collected, with `size` free bytes behind it.
  char* Room(unsigned long size) {
    if (size > static_cast<unsigned long>(limit - at)) Grow(size);
    return at;
  }
  void Grow(unsigned long size);
  void Begin() {
    start[0] = static_cast<char>(QZBIntEndian());
    start[1] = static_cast<char>(QZBFloatEndian());
    at = start + flagBytes;
  }
  [[nodiscard]] unsigned long Collected() const { return static_cast<unsigned long>(at - start); }
  char* PutHead(std::string_view name, unsigned char type, unsigned long bodyRoom);
  char* PutLongHead(std::string_view name, unsigned char type, unsigned long bodyRoom);
  template <class T>
  bool AddScalar(std::string_view name, unsigned char type, T value) {
    char* const to = PutHead(name, type, sizeof value);
    if (!to) return false;
    std::memcpy(to, &value, sizeof value);
    at = to + sizeof value;
    return true;
  }
  bool AddBytes(std::string_view name, unsigned char type, const void* bytes, unsigned long size);
  char* PutHandledHead(std::string_view name, unsigned long size, unsigned long bodyRoom);
  void Refer(const char* bytes, unsigned long size);

  char* start = nullptr;  // two flags, and then the entries
  char* at = nullptr;     // the end of the collected ones
  char* limit = nullptr;
  std::unique_ptr<char[]> block;
  unsigned long referred = 0;
  std::vector<Piece> pieces;
  std::vector<std::unique_ptr<char[]>> kept;
};

}  // namespace QZSystem
