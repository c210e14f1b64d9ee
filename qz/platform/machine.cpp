#include "qz/platform/machine.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "qz/platform/syscalls_impl.h"

namespace QZPlatform {

namespace {

constexpr std::uint64_t LargestBlock = 32768;
constexpr std::uint64_t StackReserve = 65536;

constexpr std::uint64_t HeaderSize = 16;
constexpr std::uint32_t HeapMarker = 0xDDDD;
constexpr std::uint32_t StackMarker = 0xCCCC;

// The stack of a thread, both bounds 0 if they aren't known. Asked for once: for the main thread the answer takes a
// reading of the memory map.
struct StackBounds {
  std::uintptr_t low = 0;
  std::uintptr_t high = 0;
};

StackBounds FindStackBounds() {
  void* lowest = nullptr;
  std::size_t size = 0;
  if (SystemCalls::StackBounds(&lowest, &size) != 0) return {};
  const auto low = reinterpret_cast<std::uintptr_t>(lowest);
  return {low, low + size};
}

}  // namespace

unsigned int QZGetNumProcessors() { return std::max(1U, SystemCalls::Processors()); }

// A quarter of the room above the reserve, so that functions that call each other don't use it all up in a few blocks.
std::uint64_t QZGetAllocaThreshold() {
  thread_local const StackBounds stack = FindStackBounds();
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  if (here < stack.low || here >= stack.high) return 0;
  const std::uint64_t room = here - stack.low;
  return room < StackReserve ? 0 : std::min(LargestBlock, (room - StackReserve) / 4);
}

std::uint64_t QZMallocaSize(std::uint64_t payload) {
  if (payload > std::numeric_limits<std::uint64_t>::max() - HeaderSize) throw std::bad_alloc();
  return payload + HeaderSize;
}

void* QZMallocaOpen(std::uint64_t size, void* onStack) {
  void* const block = onStack != nullptr ? onStack : ::operator new(size);
  const std::uint32_t marker = onStack != nullptr ? StackMarker : HeapMarker;
  std::memcpy(block, &marker, sizeof marker);
  return block;
}

void QZMallocaClose(void* block) {
  std::uint32_t marker = 0;
  std::memcpy(&marker, block, sizeof marker);
  if (marker == HeapMarker) ::operator delete(block);
}

}  // namespace QZPlatform
