#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <forward_list>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "qz/system/data/tagfacts_impl.h"
#include "qz/system/frame/error.h"
#include "qz/system/json/bracketdepth_impl.h"
#include "qz/system/json/json.h"
#include "qz/system/json/json_impl.h"
#include "qz/system/json/jsonhandler.h"
#include "qz/system/json/limits.h"
#include "qz/system/json/plaintext_impl.h"
#include "qz/system/json/rawwriter_impl.h"
#include "qz/system/qzb/qzb.h"

namespace QZSystem::JSONImpl {

namespace {

constexpr char kCannotWrite[] =
    "JSON: Can not write object with key: %s, no handler for internal generic data type: %p";

constexpr char kHints[] = "qzhint";

constexpr std::size_t kUsualCount = 32;

// What other parts of a program keep for themselves beside the data of an object.
constexpr std::string_view kLeftOut[] = {
    "snark",
    "SDTagData",
    "PDBTagData",
    "__rotorTag__",
    "QZ_unit_cell",
    "ReceptorData",
    "QZStyleList2",
    "Gaussian Grid",
    "PLP Annotation",
    "CIFBlockTagData",
    "QZUnknownQZBData",
    "MiniMolTagDataTag",
    "CDXAtomNumHydrogens",
};

/// Hardly a name begins as one of these.
constexpr std::array<bool, 256> firstLetters() {
  std::array<bool, 256> letters{};
  for (const std::string_view each : kLeftOut) letters[static_cast<unsigned char>(each.front())] = true;
  return letters;
}
constexpr std::array<bool, 256> kFirstLetters = firstLetters();

bool IsLeftOut(std::string_view name) {
  if (name.empty()) return true;
  const bool mayBe = kFirstLetters[static_cast<unsigned char>(name.front())];
  if (mayBe && std::find(std::begin(kLeftOut), std::end(kLeftOut), name) != std::end(kLeftOut)) return true;
  return QZIsInternalQZBTag(name.data(), name.size());
}

/// A name and what of it is the same in all documents.
struct KnownKey {
  static constexpr std::size_t kRoom = 40;

  void Learn(unsigned int theTag, const char* name);
  std::string_view Name() const { return {text, size}; }

  char quoted[kRoom];
  const char* text;
  std::size_t size;
  unsigned int tag;
  /// Of the name as it stands in a document; 0 for one that is long or has characters to escape.
  std::uint8_t quotedSize;
  bool isLeftOut;
};

void KnownKey::Learn(unsigned int theTag, const char* name) {
  text = name;
  size = std::strlen(name);
  tag = theTag;
  isLeftOut = IsLeftOut(Name());
  quotedSize = 0;
  if (size + 2 > kRoom || FindSpecial(text, text + size) != text + size) return;
  quoted[0] = quoted[size + 1] = '"';
  std::memcpy(quoted + 1, text, size);
  quotedSize = static_cast<std::uint8_t>(size + 2);
}

TagFacts<KnownKey> knownKeys;

/// The objects that are being written on this thread, each inside the one before.
thread_local int objectDepth = 0;

/// Puts values as the flavor wants them.
struct Output {
  QZJSONWriter& writer;
  bool isEscaped;

