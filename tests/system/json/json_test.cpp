#include "qz/system/json/json.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "qz/system/data/container.h"
#include "qz/system/frame/errorimpl.h"
#include "qz/system/json/parse.h"
#include "tests/system/cli/messages.h"
#include "tests/system/json/deepdata.h"
#include "tests/system/json/describe.h"
#include "tests/system/qzb/smallstack.h"

namespace QZSystem {
namespace {

/// A document follows the order in which names were first met.
const bool namesAreInOrder = [] {
  for (const char* name : {"count", "w", "e", "name", "ok", "v", "n", "type", "large", "raw", "x", "<b>", "&lt;b&gt;",
                           "inner", "size", "version", "_size", "qzhint"}) {
    static_cast<void>(QZGetTag(name));
  }
  return true;
}();

/// What is written of an object, without the frame of its document, and the messages.
std::string Written(const QZBase& base, unsigned int flavor = 0) {
  Messages messages;
  const std::string text = QZBaseToJSON(base, flavor);
  const std::string frame = R"({"type":"container","version":"0.91")";
  EXPECT_EQ(text.substr(0, frame.size()), frame);
  EXPECT_EQ(text.back(), '}');
  std::string members = text.substr(frame.size(), text.size() - frame.size() - 1);
  if (!members.empty()) members.erase(0, 1);
  return members + messages.Take();
}

/// What is read of a document, "false" if that is the result, and the messages.
std::string ReadBack(const std::string& text) {
  Messages messages;
  QZContainer base;
  base.SetData("before", 1);
  const bool read = QZJSONToBase(base, text);
  return Describe(base) + (read ? "" : "false ") + messages.Take();
}

/// The same of its members alone.
std::string ReadMembers(const std::string& members) { return ReadBack("{" + members + "}"); }

template <class... T>
QZContainer Values(const char* name, T... values) {
  QZContainer base;
  (base.AddData(name, values), ...);
  return base;
}

TEST(GenericJSON, WritesADocumentWithSortedHints) {
  QZContainer base;
  base.SetData("w", 1.5F);
  base.SetData("v", std::vector<int>{1, 2});
  base.AddData("n", 1);
  base.AddData("n", 2);
  base.SetData("type", std::string("x"));
  base.SetData("large", 4000000000U);
  base.SetData("raw", JSONString("{ \"b\":\t1}"));
  const std::string text =
      R"({"type":"container","version":"0.91","w":1.5,"v":[1,2],"n":[1,2],"_type":"x","large":-294967296,)"
      R"("raw":{ "b":	1},"qzhint":{"large":"i","n":"mi","v":"i","w":"f"}})";
  EXPECT_EQ(QZBaseToJSON(base), text);
  EXPECT_EQ(ReadBack(text),
            "w: float 1.5; v: [int 1,int 2]; n: int 1; n: int 2; type: string x; large: int -294967296; "
            "raw: json {\"b\":1}; Warning: JSON: Can not read JSON object with key: raw, stored as JSONString\n");
}

TEST(GenericJSON, EachValueComesBackAsItWas) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN(), kInf = std::numeric_limits<double>::infinity();
  QZContainer inner = Values("x", 1);
  inner.SetData("version", std::string("of mine"));
  const std::pair<QZContainer, const char*> cases[] = {
      {Values("a", 0.1F), R"("a":0.10000000149011612,"qzhint":{"a":"f"})"},
      {Values("a", -0.0, 1e300), R"("a":[-0.0,1e300],"qzhint":{"a":"m"})"},
      {Values("a", kNaN, kInf, -kInf), R"("a":[NaN,Infinity,-Infinity],"qzhint":{"a":"m"})"},
      {Values("a", 1.5F, 2.0F), R"("a":[1.5,2.0],"qzhint":{"a":"mf"})"},
      {Values("a", std::string("x\"\n"), std::string("a\0b", 3)), R"("a":["x\"\n","a\u0000b"],"qzhint":{"a":"m"})"},
      {Values("a", false, true), R"("a":[false,true],"qzhint":{"a":"m"})"},
      {Values("a", std::vector<std::string>{"x", ""}), R"("a":["x",""])"},
      {Values("a", std::vector<double>{1, 0.5}), R"("a":[1.0,0.5])"},
      {Values("a", std::vector<float>{1, 0.5}), R"("a":[1.0,0.5],"qzhint":{"a":"f"})"},
      {Values("a", std::vector<bool>{true, false}), R"("a":[true,false])"},
      {Values("a", inner),
       R"("a":{"type":"container","version":"0.91","x":1,"_version":"of mine","qzhint":{"x":"i"}})"},
      {Values("a", QZContainer(), QZContainer()),
       R"("a":[{"type":"container","version":"0.91"},{"type":"container","version":"0.91"}],"qzhint":{"a":"m"})"},
      {Values("a", std::vector<QZContainer>(1)), R"("a":[{"type":"container","version":"0.91"}])"},
      {Values("__type", true), R"("___type":true)"},
      {Values("___", true), R"("___":true)"},
      {Values("qzhint", 5), R"("_qzhint":5,"qzhint":{"_qzhint":"i"})"},
      {Values("a\"b", true), R"("a\"b":true)"},
  };
  for (const auto& [base, members] : cases) {
    EXPECT_EQ(Written(base), members);
    EXPECT_EQ(ReadMembers(members), Describe(base)) << members;
  }
}

