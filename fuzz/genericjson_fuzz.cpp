// Documents of attached data, with a class that a handler knows. What is read goes to a document and back.
#include <utility>
#include <vector>

#include "fuzz/fuzzing.h"
#include "qz/system/data/container.h"
#include "qz/system/json/check.h"
#include "qz/system/json/json.h"
#include "qz/system/json/jsonhandler.h"
#include "qz/system/json/parse.h"

using namespace QZSystem;

namespace {

/// Stands for the classes of other toolkits, which carry data of their own: {"type":"box","label":"x",...}.
struct Box : QZContainer {
  std::string label;
};

const char* const boxKeys[] = {"label", "qzhint", "type"};

class BoxHandler : public QZJSONHandlerBase {
 public:
  bool Read(QZBase& base, const std::string& key, rapidjson::Value& value) override {
    Box box;
    return ReadBox(box, value) && base.SetData<Box>(QZGetTag(key), std::move(box));
  }
  bool VRead(QZBase& base, const std::string& key, rapidjson::Value& array, bool multi) override {
    std::vector<Box> boxes(array.Size());
    for (rapidjson::SizeType i = 0; i < array.Size(); ++i) {
      if (!ReadBox(boxes[i], array[i])) return false;
      if (multi) base.AddData<Box>(QZGetTag(key), boxes[i]);
    }
    return multi || base.SetData<std::vector<Box>>(QZGetTag(key), std::move(boxes));
  }
  void Write(QZBaseData* holder, QZJSONWriter& writer, unsigned int flavor) override {
    WriteBox(static_cast<QZBaseDataT<Box>*>(holder)->GetData(), writer, flavor);
  }
  void VWrite(QZBaseData* holder, QZJSONWriter& writer, unsigned int flavor) override {
    writer.StartArray();
    for (const Box& box : static_cast<QZBaseDataT<std::vector<Box>>*>(holder)->GetData()) {
      WriteBox(box, writer, flavor);
    }
    writer.EndArray();
  }
  std::string GetJsonType() const override { return "box"; }
  const void* GetDataType() const override { return QZGetDataType<Box>(); }
  const void* GetVDataType() const override { return QZGetDataType<std::vector<Box>>(); }
  unsigned int GetFlavor() const override { return 0; }

 private:
  static bool ReadBox(Box& box, rapidjson::Value& value) {
    const QZJSONAttr<std::string> label = GetJSONStringAttr(value, "label", true);
    box.label = label.value;
    return !label.error && QZParseBaseDataJSON(box, value, boxKeys, 3);
  }
  static void WriteBox(const Box& box, QZJSONWriter& writer, unsigned int flavor) {
    writer.StartObject();
    writer.Key("type");
    writer.String("box");
    writer.Key("label");
    writer.String(box.label.data(), static_cast<rapidjson::SizeType>(box.label.size()));
    QZGenBaseDataJSON(writer, box, boxKeys, 3, flavor);
    writer.EndObject();
  }
};

const bool boxesAreRegistered = QZRegisterJSONHandler(new BoxHandler);

void goThroughEscapes(const std::string& text) {
  std::string escaped = text, plain = text;
  QZEscapeJSON(escaped);
  Require(escaped.find_first_of("<>") == std::string::npos);
  Require(QZUnescapeJSON(escaped) == QZUnescapeJSON(plain));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SwallowMessages();
  const std::string text = TextOf(data, size);
  goThroughEscapes(text);

  QZContainer first, second, third;
  static_cast<void>(QZJSONToBase(first, text));
  Require(JSONCheckHelper(QZBaseToJSON(first, QZJSONEscaped)));
  // A key that comes twice, of which the second time some values fit and some don't, gives values of several types
  // under one name. These are written, and not all come back; what does come back is stable.
  static_cast<void>(QZJSONToBase(second, QZBaseToJSON(first)));
  const std::string document = QZBaseToJSON(second);
  Require(QZJSONToBase(third, document));
  Require(QZBaseToJSON(third) == document);
  return 0;
}
