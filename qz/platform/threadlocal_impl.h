#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace QZPlatform {

class InterThreadMap;

/// The untyped half of a QZThreadLocal: the values of one object, for all threads.
class ThreadValues {
 public:
  ThreadValues();
  ~ThreadValues();
  ThreadValues(const ThreadValues&) = delete;
  ThreadValues& operator=(const ThreadValues&) = delete;

  /// A number that no other object of the process has or had; never 0.
  [[nodiscard]] std::uint64_t Id() const { return id; }

  /// The calling thread's value, from `make` if it has none yet.
  [[nodiscard]] void* FindOrMake(std::shared_ptr<void> (*make)()) const;

 private:
  std::uint64_t id;
  std::shared_ptr<InterThreadMap> threads;
};

/// The calling thread's last looked-up values, in front of its map. The key is the number of the object and not its
/// address, which a later object may get.
class ThreadValueCache {
 public:
  [[nodiscard]] static void* Find(std::uint64_t id) {
    const Entry& entry = entries[id % Size];
    return entry.id == id ? entry.value : nullptr;
  }
  static void Set(std::uint64_t id, void* value) { entries[id % Size] = {id, value}; }
  static void Clear() {
    for (Entry& entry : entries) entry = {0, nullptr};
  }

 private:
  struct Entry {
    std::uint64_t id;
    void* value;
  };
  static constexpr std::size_t Size = 8;
  static inline thread_local Entry entries[Size] = {};
};

}  // namespace QZPlatform