TEST(GenericJSON, DropsWhatHasNoForm) {
  const std::string cannot = "Warning: JSON: Can not write object with key: a, no handler for internal generic data ";
  for (const auto& [base, kept] :
       {std::pair{Values("a", static_cast<const char*>("text")), ""},
        {Values("a", std::vector<unsigned int>{1}), ""},
        {Values("a", 1, static_cast<const char*>("text"), 2), R"("a":[1,2],"qzhint":{"a":"mi"})"}}) {
    EXPECT_EQ(Written(base).find(kept + cannot), 0U) << kept;
  }
  for (const char* name :
       {"", "snark", "SDTagData", "PDBTagData", "__rotorTag__", "QZ_unit_cell", "ReceptorData", "QZStyleList2",
        "Gaussian Grid", "PLP Annotation", "CIFBlockTagData", "QZUnknownQZBData", "MiniMolTagDataTag",
        "CDXAtomNumHydrogens", "QZBase", "zstdQZMCMolBase", "QZGroup", "MDLParity"}) {
    EXPECT_EQ(Written(Values(name, 1)), "") << name;
  }
  EXPECT_EQ(Written(Values("QZBased", 1)), R"("QZBased":1,"qzhint":{"QZBased":"i"})");
}

// Notes each message as a document.
class DocumentLog : public QZErrorHandlerImplBase {
 public:
  void Msg(unsigned int, const std::string& text) override {
    QZContainer entry;
    entry.SetData("logged", text);
    static_cast<void>(QZBaseToJSON(entry));
  }
  QZErrorHandlerImplBase* CreateCopy() const override { return new DocumentLog(*this); }
};

TEST(GenericJSON, AMessageMayBecomeADocumentWhileAnotherIsWritten) {
  // What is known of a name is kept for the first few thousand.
  QZContainer many;
  for (int i = 0; i < 5000; ++i) many.SetData(("many " + std::to_string(i)).c_str(), i);
  static_cast<void>(QZBaseToJSON(many));
  QZContainer base;
  base.AddData("late", static_cast<const char*>("text"));  // has no form, and so a message
  base.AddData("late", 7);
  QZErrorHandlerImplBase* const before = QZThrow.GetHandlerImpl()->CreateCopy();
  QZThrow.SetHandlerImpl(new DocumentLog, true);
  const std::string text = QZBaseToJSON(base);
  QZThrow.SetHandlerImpl(before, true);
  EXPECT_EQ(text, R"({"type":"container","version":"0.91","late":7,"qzhint":{"late":"i"}})");
}

TEST(GenericJSON, ValuesOfSeveralTypesStandInOneArray) {
  EXPECT_EQ(Written(Values("a", 1, 2.5)), R"("a":[1,2.5],"qzhint":{"a":"m"})");
  EXPECT_EQ(Written(Values("a", 1, JSONString("[]"))), R"("a":[1,[]],"qzhint":{"a":"i"})");
  EXPECT_EQ(Written(Values("a", JSONString(), 1)), R"("a":[null,1],"qzhint":{"a":"mi"})");
}

