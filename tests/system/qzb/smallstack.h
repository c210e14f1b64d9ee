#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

#include <cstddef>

namespace QZSystem {

// Under a sanitizer the frames are several times as large, and its own data of a thread stand on the stack.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool isSanitized = true;
#elif defined(__has_feature)
inline constexpr bool isSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
inline constexpr bool isSanitized = false;
#endif

inline constexpr std::size_t smallStack = isSanitized ? 4 * 1024 * 1024 : 256 * 1024;

/// Runs the function on a thread with a stack of 256 KiB.
template <class Function>
void OnSmallStack(Function function) {
  const auto run = [](void* argument) -> void* {
    (*static_cast<Function*>(argument))();
    return nullptr;
  };
  pthread_attr_t attributes;
  pthread_t thread;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, smallStack);
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &function), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

}  // namespace QZSystem
