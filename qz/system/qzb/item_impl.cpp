#include "qz/system/qzb/item_impl.h"

#include <cstring>

#include "qz/system/frame/iterowner.h"
#include "qz/system/qzb/qzb.h"
#include "qz/system/qzb/qzblength_impl.h"
#include "qz/system/qzb/qzbtags_impl.h"

namespace QZSystem {

namespace {

constexpr unsigned char firstRefusedCode = 0x80;

// The first function of a sequence that fits; the sequence refers to the handler's own functions.
template <class Fxn, class Fits>
const Fxn* findFirst(QZIter<Fxn> functions, Fits fits) {
  for (const Fxn& each : functions) {
    if (fits(each)) return &each;
  }
  return nullptr;
}

}  // namespace

unsigned int ReadItemHead(qzistream& in, const void* type, const QZBinaryIOHandlerBase& handler, ItemHead& head) {
  char tag[QZBTagBufferSize];
  if (!QZBReadTag(in, tag, head.code)) return QZBReturn::ReadTagFailed;
  if (head.code >= firstRefusedCode || (head.code == 0 && *tag == '\0')) return QZBReturn::ReadTagFailed;
  if (in.eof()) return QZBReturn::EndOfFile;
  head.length = QZBReadDataLength(in, QZBLargestLength);
  if (head.length == 0) return in.eof() ? QZBReturn::EndOfFile : QZBReturn::ReadLengthFailed;
  head.reader = findFirst(QZIter(handler.GetReadFxns()), [&tag, type](const QZReadFxnBase& each) {
    return each.GetType() == type && std::strcmp(each.GetTag(), tag) == 0;
  });
  head.tag = tag;
  return QZBReturn::Success;
}

FoundItem FindItem(qzistream& in, const void* type, const QZBinaryIOHandlerBase& handler) {
  ItemHead head;
  FoundItem item;
  item.status = ReadItemHead(in, type, handler, head);
  if (item.status != QZBReturn::Success) return item;
  item.reader = head.reader;
  item.length = head.length;
  if (item.reader) return item;
  item.unknown = std::make_unique<QZUnknownQZBData>(in, type, head.length, head.tag.c_str(), head.code);
  if (!*item.unknown) item.status = QZBReturn::ReadLengthFailed;
  return item;
}

NameOutcome ReadValueName(qzistream& in, std::string& name) {
  name.clear();
  const int first = in.get();
  if (first >= firstRefusedCode) return NameOutcome::Refused;
  if (first != 0) {
    if (first > 0) name = EntryName(static_cast<unsigned char>(first));
    return first > 0 ? NameOutcome::Read : NameOutcome::Missing;
  }
  if (in.eof()) return NameOutcome::Missing;
  const unsigned long length = QZBReadDataLength(in, QZBLargestLength);
  if (length == 0 || length >= QZBTagBufferSize) {
    SendTagCorrupt(length);
    return NameOutcome::Missing;
  }
  char text[QZBTagBufferSize];
  const unsigned long held = in.read(text, length);
  text[held] = '\0';
  name = text;
  return held == length && !name.empty() ? NameOutcome::Read : NameOutcome::Missing;
}

NamedPayload::NamedPayload(qzistream& in, unsigned long length) : bytes(in, length) {
  if (!bytes.IsWhole()) {
    status = QZBReturn::IncorrectSize;
    return;
  }
  const NameOutcome outcome = ReadValueName(bytes.Stream(), name);
  if (outcome == NameOutcome::Refused) status = QZBReturn::ReadTagFailed;
  isNameAlone = bytes.Stream().eof();
  hasName = !name.empty() && (outcome == NameOutcome::Read || isNameAlone);
}

const QZWriteFxnBase* FindWriter(const QZBinaryIOHandlerBase& handler, const void* type) {
  return findFirst(QZIter(handler.GetWriteFxns()),
                   [type](const QZWriteFxnBase& each) { return each.GetType() == type; });
}

const QZWriteFxn<QZBaseData>* FindBaseWriter(const QZBinaryIOHandlerBase& handler, const void* type) {
  return findFirst(QZIter(handler.GetBaseWriteFxns()),
                   [type](const QZWriteFxn<QZBaseData>& each) { return each.GetType() == type; });
}

}  // namespace QZSystem