TEST(GenericJSON, OrderIsThatOfTheTagsAndThenThatOfTheValues) {
  const unsigned int first = QZGetTag("order 1"), second = QZGetTag("order 2");
  QZContainer base;
  std::string ints, doubles;
  for (int i = 0; i < 50; ++i) {
    base.AddData(second, i);
    base.AddData(first, 1.0 * i);
    ints += (i == 0 ? "" : ",") + std::to_string(i);
    doubles += (i == 0 ? "" : ",") + std::to_string(i) + ".0";
  }
  EXPECT_EQ(Written(base),
            R"("order 1":[)" + doubles + R"(],"order 2":[)" + ints + R"(],"qzhint":{"order 1":"m","order 2":"mi"})");
}

TEST(GenericJSON, EscapesAtTheFirstLevelOnly) {
  QZContainer inner = Values("<i>", std::string("<&>"));
  QZContainer base = Values("<b>", std::string("a<b"), std::string(">&"));
  base.SetData("&lt;b&gt;", 1);
  base.SetData("inner", inner);
  base.SetData("raw", JSONString("\"<\""));
  base.SetData("v", std::vector<std::string>{"<"});
  EXPECT_EQ(Written(base, QZJSONEscaped | 1U),
            R"("v":["&lt;"],"raw":"<","&lt;b&gt;":["a&lt;b","&gt;&"],"&lt;b&gt;":1,)"
            R"("inner":{"type":"container","version":"0.91","<i>":"<&>"},"qzhint":{"&lt;b&gt;":"i"})");
  std::string text = "<a>&amp;lt;&gt;;&l";
  EXPECT_EQ(QZEscapeJSON(text), "&lt;a&gt;&amp;lt;&gt;;&l");
  EXPECT_EQ(QZUnescapeJSON(text), "<a>&amp;lt;>;&l");
}

TEST(GenericJSON, HintsDecideTheTypeOfNumbers) {
  const std::string outside = "Warning: JSON: Numeric value out of range for integer, key: a, ignoring hint\n";
  const struct {
    const char *value, *hint;
    std::string expected;
  } cases[] = {
      {"1", "q", "a: double 1; "},
      {"1.5", "i", "a: int 1; "},
      {"2147483647.999", "i", "a: int 2147483647; "},
      {"-2147483648.0", "fi", "a: int -2147483648; "},
      {"2147483648", "i", "a: double 2147483648; " + outside},
      {"-2147483648.5", "if", "a: double -2147483648.5; " + outside},
      {"NaN", "i", "a: double nan; " + outside},
      {"-1e300", "mf", "a: float -inf; "},
      {"[3e9,-3e9,NaN,-0.5,18446744073709551615,-Inf]", "if",
       "a: [int 2147483647,int -2147483648,int 0,int 0,int 2147483647,int -2147483648]; "},
      {"[1,1e300]", "f", "a: [float 1,float inf]; "},
      {"[3e9,2]", "mi", "a: int 2147483647; a: int 2; "},
      {"[\"x\",\"y\"]", "mif", "a: string x; a: string y; "},
  };
  for (const auto& [value, hint, expected] : cases) {
    const std::string member = std::string("\"a\":") + value;
    EXPECT_EQ(ReadMembers(member + ",\"qzhint\":{\"a\":\"" + hint + "\"}"), expected) << value << " " << hint;
  }
  EXPECT_EQ(ReadMembers(R"("qzhint":{"b":"x","a":"i","_":"f","a":"f"},"a":1,"b":2)"), "a: int 1; b: double 2; ");
}

TEST(GenericJSON, TellsWhatItCanNotReadAndGoesOn) {
  const auto kept = [](const std::string& value, const std::string& what, const std::string& first = "") {
    return "a: json " + value + "; " + first + "Warning: JSON: Can not read JSON " + what +
           " with key: a, stored as JSONString\n";
  };
  const std::string empty = R"({"type":"container","version":"0.91"})";
  const std::pair<std::string, std::string> cases[] = {
      {"null", "Warning: JSON: Null value ignored, key: a\n"},
      {"[]", "Warning: JSON: Empty array ignored, key: a\n"},
      {R"({"b" : [ 1 ]})", kept(R"({"b":[1]})", "object")},
      {R"({"type":"no such class"})", kept(R"({"type":"no such class"})", "object")},
      {R"({"type":"container"})",
       kept(R"({"type":"container"})", "object", "Warning: JSON: missing required attribute, key: version\n")},
      {"[null,1]", kept("[null,1]", "array")},
      {R"([[1],[2]],"qzhint":{"a":"i"})", kept("[[1],[2]]", "array")},
      {"[" + empty + ",1]", kept("[" + empty + ",1]", "array of objects")},
      {"[" + empty + R"(,{"type":"box"}])", kept("[" + empty + R"(,{"type":"box"}])", "array of objects")},
      {"[{},{}]", kept("[{},{}]", "array of objects")},
      {R"(1,"a":2,"b":true)", "a: double 2; b: bool true; "},
  };
  for (const auto& [value, expected] : cases) EXPECT_EQ(ReadMembers("\"a\":" + value), expected) << value;
  EXPECT_EQ(ReadMembers(R"("_type":null)"), "Warning: JSON: Null value ignored, key: _type\n");
}

