#pragma once

#include <array>
#include <atomic>
#include <memory>

#include "qz/system/data/tagmap.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// What follows from the name of a tag, found out once and kept for the process: a name never changes once its tag is
/// out.
///
///     struct Fact {
///       void Learn(unsigned int theTag, const char* name);
///       unsigned int tag;
///     };
///     TagFacts<Fact> facts;                     // of static lifetime
///     const Fact& fact = facts.Of(holder.GetTag());
///
/// A few thousand tags have their places; the facts of one whose place is taken, and of a number that has no name yet,
/// are found out each time. Safe from any thread.
template <class Fact>
class TagFacts {
 public:
  /// Good until the thread asks for those of another tag. Throws std::bad_alloc.
  const Fact& Of(unsigned int tag) {
    Place& place = places[tag % places.size()];
    const Fact* const kept = place.load(std::memory_order_acquire);
    return kept && kept->tag == tag ? *kept : Learn(place, tag);
  }

 private:
  using Place = std::atomic<const Fact*>;

  [[gnu::noinline]] static const Fact& Learn(Place& place, unsigned int tag) {
    const char* const name = QZGetTag(tag);
    const Fact* kept = place.load(std::memory_order_acquire);
    if (!kept && *name != '\0') {
      auto made = std::make_unique<Fact>();
      made->Learn(tag, name);
      if (place.compare_exchange_strong(kept, made.get())) return *made.release();
    }
    thread_local Fact ofThread;
    ofThread.Learn(tag, name);
    return ofThread;
  }

  std::array<Place, 4096> places{};
};

}  // namespace QZSystem
