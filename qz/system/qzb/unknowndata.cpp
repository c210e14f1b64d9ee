#include "qz/system/qzb/unknowndata.h"

#include <exception>
#include <string_view>

#include "qz/system/qzb/payload_impl.h"

namespace QZSystem {

namespace {

constexpr const char* unknownTagName = "QZUnknownQZBData";

}  // namespace

QZUnknownQZBData::QZUnknownQZBData(qzistream& in, const void* readAs, unsigned long length, const char* itemTag,
                                   unsigned char itemCode)
    : type(readAs), tag(itemTag), code(itemCode) {
  try {
    const Payload payload(in, length);
    const std::string_view bytes = payload.Bytes();
    if (payload.IsWhole()) data.assign(bytes.begin(), bytes.end());
  } catch (const std::exception&) {
    data.clear();
  }
}

const char* QZUnknownQZBDataTagName() { return unknownTagName; }

void QZAttachData(const QZUnknownQZBData& unknown, QZBase& object) {
  object.AddData<QZUnknownQZBData>(unknownTagName, unknown);
}

void QZAttachData(const QZUnknownQZBData& unknown, QZBase* object) { QZAttachData(unknown, *object); }

void QZAttachData(const QZUnknownQZBData&, ...) {}

template class QZBaseDataT<QZUnknownQZBData>;

}  // namespace QZSystem