TEST(GenericJSON, StopsWhereItMust) {
  const std::string mismatch = "Warning: data type mismatch found when using generic data\n";
  const std::string mixed = "Warning: JSON: Heterogenous array of data found, key: a, expected type: ";
  const std::string notString = "Warning: JSON: expects type of: string, key: ";
  const std::pair<const char*, std::string> cases[] = {
      {R"("a":1,"qzhint":"i")", "false Warning: JSON: must be an object type, key: qzhint\n"},
      {R"("a":1,"qzhint":{"a":1})", "false " + notString + "a\n"},
      {R"("a":[1],"qzhint":{"a":null})", "false " + notString + "a\n"},
      {R"("b":1,"a":{"type":1},"c":2)", "b: double 1; false " + notString + "type\n"},
      {R"("a":[{},2,{"type":1}])", "false " + notString + "type\n"},
      {R"("a":["x",1])", "false " + mixed + "string\n"},
      {R"("a":[1,"x"])", "false " + mixed + "number\n"},
      {R"("a":[true,null])", "false " + mixed + "boolean\n"},
      {R"("a":[1,"x"],"qzhint":{"a":"m"})", "a: double 1; false " + mixed + "number\n"},
      {R"("a":1,"a":"x","b":1)", "a: double 1; false " + mismatch},
      {R"("a":"x","a":true)", "a: string x; false " + mismatch},
      {R"("a":"x","_a":true,"a":1,"qzhint":{"a":"i"})",
       "a: string x; _a: bool true; false " + mismatch +
           "Warning: JSON: Numeric value out of range for integer, key: a, ignoring hint\n" + mismatch},
  };
  for (const auto& [members, expected] : cases) EXPECT_EQ(ReadMembers(members), expected) << members;
}

