#include "qz/dataflow/fieldlist_impl.h"

#include <algorithm>
#include <cassert>
#include <numeric>

#include "qz/dataflow/fieldtypehandler.h"
#include "qz/dataflow/recordsections_impl.h"

namespace QZDataFlow {

namespace {

constexpr std::uint16_t kNoShortIndex = 0x100;

// Below this size a binary search is as fast as the table.
constexpr std::size_t kSmallestTable = 4;

void AppendFieldItem(QZWriteBuffer& out, const FieldList::Entry& entry) {
  out.WriteString(entry.field->GetName());
  out.WriteInt(entry.idx);
  out.WriteString(entry.field->GetTypeName());
  out.WriteBool(entry.field->IsNullable());
}

}  // namespace

void AppendMetaItem(QZWriteBuffer& out, unsigned int idx, const QZMeta& meta) {
  out.WriteInt(idx);
  out.WriteInt(meta.GetOptions().size());
  for (const unsigned int option : meta.GetOptions()) out.WriteInt(option);
  out.WriteInt(meta.GetAllAttributes().size());
  for (const QZMeta::Attribute& attribute : meta.GetAllAttributes()) {
    out.WriteInt(attribute.first);
    out.Append(attribute.second);
  }
}

TypeNameParts SplitTypeName(const std::string& typeName) {
  const std::string_view whole = typeName;
  const std::size_t colon = whole.rfind(':');
  if (colon == std::string_view::npos || QZFieldTypeHandlerRegistry::GetInstance().GetHandler(typeName) != nullptr)
    return {{}, whole};
  return {whole.substr(0, colon), whole.substr(colon + 1)};
}

FieldList::FieldList(const FieldList& other)
    : entries(other.entries), indices(other.indices), largest(other.largest), sharesIndices(other.sharesIndices) {}

const FieldList* FieldList::Empty() {
  static const FieldList* const empty = [] {
    auto* list = new FieldList;
    list->Freeze();
    return list;
  }();
  return empty;
}

std::size_t FieldList::PlaceFor(std::string_view name) const {
  const auto at = std::lower_bound(entries.begin(), entries.end(), name, [](const Entry& entry, std::string_view key) {
    return entry.field->GetName() < key;
  });
  return static_cast<std::size_t>(at - entries.begin());
}

std::size_t FieldList::Search(std::string_view name) const {
  const std::size_t pos = PlaceFor(name);
  return pos < entries.size() && At(pos).GetName() == name ? pos : npos;
}

std::size_t FieldList::FindIdx(unsigned int idx) const {
  if (!frozen) {
    const auto at = std::find(indices.begin(), indices.end(), idx);
    return at == indices.end() ? npos : static_cast<std::size_t>(at - indices.begin());
  }
  const auto at = std::lower_bound(byIdx.begin(), byIdx.end(), idx,
                                   [this](std::uint32_t pos, unsigned int wanted) { return indices[pos] < wanted; });
  return at == byIdx.end() || indices[*at] != idx ? npos : *at;
}

std::vector<std::uint32_t> FieldList::ByIdx() const {
  if (frozen) return byIdx;
  std::vector<std::uint32_t> order(entries.size());
  std::iota(order.begin(), order.end(), 0u);
  const auto less = [this](std::uint32_t a, std::uint32_t b) {
    return indices[a] != indices[b] ? indices[a] < indices[b] : a < b;
  };
  // Indices often ascend as they are.
  if (!std::is_sorted(order.begin(), order.end(), less)) std::sort(order.begin(), order.end(), less);
  return order;
}

void FieldList::Insert(std::size_t pos, std::shared_ptr<const QZFieldBase> field, unsigned int idx) {
  assert(!frozen);
  entries.reserve(entries.size() + 1);
  indices.insert(indices.begin() + static_cast<std::ptrdiff_t>(pos), idx);
  entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(pos), Entry{std::move(field), idx});
  if (entries.size() == 1 || (idx > largest && !sharesIndices)) {
    largest = idx;
  } else {
    Recount();
  }
}

