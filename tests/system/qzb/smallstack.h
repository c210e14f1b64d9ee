#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

#include <cstddef>

namespace QZSystem {

// The address sanitizer's frames are several times as large as they are without it.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr std::size_t smallStack = 4 * 1024 * 1024;
#elif defined(__has_feature)
inline constexpr std::size_t smallStack = __has_feature(address_sanitizer) ? 4 * 1024 * 1024 : 256 * 1024;
#else
inline constexpr std::size_t smallStack = 256 * 1024;
#endif

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
