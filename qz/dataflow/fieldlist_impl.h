#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "qz/dataflow/field.h"
#include "qz/dataflow/names.h"
#include "qz/dataflow/writebuffer.h"

namespace QZDataFlow {

/// The hash of some bytes, a name for instance: all of them count, up to eight at a time.
inline std::uint64_t HashBytes(const void* data, std::size_t size) {
  constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15;
  const auto* bytes = static_cast<const unsigned char*>(data);
  std::uint64_t hash = size * kMultiplier;
  std::uint64_t word;
  for (; size > 8; size -= 8, bytes += 8) {
    std::memcpy(&word, bytes, 8);
    hash = (hash ^ word) * kMultiplier;
    hash ^= hash >> 32;
  }
  // The last ones by two overlapping words, without a loop.
  if (size >= 4) {
    std::uint32_t first, last;
    std::memcpy(&first, bytes, 4);
    std::memcpy(&last, bytes + (size - 4), 4);
    word = std::uint64_t{first} << 32 | last;
  } else {
    word = size == 0 ? 0u : bytes[0] | unsigned{bytes[size / 2]} << 8 | unsigned{bytes[size - 1]} << 16;
  }
  hash = (hash ^ word) * kMultiplier;
  return hash ^ hash >> 32;
}

/// Whether two texts of this size are the same. They are names: mostly shorter than a call is long.
inline bool SameText(const char* a, const char* b, std::size_t size) {
  if (size > 16 || size < 4) return std::memcmp(a, b, size) == 0;
  // Two words that overlap cover 4 to 8 bytes, or 8 to 16.
  if (size >= 8) {
    std::uint64_t words[4];
    std::memcpy(&words[0], a, 8);
    std::memcpy(&words[1], b, 8);
    std::memcpy(&words[2], a + (size - 8), 8);
    std::memcpy(&words[3], b + (size - 8), 8);
    return ((words[0] ^ words[1]) | (words[2] ^ words[3])) == 0;
  }
  std::uint32_t words[4];
  std::memcpy(&words[0], a, 4);
  std::memcpy(&words[1], b, 4);
  std::memcpy(&words[2], a + (size - 4), 4);
  std::memcpy(&words[3], b + (size - 4), 4);
  return ((words[0] ^ words[1]) | (words[2] ^ words[3])) == 0;
}
inline bool SameText(const std::string& a, const std::string& b) {
  return a.size() == b.size() && SameText(a.data(), b.data(), a.size());
}

/// The fields of a record in ascending order of name, each with its index.
///
/// Nearly all records of one stream have the same fields. So the list lives apart from the values, and many records
/// share one: a list that is shared is frozen, which means that it never changes again and that its stored form and its
/// search tables are made. A record that wants another list makes a copy. Frozen lists may be used by several threads.
class FieldList {
 public:
  static constexpr std::size_t npos = ~std::size_t{0};

  struct Entry {
    std::shared_ptr<const QZFieldBase> field;
    unsigned int idx = 0;
  };

  FieldList() = default;
  /// A copy that may be changed, whatever `other` is.
  FieldList(const FieldList& other);
  FieldList& operator=(const FieldList&) = delete;

  /// The frozen list without fields, which every new record has. It is never destroyed.
  static const FieldList* Empty();

  std::size_t Size() const { return entries.size(); }
  const QZFieldBase& At(std::size_t pos) const { return *entries[pos].field; }
  const std::shared_ptr<const QZFieldBase>& FieldAt(std::size_t pos) const { return entries[pos].field; }
  unsigned int Idx(std::size_t pos) const { return indices[pos]; }
  /// The indices of all fields, in order of name.
  const unsigned int* Indices() const { return indices.data(); }

  /// In a frozen list, the indices as they stand in one byte of the stored form, in order of name; a number above 255
  /// for one that takes more bytes, and behind the last.
  const std::uint16_t* ShortIndices() const { return shortIndices.data(); }

