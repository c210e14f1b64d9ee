#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "qz/dataflow/buffer.h"
#include "qz/dataflow/datarecord.h"
#include "qz/dataflow/fieldtype.h"

// A record as the plain maps that it means, slow and simple: what QZRecord is compared with.

namespace RecordTesting {

using namespace QZDataFlow;
using Bytes = std::vector<unsigned char>;

/// A field that can say whether it matches by metadata, in a record and in the model.
class TestField : public QZFieldBase {
 public:
  TestField(const QZFieldBase& base, bool match) : QZFieldBase(base), byMeta(match) { SetMatchByMeta(match); }
  bool byMeta;
};

/// A field from a stored type name.
inline QZFieldBase MakeField(const std::string& name, const std::string& typeName, const QZFieldMeta& meta = {},
                             bool readonly = false, bool nullable = false) {
  QZWriteBuffer fields("fields"), content("record.v1"), whole;
  fields.WriteString(name);
  fields.WriteInt(1);
  fields.WriteString(typeName);
  fields.WriteBool(nullable);
  fields.CopyWrapped(content);
  content.CopyWrapped(whole);
  QZRecord record;
  if (!record.FromBytes(whole.Get()) || record.IsEmpty()) return QZFieldBase(name, meta, readonly, nullable);
  QZFieldBase stored = record.GetFields().front();
  stored.SetMeta(meta);
  if (!readonly) return stored;
  // Only a typed field can be made readonly.
  return typeName == "Int" ? QZFieldBase(QZField<long>(name, meta, true, nullable)) : stored;
}

class RecordModel;

struct RecordState {
  struct Entry {
    unsigned int idx = 0;
    QZFieldBase field;
    bool isNull = false;
  };
  struct Kept {
    bool clean = false;
    std::shared_ptr<RecordModel> value;
  };

  std::map<unsigned int, Bytes> values;
  std::map<std::string, Entry> fields;
  QZRecordMeta recordMeta;
  std::map<unsigned int, Bytes> children;
  std::map<unsigned int, std::map<std::string, std::shared_ptr<RecordModel>>> childCache;
  std::map<unsigned int, Kept> cache;
  std::vector<Bytes> unknownSections;
};

class RecordModel : public RecordState {
 public:
  RecordModel() = default;
  RecordModel(const RecordModel& other) : RecordModel(other, false) {}
  RecordModel& operator=(const RecordModel& other) {
    RecordState::operator=(RecordModel(other, true));
    return *this;
  }

  std::string Key(const TestField& field) const {
    if (field.byMeta) {
      for (const auto& [name, entry] : fields) {
        if (entry.field.GetTypeName() == field.GetTypeName() && field.GetMeta().IsSubsetOf(entry.field.GetMeta()))
          return name;
      }
    }
    return field.GetName();
  }
  static bool Agree(const Entry& entry, const QZFieldBase& field) {
    const std::string &has = entry.field.GetType(), &wanted = field.GetType();
    return has.size() >= wanted.size() && has.substr(has.size() - wanted.size()) == wanted;
  }
  int Idx(const TestField& field) const {
    const auto found = fields.find(Key(field));
    return found != fields.end() && Agree(found->second, field) ? static_cast<int>(found->second.idx) : -1;
  }
  unsigned int IdxToUse(const TestField& field) const {
    const int idx = Idx(field);
    if (idx > 0) return static_cast<unsigned int>(idx);
    unsigned int largest = 0;
    for (const auto& entry : fields) largest = std::max(largest, entry.second.idx);
    return fields.empty() ? 1 : largest + 1;
  }
  int CheckField(const TestField& field, bool strict) const {
    const auto found = fields.find(Key(field));
    if (found == fields.end()) return 1;
    const Entry& entry = found->second;
    if (!Agree(entry, field)) return 4;
    if ((strict || field.byMeta) && !field.GetMeta().IsSubsetOf(entry.field.GetMeta())) return 5;
    if (entry.isNull) return 3;
    if (values.count(entry.idx) != 0) return 0;
    const auto kept = cache.find(entry.idx);
    return kept == cache.end() ? 2 : kept->second.value ? 0 : 3;
  }
  bool HasValue(const TestField& field) const {
    const auto found = fields.find(Key(field));
    if (found == fields.end() || !Agree(found->second, field)) return false;
    const unsigned int idx = found->second.idx;
    return found->second.isNull || values.count(idx) != 0 || cache.count(idx) != 0;
  }
  bool IsNA(const TestField& field) const {
    const auto found = fields.find(Key(field));
    return found != fields.end() && found->second.isNull;
  }

