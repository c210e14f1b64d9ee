#include "qz/system/data/tagmap.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

#include "qz/system/data/tagmap_impl.h"

namespace QZSystem {

namespace {

constexpr unsigned int slotCount = 32768;
constexpr unsigned int slotMask = 0xFFFF;
constexpr unsigned int blockShift = 16;
constexpr unsigned int firstFreeTag = 1024;

// Names that have the same tag in every process.
constexpr TagBiMap::Entry fixedNames[] = {{"", 0}, {"QZBondStereo", 55}};

// The map is never destroyed: a thread that runs on while the process ends, and the destructor of any static object,
// may still hold tags and the names behind them. Of threads that make one at the same time the first keeps its own. A
// static of the language would have the others wait, and the child of a fork at that moment for ever.
std::atomic<TagBiMap*> theMap{nullptr};

TagBiMap& Map() {
  TagBiMap* map = theMap.load(std::memory_order_acquire);
  if (map != nullptr) return *map;
  auto made = std::make_unique<TagBiMap>();
  return theMap.compare_exchange_strong(map, made.get()) ? *made.release() : *map;
}

// Names are read eight bytes at a time, and most in the same four pieces: the first eight bytes, the last eight, and
// where that leaves some, eight behind the first and eight before the last. Which bytes overlap depends on the length;
// no branch does, which counts, since the lengths of names come in no order.
template <class Word = std::uint64_t>
std::uint64_t Load(const char* from) {
  Word word;
  std::memcpy(&word, from, sizeof word);
  return word;
}

constexpr std::size_t pieceSize = 8;
constexpr std::size_t mostInPieces = 4 * pieceSize - 1;

struct Pieces {
  // REQUIRES: a size from 8 to 31.
  Pieces(const char* text, std::size_t size)
      : first(Load(text)),
        second(Load(text + size / 16 * pieceSize)),
        third(Load(text + size - pieceSize - size / 16 * pieceSize)),
        fourth(Load(text + size - pieceSize)) {}

