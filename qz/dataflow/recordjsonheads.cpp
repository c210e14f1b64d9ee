#include "qz/dataflow/recordjsonheads_impl.h"

#include <algorithm>
#include <array>

#include "qz/dataflow/fieldmetajson_impl.h"
#include "qz/dataflow/threadowned_impl.h"

namespace QZDataFlow {

namespace {

// Stored forms, and so the texts of one list, are small in the streams that this is for.
constexpr std::size_t kLargestForm = 16384;

/// Heads, and what they were made from: the stored forms of fields and their metadata say all that is in them.
struct Known {
  std::vector<unsigned char> fields;
  std::vector<unsigned char> meta;
  std::shared_ptr<const FieldHeads> heads;

  bool IsOf(const FieldList& list) const {
    return heads != nullptr && fields == list.FieldsSection() && meta == list.MetaItems();
  }
};

/// The latest first.
using Memory = std::array<Known, 4>;

Known MakeHeads(const FieldList& list) {
  auto heads = std::make_shared<FieldHeads>();
  for (const std::size_t pos : list.ByIdx()) {
    QZJSONTextWriter out;
    out.Open(heads->empty() ? "{" : ",{");
    WriteFieldHead(out, list.At(pos), list.Idx(pos));
    const std::size_t headSize = out.Here().size;
    const QZFieldKind kind = QZGetFieldKind(list.At(pos).GetType());
    if (kind != QZFieldKind::Other) out.Raw(",\"value\":");
    heads->push_back({pos, kind, out.Take(), headSize});
  }
  return {list.FieldsSection(), list.MetaItems(), std::move(heads)};
}

bool HasColon(const FieldList& list) {
  for (std::size_t pos = 0; pos < list.Size(); ++pos) {
    if (list.At(pos).GetTypeName().find(':') != std::string::npos) return true;
  }
  return false;
}

}  // namespace

void WriteFieldHead(QZJSONTextWriter& out, const QZFieldBase& field, unsigned int idx) {
  out.Raw("\"name\":");
  out.String(field.GetName());
  out.Raw(",\"type\":");
  out.String(field.GetTypeName());
  out.Raw(",\"idx\":");
  out.Unsigned(idx);
  if (!field.PeekMeta().IsEmpty()) {
    out.Raw(",\"meta\":");
    WriteFieldMetaJSON(out, field.PeekMeta());
  }
  if (field.IsNullable()) out.Raw(",\"nullable\":true");
}

std::shared_ptr<const FieldHeads> FindFieldHeads(const FieldList& fields) {
  if (!fields.IsFrozen() || fields.FieldsSection().size() + fields.MetaItems().size() > kLargestForm) return nullptr;
  Memory* const memory = GetThreadOwned<Memory>();
  if (memory == nullptr) return nullptr;
  auto found = std::find_if(memory->begin(), memory->end(), [&](const Known& known) { return known.IsOf(fields); });
  if (found == memory->end()) {
    if (HasColon(fields)) return nullptr;
    *--found = MakeHeads(fields);
  }
  std::rotate(memory->begin(), found, found + 1);
  return memory->front().heads;
}

}  // namespace QZDataFlow
