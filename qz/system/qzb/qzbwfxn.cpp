#include "qz/system/qzb/qzbwfxn.h"

#include "qz/platform/compress.h"

namespace QZSystem {

const char* QZBasePODWriteFxn::GetTag() const { return "QZBasePOD"; }

const void* QZBasePODWriteFxn::GetType() const { return QZGetDataType<QZBase>(); }

QZBasePODWriteFxn* QZBasePODWriteFxn::CreateCopy() const { return new QZBasePODWriteFxn(*this); }

bool QZBasePODWriteFxn::operator()(qzostream& out, const QZBase& object, const QZBinaryIOHandlerBase& handler) const {
  return QZBWriteQZBase(out, object, GetTag(), handler);
}

bool QZBWriteItem(qzostream& out, const char* tag, std::string_view content) {
  if (content.size() > QZBLargestLength || !QZBWriteTag(out, tag)) return false;
  QZBWriteDataLength(out, content.size());
  out.write(content.data(), content.size());
  return true;
}

bool WriteCollected(qzostream& out, const char* tag, std::string_view content, const std::string* format) {
  if (content.empty()) return true;
  if (!format) return QZBWriteItem(out, tag, content);
  std::string compressed;
  return QZCompress(compressed, content.data(), content.size(), format->c_str()) && QZBWriteItem(out, tag, compressed);
}

}  // namespace QZSystem