TEST(GenericJSON, DocumentsAreTakenByTypeAndVersion) {
  const std::string before = "before: int 1; false Warning: JSON: ";
  const std::pair<const char*, std::string> cases[] = {
      {R"({"version":"7.1","a":1})", "a: double 1; "},
      {R"({"type":"container","version":"0.5","a":1})", "a: double 1; "},
      {R"({"type":"container"})", "false Warning: JSON: missing required attribute, key: version\n"},
      {R"({"type":"container","version":0.91})", "false Warning: JSON: expects type of: string, key: version\n"},
      {R"({"type":"container","version":"00.91"})",
       "false Warning: JSON: document version 00.91, not compatible with current reader version: 0.91\n"},
      {R"({"type":"mystery"})", "false Warning: JSON: Unrecognized type: mystery\n"},
      {R"({"type":{}})", before + "expects type of: string, key: type\n"},
      {"[1]", before + "Top level document must be an object\n"},
      {"{\"a\":1", before + "parse error offset 6: Missing a comma or '}' after an object member.\n"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(ReadBack(text), expected) << text;
}

TEST(GenericJSON, HandlersBringKeysOfTheirOwn) {
  const char* xlist[] = {"qzhint", "size", "type"};
  rapidjson::StringBuffer buffer;
  QZJSONWriter writer(buffer);
  QZContainer base = Values("size", 1);
  base.SetData("version", true);
  writer.StartObject();
  writer.Key("size");
  writer.Double(7);
  QZGenBaseDataJSON(writer, base, xlist, 3, 0);
  writer.EndObject();
  EXPECT_STREQ(buffer.GetString(), R"({"size":7.0,"_size":1,"version":true,"qzhint":{"_size":"i"}})");

  rapidjson::Document document;
  ASSERT_TRUE(JSONParseHelper(document, buffer.GetString()));
  QZContainer read = Values("first", true);
  EXPECT_TRUE(QZParseBaseDataJSON(read, document, xlist, 3));
  EXPECT_EQ(Describe(read), "first: bool true; size: int 1; version: bool true; ");
  EXPECT_FALSE(QZParseBaseDataJSON(read, document["size"], xlist, 3));
  read.Clear();
  Messages messages;
  EXPECT_TRUE(QZParseBaseDataJSON(read, document, nullptr, 0));
  EXPECT_EQ(Describe(read), "size: double 7; _size: int 1; version: bool true; qzhint: json {\"_size\":\"i\"}; ");
}

TEST(GenericJSON, ContainersNest256LevelsDeepOnASmallStack) {
  OnSmallStack([] {
    Messages messages;
    const std::string text = QZBaseToJSON(Nested(256));
    QZContainer back;
    EXPECT_TRUE(QZJSONToBase(back, text));
    EXPECT_EQ(LevelsOf(back), 256);
    EXPECT_EQ(messages.Take(), "");

    EXPECT_EQ(QZBaseToJSON(Nested(257)), text);
    EXPECT_EQ(messages.Take().find("Warning: JSON: Can not write object with key: in, no handler for "), 0U);
    // One more by hand: the innermost is kept as text, and written back as such.
    const std::string innermost = R"({"type":"container","version":"0.91"})";
    std::string deeper = text;
    deeper.insert(text.find(innermost) + innermost.size() - 1, R"(,"in":)" + innermost);
    EXPECT_TRUE(QZJSONToBase(back, deeper));
    EXPECT_EQ(messages.Take(), "Warning: JSON: Can not read JSON object with key: in, stored as JSONString\n");
    EXPECT_EQ(QZBaseToJSON(back), deeper);
  });
}

TEST(GenericJSON, RawTextKeepsWithinTheBracketsThatAReaderTakes) {
  const auto brackets = [](std::size_t depth) { return JSONString(std::string(depth, '[') + std::string(depth, ']')); };
  Messages messages;
  QZContainer back;
  EXPECT_TRUE(QZJSONToBase(back, QZBaseToJSON(Values("a", brackets(1), brackets(1023), brackets(1022)))));
  EXPECT_EQ(back.GetData<JSONString>("a").GetText().size(), 1 + 2 + 1 + 2044 + 1U);
  EXPECT_TRUE(QZJSONToBase(back, QZBaseToJSON(Values("a", brackets(1023)))));
  EXPECT_EQ(QZBaseToJSON(Values("a", brackets(1024))), QZBaseToJSON(QZContainer()));
}

TEST(GenericJSON, ReadsManyMembersInAnyOrderOnceEach) {
  constexpr int kCount = 20000;
  for (int i = 0; i < kCount; ++i) static_cast<void>(QZGetTag("linear " + std::to_string(i)));
  std::string members;  // none of their tags is above the one before
  for (int i = kCount; i-- > 0;) members += "\"linear " + std::to_string(i) + "\":" + std::to_string(i) + ",";
  QZContainer base;
  ASSERT_TRUE(QZJSONToBase(base, "{" + members + members + "\"last\":-1}"));
  int next = kCount;
  for (const QZBaseData& value : QZIter(base.GetDataIter()))
    EXPECT_EQ(static_cast<const QZBaseDataT<double>&>(value).GetData(), --next);
  EXPECT_EQ(next, -1);
}

TEST(GenericJSON, EveryCutAndFlipOfADocumentEndsWell) {
  Messages messages;
  QZContainer base = Values("a", 1, 2);
  base.SetData("f", std::vector<float>{0.5F, 2});
  base.SetData("in", Values("s", std::string("x"), std::string("y")));
  base.SetData("list", std::vector<QZContainer>(2, Values("type", true)));
  const std::string text = QZBaseToJSON(base);
  const auto tryOut = [](const std::string& damaged) {
    QZContainer first, second;
    if (!QZJSONToBase(first, damaged)) return;
    EXPECT_TRUE(QZJSONToBase(second, QZBaseToJSON(first))) << damaged;
    EXPECT_EQ(QZBaseToJSON(second), QZBaseToJSON(first)) << damaged;
  };
  tryOut(text);
  for (std::size_t i = 0; i < text.size(); ++i) {
    tryOut(text.substr(0, i));
    for (const int flip : {1, 2, 4, 8, 16, 32, 64, 128, 255}) {
      std::string damaged = text;
      damaged[i] = static_cast<char>(damaged[i] ^ flip);
      tryOut(damaged);
    }
  }
}

}  // namespace
}  // namespace QZSystem
