#pragma once

#include <cstddef>
#include <cstring>

#include "qz/dataflow/readbuffer.h"

/// How the elements of a list value are read. An element has the form of a buffer primitive, and may be absent.
namespace QZDataFlow::ListElement {

// Each reads an element, with `none` set for an absent one, and gives false for one that is cut short.

inline bool Take(QZReadBuffer& in, long& value, bool& none) {
  if (!in.IsValid()) return false;
  const unsigned char head = *in.Position();
  value = in.ReadInt(none);
  return !none || !BufferImpl::IsMeasured(head);
}

inline bool Take(QZReadBuffer& in, double& value, bool& none) {
  if (in.Remaining() < sizeof value) return false;
  value = in.ReadFloat(none);
  return true;
}

inline bool Take(QZReadBuffer& in, bool& value, bool& none) {
  if (!in.IsValid()) return false;
  value = in.ReadBool(none);
  return true;
}

inline bool Take(QZReadBuffer& in, QZByteSlice& value, bool& none) {
  if (!in.IsValid()) return false;
  const unsigned char head = *in.Position();
  return in.ReadSlice(value, none) && (!none || !BufferImpl::IsMeasured(head));
}

/// Reads the list in `size` bytes: calls `begin` with the count that they claim and with the bytes behind it, and then
/// `visit(value, none)` for each element, Value being `long`, `double`, `bool` or QZByteSlice. False when there are no
/// bytes, when the count is above the bytes that remain, and when an element is cut short. A count below 1 gives true.
template <class Value, class Begin, class Visit>
bool ForEach(const unsigned char* data, std::size_t size, Begin begin, Visit visit) {
  QZReadBuffer in(data, size);
  long count = 0;
  bool none = false;
  if (!Take(in, count, none)) return false;
  if (count < 1) return true;
  if (static_cast<std::size_t>(count) > in.Remaining()) return false;
  begin(static_cast<std::size_t>(count), in.Remaining());
  for (; count > 0; --count) {
    Value value{};
    if (!Take(in, value, none)) return false;
    visit(value, none);
  }
  return true;
}

}  // namespace QZDataFlow::ListElement