  void SetFieldEntry(const TestField& field, unsigned int idx, bool isNull) {
    if (!field.IsValid()) return;
    if (field.byMeta) {
      for (auto& each : fields) {
        if (each.second.idx != idx) continue;
        QZFieldMeta meta = each.second.field.GetMeta();
        meta.Merge(field.GetMeta());
        each.second.field.SetMeta(meta);
        return;
      }
    }
    const std::string key = Key(field);
    for (const unsigned int option : field.PeekMeta().GetOptions()) {
      const unsigned int mask = QZMetadata::QZGetMetaPerRecordMask(option);
      if (mask == 0) continue;
      for (auto& each : fields) {
        QZFieldMeta meta = each.second.field.GetMeta();
        for (const unsigned int other : std::vector<unsigned int>(meta.GetOptions())) {
          if ((other & mask) == (option & mask)) meta.RemoveOption(other);
        }
        each.second.field.SetMeta(meta);
      }
    }
    QZFieldBase stored = TestField(field, false);
    stored.SetName(key);
    fields[key] = Entry{idx, stored, isNull};
  }
  void AddField(const TestField& field) {
    if (!field.IsValid()) return;
    if (CheckField(field, false) == 4) DeleteField(field);
    SetFieldEntry(field, IdxToUse(field), false);
  }
  bool DeleteField(const TestField& field) {
    const auto found = fields.find(Key(field));
    if (found == fields.end() || found->first.empty()) return false;
    const unsigned int idx = found->second.idx;
    values.erase(idx);
    children.erase(idx);
    cache.erase(idx);
    fields.erase(found);
    return true;
  }
  bool SetBytes(const TestField& field, const std::optional<Bytes>& bytes) {
    if (field.IsReadonly()) return false;
    if (!field.IsValid()) return true;
    const unsigned int idx = IdxToUse(field);
    if (bytes) values[idx] = *bytes;
    SetFieldEntry(field, idx, !bytes);
    cache.erase(idx);
    return true;
  }
  std::optional<Bytes> GetBytes(const TestField& field) {
    const int idx = Idx(field);
    if (idx < 0) return std::nullopt;
    Unload(static_cast<unsigned int>(idx));
    const Bytes* const bytes = fields[Key(field)].isNull ? nullptr : At(values, field);
    return bytes == nullptr ? std::nullopt : std::optional<Bytes>(*bytes);
  }
  bool ClearValue(const TestField& field) {
    const int idx = Idx(field);
    if (idx < 0) return false;
    const bool kept = cache.erase(static_cast<unsigned int>(idx)) != 0;
    if (values.erase(static_cast<unsigned int>(idx)) == 0) return kept;
    fields[Key(field)].isNull = false;
    return true;
  }

  // The cache, of fields of the type "Record".
  bool AddToCache(const TestField& field, std::shared_ptr<RecordModel> value) {
    if (field.IsReadonly()) return false;
    AddField(field);
    cache[IdxToUse(field)] = Kept{false, std::move(value)};
    return true;
  }
  RecordModel* Cached(const TestField& field) {
    const Kept* const kept = At(cache, field);
    return kept == nullptr ? nullptr : kept->value.get();
  }
  void MarkDirty(const TestField& field) {
    if (Kept* const kept = At(cache, field)) kept->clean = false;
  }
  void Unload(unsigned int idx) {
    const auto found = cache.find(idx);
    if (found == cache.end() || found->second.clean || !found->second.value) return;
    values[idx] = found->second.value->ToBytes();
    found->second.clean = true;
  }
  void Unload() {
    for (const auto& each : fields) Unload(each.second.idx);
  }