  std::uint64_t first, second, third, fourth;
};

bool IsInPieces(std::size_t size) { return size >= pieceSize && size <= mostInPieces; }

// The bytes of a name of less than eight: of those of one size no two have the same word.
std::uint64_t ShortWord(const char* text, std::size_t size) {
  if (size >= 4) return Load<std::uint32_t>(text) | Load<std::uint32_t>(text + size - 4) << 32;
  if (size == 0) return 0;
  return Load<unsigned char>(text) | Load<unsigned char>(text + size / 2) << 8 |
         Load<unsigned char>(text + size - 1) << 16;
}

// The halves of the product of two 64-bit numbers, folded: every bit of both spreads over the result.
std::uint64_t Fold(std::uint64_t a, std::uint64_t b) {
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

// Numbers without a pattern, one for each piece, so that equal pieces don't cancel out.
constexpr std::uint64_t salt1 = 0x9E3779B97F4A7C15;
constexpr std::uint64_t salt2 = 0xC2B2AE3D27D4EB4F;
constexpr std::uint64_t salt3 = 0x165667B19E3779F9;
constexpr std::uint64_t salt4 = 0xA0761D6478BD642F;

[[gnu::noinline]] std::uint64_t HashOfLong(std::string_view name) {
  std::uint64_t hash = name.size();
  while (name.size() >= pieceSize) {
    hash = Fold(hash ^ Load(name.data()) ^ salt1, salt2);
    name.remove_prefix(pieceSize);
  }
  return Fold(hash ^ ShortWord(name.data(), name.size()) ^ salt1, salt2);
}

inline std::uint64_t HashOf(std::string_view name) {
  const std::size_t size = name.size();
  if (size < pieceSize) return Fold(ShortWord(name.data(), size) ^ salt1, salt2 ^ size);
  if (size > mostInPieces) return HashOfLong(name);
  const Pieces pieces(name.data(), size);
  const std::uint64_t front = Fold(pieces.first ^ salt1, pieces.second ^ salt2 ^ size);
  const std::uint64_t back = Fold(pieces.third ^ salt3, pieces.fourth ^ salt4);
  return Fold(front ^ back, salt1);
}

inline bool SameBytes(const char* a, const char* b, std::size_t size) {
  if (size < pieceSize) return ShortWord(a, size) == ShortWord(b, size);
  if (!IsInPieces(size)) return std::memcmp(a, b, size) == 0;
  const Pieces x(a, size);
  const Pieces y(b, size);
  return ((x.first ^ y.first) | (x.second ^ y.second) | (x.third ^ y.third) | (x.fourth ^ y.fourth)) == 0;
}

// The names that a thread has met, with their tags: a table of places, of which a name takes the first free one from
// the place that its hash gives. Whatever names come in, a search looks at a few places and the table stays in
// proportion: a name that finds no place within reach of its own, in a table that is nearly empty, isn't kept.
class Snapshot {
 public:
  bool Find(std::string_view name, unsigned int& tag) const {
    const Place* at = &places[PlaceOf(name)];
    for (const Place* const end = at + reach; at != end; ++at) {
      if (!at->text) return false;
      if (at->size == name.size() && SameBytes(at->text, name.data(), name.size())) {
        tag = at->tag;
        return true;
      }
    }
    return false;
  }

  // The name must stand as long as the snapshot. Throws std::bad_alloc, with all earlier names kept.
  void Keep(const TagBiMap::Entry& entry) {
    if (entry.name.size() > UINT32_MAX) return;
    const Place place = {entry.name.data(), static_cast<std::uint32_t>(entry.name.size()), entry.tag};
    if (leastPlaces * (count + 1) > Size()) Grow();
    while (!Put(place)) {
      if (Size() > mostPlaces * (count + 1)) return;
      Grow();
    }
    ++count;
  }

 private:
  struct Place {
    const char* text = nullptr;
    std::uint32_t size = 0;
    std::uint32_t tag = 0;
  };
  static constexpr std::size_t reach = 16;
  // For each name: with three places in four free, most names stand right at their own.
  static constexpr std::size_t leastPlaces = 4;
  static constexpr std::size_t mostPlaces = 16;

  std::size_t Size() const { return std::size_t{1} << bits; }
  std::size_t PlaceOf(std::string_view name) const { return HashOf(name) >> (64 - bits); }

  bool Put(const Place& place) {
    Place* at = &places[PlaceOf({place.text, place.size})];
    Place* const end = at + reach;
    at = std::find_if(at, end, [](const Place& each) { return !each.text; });
    if (at == end) return false;
    *at = place;
    return true;
  }

  void Grow() {
    std::vector<Place> before(2 * Size() + reach);
    places.swap(before);
    ++bits;
    for (const Place& place : before) {
      if (place.text && !Put(place)) --count;
    }
  }

  std::vector<Place> places = std::vector<Place>(64 + reach);
  unsigned int bits = 6;
  std::size_t count = 0;
};

// Plain values, which a lookup reaches without the tests for first use that objects with a constructor need, and which
// stay good when the thread's objects are destroyed; from then on the thread goes to the map each time.
[[gnu::tls_model("initial-exec")]] thread_local Snapshot* threadSnapshot = nullptr;
[[gnu::tls_model("initial-exec")]] thread_local bool threadEnds = false;

struct SnapshotOwner {
  ~SnapshotOwner() {
    delete threadSnapshot;
    threadSnapshot = nullptr;
    threadEnds = true;
  }
};

bool IsKnown(std::string_view name, unsigned int& tag) { return threadSnapshot && threadSnapshot->Find(name, tag); }

unsigned int Learn(const TagBiMap::Entry& entry) {
  if (threadEnds) return entry.tag;
  try {
    if (!threadSnapshot) {
      static thread_local SnapshotOwner owner;
      static_cast<void>(owner);
      threadSnapshot = new Snapshot;
    }
    threadSnapshot->Keep(entry);
  } catch (const std::bad_alloc&) {
    // The name is registered all the same; the next lookup finds it in the map.
  }
  return entry.tag;
}

unsigned int TagOf(std::string_view name, std::string* given) {
  unsigned int tag = 0;
  if (IsKnown(name, tag)) return tag;
  return Learn(Map().FindOrAdd(name, given));
}

}  // namespace

TagBiMap::TagBiMap() : nextTag(firstFreeTag) {
  blocks[0] = std::make_unique<std::string[]>(slotCount);
  for (const Entry& fixed : fixedNames) {
    blocks[0][fixed.tag] = fixed.name;
    sorted.push_back(fixed.tag);
  }
}

const std::string& TagBiMap::Stored(unsigned int tag) const { return blocks[tag >> blockShift][tag & slotMask]; }

TagBiMap::Tags::iterator TagBiMap::Place(std::string_view name) {
  return std::lower_bound(sorted.begin(), sorted.end(), name,
                          [this](unsigned int tag, std::string_view wanted) { return Stored(tag) < wanted; });
}

bool TagBiMap::IsAt(Tags::iterator place, std::string_view name) {
  return place != sorted.end() && Stored(*place) == name;
}

bool TagBiMap::Find(std::string_view name, Entry& found) {
  ForkSafeLock lock(mutex);
  const auto place = Place(name);
  if (!IsAt(place, name)) return false;
  found = {Stored(*place), *place};
  return true;
}

TagBiMap::Entry TagBiMap::FindOrAdd(std::string_view name, std::string* given) {
  ForkSafeLock lock(mutex);
  auto place = Place(name);
  if (!IsAt(place, name)) {
    const auto index = place - sorted.begin();
    Add(index, name, given);
    place = sorted.begin() + index;
  }
  return {Stored(*place), *place};
}

// Everything that may fail comes first. The slot is filled before the next tag moves on, which is what a reader without
// the lock goes by.
void TagBiMap::Add(std::ptrdiff_t index, std::string_view name, std::string* given) {
  unsigned int tag = nextTag.load(std::memory_order_relaxed);
  const bool blockIsFull = (tag & slotCount) != 0;
  if (blockIsFull) tag = ((tag >> blockShift) + 1) << blockShift;
  if (tag >> blockShift == blocks.size()) throw std::bad_alloc();
  Block block = blockIsFull ? std::make_unique<std::string[]>(slotCount) : nullptr;
  std::string copy = given ? std::string() : std::string(name);
  if (sorted.size() == sorted.capacity()) sorted.reserve(2 * sorted.size());

  if (blockIsFull) blocks[tag >> blockShift] = std::move(block);
  blocks[tag >> blockShift][tag & slotMask] = std::move(given ? *given : copy);
  nextTag.store(tag + 1, std::memory_order_release);
  sorted.insert(sorted.begin() + index, tag);
}

const char* TagBiMap::Name(unsigned int tag) const {
  return Has(tag) && (tag & slotMask) < slotCount ? Stored(tag).c_str() : "";
}

unsigned int QZGetTag(const char* name) { return name ? TagOf(name, nullptr) : 0; }

unsigned int QZGetTag(const std::string& name) { return TagOf(name, nullptr); }

unsigned int QZGetTag(std::string&& name) { return TagOf(name, &name); }

const char* QZGetTag(unsigned int tag) { return Map().Name(tag); }

bool QZHasTag(unsigned int tag) { return Map().Has(tag); }

bool QZHasTag(const std::string& name) {
  unsigned int tag = 0;
  if (IsKnown(name, tag)) return true;
  TagBiMap::Entry entry;
  if (!Map().Find(name, entry)) return false;
  Learn(entry);
  return true;
}

}  // namespace QZSystem
