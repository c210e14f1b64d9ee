#include "qz/system/json/jsonhandler.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qz/system/data/container.h"
#include "qz/system/json/json.h"
#include "qz/system/json/parse.h"
#include "tests/system/cli/messages.h"
#include "tests/system/json/describe.h"

namespace QZSystem {
namespace {

const std::string containerText = R"({"type":"container","version":"0.91","x":true})";

QZContainer Inner() {
  QZContainer inner;
  inner.SetData("x", true);
  return inner;
}

/// Made by the first of all initialisers, and so destroyed behind all destructors of the toolkit.
struct Late {
  ~Late() {
    if (outer) std::fprintf(stderr, "late: %s\n", QZBaseToJSON(*outer).c_str());
  }
  QZContainer* outer = nullptr;
};
__attribute__((init_priority(101))) Late late;

__attribute__((init_priority(102))) const std::string earlyText = [] {
  QZContainer outer;
  outer.SetData("in", Inner());
  const std::string text = QZBaseToJSON(outer);
  QZContainer back;
  return QZJSONToBase(back, text) && back.GetData<QZContainer>("in").HasData("x") ? text : "";
}();

struct Box {
  int size = 0;
};

/// Reads and writes {"type":"box","size":1}. Counts the handlers that were deleted under each word.
class BoxHandler : public QZJSONHandlerBase {
 public:
  explicit BoxHandler(std::string itsWord, bool isTyped = true, int* deletions = nullptr)
      : word(std::move(itsWord)), typed(isTyped), deleted(deletions) {}
  ~BoxHandler() override {
    if (deleted) ++*deleted;
  }

  bool Read(QZBase& base, const std::string& key, rapidjson::Value& value) override {
    const auto size = GetJSONIntAttr(value, "size");
    return size.found && !size.error && base.SetData<Box>(QZGetTag(key), {size.value});
  }
  bool VRead(QZBase& base, const std::string& key, rapidjson::Value& array, bool multi) override {
    std::vector<Box> boxes;
    for (auto& each : array.GetArray()) boxes.push_back({GetJSONIntAttr(each, "size").value});
    if (!multi) return base.SetData<std::vector<Box>>(QZGetTag(key), boxes);
    for (const Box& box : boxes) base.AddData<Box>(QZGetTag(key), box);
    return true;
  }
  void Write(QZBaseData* holder, QZJSONWriter& writer, unsigned int flavor) override {
    Write(static_cast<QZBaseDataT<Box>*>(holder)->GetData(), writer, flavor);
  }
  void VWrite(QZBaseData* holder, QZJSONWriter& writer, unsigned int flavor) override {
    writer.StartArray();
    for (const Box& box : static_cast<QZBaseDataT<std::vector<Box>>*>(holder)->GetData()) Write(box, writer, flavor);
    writer.EndArray();
  }
  std::string GetJsonType() const override { return word; }
  const void* GetDataType() const override { return typed ? QZGetDataType<Box>() : nullptr; }
  const void* GetVDataType() const override { return typed ? QZGetDataType<std::vector<Box>>() : nullptr; }
  unsigned int GetFlavor() const override { return 5; }

 private:
  // A box of size 0 is a value that the handler doesn't write.
  void Write(const Box& box, QZJSONWriter& writer, unsigned int flavor) const {
    if (box.size == 0) return;
    const std::string text = R"({"type":")" + word + R"(","size":)" + std::to_string(box.size) + R"(,"flavor":)" +
                             std::to_string(flavor) + "}";
    writer.RawValue(text.c_str(), text.size(), rapidjson::kObjectType);
  }

