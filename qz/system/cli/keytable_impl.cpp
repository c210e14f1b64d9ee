#include "qz/system/cli/keytable_impl.h"

namespace QZSystem {

namespace {

constexpr std::size_t kFirstSlots = 64;

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// FNV-1a (Fowler, Noll and Vo 1991) of the key in lower case, with the high bits folded onto the low ones.
std::uint32_t HashOf(std::string_view key) {
  std::uint32_t hash = 2166136261U;
  for (const char c : key) hash = (hash ^ static_cast<unsigned char>(Lower(c))) * 16777619U;
  return hash ^ (hash >> 15);
}

bool IsLowerOf(std::string_view lower, std::string_view key) {
  if (lower.size() != key.size()) return false;
  for (std::size_t i = 0; i < key.size(); ++i)
    if (lower[i] != Lower(key[i])) return false;
  return true;
}

}  // namespace

KeyTable::KeyTable(QZInterface& itf) : slots(kFirstSlots) {
  for (QZParameter& parameter : QZIter<QZParameter>(itf.GetParameters(true))) {
    Add(parameter.GetName(), parameter);
    for (const std::string& alias : QZIter<const std::string>(parameter.GetAliases())) Add(alias, parameter);
  }
}

QZParameter* KeyTable::Find(std::string_view key) const { return slots[Place(key, HashOf(key))].parameter; }

/// The first parameter that brings a key keeps it.
void KeyTable::Add(std::string_view key, QZParameter& parameter) {
  const std::uint32_t hash = HashOf(key);
  Slot& slot = slots[Place(key, hash)];
  if (slot.parameter != nullptr) return;
  slot = {&parameter, hash, keys.size(), key.size()};
  for (const char c : key) keys.push_back(Lower(c));
  if (++used > slots.size() / 2) Grow();
}

void KeyTable::Grow() {
  std::vector<Slot> before(2 * slots.size());
  before.swap(slots);
  for (const Slot& slot : before)
    if (slot.parameter != nullptr) slots[Place(std::string_view(keys).substr(slot.begin, slot.size), slot.hash)] = slot;
}

/// The slot that has the key, or the free one where it belongs.
std::size_t KeyTable::Place(std::string_view key, std::uint32_t hash) const {
  const std::size_t mask = slots.size() - 1;
  std::size_t at = hash & mask;
  while (slots[at].parameter != nullptr &&
         (slots[at].hash != hash || !IsLowerOf(std::string_view(keys).substr(slots[at].begin, slots[at].size), key)))
    at = (at + 1) & mask;
  return at;
}

}  // namespace QZSystem
