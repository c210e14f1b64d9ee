#include "qz/system/cli/keytable_impl.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "qz/system/text/qzstring.h"

namespace QZSystem {

namespace {

constexpr std::size_t kLeastSlots = 64;
/// Slots for each key; with few of them taken nearly every search ends where it starts.
constexpr std::size_t kSlotsForKey = 3;

/// Up to eight bytes as a number.
std::uint64_t Bytes(const char* bytes, std::size_t count) {
  std::uint64_t number = 0;
  if (count == sizeof number) {
    std::memcpy(&number, bytes, sizeof number);
  } else {
    for (std::size_t i = 0; i < count; ++i) number = number << 8 | static_cast<unsigned char>(bytes[i]);
  }
  return number;
}

/// Eight bytes at a time, by multiplication. Setting the bit of lower case in every byte gives both cases of a letter
/// the same hash; that it gives some other bytes the same, too, only costs a comparison.
std::uint32_t HashOf(std::string_view key) {
  constexpr std::uint64_t kLowerCase = 0x2020202020202020U;
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15U;
  std::uint64_t hash = key.size();
  const auto mix = [&hash](std::uint64_t bytes) {
    hash = (hash ^ (bytes | kLowerCase)) * kFactor;
    hash ^= hash >> 32;
  };
  constexpr std::size_t kStep = sizeof hash;
  std::size_t at = 0;
  for (; at + kStep <= key.size(); at += kStep) mix(Bytes(key.data() + at, kStep));
  // The rest, or, of a longer key, the last eight bytes once more with it.
  if (at == 0) {
    mix(Bytes(key.data(), key.size()));
  } else if (at < key.size()) {
    mix(Bytes(key.data() + key.size() - kStep, kStep));
  }
  return static_cast<std::uint32_t>(hash);
}

bool IsSame(std::string_view a, std::string_view b) { return a == b || QZStringEquals(std::string(a), std::string(b)); }

}  // namespace

KeyTable::KeyTable(const std::vector<QZParameter*>& parameters) {
  entries.reserve(parameters.size());
  Resize(kSlotsForKey * parameters.size());
  for (QZParameter* parameter : parameters)
    parameter->AnyKey([&](const std::string& key) {
      Add(key, *parameter);
      return false;
    });
}

QZParameter* KeyTable::Find(std::string_view key) const {
  const std::uint32_t entry = slots[Place(key, HashOf(key))].entry;
  return entry != 0 ? entries[entry - 1].parameter : nullptr;
}

void KeyTable::Add(std::string_view key, QZParameter& parameter) {
  if (entries.size() >= slots.size() / 2) Resize(2 * slots.size());
  const std::uint32_t hash = HashOf(key);
  Slot& slot = slots[Place(key, hash)];
  if (slot.entry != 0) return;
  entries.push_back({key, &parameter});
  slot = {hash, static_cast<std::uint32_t>(entries.size())};
}

void KeyTable::Resize(std::size_t least) {
  std::size_t size = kLeastSlots;
  while (size < least) size *= 2;
  std::vector<Slot> before(size);
  before.swap(slots);
  for (const Slot& slot : before)
    if (slot.entry != 0) slots[Place(entries[slot.entry - 1].key, slot.hash)] = slot;
}

/// The slot that has the key, or the free one where it belongs.
std::size_t KeyTable::Place(std::string_view key, std::uint32_t hash) const {
  const std::size_t mask = slots.size() - 1;
  std::size_t at = hash & mask;
  while (slots[at].entry != 0 && (slots[at].hash != hash || !IsSame(entries[slots[at].entry - 1].key, key)))
    at = (at + 1) & mask;
  return at;
}

}  // namespace QZSystem
