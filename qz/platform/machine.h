#pragma once

#include <alloca.h>

#include <cstddef>
#include <cstdint>

namespace QZPlatform {

/// The processors that this process may run on, at least 1. Safe from any thread.
[[nodiscard]] unsigned int QZGetNumProcessors();

/// The largest scratch block, in bytes with its header, that the calling function may take from the stack:
/// 32768 where the thread's stack has room. It falls with the room that is left, to 0 when less than 64 KiB remain, and
/// is 0 on a stack whose bounds aren't known, such as one for signals. Safe from any thread.
[[nodiscard]] std::uint64_t QZGetAllocaThreshold();

/// The bytes that a block for `payload` bytes needs with its header: 16 more.
/// Throws std::bad_alloc if that overflows 64 bits.
[[nodiscard]] std::uint64_t QZMallocaSize(std::uint64_t payload);

/// Whether a block of `size` bytes, header included, may live on the stack.
[[nodiscard]] inline bool QZMallocaFits(std::uint64_t size) { return size <= QZGetAllocaThreshold(); }

/// A scratch block: on the caller's stack if it is small, else from the heap.
///
///     const std::uint64_t size = QZMallocaSize(count * sizeof(double));
///     void* const onStack = QZMallocaFits(size) ? alloca(size) : nullptr;
///     const QZMallocaPtr<double> sums(size, onStack);
///     sums[0] = 0.0;                               // the payload is not initialised
///
/// The first word of the block tells where it came from, and the payload starts 16 bytes in; only a block from the heap
/// is freed. The holder must not outlive the function that called alloca. One thread at a time.
template <class T>
class QZMallocaPtr {
 public:
  /// Takes over `onStack`, or allocates `size` bytes from the heap if it is null; std::bad_alloc passes.
  /// REQUIRES: `size` is from QZMallocaSize; `onStack` is null or points at that many bytes, aligned to 16.
  QZMallocaPtr(std::uint64_t size, void* onStack);
  ~QZMallocaPtr();
  QZMallocaPtr(const QZMallocaPtr&) = delete;
  QZMallocaPtr& operator=(const QZMallocaPtr&) = delete;

  /// The payload; never null.
  [[nodiscard]] T* Get() const;
  [[nodiscard]] T& operator[](std::size_t index) const { return Get()[index]; }

 private:
  static_assert(alignof(T) <= 16, "the payload of a scratch block is aligned to 16 bytes");

  void* block;
};

/// Makes the block of a QZMallocaPtr and marks it.
[[nodiscard]] void* QZMallocaOpen(std::uint64_t size, void* onStack);
/// Frees the block if it is marked as one from the heap.
void QZMallocaClose(void* block);

template <class T>
QZMallocaPtr<T>::QZMallocaPtr(std::uint64_t size, void* onStack) : block(QZMallocaOpen(size, onStack)) {}

template <class T>
QZMallocaPtr<T>::~QZMallocaPtr() {
  QZMallocaClose(block);
}

template <class T>
T* QZMallocaPtr<T>::Get() const {
  return static_cast<T*>(static_cast<void*>(static_cast<unsigned char*>(block) + 16));
}

}  // namespace QZPlatform
