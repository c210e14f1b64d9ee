#include "qz/dataflow/writebuffer.h"

namespace QZDataFlow {

namespace {

void AppendSized(std::vector<unsigned char>& out, const unsigned char* data, std::size_t size) {
  unsigned char length[QZWriteBuffer::kMaxIntSize];
  out.insert(out.end(), length, length + QZWriteBuffer::EncodeInt(static_cast<long>(size), length));
  out.insert(out.end(), data, data + size);
}

}  // namespace

void QZWriteBuffer::WriteBlob(const std::vector<unsigned char>& value) {
  if (&value == &bytes) {
    const std::vector<unsigned char> copy = value;
    WriteBlob(copy.data(), copy.size());
  } else {
    WriteBlob(value.data(), value.size());
  }
}

void QZWriteBuffer::WriteNoneFloat() {
  double value;
  std::memcpy(&value, &BufferImpl::kNoFloat, sizeof value);
  WriteFloat(value);
}

template <class T>
void QZWriteBuffer::WriteInts(const std::vector<T>& values) {
  WriteInt(values.size());
  for (const T value : values) WriteInt(value);
}

template <class T>
void QZWriteBuffer::WriteFloats(const std::vector<T>& values) {
  WriteInt(values.size());
  for (const T value : values) WriteFloat(value);
}

template void QZWriteBuffer::WriteInts(const std::vector<long>&);
template void QZWriteBuffer::WriteInts(const std::vector<int>&);
template void QZWriteBuffer::WriteInts(const std::vector<unsigned int>&);
template void QZWriteBuffer::WriteFloats(const std::vector<double>&);
template void QZWriteBuffer::WriteFloats(const std::vector<float>&);

void QZWriteBuffer::WriteBoolVec(const std::vector<bool>& values) {
  WriteInt(values.size());
  for (const bool value : values) WriteBool(value);
}

void QZWriteBuffer::WriteStringVec(const std::vector<std::string>& values) {
  WriteInt(values.size());
  for (const std::string& value : values) WriteString(value);
}

void QZWriteBuffer::Append(const std::vector<unsigned char>& raw) {
  if (&raw == &bytes) {
    const std::vector<unsigned char> copy = raw;
    Append(copy.data(), copy.size());
  } else {
    Append(raw.data(), raw.size());
  }
}

void QZWriteBuffer::CopyWrapped(QZWriteBuffer& dst, bool force) const {
  if (&dst == this) {
    QZWriteBuffer(*this).CopyWrapped(dst.bytes, force);
  } else {
    CopyWrapped(dst.bytes, force);
  }
}

void QZWriteBuffer::CopyWrapped(std::vector<unsigned char>& dst, bool force) const {
  if (bytes.empty() && !force) return;
  AppendSized(dst, AsBytes(name.data()), name.size());
  AppendSized(dst, bytes.data(), bytes.size());
}

}  // namespace QZDataFlow
