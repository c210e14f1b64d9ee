#pragma once

#include <array>

#include "qz/system/frame/names.h"

/// The forms of values in an object item: what the type byte of an entry says about its body.
///
///     const QZBForm form = QZGetQZBForm(type);
///     if (form.shape == QZBShape::Array) qzout << length / form.size << " elements";
///
/// Safe from any thread.
namespace QZSystem {

/// The type bytes.
struct QZBType {
  static constexpr unsigned char Int = 0x01;
  static constexpr unsigned char Bool = 0x02;
  static constexpr unsigned char BoolArray = 0x03;
  static constexpr unsigned char Float = 0x04;
  static constexpr unsigned char FloatArray = 0x05;
  static constexpr unsigned char CharArray = 0x06;
  static constexpr unsigned char UCharArray = 0x07;
  static constexpr unsigned char Double = 0x08;
  static constexpr unsigned char String = 0x10;
  static constexpr unsigned char DoubleArray = 0x11;
  static constexpr unsigned char HalfFloatArray = 0x12;
  static constexpr unsigned char IntArray = 0x20;
  static constexpr unsigned char UIntArray = 0x40;
  static constexpr unsigned char BoolVector = 0x50;
  static constexpr unsigned char CharVector = 0x51;
  static constexpr unsigned char UCharVector = 0x52;
  static constexpr unsigned char ShortVector = 0x53;
  static constexpr unsigned char UShortVector = 0x54;
  static constexpr unsigned char IntVector = 0x55;
  static constexpr unsigned char UIntVector = 0x56;
  static constexpr unsigned char FloatVector = 0x57;
  static constexpr unsigned char DoubleVector = 0x58;
  static constexpr unsigned char Handled = 0x60;
  static constexpr unsigned char HalfFloatVector = 0x61;
};

/// How a body stands in the stream.
enum class QZBShape : unsigned char {
  Unknown,  ///< no body: the format doesn't know the type byte
  Scalar,   ///< one element
  String,   ///< a length and text
  Array,    ///< a length in bytes and the elements; what stands behind the last whole one is passed over
  Vector,   ///< the same, but the length must be a multiple of the element size
  Handled   ///< a second tag, 0x51, a length, and a payload for a registered function
};

/// The flag byte that tells the byte order of the elements.
enum class QZBFlag : unsigned char {
  None,   ///< elements of one byte
  Int,    ///< the first of the item
  Float,  ///< the second of the item
  Short   ///< one of the entry's own, in front of the length
};

struct QZBForm {
  QZBShape shape = QZBShape::Unknown;
  unsigned char size = 0;  ///< bytes of an element
  QZBFlag flag = QZBFlag::None;
};

/// The name of the value type behind a type byte, "array of double" for instance; "" for one that the format doesn't
/// know. Good to the end of the process.
[[nodiscard]] const char* QZGetQZBTypeName(unsigned char type);

/// What the type bytes stand for.
inline constexpr std::array<QZBForm, 256> QZBForms = [] {
  std::array<QZBForm, 256> forms{};
  forms[QZBType::Int] = {QZBShape::Scalar, 4, QZBFlag::Int};
  forms[QZBType::Bool] = {QZBShape::Scalar, 1, QZBFlag::None};
  forms[QZBType::BoolArray] = {QZBShape::Array, 1, QZBFlag::None};
  forms[QZBType::Float] = {QZBShape::Scalar, 4, QZBFlag::Float};
  forms[QZBType::FloatArray] = {QZBShape::Array, 4, QZBFlag::Float};
  forms[QZBType::CharArray] = {QZBShape::Array, 1, QZBFlag::None};
  forms[QZBType::UCharArray] = {QZBShape::Array, 1, QZBFlag::None};
  forms[QZBType::Double] = {QZBShape::Scalar, 8, QZBFlag::Float};
  forms[QZBType::String] = {QZBShape::String, 1, QZBFlag::None};
  forms[QZBType::DoubleArray] = {QZBShape::Array, 8, QZBFlag::Float};
  forms[QZBType::HalfFloatArray] = {QZBShape::Array, 2, QZBFlag::Short};
  forms[QZBType::IntArray] = {QZBShape::Array, 4, QZBFlag::Int};
  forms[QZBType::UIntArray] = {QZBShape::Array, 4, QZBFlag::Int};
  forms[QZBType::BoolVector] = {QZBShape::Vector, 1, QZBFlag::None};
  forms[QZBType::CharVector] = {QZBShape::Vector, 1, QZBFlag::None};
  forms[QZBType::UCharVector] = {QZBShape::Vector, 1, QZBFlag::None};
  forms[QZBType::ShortVector] = {QZBShape::Vector, 2, QZBFlag::Short};
  forms[QZBType::UShortVector] = {QZBShape::Vector, 2, QZBFlag::Short};
  forms[QZBType::IntVector] = {QZBShape::Vector, 4, QZBFlag::Int};
  forms[QZBType::UIntVector] = {QZBShape::Vector, 4, QZBFlag::Int};
  forms[QZBType::FloatVector] = {QZBShape::Vector, 4, QZBFlag::Float};
  forms[QZBType::DoubleVector] = {QZBShape::Vector, 8, QZBFlag::Float};
  forms[QZBType::Handled] = {QZBShape::Handled, 1, QZBFlag::None};
  forms[QZBType::HalfFloatVector] = {QZBShape::Vector, 2, QZBFlag::Short};
  return forms;
}();

/// What a type byte stands for.
[[nodiscard]] constexpr QZBForm QZGetQZBForm(unsigned char type) { return QZBForms[type]; }

}  // namespace QZSystem
