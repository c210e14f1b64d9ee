#include "qz/dataflow/readbuffer.h"

#include <stdexcept>

#include "qz/dataflow/writebuffer.h"

namespace QZDataFlow {

namespace {

/// What stands in a stored form for a value whose bytes end early: the marker of its kind.
std::vector<unsigned char> FormOrNone(const QZByteSlice& slice, void (QZWriteBuffer::*writeNone)()) {
  if (slice.size != 0) return std::vector<unsigned char>(slice.data, slice.data + slice.size);
  QZWriteBuffer marker;
  (marker.*writeNone)();
  return marker.Get();
}

}  // namespace

void QZReadBuffer::ThrowLengthError() { throw std::length_error("QZReadBuffer: length above what remains"); }

bool QZReadBuffer::Unwrap(std::string& name, QZReadBuffer& content) {
  std::string_view text;
  const bool unwrapped = Unwrap(text, content);
  name.assign(text);
  return unwrapped;
}

QZByteSlice QZReadBuffer::ReadContainerSlice() {
  const unsigned char* const start = cursor;
  bool none;
  ReadText(none);
  if (none) return {};
  const unsigned long length = ReadLength();
  if (length > Remaining()) ThrowLengthError();
  Take(length);
  return {start, static_cast<std::size_t>(cursor - start)};
}

std::vector<unsigned char> QZReadBuffer::ReadContainer() {
  const QZByteSlice slice = ReadContainerSlice();
  return std::vector<unsigned char>(slice.data, slice.data + slice.size);
}

template <>
QZByteSlice QZReadBuffer::ReadRawSlice<long>() {
  if (!IsValid()) return {};
  const std::size_t size = *cursor < BufferImpl::kNone ? 1 : 1 + (*cursor & 0x7Fu);
  if (size <= Remaining()) return Take(size);
  ToEnd();
  return {};
}

template <>
QZByteSlice QZReadBuffer::ReadRawSlice<double>() {
  if (Remaining() >= sizeof(double)) return Take(sizeof(double));
  ToEnd();
  return {};
}

template <>
QZByteSlice QZReadBuffer::ReadRawSlice<std::string>() {
  const unsigned char* const start = cursor;
  bool none;
  ReadText(none);
  // A marker stands as it is; a length that ends early stands for nothing.
  if (none && (start == cursor || BufferImpl::IsMeasured(*start))) return {};
  return {start, static_cast<std::size_t>(cursor - start)};
}

template <>
std::vector<unsigned char> QZReadBuffer::ReadRawBytes<long>() {
  return FormOrNone(ReadRawSlice<long>(), &QZWriteBuffer::WriteNoneInt);
}

template <>
std::vector<unsigned char> QZReadBuffer::ReadRawBytes<double>() {
  return FormOrNone(ReadRawSlice<double>(), &QZWriteBuffer::WriteNoneFloat);
}

template <>
std::vector<unsigned char> QZReadBuffer::ReadRawBytes<std::string>() {
  return FormOrNone(ReadRawSlice<std::string>(), &QZWriteBuffer::WriteNoneString);
}

}  // namespace QZDataFlow
