#include "qz/system/qzb/qzbform.h"

namespace QZSystem {

const char* QZGetQZBTypeName(unsigned char type) {
  switch (type) {
    case QZBType::Int:
      return "int";
    case QZBType::Bool:
      return "bool";
    case QZBType::BoolArray:
      return "array of bool";
    case QZBType::Float:
      return "float";
    case QZBType::FloatArray:
      return "array of float";
    case QZBType::CharArray:
      return "array of char";
    case QZBType::UCharArray:
      return "array of unsigned char";
    case QZBType::Double:
      return "double";
    case QZBType::String:
      return "string";
    case QZBType::DoubleArray:
      return "array of double";
    case QZBType::HalfFloatArray:
      return "array of half float";
    case QZBType::IntArray:
      return "array of int";
    case QZBType::UIntArray:
      return "array of unsigned int";
    case QZBType::BoolVector:
      return "vector of bool";
    case QZBType::CharVector:
      return "vector of char";
    case QZBType::UCharVector:
      return "vector of unsigned char";
    case QZBType::ShortVector:
      return "vector of short";
    case QZBType::UShortVector:
      return "vector of unsigned short";
    case QZBType::IntVector:
      return "vector of int";
    case QZBType::UIntVector:
      return "vector of unsigned int";
    case QZBType::FloatVector:
      return "vector of float";
    case QZBType::DoubleVector:
      return "vector of double";
    case QZBType::Handled:
      return "handled value";
    case QZBType::HalfFloatVector:
      return "vector of half float";
    default:
      return "";
  }
}

}  // namespace QZSystem
