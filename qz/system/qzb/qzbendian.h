#pragma once

#include <cstring>
#include <type_traits>

#include "qz/platform/halffloat.h"
#include "qz/system/frame/names.h"

/// Byte order in QZB streams. A stream states the order of the machine that wrote it in flag bytes, one for each class
/// of numbers, and a reader swaps where a flag isn't its own.
///
///     out.write(&flag, 1);                       // flag = QZGetHostEndian<float>()
///     if (QZGetFileEndian<float>(flagRead)) ...  // the bytes of each element are to be reversed
///
/// The toolkit is built for little-endian machines, so what it writes are constants. Safe from any thread.
namespace QZSystem {

/// The flag bytes that this machine writes: for `int` and `unsigned int`; for `float` and `double`; for `short`,
/// `unsigned short` and `QZHalfFloat`; for `long`.
constexpr unsigned char QZBIntEndian() { return 0x01; }
constexpr unsigned char QZBFloatEndian() { return 0x3F; }
constexpr unsigned char QZBShortEndian() { return 0x01; }
constexpr unsigned char QZBFPosTEndian() { return 0x01; }

/// Whether data behind a flag byte of a file must be swapped on this machine: so it is for every flag but its own. Only
/// the low byte of the argument counts.
constexpr bool QZBIntEndian(unsigned int flag) { return (flag & 0xFF) != QZBIntEndian(); }
constexpr bool QZBFloatEndian(unsigned int flag) { return (flag & 0xFF) != QZBFloatEndian(); }
constexpr bool QZBShortEndian(unsigned int flag) { return (flag & 0xFF) != QZBShortEndian(); }
constexpr bool QZBFPosTEndian(unsigned int flag) { return (flag & 0xFF) != QZBFPosTEndian(); }

/// Whether this machine keeps the low byte first: always true.
constexpr bool QZIsIntLittleEndian() { return true; }
constexpr bool QZIsFloatLittleEndian() { return true; }
constexpr bool QZIsShortLittleEndian() { return true; }
constexpr bool QZIsFPosTLittleEndian() { return true; }

/// Whether data of a machine that is little-endian, or isn't, must be swapped on this one.
constexpr bool QZIsIntByteSwapRequired(bool otherIsLittle) { return otherIsLittle != QZIsIntLittleEndian(); }
constexpr bool QZIsFloatByteSwapRequired(bool otherIsLittle) { return otherIsLittle != QZIsFloatLittleEndian(); }
constexpr bool QZIsShortByteSwapRequired(bool otherIsLittle) { return otherIsLittle != QZIsShortLittleEndian(); }
constexpr bool QZIsFPosTByteSwapRequired(bool otherIsLittle) { return otherIsLittle != QZIsFPosTLittleEndian(); }

/// The class of numbers that an element type belongs to: what its flag byte is called.
enum class QZBEndianClass { None, Int, Float, Short, FPosT };

/// The class of `int`, `unsigned int`, `float`, `double`, `short`, `unsigned short`, `long` or `QZHalfFloat`; of any
/// other type `None`, and then the forms below don't compile.
template <class T>
inline constexpr QZBEndianClass QZBEndianClassOf =
    std::is_same_v<T, int> || std::is_same_v<T, unsigned int> ? QZBEndianClass::Int
    : std::is_same_v<T, float> || std::is_same_v<T, double>   ? QZBEndianClass::Float
    : std::is_same_v<T, short> || std::is_same_v<T, unsigned short> || std::is_same_v<T, QZHalfFloat>
        ? QZBEndianClass::Short
    : std::is_same_v<T, long> ? QZBEndianClass::FPosT
                              : QZBEndianClass::None;

/// The flag byte of the class of `T`.
template <class T>
constexpr unsigned char QZGetHostEndian() {
  static_assert(QZBEndianClassOf<T> != QZBEndianClass::None, "no flag byte speaks of this type");
  return QZBEndianClassOf<T> == QZBEndianClass::Float ? QZBFloatEndian() : QZBIntEndian();
}

/// Whether elements of type `T` behind a flag byte of a file must be swapped.
template <class T>
constexpr bool QZGetFileEndian(unsigned int flag) {
  return (flag & 0xFF) != QZGetHostEndian<T>();
}

/// Whether this machine keeps the low byte of a `T` first: always true.
template <class T>
constexpr bool QZIsLittleEndian() {
  static_assert(QZBEndianClassOf<T> != QZBEndianClass::None, "no flag byte speaks of this type");
  return true;
}

/// Whether elements of type `T` of a machine that is little-endian, or isn't, must be swapped.
template <class T>
constexpr bool QZIsByteSwapRequired(bool otherIsLittle) {
  return otherIsLittle != QZIsLittleEndian<T>();
}

/// Reverses the bytes of an element.
template <class T>
T QZBSwapped(T value) {
  unsigned char there[sizeof value];
  unsigned char back[sizeof value];
  std::memcpy(there, &value, sizeof value);
  for (unsigned long i = 0; i < sizeof value; ++i) back[i] = there[sizeof value - 1 - i];
  std::memcpy(static_cast<void*>(&value), back, sizeof value);
  return value;
}

}  // namespace QZSystem