  // The child records.
  void UnloadChildren(std::optional<unsigned int> only = {}) {
    for (const auto& each : fields) {
      const unsigned int idx = each.second.idx;
      const auto found = childCache.find(idx);
      if (found == childCache.end() || (only && *only != idx)) continue;
      std::vector<Bytes> list;
      for (auto& [key, child] : found->second) {
        if (child->fields.empty()) continue;
        SetKey(*child, key);
        list.push_back(RecordModel(*child).ToBytes());
        child->DeleteField(KeyField());
      }
      children.erase(idx);
      if (!list.empty()) children[idx] = ListForm(list);
    }
  }
  static TestField KeyField() { return TestField(QZField<std::string>("__qz__key"), false); }
  static void SetKey(RecordModel& child, const std::string& key) {
    if (child.CheckField(KeyField(), false) == 4) child.DeleteField(KeyField());
    child.SetBytes(KeyField(), Bytes(key.begin(), key.end()));
  }
  static Bytes ListForm(const std::vector<Bytes>& list) {
    QZWriteBuffer out;
    out.WriteInt(list.size());
    for (const Bytes& each : list) out.Append(each);
    return out.Get();
  }
  Bytes ChildBytes(const TestField& field) {
    const int idx = Idx(field);
    // An invalid field stands for all of them.
    if (!field.IsValid()) UnloadChildren();
    if (idx >= 0) UnloadChildren(static_cast<unsigned int>(idx));
    const Bytes* const bytes = At(children, field);
    return bytes == nullptr ? Bytes() : *bytes;
  }
  bool SetChildBytes(const TestField& field, const Bytes& bytes) {
    const int idx = Idx(field);
    if (idx < 0) return false;
    children[static_cast<unsigned int>(idx)] = bytes;
    childCache.erase(static_cast<unsigned int>(idx));
    return true;
  }
  void LoadChildren(const TestField& field) {
    const int idx = Idx(field);
    if (idx < 0 || childCache.count(static_cast<unsigned int>(idx)) != 0) return;
    for (auto& [key, child] : DecodeChildren(ChildBytes(field)))
      childCache[static_cast<unsigned int>(idx)][key] = std::make_shared<RecordModel>(child);
  }
  static std::map<std::string, RecordModel> DecodeChildren(const Bytes& bytes) {
    std::map<std::string, RecordModel> result;
    QZReadBuffer in(bytes);
    for (unsigned long left = in.ReadLength(); in.IsValid() && left > 0; --left) {
      RecordModel child;
      const Bytes element = in.ReadContainer();
      if (!element.empty()) child.FromBytes(element);
      RecordModel copy(child);
      const std::optional<Bytes> key = copy.GetBytes(KeyField());
      copy.DeleteField(KeyField());
      result[key ? std::string(key->begin(), key->end()) : std::string()] = copy;
    }
    return result;
  }
  RecordModel* GetChild(const TestField& field, const std::string& key) {
    LoadChildren(field);
    const int idx = Idx(field);
    if (idx < 0) return nullptr;
    auto& child = childCache[static_cast<unsigned int>(idx)][key];
    if (!child) child = std::make_shared<RecordModel>();
    return child.get();
  }
  bool HasChildren(const TestField& field) {
    if (const auto* const decoded = At(childCache, field)) {
      for (const auto& child : *decoded) {
        if (!child.second->fields.empty()) return true;
      }
    }
    return Idx(field) >= 0 && !ChildBytes(field).empty();
  }
  bool AddChild(const TestField& field, const std::string& key, const RecordModel& record) {
    const int state = CheckField(field, false);
    if (state == 1 || state == 4) return false;
    std::map<std::string, RecordModel> all;
    if (HasChildren(field)) all = DecodeChildren(ChildBytes(field));
    all[key] = record;
    std::vector<Bytes> list;
    for (auto& [each, child] : all) {
      SetKey(child, each);
      list.push_back(RecordModel(child).ToBytes());
    }
    return SetChildBytes(field, ListForm(list));
  }
  bool DeleteChild(const TestField& field, const std::string& key) {
    LoadChildren(field);
    auto* const decoded = At(childCache, field);
    return decoded != nullptr && decoded->erase(key) != 0;
  }
  bool DeleteChildren(const TestField& field) {
    const int idx = Idx(field);
    if (idx < 0) return false;
    children.erase(static_cast<unsigned int>(idx));
    childCache.erase(static_cast<unsigned int>(idx));
    return true;
  }

  void Flush() {
    UnloadChildren();
    childCache.clear();
    Unload();
    cache.clear();
  }

  Bytes ToBytes() {
    UnloadChildren();
    Unload();
    QZWriteBuffer version("version"), items("fields"), meta("meta"), data("data"), kids("children"), all("record.v1");
    version.WriteString("1.0");
    for (const auto& [name, entry] : fields) {
      items.WriteString(name);
      items.WriteInt(entry.idx);
      items.WriteString(entry.field.GetTypeName());
      items.WriteBool(entry.field.IsNullable());
      WriteMeta(meta, entry.idx, entry.field.GetMeta());
      const auto value = values.find(entry.idx);
      if (!entry.isNull && value == values.end()) continue;
      data.WriteInt(entry.idx);
      entry.isNull ? data.WriteNoneBlob() : data.WriteBlob(value->second);
    }
    WriteMeta(meta, 0, recordMeta);
    for (const auto& [idx, bytes] : children) {
      kids.WriteInt(idx);
      kids.WriteBlob(bytes);
    }
    for (const QZWriteBuffer* section : {&version, &items, &meta, &data, &kids}) section->CopyWrapped(all);
    for (const Bytes& section : unknownSections) all.Append(section);
    Bytes result;
    all.CopyWrapped(result, true);
    return result;
  }

