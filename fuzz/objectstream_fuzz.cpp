// Object items, read with a handler that knows no class and with one that knows containers. What reads whole is
// written, read again, and is equal then; a walk over the bytes says the same about them as reading does.
#include "fuzz/fuzzing.h"
#include "qz/system/frame/iterowner.h"
#include "qz/system/qzb/qzbwalk.h"
#include "tests/system/qzb/containers.h"

using namespace QZSystem;

namespace {

QZBinaryIOHandler containerHandler() {
  QZBinaryIOHandler handler = PODHandler();
  handler.SetReadFxn(QZGroupReadFxn<QZContainer, QZContainer>("Group"), false);
  return handler;
}

// What isn't written, or isn't read again, under its name: no name, unknown items as a whole, what a reader takes for
// the second half of a value, a code that can't be, and a name too long for a second tag.
bool isDropped(const std::string& name, bool isPlain) {
  const auto startsWith = [&name](const char* text) { return name.rfind(text, 0) == 0; };
  return name.empty() || startsWith("QZUnknownQZB") || startsWith("!HandledQZBTag:") ||
         (startsWith("UnknownQZB") && name.size() == 13) || (!isPlain && name.size() > 1008);
}

// Removes that, and what isn't written, or isn't read again, for its value: a bool that is false, an array without
// elements.
QZContainer withoutDropped(const QZContainer& object) {
  QZContainer kept;
  for (QZBaseData& value : QZIter(object.GetDataIter())) {
    const auto* const nested = QZBaseImpl::As<QZContainer>(&value);
    const bool isPlain = !nested && !QZBaseImpl::As<QZUnknownQZBData>(&value);
    const auto* const truth = QZBaseImpl::As<bool>(&value);
    if (isDropped(QZGetTag(value.GetTag()), isPlain) || value.GetSize() == 0 || (truth && !truth->GetData())) continue;
    if (nested) {
      kept.AddData<QZContainer>(value.GetTag(), withoutDropped(nested->GetData()));
    } else {
      kept.AddBaseData(&value);
    }
  }
  return kept;
}

std::string written(const QZContainer& object, const QZBinaryIOHandler& handler) {
  qzosstream out;
  Require(QZBWriteQZBase(out, object, "", handler));
  return out.str();
}

void goThrough(const std::uint8_t* data, std::size_t size, const QZBinaryIOHandler& handler) {
  BytesStream in(data, size);
  QZContainer object;
  if (QZBReadQZBase(in, object, size, handler) != QZBReturn::Success) return;
  Require(in.eof());
  const std::string bytes = written(withoutDropped(object), handler);
  if (bytes.empty()) return;
  BytesStream back(bytes);
  QZContainer again;
  Require(QZBReadQZBase(back, again, bytes.size(), handler) == QZBReturn::Success);
  Require(written(again, handler) == bytes);
}

void walk(const std::uint8_t* data, std::size_t size) {
  QZBWalk entries(reinterpret_cast<const char*>(data), size);
  unsigned long before = 0;
  for (QZBEntry entry; entries.Next(entry);) {
    Require(entries.Offset() > before && entries.Offset() <= size);
    before = entries.Offset();
    Require(entry.body.size() <= size && !entry.name.empty());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SwallowMessages();
  static const QZBinaryIOHandler empty, containers = containerHandler();
  walk(data, size);
  goThrough(data, size, empty);
  goThrough(data, size, containers);
  BytesStream in(data, size);
  QZContainer object;
  while (QZBinaryRead(in, object, containers) == QZBReturn::Success) {
  }
  return 0;
}
