#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "qz/platform/lock_impl.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// Names to tags and back, for all threads. The process has one; see tagmap.h.
///
/// The high 16 bits of a tag choose a block, the low 16 bits a slot in it. A block never moves once it is made, and a
/// name never changes once its tag is out, so a tag's name is read without the lock. Safe from any thread.
class TagBiMap {
 public:
  /// Holds the empty name as tag 0 and the names with a tag of their own; the first new name gets 1024.
  TagBiMap();
  TagBiMap(const TagBiMap&) = delete;
  TagBiMap& operator=(const TagBiMap&) = delete;

  /// The stored name and its tag.
  struct Entry {
    std::string_view name;
    unsigned int tag = 0;
  };

  /// Finds a name; false if it isn't registered.
  bool Find(std::string_view name, Entry& found);

  /// Finds or registers a name; a new one is moved from `given`, or copied if that is null. Throws std::bad_alloc, with
  /// the map as it was. REQUIRES: `given` is null or holds `name`.
  Entry FindOrAdd(std::string_view name, std::string* given);

  /// The name of a tag, "" for a number without one.
  [[nodiscard]] const char* Name(unsigned int tag) const;

  /// Whether the number is below the next tag.
  [[nodiscard]] bool Has(unsigned int tag) const { return tag < nextTag.load(std::memory_order_acquire); }

 private:
  using Block = std::unique_ptr<std::string[]>;
  using Tags = std::vector<unsigned int>;

  // GCC doesn't know clang's thread-safety attributes.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wattributes"
  [[nodiscard]] const std::string& Stored(unsigned int tag) const;
  [[nodiscard]] Tags::iterator Place(std::string_view name) __attribute__((requires_capability(mutex)));
  [[nodiscard]] bool IsAt(Tags::iterator place, std::string_view name) __attribute__((requires_capability(mutex)));
  void Add(std::ptrdiff_t index, std::string_view name, std::string* given) __attribute__((requires_capability(mutex)));

  std::array<Block, 32768> blocks;
  std::atomic<unsigned int> nextTag;
  Tags sorted __attribute__((guarded_by(mutex)));
  ForkSafeMutex mutex{LockRank::Service};
#pragma GCC diagnostic pop
};

}  // namespace QZSystem