  std::string word;
  bool typed;
  int* deleted;
};

/// The registry of the process with a handler for boxes.
const bool boxesAreRegistered = QZRegisterJSONHandler(new BoxHandler("box"));
const bool cratesAreRegistered = QZRegisterJSONHandler(new BoxHandler("crate", false));

TEST(JSONHandler, ContainersWorkFromTheFirstInitialiserToTheLastDestructor) {
  EXPECT_EQ(earlyText, R"({"type":"container","version":"0.91","in":)" + containerText + "}");
  QZJSONHandlerBase* const handler = QZGetJSONHandlerByType("container");
  ASSERT_NE(handler, nullptr);
  EXPECT_EQ(QZGetJSONHandlerByType(QZGetDataType<QZContainer>()), handler);
  EXPECT_EQ(QZGetJSONVHandlerByType(QZGetDataType<std::vector<QZContainer>>()), handler);
  EXPECT_EQ(QZGetJSONVHandlerByType(QZGetDataType<QZContainer>()), nullptr);
  EXPECT_EQ(QZGetJSONHandlerByType("word of no handler"), nullptr);
  const auto end = [] {
    late.outer = new QZContainer;
    late.outer->SetData("in", Inner());
    late.outer->SetData("box", Box{1});
    std::exit(0);
  };
  EXPECT_EXIT(end(), testing::ExitedWithCode(0), "key: box(.|\n)*late: .*\"in\":.\"type\":\"container\"");
}

TEST(JSONHandler, EachHandlerIsDeletedOnceWhenNothingHoldsIt) {
  int deleted[4] = {};
  const auto deletions = [&] { return std::vector<int>(std::begin(deleted), std::end(deleted)); };
  {
    QZJSONHandlerRegistry registry;
    auto* const one = new BoxHandler("one", true, &deleted[0]);
    for (BoxHandler* each : {one, one, static_cast<BoxHandler*>(nullptr)}) registry.AddHandler(each);
    registry.AddHandler(new BoxHandler("one", false, &deleted[1]));
    EXPECT_EQ(registry.GetHandlerByType(QZGetDataType<Box>()), one) << "still stands for the type";
    registry.AddHandler(new BoxHandler("two", true, &deleted[2]));
    EXPECT_EQ(deletions(), (std::vector<int>{1, 0, 0, 0}));
    registry.AddHandler(new BoxHandler("one", false, &deleted[3]));
    registry.AddHandler(new BoxHandler("two"));
    EXPECT_EQ(deletions(), (std::vector<int>{1, 1, 1, 0}));
  }
  EXPECT_EQ(deletions(), (std::vector<int>{1, 1, 1, 1}));
}

QZContainer Boxes(std::vector<int> sizes) {
  QZContainer base;
  for (const int size : sizes) base.AddData("a", Box{size});
  return base;
}

/// The sizes of the boxes that are read, and the messages.
std::string Read(const std::string& text) {
  Messages messages;
  QZContainer base;
  std::string sizes = QZJSONToBase(base, text) ? "" : "false ";
  for (QZBaseData& value : QZIter(base.GetDataIter())) {
    if (const auto* box = QZBaseImpl::As<Box>(&value)) sizes += std::to_string(box->GetData().size) + " ";
    if (const auto* boxes = QZBaseImpl::As<std::vector<Box>>(&value)) {
      for (const Box& box : boxes->GetData()) sizes += "v" + std::to_string(box.size) + " ";
    }
    if (const auto* json = QZBaseImpl::As<JSONString>(&value)) sizes += json->GetData().GetText() + " ";
  }
  return sizes + messages.Take();
}

TEST(JSONHandler, ClassesOfAHandlerComeBack) {
  const std::string one = R"({"type":"box","size":1,"flavor":5})", two = R"({"type":"box","size":2,"flavor":5})";
  const std::string frame = R"({"type":"container","version":"0.91","a":)";
  QZContainer vector;
  vector.SetData("a", std::vector<Box>{{1}, {2}});
  const struct {
    QZContainer base;
    std::string text, sizes;
  } cases[] = {
      {Boxes({1}), frame + one + "}", "1 "},
      {Boxes({1, 2}), frame + "[" + one + "," + two + R"(],"qzhint":{"a":"m"}})", "1 2 "},
      {vector, frame + "[" + one + "," + two + "]}", "v1 v2 "},
      {Boxes({0}), frame + "null}", "Warning: JSON: Null value ignored, key: a\n"},
  };
  for (const auto& [base, text, sizes] : cases) {
    EXPECT_EQ(QZBaseToJSON(base, QZJSONEscaped), text);
    EXPECT_EQ(Read(text), sizes) << text;
  }
}

TEST(JSONHandler, DocumentsAndMembersAreReadByTheWordInType) {
  EXPECT_EQ(Read(R"({"type":"box","size":7})"), "7 ");
  EXPECT_EQ(Read(R"({"type":"box"})"), "false ");
  EXPECT_EQ(Read(R"({"a":{"type":"crate","size":3}})"), "3 ");
  EXPECT_EQ(QZBaseToJSON(Boxes({3})).find("crate"), std::string::npos) << "without a data type it reads alone";
  EXPECT_EQ(Read(R"({"a":{"type":"box"}})"),
            "{\"type\":\"box\"} Warning: JSON: Can not read JSON object with key: a, stored as JSONString\n");
}

TEST(JSONHandler, ValuesThatAHandlerAddsAreFoundAgain) {
  const std::string box = R"({"type":"box","size":1})";
  EXPECT_EQ(Read(R"({"z":)" + box + R"(,"a":)" + box + R"(,"z":)" + box + R"(,"a":5})"),
            "false 1 1 Warning: data type mismatch found when using generic data\n");
}

/// Puts its value behind all others, in place of one that is there.
class LastHandler : public BoxHandler {
 public:
  LastHandler() : BoxHandler("last", false) {}
  bool Read(QZBase& base, const std::string& key, rapidjson::Value&) override {
    base.DeleteData(key.c_str());
    return base.AddData<int>(key.c_str(), 7);
  }
};
const bool lastIsRegistered = QZRegisterJSONHandler(new LastHandler);

TEST(JSONHandler, MayDeleteValues) {
  const std::string last = R"({"type":"last"})";
  QZContainer base;
  EXPECT_TRUE(QZJSONToBase(base, R"({"d1":)" + last + R"(,"d2":[1,2],"d3":1,"d3":2,"d1":)" + last +
                                     R"(,"d2":5,"d1":8,"qzhint":{"d1":"i","d2":"m"}})"));
  EXPECT_EQ(Describe(base), "d2: double 5; d2: double 2; d3: double 2; d1: int 8; ");
}

TEST(JSONHandler, ContainersAreReadInArrays) {
  rapidjson::Document document;
  ASSERT_TRUE(JSONParseHelper(document, R"({"good":[)" + containerText + "," + containerText + R"(],"bad":[)" +
                                            containerText + R"(,{"type":"container"}],"odd":[1],"no":{}})"));
  const auto read = [&](const char* key, bool multi) {
    Messages messages;
    QZContainer base;
    const bool result = QZGetJSONHandlerByType("container")->VRead(base, "k", document[key], multi);
    return Describe(base) + (result ? "" : "false ") + messages.Take();
  };
  const std::string missing = "false Warning: JSON: missing required attribute, key: version\n";
  EXPECT_EQ(read("good", true), "k: {x: bool true; }; k: {x: bool true; }; ");
  EXPECT_EQ(read("good", false), "k: [{x: bool true; },{x: bool true; }]; ");
  EXPECT_EQ(read("bad", true), "k: {x: bool true; }; " + missing);
  EXPECT_EQ(read("bad", false), missing);
  for (const char* key : {"odd", "no"}) EXPECT_EQ(read(key, true), "false ") << key;
}

}  // namespace
}  // namespace QZSystem