void FieldList::Replace(std::size_t pos, std::shared_ptr<const QZFieldBase> field, unsigned int idx) {
  assert(!frozen);
  const bool same = indices[pos] == idx;
  entries[pos] = Entry{std::move(field), idx};
  indices[pos] = idx;
  if (same) return;
  if (idx > largest && !sharesIndices) {
    largest = idx;
  } else {
    Recount();
  }
}

void FieldList::Remove(std::size_t pos) {
  assert(!frozen);
  const bool wasLargest = indices[pos] == largest;
  entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(pos));
  indices.erase(indices.begin() + static_cast<std::ptrdiff_t>(pos));
  if (sharesIndices) {
    Recount();
  } else if (wasLargest) {
    largest = indices.empty() ? 0 : *std::max_element(indices.begin(), indices.end());
  }
}

void FieldList::InsertAll(std::vector<Entry>&& added) {
  assert(!frozen);
  const auto less = [](const Entry& a, const Entry& b) { return a.field->GetName() < b.field->GetName(); };
  entries.insert(entries.end(), std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()));
  if (!std::is_sorted(entries.begin(), entries.end(), less)) std::stable_sort(entries.begin(), entries.end(), less);
  // The last of those with one name is the first met from the end.
  const auto sameName = [](const Entry& a, const Entry& b) { return a.field->GetName() == b.field->GetName(); };
  const auto kept = std::unique(entries.rbegin(), entries.rend(), sameName);
  entries.erase(entries.begin(), kept.base());
  indices.resize(entries.size());
  std::transform(entries.begin(), entries.end(), indices.begin(), [](const Entry& entry) { return entry.idx; });
  Recount();
}

void FieldList::Recount() {
  std::vector<unsigned int> sorted = indices;
  std::sort(sorted.begin(), sorted.end());
  largest = sorted.empty() ? 0 : sorted.back();
  sharesIndices = std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end();
}

void FieldList::Freeze() {
  assert(!frozen);
  QZWriteBuffer fields("fields");
  QZWriteBuffer meta("meta");
  fieldsSection.clear();
  metaSection.clear();
  for (const Entry& entry : entries) {
    AppendFieldItem(fields, entry);
    hasColons = hasColons || entry.field->GetTypeName().find(':') != std::string::npos;
    if (!entry.field->PeekMeta().IsEmpty()) AppendMetaItem(meta, entry.idx, entry.field->PeekMeta());
  }
  fields.CopyWrapped(fieldsSection);
  meta.CopyWrapped(metaSection);
  metaItems = meta.Get();
  opening = VersionSection();
  opening.insert(opening.end(), fieldsSection.begin(), fieldsSection.end());
  opening.insert(opening.end(), metaSection.begin(), metaSection.end());
  shortIndices.assign(entries.size() + 1, kNoShortIndex);
  for (std::size_t pos = 0; pos < indices.size(); ++pos) {
    if (indices[pos] < BufferImpl::kNone) shortIndices[pos] = static_cast<std::uint16_t>(indices[pos]);
  }
  byIdx = ByIdx();
  if (entries.size() >= kSmallestTable) MakeTable();
  frozen = true;
}

void FieldList::MakeTable() {
  std::size_t size = 8;
  while (size < 2 * entries.size()) size *= 2;
  std::vector<std::uint32_t> places(size, 0);
  for (std::uint32_t pos = 0; pos < entries.size(); ++pos) {
    const std::string& name = At(pos).GetName();
    std::size_t at = HashBytes(name.data(), name.size()) & (size - 1);
    while (places[at] != 0) at = (at + 1) & (size - 1);
    places[at] = pos + 1;
  }
  table = std::move(places);
}

bool FieldList::SplitsTheSame() const {
  return std::all_of(entries.begin(), entries.end(), [](const Entry& entry) {
    return SplitTypeName(entry.field->GetTypeName()).wrapper == entry.field->GetWrapper();
  });
}

}  // namespace QZDataFlow