  /// The place of the field of that name, or npos.
  std::size_t Find(const std::string& name) const { return table.empty() ? Search(name) : Lookup(name); }
  /// The place where a field of that name belongs.
  std::size_t PlaceFor(std::string_view name) const;
  /// The place of the first field with that index, or npos.
  std::size_t FindIdx(unsigned int idx) const;
  /// 1 for a list without fields, otherwise the largest index plus 1.
  unsigned int NextIdx() const { return entries.empty() ? 1 : largest + 1; }
  /// Whether two fields have the same index, which only damaged bytes bring about.
  bool SharesIndices() const { return sharesIndices; }
  /// The places in ascending order of index; fields of the same index in order of name.
  std::vector<std::uint32_t> ByIdx() const;

  // Changes of a list that isn't frozen.

  void Insert(std::size_t pos, std::shared_ptr<const QZFieldBase> field, unsigned int idx);
  void Replace(std::size_t pos, std::shared_ptr<const QZFieldBase> field, unsigned int idx);
  void Remove(std::size_t pos);
  /// Adds many fields in any order. Of several of one name the last one stays, and displaces one that was here.
  void InsertAll(std::vector<Entry>&& added);

  /// Makes the stored form and the search tables; no change may follow.
  void Freeze();
  bool IsFrozen() const { return frozen; }
  /// The section "fields" of the stored form, with its name and length; empty when there is no field.
  const std::vector<unsigned char>& FieldsSection() const { return fieldsSection; }
  /// The items of all fields in the section "meta".
  const std::vector<unsigned char>& MetaItems() const { return metaItems; }
  /// That section, as it is when the record as a whole has no metadata; empty when no field has any either.
  const std::vector<unsigned char>& MetaSection() const { return metaSection; }
  /// The sections "version", "fields" and "meta" one after the other, as the two above have them: how most records
  /// with this list begin.
  const std::vector<unsigned char>& Opening() const { return opening; }
  /// Whether the type names still split into wrapper and type as they did: handlers that were registered since may
  /// have changed that.
  bool SplitsAsBefore() const { return !hasColons || SplitsTheSame(); }

 private:
  bool SplitsTheSame() const;
  std::size_t Search(std::string_view name) const;
  std::size_t Lookup(const std::string& name) const;
  void MakeTable();
  void Recount();

  std::vector<Entry> entries;
  std::vector<unsigned int> indices;  // those of `entries`, side by side: reading values runs along them
  unsigned int largest = 0;
  bool sharesIndices = false;

  bool frozen = false;
  bool hasColons = false;  // a type name has a colon, at which it may split
  std::vector<std::uint16_t> shortIndices;
  std::vector<std::uint32_t> byIdx;  // see ByIdx
  std::vector<std::uint32_t> table;  // places plus 1 by the hash of the name, 0 for none; linear probing
  std::vector<unsigned char> fieldsSection;
  std::vector<unsigned char> metaItems;
  std::vector<unsigned char> metaSection;
  std::vector<unsigned char> opening;
};

inline std::size_t FieldList::Lookup(const std::string& name) const {
  const std::uint32_t* const places = table.data();
  const std::size_t mask = table.size() - 1;
  for (std::size_t at = HashBytes(name.data(), name.size()) & mask;; at = (at + 1) & mask) {
    const std::uint32_t place = places[at];
    if (place == 0) return npos;
    if (SameText(entries.data()[place - 1].field->GetName(), name)) return place - 1;
  }
}

/// Appends the item of a field, or with the index 0 of the record, to the section "meta".
void AppendMetaItem(QZWriteBuffer& out, unsigned int idx, const QZMeta& meta);

/// Splits a stored type name at its last colon, unless the whole name is that of a registered handler.
struct TypeNameParts {
  std::string_view wrapper;
  std::string_view type;
};
TypeNameParts SplitTypeName(const std::string& typeName);

}  // namespace QZDataFlow
