#include "qz/dataflow/fieldlistcache_impl.h"

#include <array>
#include <cstring>

// One table holds all kinds of knowledge, each in the place that its hash gives, where it displaces what was there. A
// place is only a hint: whether it holds the answer is decided by comparing, and comparing decides it in full, since
// what a change makes of a list depends on the list and the change alone.

namespace QZDataFlow::FieldListCache {

namespace {

enum class Kind : unsigned char { None, Fields, Meta, Put, Removal };

struct Place {
  Kind kind = Kind::None;
  // What the list was made from: null for the empty list and for a stored form. It is kept so that no other list can
  // come to have its address.
  List from;
  List to;
  std::size_t pos = 0;  // the place of the field that was put
};

constexpr std::size_t kPlaces = 256;
constexpr std::size_t kLargestForm = 4096;

using Table = std::array<Place, kPlaces>;

thread_local Table* table = nullptr;
thread_local bool closed = false;

struct Closer {
  ~Closer() {
    closed = true;
    delete table;
    table = nullptr;
  }
};

Table* GetTable() {
  if (table != nullptr || closed) return table;
  thread_local const Closer closer;
  static_cast<void>(closer);
  table = new Table;
  return table;
}

const FieldList* Address(const List& list) { return list ? list.get() : FieldList::Empty(); }

std::uint64_t Hash(Kind kind, const FieldList* from, const void* data, std::size_t size) {
  return HashBytes(data, size) ^ (reinterpret_cast<std::uintptr_t>(from) >> 4) ^ static_cast<std::uint64_t>(kind) << 5;
}

Place* FindPlace(Kind kind, const FieldList* from, const void* data, std::size_t size) {
  Table* const places = GetTable();
  return places == nullptr ? nullptr : &(*places)[Hash(kind, from, data, size) % kPlaces];
}

/// The place for such a thing if it holds one of that kind that was made from `from`.
Place* FindFilled(Kind kind, const FieldList* from, const void* data, std::size_t size) {
  Place* const place = FindPlace(kind, from, data, size);
  const bool fits = place != nullptr && place->kind == kind && (kind == Kind::Fields || Address(place->from) == from);
  return fits ? place : nullptr;
}

void Keep(Kind kind, const List& from, const List& to, const void* data, std::size_t size, std::size_t pos = 0) {
  if (Place* const place = FindPlace(kind, kind == Kind::Fields ? nullptr : Address(from), data, size))
    *place = Place{kind, from, to, pos};
}

bool Equal(QZByteSlice a, QZByteSlice b) {
  return a.size == b.size && (a.size == 0 || std::memcmp(a.data, b.data, a.size) == 0);
}

/// The content of a section "fields": all but the name and the length.
QZByteSlice ContentOf(const std::vector<unsigned char>& section) {
  QZReadBuffer in(section);
  std::string_view name;
  QZReadBuffer content;
  if (!in.Unwrap(name, content)) return {};
  return {content.Position(), content.Remaining()};
}

bool Takes(const FieldList& list) {
  return list.Size() <= kMostFields && list.FieldsSection().size() + list.MetaItems().size() <= kLargestForm;
}

}  // namespace

List FindFields(QZByteSlice content) {
  Place* const place = FindFilled(Kind::Fields, nullptr, content.data, content.size);
  if (place == nullptr) return nullptr;
  const bool same = Equal(ContentOf(place->to->FieldsSection()), content) && place->to->SplitsAsBefore();
  return same ? place->to : nullptr;
}

void KeepFields(const List& list) {
  if (!Takes(*list)) return;
  const QZByteSlice content = ContentOf(list->FieldsSection());
  Keep(Kind::Fields, nullptr, list, content.data, content.size);
}

List FindMeta(const FieldList* from, QZByteSlice items) {
  Place* const place = FindFilled(Kind::Meta, from, items.data, items.size);
  if (place == nullptr) return nullptr;
  const std::vector<unsigned char>& kept = place->to->MetaItems();
  return Equal({kept.data(), kept.size()}, items) ? place->to : nullptr;
}

void KeepMeta(const List& from, const List& to) {
  if (Takes(*to)) Keep(Kind::Meta, from, to, to->MetaItems().data(), to->MetaItems().size());
}

List FindPut(const FieldList* from, const std::string& name, unsigned int idx, const QZFieldBase& field,
             bool (*same)(const QZFieldBase&, const QZFieldBase&), std::size_t& pos) {
  Place* const place = FindFilled(Kind::Put, from, name.data(), name.size());
  if (place == nullptr || place->to->Idx(place->pos) != idx) return nullptr;
  const QZFieldBase& put = place->to->At(place->pos);
  if (put.GetName() != name || !same(put, field)) return nullptr;
  pos = place->pos;
  return place->to;
}

void KeepPut(const List& from, const List& to, std::size_t pos) {
  const std::string& name = to->At(pos).GetName();
  if (Takes(*to)) Keep(Kind::Put, from, to, name.data(), name.size(), pos);
}

List FindRemoval(const FieldList* from, const std::string& name) {
  Place* const place = FindFilled(Kind::Removal, from, name.data(), name.size());
  return place != nullptr && place->to->Find(name) == FieldList::npos ? place->to : nullptr;
}

void KeepRemoval(const List& from, const List& to, const std::string& name) {
  if (Takes(*to)) Keep(Kind::Removal, from, to, name.data(), name.size());
}

}  // namespace QZDataFlow::FieldListCache
