#pragma once

#include <string>
#include <vector>

#include "qz/system/frame/iterowner.h"
#include "tests/system/qzb/bytes.h"
#include "tests/system/qzb/containers.h"

namespace QZSystem {

/// Everything that is attached to an object, as text: "n int 5; v vector<double> 1 2.5;".
std::string Tell(const QZBase& object);

namespace telling {

template <class T>
std::string Number(const T& value) {
  qzosstream out;
  if constexpr (std::is_same_v<T, QZHalfFloat>) {
    out << static_cast<int>(value.bits);
  } else if constexpr (sizeof(T) == 1) {
    out << static_cast<int>(value);
  } else {
    out << value;
  }
  return out.str();
}

template <class Elements>
std::string Sequence(const Elements& elements, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += " " + Number(elements[i]);
  return text;
}

template <class T>
bool Single(const char* type, const QZBaseData& value, std::string& text) {
  if (value.GetDataType() != QZBaseDataT<T>::DataType()) return false;
  text += type + (" " + Number(static_cast<const QZBaseDataT<T>&>(value).GetData()));
  return true;
}

template <class T>
bool Several(const char* type, const QZBaseData& value, std::string& text) {
  if (value.GetDataType() == QZBaseDataTPtr<T*>::DataType()) {
    const auto& array = static_cast<const QZBaseDataTPtr<T*>&>(value);
    text += std::string(type) + "*" + Sequence(array.GetData(), array.GetSize());
    return true;
  }
  if (value.GetDataType() != QZBaseDataT<std::vector<T>>::DataType()) return false;
  const auto& elements = static_cast<const QZBaseDataT<std::vector<T>>&>(value).GetData();
  text += std::string("vector<") + type + ">" + Sequence(elements, elements.size());
  return true;
}

inline bool Object(const QZBaseData& value, std::string& text) {
  if (value.GetDataType() == QZBaseDataT<QZContainer>::DataType()) {
    text += "{" + Tell(static_cast<const QZBaseDataT<QZContainer>&>(value).GetData()) + "}";
    return true;
  }
  if (value.GetDataType() != QZBaseDataT<QZUnknownQZBData>::DataType()) return false;
  const auto& unknown = static_cast<const QZBaseDataT<QZUnknownQZBData>&>(value).GetData();
  text += "unknown '" + unknown.tag + "' " + std::to_string(unknown.code) + " " +
          Hex({unknown.data.data(), unknown.data.size()});
  return true;
}

}  // namespace telling

inline std::string Tell(const QZBase& object) {
  using namespace telling;
  std::string text;
  for (const QZBaseData& value : QZIter(object.GetDataIter())) {
    text += std::string(QZGetTag(value.GetTag())) + " ";
    const bool known = Single<bool>("bool", value, text) || Single<int>("int", value, text) ||
                       Single<float>("float", value, text) || Single<double>("double", value, text) ||
                       Single<std::string>("string", value, text) || Several<bool>("bool", value, text) ||
                       Several<char>("char", value, text) || Several<unsigned char>("uchar", value, text) ||
                       Several<short>("short", value, text) || Several<unsigned short>("ushort", value, text) ||
                       Several<int>("int", value, text) || Several<unsigned int>("uint", value, text) ||
                       Several<float>("float", value, text) || Several<double>("double", value, text) ||
                       Several<QZHalfFloat>("half", value, text) || Object(value, text);
    text += known ? "; " : "?; ";
  }
  return text;
}

/// The body of the object's item.
inline std::string Written(const QZBase& object, const QZBinaryIOHandlerBase& handler = QZBinaryIOHandler()) {
  qzosstream out;
  return QZBWriteQZBase(out, object, "", handler) ? out.str() : "failed";
}

/// The code of reading a body, and what was read.
inline std::string Read(const std::string& body, const QZBinaryIOHandlerBase& handler = QZBinaryIOHandler()) {
  BytesIn in(body);
  QZContainer object;
  const unsigned int code = QZBReadQZBase(in, object, body.size(), handler);
  return std::to_string(code) + ": " + Tell(object);
}

}  // namespace QZSystem
