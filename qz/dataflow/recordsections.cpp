#include "qz/dataflow/recordsections_impl.h"

#include <string>

namespace QZDataFlow {

const std::vector<unsigned char>& VersionSection() {
  static const auto* const section = [] {
    QZWriteBuffer version("version");
    version.WriteString(std::string(kRecordVersion));
    auto* bytes = new std::vector<unsigned char>;
    version.CopyWrapped(*bytes);
    return bytes;
  }();
  return *section;
}

}  // namespace QZDataFlow
