#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "qz/system/cli/parameter.h"

namespace QZSystem {

/// The lookup of ParameterWithFullname for the many keys of one parser call: a hash table of all names and aliases. It
/// doesn't notice when they change, so it lives no longer than the call. Const operations may run in parallel; a change
/// needs exclusive access.
class KeyTable {
 public:
  /// Of several parameters with the same key, the first one has it.
  explicit KeyTable(const std::vector<QZParameter*>& parameters);

  /// The parameter with this key in any case; null if there is none.
  QZParameter* Find(std::string_view key) const;

 private:
  struct Entry {
    std::string_view key;  ///< of the parameter
    QZParameter* parameter;
  };
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t entry = 0;  ///< index plus 1; 0 if the slot is free
  };

  void Add(std::string_view key, QZParameter& parameter);
  void Resize(std::size_t least);
  std::size_t Place(std::string_view key, std::uint32_t hash) const;

  std::vector<Entry> entries;
  std::vector<Slot> slots;  ///< open addressing; the size is a power of 2
};

}  // namespace QZSystem
