#include "qz/dataflow/recordsections_impl.h"

#include <cstring>
#include <string>

#include "qz/dataflow/writebuffer.h"

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

bool IsRecordHead(QZByteSlice head, std::size_t contentSize) {
  constexpr std::size_t kNameSize = kRecordName.size();
  return head.size == 1 + kNameSize + QZWriteBuffer::IntSize(static_cast<long>(contentSize)) &&
         head.data[0] == kNameSize && std::memcmp(head.data + 1, kRecordName.data(), kNameSize) == 0;
}

}  // namespace QZDataFlow
