#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <vector>

#include "qz/dataflow/readbuffer.h"
#include "qz/dataflow/writebuffer.h"

namespace QZDataFlow {

/// The version of the stored form that is written.
inline constexpr std::string_view kRecordVersion = "1.0";
/// The name of the wrapper around a record.
inline constexpr std::string_view kRecordName = "record.v1";

/// The section "version" as it is written, with its name and length.
const std::vector<unsigned char>& VersionSection();

/// The name of a record as it is written, with its length.
inline constexpr std::array<unsigned char, 10> kRecordStart{9, 'r', 'e', 'c', 'o', 'r', 'd', '.', 'v', '1'};

/// Whether the bytes begin with these, which are few.
template <std::size_t Size>
bool BeginsWith(const unsigned char* bytes, std::size_t size, const std::array<unsigned char, Size>& start) {
  return size >= Size && std::memcmp(bytes, start.data(), Size) == 0;
}

/// Whether these bytes are the name of a record and the length of its content as a writer puts them.
inline bool IsRecordHead(QZByteSlice head, std::size_t contentSize) {
  return BeginsWith(head.data, head.size, kRecordStart) &&
         head.size == kRecordStart.size() + QZWriteBuffer::IntSize(static_cast<long>(contentSize));
}

/// Decodes a length up to 32767 in the form that a writer gives it, from bytes of which there are 3. The size of the
/// form, or 0 for another one.
inline std::size_t DecodeShortLength(const unsigned char* at, std::size_t& length) {
  constexpr unsigned char kTwoBytes = BufferImpl::kNone + 2;
  if (at[0] < BufferImpl::kNone) {
    length = at[0];
    return 1;
  }
  length = static_cast<std::size_t>(at[1] | at[2] << 8);
  return at[0] == kTwoBytes && length >= BufferImpl::kNone && length <= 0x7FFF ? 3 : 0;
}

}  // namespace QZDataFlow
