#pragma once

#include <cstddef>
#include <cstring>
#include <optional>
#include <string_view>
#include <type_traits>
#include <vector>

#include "qz/dataflow/byteblock_impl.h"
#include "qz/dataflow/readbuffer.h"
#include "qz/dataflow/writebuffer.h"

/// How list values are put together and taken apart: a count, and elements in the forms of the buffer primitives, each
/// of which may be absent.
namespace QZDataFlow::ListElement {

inline void Append(std::vector<unsigned char>& out, const unsigned char* data, std::size_t size) {
  out.insert(out.end(), data, data + size);
}
inline void Append(ByteBlock& out, const unsigned char* data, std::size_t size) { out.Append(data, size); }

// Each appends an element. Out is a vector of bytes or a ByteBlock.

template <class Out>
void Put(Out& out, long value) {
  unsigned char form[QZWriteBuffer::kMaxIntSize];
  Append(out, form, QZWriteBuffer::EncodeInt(value, form));
}

template <class Out>
void PutCount(Out& out, std::size_t count) {
  Put(out, static_cast<long>(count));
}

template <class Out>
void Put(Out& out, double value) {
  unsigned char form[sizeof value];
  std::memcpy(form, &value, sizeof value);
  Append(out, form, sizeof value);
}

template <class Out>
void Put(Out& out, bool value) {
  const unsigned char form = value ? 1 : 0;
  Append(out, &form, 1);
}

template <class Out>
void Put(Out& out, QZByteSlice value) {
  PutCount(out, value.size);
  Append(out, value.data, value.size);
}
template <class Out>
void Put(Out& out, const std::vector<unsigned char>& value) {
  Put(out, QZByteSlice{value.data(), value.size()});
}
template <class Out>
void Put(Out& out, std::string_view value) {
  Put(out, QZByteSlice{reinterpret_cast<const unsigned char*>(value.data()), value.size()});
}

/// Appends the marker of an absent element of T.
template <class T, class Out>
void PutNone(Out& out) {
  if constexpr (std::is_same_v<T, double>) {
    double none;
    std::memcpy(&none, &BufferImpl::kNoFloat, sizeof none);
    Put(out, none);
  } else {
    Append(out, &BufferImpl::kNone, 1);
  }
}

template <class T, class Out>
void Put(Out& out, const std::optional<T>& value) {
  if (value) {
    Put(out, *value);
  } else {
    PutNone<T>(out);
  }
}

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