  void Put(bool value) { writer.Bool(value); }
  void Put(int value) { writer.Int(value); }
  void Put(double value) { RawWriter::Double(writer, value); }
  void Put(float value) { Put(static_cast<double>(value)); }
  void Put(const JSONString& value) { RawWriter::Raw(writer, value.GetText()); }
  void Put(std::string_view value) {
    if (isEscaped) return PutEscaped(std::string(value));
    RawWriter::String(writer, value);
  }
  void PutEscaped(std::string value) { RawWriter::String(writer, QZEscapeJSON(value)); }
  template <class T>
  void Put(const std::vector<T>& values) {
    writer.StartArray();
    for (const auto& value : values) Put(value);
    writer.EndArray();
  }
};

template <class T>
void PutHolder(Output& output, const QZBaseData& holder) {
  output.Put(static_cast<const QZBaseDataT<T>&>(holder).GetData());
}

/// A type that has a form of its own, with the hints for a value that begins a member and for one in an array.
struct Form {
  const void* type;
  std::string_view hint, arrayHint;
  bool isRaw;
  void (*put)(Output&, const QZBaseData&);
};

template <class T>
Form FormOf(std::string_view hint, std::string_view arrayHint) {
  return {QZGetDataType<T>(), hint, arrayHint, std::is_same_v<T, JSONString>, &PutHolder<T>};
}

const Form* FindForm(const void* type) {
  static const Form forms[] = {
      FormOf<double>("", "m"),
      FormOf<std::string>("", "m"),
      FormOf<int>("i", "mi"),
      FormOf<float>("f", "mf"),
      FormOf<JSONString>("", ""),
      FormOf<bool>("", "m"),
      FormOf<std::vector<std::string>>("", ""),
      FormOf<std::vector<double>>("", ""),
      FormOf<std::vector<float>>("f", "f"),
      FormOf<std::vector<bool>>("", ""),
      FormOf<std::vector<int>>("i", "i"),
  };
  const auto* const end = std::end(forms);
  const auto* const form = std::find_if(std::begin(forms), end, [type](const Form& each) { return each.type == type; });
  return form == end ? nullptr : form;
}

/// Writes the members of one object.
class ObjectWriter {
 public:
  ObjectWriter(QZJSONWriter& jsonWriter, const ReservedKeys& reserved, unsigned int flavor)
      : output{jsonWriter, (flavor & QZJSONEscaped) != 0}, keys(reserved) {
    ++objectDepth;
  }
  ~ObjectWriter() { --objectDepth; }
  ObjectWriter(const ObjectWriter&) = delete;
  ObjectWriter& operator=(const ObjectWriter&) = delete;

  void Write(const QZBase& base);

 private:
  struct Hint {
    std::string_view key, word;
  };

  void Collect(const QZBase& base);
  void WriteTag(std::size_t first, std::size_t last);
  void WriteValue(QZBaseData& holder, bool isLast);
  void WriteByHandler(QZBaseData& holder, bool isLast);
  bool MakeKey(unsigned int tag);
  void WriteKey();
  void dataHeader(bool isLast, std::string_view hint, std::string_view arrayHint);
  void Warn(const QZBaseData& holder) const { QZThrow.Warning(kCannotWrite, key.data(), holder.GetDataType()); }
  void WriteHints();

