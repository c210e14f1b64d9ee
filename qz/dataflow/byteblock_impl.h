#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "qz/dataflow/names.h"
#include "qz/dataflow/writebuffer.h"

namespace QZDataFlow {

/// A place in a ByteBlock, which stays good when the block moves.
struct ByteRange {
  std::size_t begin = 0;
  std::size_t size = 0;
};

/// Bytes that grow at their end. Other than a vector it leaves new bytes as they are, since whoever asks for them
/// writes them at once; and it keeps its memory when it is emptied.
class ByteBlock {
 public:
  ByteBlock() = default;
  ByteBlock(const ByteBlock& other) { Append(other.data(), other.size()); }
  ByteBlock(ByteBlock&&) noexcept = default;
  ByteBlock& operator=(ByteBlock other) noexcept {
    Swap(other);
    return *this;
  }

  unsigned char* data() { return bytes.get(); }
  const unsigned char* data() const { return bytes.get(); }
  std::size_t size() const { return used; }
  std::size_t Capacity() const { return room; }

  void Clear() { used = 0; }
  /// Keeps the first `size` bytes.
  void Truncate(std::size_t size) { used = std::min(used, size); }
  /// Gives memory back when there is much and `wanted` bytes are all that is needed now.
  void Trim(std::size_t wanted) {
    if (room <= kLargeRoom || wanted >= room / 4) return;
    ByteBlock smaller;
    smaller.Reserve(wanted);
    smaller.Append(data(), std::min(used, wanted));
    Swap(smaller);
  }
  void Swap(ByteBlock& other) noexcept {
    std::swap(bytes, other.bytes);
    std::swap(used, other.used);
    std::swap(room, other.room);
  }

  /// Makes sure that `count` more bytes fit without moving what is there.
  void Reserve(std::size_t count) {
    if (count > room - used) Enlarge(count);
  }
  /// Appends `count` bytes of any content, and gives the first of them.
  unsigned char* Extend(std::size_t count) {
    Reserve(count);
    unsigned char* const at = bytes.get() + used;
    used += count;
    return at;
  }
  /// REQUIRES bytes outside this block.
  void Append(const unsigned char* from, std::size_t count) {
    if (count != 0) std::memcpy(Extend(count), from, count);
  }
  void AppendInt(long value) {
    Reserve(QZWriteBuffer::kMaxIntSize);
    used += QZWriteBuffer::EncodeInt(value, bytes.get() + used);
  }
  void AppendInt(std::size_t value) { AppendInt(static_cast<long>(value)); }

 private:
  static constexpr std::size_t kLargeRoom = std::size_t{1} << 20;

  void Enlarge(std::size_t count) {
    if (count > ~std::size_t{0} / 4 - used) throw std::bad_alloc();
    const std::size_t larger = std::max({used + count, 2 * room, std::size_t{64}});
    std::unique_ptr<unsigned char[]> fresh(new unsigned char[larger]);
    if (used != 0) std::memcpy(fresh.get(), bytes.get(), used);
    bytes = std::move(fresh);
    room = larger;
  }

  std::unique_ptr<unsigned char[]> bytes;
  std::size_t used = 0;
  std::size_t room = 0;
};

}  // namespace QZDataFlow