  bool FromBytes(const Bytes& bytes) {
    *this = RecordModel();
    QZReadBuffer outer(bytes), in;
    std::string name;
    if (!outer.Unwrap(name, in)) return false;
    try {
      while (in.IsValid()) {
        const unsigned char* const begin = in.Position();
        QZReadBuffer section;
        if (!in.Unwrap(name, section)) return false;
        if (name == "version") {
          if (!ReadVersion(section)) return false;
        } else if (name == "fields") {
          ReadFields(section);
        } else if (name == "meta") {
          ReadMeta(section);
        } else if (name == "data") {
          ReadData(section);
        } else if (name == "children") {
          ReadChildren(section);
        } else {
          unknownSections.emplace_back(begin, in.Position());
        }
      }
      return true;
    } catch (const std::length_error&) {
      return false;
    }
  }

 private:
  RecordModel(const RecordModel& other, bool withSourceID) : RecordState(other) {
    if (!withSourceID) recordMeta.RemoveAttribute(0x01000001);
    Unload();
    cache.clear();
  }
  /// What stands in a map under the index of the field.
  template <class Map>
  auto At(Map& map, const TestField& field) const -> decltype(&map.begin()->second) {
    const int idx = Idx(field);
    const auto found = idx < 0 ? map.end() : map.find(static_cast<unsigned int>(idx));
    return found == map.end() ? nullptr : &found->second;
  }
  static void WriteMeta(QZWriteBuffer& out, unsigned int idx, const QZMeta& meta) {
    if (meta.GetOptions().empty() && meta.GetAttributes(0).empty()) return;
    out.WriteInt(idx);
    out.WriteIntVec(meta.GetOptions());
    out.WriteInt(meta.GetAttributes(0).size());
    for (const auto& [key, value] : meta.GetAttributes(0)) {
      out.WriteInt(key);
      out.Append(value);
    }
  }
  static bool ReadVersion(QZReadBuffer& in) {
    bool none;
    const std::string text = in.ReadString(none);
    const std::size_t dot = text.find('.');
    if (none || dot == std::string::npos) return !none;
    try {
      std::stoi(text.substr(0, dot));
      std::stoi(text.substr(dot + 1, text.find('.', dot + 1) - dot - 1));
      return true;
    } catch (const std::logic_error&) {
      return false;
    }
  }
  void ReadFields(QZReadBuffer& in) {
    while (in.IsValid()) {
      const std::string name = in.ReadString();
      const auto idx = static_cast<unsigned int>(in.ReadInt());
      const std::string type = in.ReadString();
      const bool nullable = in.ReadBool();
      SetFieldEntry(TestField(MakeField(name, type, {}, false, nullable), false), idx, false);
    }
  }
  void ReadMeta(QZReadBuffer& in) {
    std::map<unsigned int, QZFieldMeta> metas;
    std::exception_ptr damage;
    try {
      while (in.IsValid()) {
        const auto idx = static_cast<unsigned int>(in.ReadInt());
        std::vector<unsigned int> options;
        for (long left = in.ReadInt(); left > 0 && in.IsValid(); --left)
          options.push_back(static_cast<unsigned int>(in.ReadInt()));
        std::vector<QZMeta::Attribute> attributes;
        for (long left = in.ReadInt(); left > 0 && in.IsValid(); --left) {
          const auto key = static_cast<unsigned int>(in.ReadInt());
          attributes.emplace_back(key, QZMetadata::TakesAttribute<std::string>(key) ? in.ReadRawBytes<std::string>()
                                       : QZMetadata::TakesAttribute<double>(key)    ? in.ReadRawBytes<double>()
                                       : QZMetadata::TakesAttribute<int>(key)       ? in.ReadRawBytes<long>()
                                                                                    : Bytes());
        }
        metas[idx] = QZFieldMeta();
        metas[idx].SetOptions(options);
        metas[idx].SetAttributes(attributes);
      }
    } catch (const std::length_error&) {
      damage = std::current_exception();
    }
    for (auto& each : fields) {
      if (metas.count(each.second.idx) != 0) each.second.field.SetMeta(metas[each.second.idx]);
    }
    if (metas.count(0) != 0) {
      recordMeta.Clear();
      recordMeta.SetOptions(metas[0].GetOptions());
      recordMeta.SetAttributes(metas[0].GetAttributes(0));
    }
    if (damage) std::rethrow_exception(damage);
  }
  void ReadData(QZReadBuffer& in) {
    while (in.IsValid()) {
      const auto idx = static_cast<unsigned int>(in.ReadInt());
      bool none;
      values[idx] = in.ReadBlob(none);
      for (auto& each : fields) {
        if (none && each.second.idx == idx) each.second.isNull = true;
      }
    }
  }
  void ReadChildren(QZReadBuffer& in) {
    children.clear();
    childCache.clear();
    while (in.IsValid()) {
      const auto idx = static_cast<unsigned int>(in.ReadInt());
      children[idx] = in.ReadBlob();
    }
  }
};

}  // namespace RecordTesting