  Output output;
  const ReservedKeys& keys;
  std::vector<QZBaseData*> holders;
  std::vector<Hint> hints;
  /// The keys that differ from their names.
  std::forward_list<std::string> ownKeys;
  /// Of the values that are being written, a text that ends with a NUL; and whether these stand in an array.
  std::string_view key;
  /// What is known of it until it is written; null for one that differs from its name.
  const KnownKey* knownKey = nullptr;
  bool inArray = false;
};

void ObjectWriter::Write(const QZBase& base) {
  Collect(base);
  for (std::size_t first = 0; first < holders.size();) {
    std::size_t last = first;
    while (last + 1 < holders.size() && holders[last + 1]->GetTag() == holders[first]->GetTag()) ++last;
    WriteTag(first, last);
    first = last + 1;
  }
  WriteHints();
}

bool sortmethod(const QZBaseData* a, const QZBaseData* b) { return a->GetTag() < b->GetTag(); }

void ObjectWriter::Collect(const QZBase& base) {
  const std::vector<QZBaseData*>* const values = QZBaseImpl::DataOf(base);
  if (!values) return;
  holders.reserve(values->size());
  std::copy_if(values->begin(), values->end(), std::back_inserter(holders),
               [](const QZBaseData* each) { return each; });
  if (!std::is_sorted(holders.begin(), holders.end(), sortmethod)) {
    std::stable_sort(holders.begin(), holders.end(), sortmethod);
  }
}

/// Writes the holders from `first` to `last`, which are those of one tag.
void ObjectWriter::WriteTag(std::size_t first, std::size_t last) {
  if (!MakeKey(holders[first]->GetTag())) return;
  for (std::size_t i = first; i <= last; ++i) WriteValue(*holders[i], i == last);
  if (std::exchange(inArray, false)) output.writer.EndArray();
}

/// False for a name that is left out. It is one from the tags, which stand to the end of the process.
bool ObjectWriter::MakeKey(unsigned int tag) {
  const KnownKey& known = knownKeys.Of(tag);
  if (known.isLeftOut) return false;
  const std::string_view name = known.Name();
  const bool isExtended = keys.foundExtendedTag(name);
  const bool isEscaped = output.isEscaped && name.find_first_of("<>") != std::string_view::npos;
  key = name;
  knownKey = isExtended || isEscaped ? nullptr : &known;
  if (knownKey) return true;
  std::string& own = ownKeys.emplace_front(isExtended ? "_" : "");
  own += name;
  key = isEscaped ? QZEscapeJSON(own) : own;
  return true;
}

void ObjectWriter::WriteKey() {
  // A message about a value before this one may have written another document, and learned another name in its place.
  if (knownKey && knownKey->text == key.data() && knownKey->quotedSize != 0) {
    RawWriter::Quoted(output.writer, knownKey->quoted, knownKey->quotedSize);
  } else {
    RawWriter::String(output.writer, key);
  }
}

void ObjectWriter::WriteValue(QZBaseData& holder, bool isLast) {
  const Form* const form = FindForm(holder.GetDataType());
  if (!form) return WriteByHandler(holder, isLast);
  if (form->isRaw) {
    const std::size_t open = RawWriter::OpenBrackets(output.writer) + (!inArray && !isLast ? 1 : 0);
    const std::size_t inside = BracketDepth(static_cast<const QZBaseDataT<JSONString>&>(holder).GetData().GetText());
    if (open + inside > kMaxJSONDepth) return Warn(holder);
  }
  dataHeader(isLast, form->hint, form->arrayHint);
  form->put(output, holder);
}

void ObjectWriter::WriteByHandler(QZBaseData& holder, bool isLast) {
  QZJSONHandlerBase* const handler = QZGetJSONHandlerByType(holder.GetDataType());
  QZJSONHandlerBase* const vectorHandler = handler ? nullptr : QZGetJSONVHandlerByType(holder.GetDataType());
  if ((!handler && !vectorHandler) || objectDepth == kMaxObjectDepth) return Warn(holder);
  dataHeader(isLast, "", handler ? "m" : "");
  const std::size_t before = RawWriter::Size(output.writer);
  if (handler) {
    handler->Write(&holder, output.writer, handler->GetFlavor());
  } else {
    vectorHandler->VWrite(&holder, output.writer, vectorHandler->GetFlavor());
  }
  if (RawWriter::Size(output.writer) == before) output.writer.Null();
}

/// What stands before a value, unless an array is open: the key, and the array if more values follow. Notes the hint,
/// of which the last of a key counts.
void ObjectWriter::dataHeader(bool isLast, std::string_view hint, std::string_view arrayHint) {
  const std::string_view word = inArray ? arrayHint : hint;
  if (!inArray) {
    WriteKey();
    if (!isLast) output.writer.StartArray();
    inArray = !isLast;
  }
  if (word.empty()) return;
  if (hints.empty()) hints.reserve(kUsualCount);
  if (hints.empty() || hints.back().key != key) hints.push_back({key, {}});
  hints.back().word = word;
}

/// Two names may have one key, where one was escaped and the other looks as if it were.
void ObjectWriter::WriteHints() {
  if (hints.empty()) return;
  const auto isBefore = [](const Hint& a, const Hint& b) { return a.key < b.key; };
  if (!std::is_sorted(hints.begin(), hints.end(), isBefore)) std::stable_sort(hints.begin(), hints.end(), isBefore);
  output.writer.Key(kHints);
  output.writer.StartObject();
  for (std::size_t i = 0; i < hints.size(); ++i) {
    if (i + 1 < hints.size() && hints[i + 1].key == hints[i].key) continue;
    RawWriter::String(output.writer, hints[i].key);
    RawWriter::String(output.writer, hints[i].word);
  }
  output.writer.EndObject();
}

}  // namespace

void genQZBase(QZJSONWriter& writer, const QZBase& base, const ReservedKeys& keys, unsigned int flavor) {
  ObjectWriter(writer, keys, flavor).Write(base);
}

}  // namespace QZSystem::JSONImpl
