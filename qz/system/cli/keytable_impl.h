#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "qz/system/cli/interface.h"

namespace QZSystem {

/// The lookup of ParameterWithFullname for the many keys of one parser call: a hash table of all names and aliases in
/// lower case, with the first parameter of the walk for each. It doesn't notice a change of the interface, so it lives
/// no longer than the call. Const operations may run in parallel; a change needs exclusive access.
class KeyTable {
 public:
  explicit KeyTable(QZInterface& itf);

  /// The parameter with this key in any case; null if there is none.
  QZParameter* Find(std::string_view key) const;

 private:
  struct Slot {
    QZParameter* parameter = nullptr;
    std::uint32_t hash = 0;
    std::size_t begin = 0;  ///< of the key in `keys`
    std::size_t size = 0;
  };

  void Add(std::string_view key, QZParameter& parameter);
  void Grow();
  std::size_t Place(std::string_view key, std::uint32_t hash) const;

  std::string keys;
  std::vector<Slot> slots;  ///< open addressing; the size is a power of 2
  std::size_t used = 0;
};

}  // namespace QZSystem
