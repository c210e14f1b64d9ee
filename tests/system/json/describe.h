#pragma once

#include <string>
#include <vector>

#include "qz/platform/memorystream.h"
#include "qz/system/data/container.h"
#include "qz/system/frame/iterowner.h"
#include "qz/system/json/json.h"

namespace QZSystem {

inline std::string Describe(const QZBase& base);

inline void DescribeValue(qzostream& out, bool value) { out << (value ? "bool true" : "bool false"); }
inline void DescribeValue(qzostream& out, int value) { out << "int " << value; }
inline void DescribeValue(qzostream& out, float value) { out << "float " << value; }
inline void DescribeValue(qzostream& out, double value) { out << "double " << value; }
inline void DescribeValue(qzostream& out, const std::string& value) { out << "string " << value; }
inline void DescribeValue(qzostream& out, const JSONString& value) { out << "json " << value.GetText(); }
inline void DescribeValue(qzostream& out, const QZContainer& value) { out << "{" << Describe(value) << "}"; }
template <class T>
void DescribeValue(qzostream& out, const std::vector<T>& values) {
  out << "[";
  for (std::size_t i = 0; i < values.size(); ++i) {
    out << (i == 0 ? "" : ",");
    DescribeValue(out, values[i]);
  }
  out << "]";
}

template <class... T>
bool DescribeAsOneOf(qzostream& out, QZBaseData& holder) {
  const auto describe = [&out](const auto* typed) {
    if (typed) DescribeValue(out, typed->GetData());
    return typed != nullptr;
  };
  return (describe(QZBaseImpl::As<T>(&holder)) || ...);
}

/// The values in their order, as "name: type value; ".
inline std::string Describe(const QZBase& base) {
  qzosstream out;
  for (QZBaseData& holder : QZIter(base.GetDataIter())) {
    out << QZGetTag(holder.GetTag()) << ": ";
    if (!DescribeAsOneOf<bool, int, float, double, std::string, JSONString, QZContainer, std::vector<bool>,
                         std::vector<int>, std::vector<float>, std::vector<double>, std::vector<std::string>,
                         std::vector<QZContainer>>(out, holder)) {
      out << "another type";
    }
    out << "; ";
  }
  return out.str();
}

}  // namespace QZSystem
