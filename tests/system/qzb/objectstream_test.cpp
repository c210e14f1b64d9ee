#include "qz/system/qzb/objectstream.h"

#include <gtest/gtest.h>

#include "tests/system/cli/messages.h"
#include "tests/system/qzb/objects.h"

using namespace QZSystem;

namespace {

const std::string skipped = "Warning: Warning: Failed to write QZBase data for tag ";

template <class T>
QZContainer One(T value) {
  QZContainer object;
  object.AddData("x", value);
  return object;
}

template <class T>
QZContainer Array(std::initializer_list<T> elements) {
  QZContainer object;
  object.AddData<T*>("x", elements.begin(), static_cast<unsigned int>(elements.size()));
  return object;
}

template <class T>
QZContainer Vector(std::initializer_list<T> elements) {
  return One(std::vector<T>(elements));
}

// The bytes behind name and flags, and what they read as. The third column is the same body from a machine of the other
// byte order, where that differs.
TEST(ObjectStream, HasAFormForEachType) {
  const QZHalfFloat half{258};
  const struct {
    QZContainer object;
    std::string bytes, swapped, told;
  } forms[] = {
      {One(-2), "01 FE FF FF FF", "01 FF FF FF FE", "int -2"},
      {One(7U), "01 07 00 00 00", "01 00 00 00 07", "int 7"},
      {One(true), "02 01", "", "bool 1"},
      {One(1.5F), "04 00 00 C0 3F", "04 3F C0 00 00", "float 1.5"},
      {One(-2.5), "08 00 00 00 00 00 00 04 C0", "08 C0 04 00 00 00 00 00 00", "double -2.5"},
      {One(std::string("a'b")), "10 83 61 27 62", "", "string a'b"},
      {One(std::string()), "10 80", "", "string "},
      {Array({true, false}), "03 82 01 00", "", "bool* 1 0"},
      {Array<bool>({}), "03 80", "", "bool*"},
      {Array({'a', '\0'}), "06 82 61 00", "", "char* 97 0"},
      {Array<unsigned char>({200}), "07 81 C8", "", "uchar* 200"},
      {Array({1, -1}), "20 88 01 00 00 00 FF FF FF FF", "20 88 00 00 00 01 FF FF FF FF", "int* 1 -1"},
      {Array({1U}), "40 84 01 00 00 00", "40 84 00 00 00 01", "uint* 1"},
      {Array({1.5F}), "05 84 00 00 C0 3F", "05 84 3F C0 00 00", "float* 1.5"},
      {Array({-2.5}), "11 88 00 00 00 00 00 00 04 C0", "11 88 C0 04 00 00 00 00 00 00", "double* -2.5"},
      {Array({half}), "12 01 82 02 01", "12 02 82 01 02", "half* 258"},
      {Vector({true, false, true}), "50 83 01 00 01", "", "vector<bool> 1 0 1"},
      {Vector<char>({'a', -1}), "51 82 61 FF", "", "vector<char> 97 -1"},
      {Vector<unsigned char>({255}), "52 81 FF", "", "vector<uchar> 255"},
      {Vector<short>({-2}), "53 01 82 FE FF", "53 00 82 FF FE", "vector<short> -2"},
      {Vector<unsigned short>({258}), "54 01 82 02 01", "54 3F 82 01 02", "vector<ushort> 258"},
      {Vector({1}), "55 84 01 00 00 00", "55 84 00 00 00 01", "vector<int> 1"},
      {Vector({1U}), "56 84 01 00 00 00", "56 84 00 00 00 01", "vector<uint> 1"},
      {Vector({1.5F}), "57 84 00 00 C0 3F", "57 84 3F C0 00 00", "vector<float> 1.5"},
      {Vector({-2.5}), "58 88 00 00 00 00 00 00 04 C0", "58 88 C0 04 00 00 00 00 00 00", "vector<double> -2.5"},
      {Vector<double>({}), "58 80", "", "vector<double>"},
      {Vector({half}), "61 01 82 02 01", "61 FF 82 01 02", "vector<half> 258"},
  };
  for (const auto& form : forms) {
    EXPECT_EQ(Hex(Written(form.object)), Hex(Bytes("01 3F 00 81 'x' " + form.bytes)));
    EXPECT_EQ(Read(Written(form.object)), "0: x " + form.told + "; ");
    EXPECT_EQ(Read(Bytes("00 00 00 81 'x' " + (form.swapped.empty() ? form.bytes : form.swapped))),
              "0: x " + form.told + "; ");
  }
  EXPECT_EQ(Hex(Written(Array<int>({}))), "01 3F 00 81 78 20 80") << "which stops the reader";
}

TEST(ObjectStream, EachFlagGovernsItsOwnClass) {
  const std::string entries = "00 81 'i' 01 00 00 00 01 00 81 'f' 04 00 00 C0 3F 00 81 'h' 61 01 82 02 01";
  EXPECT_EQ(Read(Bytes("00 3F " + entries)), "0: i int 1; f float 1.5; h vector<half> 258; ");
  EXPECT_EQ(Read(Bytes("01 02 00 81 'i' 20 84 01 00 00 00 00 81 'f' 57 84 3F C0 00 00")),
            "0: i int* 1; f vector<float> 1.5; ");
}

TEST(ObjectStream, AddsItsValuesInOrderToWhatTheObjectHas) {
  QZContainer object = One(5), read;
  object.AddData("b", 2);
  object.AddData("x", std::string("y"));
  qzosstream out;
  EXPECT_TRUE(QZBWritePOD(out, object, "QZBasePOD"));
  const std::string body = Bytes("01 3F 00 81 'x' 01 05 00 00 00 00 81 'b' 01 02 00 00 00 00 81 'x' 10 81 'y'");
  EXPECT_EQ(Hex(out.str()), Hex(Bytes("01 98") + body));
  const std::string more = body + "z";
  BytesIn in(more);
  read.SetData("x", std::string("old"));
  EXPECT_EQ(QZBReadPOD(in, read, body.size()), QZBReturn::Success);
  EXPECT_EQ(Tell(read), "x string old; x int 5; b int 2; x string y; ");
  EXPECT_EQ(in.get(), 'z') << "stands behind the item";
}

TEST(ObjectStream, WritesNothingWhereThereIsNothing) {
  QZContainer cleared = One(5), nameless;
  cleared.Clear();
  nameless.SetData("", 5);
  Messages messages;
  for (const QZContainer& each : {QZContainer(), cleared, nameless, One(false), One<const char*>("text"),
                                  One(QZContainer()), One(std::vector<std::string>{"a"})}) {
    qzosstream out;
    EXPECT_TRUE(QZBWritePOD(out, each, "QZBasePOD")) << Tell(each);
    EXPECT_EQ(out.tell(), 0U) << Tell(each);
  }
  EXPECT_EQ(messages.Take(), "");
}

TEST(ObjectStream, LeavesOutNamesThatAreTooLong) {
  const std::string longest(1023, 'a'), longer(1024, 'b'), longForClass(1009, 'c'), longestForClass(1008, 'd');
  QZContainer inner, object;
  inner.SetData("n", 1);
  object.SetData(longer.c_str(), 5);
  object.SetData(longest.c_str(), 6);
  object.SetData(longForClass.c_str(), inner);
  object.SetData(longestForClass.c_str(), inner);
  Messages messages;
  const std::string bytes = Written(object, PODHandler());
  EXPECT_EQ(messages.Take(), skipped + longer + ".  Skipping...\n" + skipped + longForClass + ".  Skipping...\n");
  EXPECT_EQ(Read(bytes, PODHandler()), "0: " + longest + " int 6; " + longestForClass + " {n int 1; }; ");
  qzosstream out;
  EXPECT_FALSE(QZBWritePOD(out, object, longer));
  EXPECT_EQ(out.tell(), 0U);
}

// To a reader such a name is the second tag of a value of a class, whatever stands behind it.
TEST(ObjectStream, WritesNamesThatReadAsHandled) {
  QZContainer payload, object;
  payload.SetData("!HandledQZBTag:x", std::vector<char>{0x3C, '\x81', 0, '\x81', 'b'});
  EXPECT_EQ(Hex(Written(payload)), Hex(Bytes("01 3F 00 90 '!HandledQZBTag:x' 51 85 3C 81 00 81 'b'")));
  EXPECT_EQ(Read(Written(payload)), "0: b unknown '' 60 3C 81 00 81 62; ");
  object.SetData("!HandledQZBTag:y", One(1));
  object.SetData("z", 6);
  EXPECT_EQ(Read(Written(object, PODHandler()), PODHandler()), "0: !HandledQZBTag:y {x int 1; }; z int 6; ");
}

TEST(ObjectStream, CarriesCodesWithoutAName) {
  const std::pair<const char*, const char*> cases[] = {{"UnknownQZB60", "01 3F 3C 02 01"},
                                                       {"UnknownQZB127", "01 3F 7F 02 01"},
                                                       {"UnknownQZB128", "'failed'"},
                                                       {"UnknownQZB255", "'failed'"},
                                                       {"UnknownQZB256", "01 3F 00 8D 'UnknownQZB256' 02 01"},
                                                       {"UnknownQZB0", "01 3F 00 8B 'UnknownQZB0' 02 01"},
                                                       {"UnknownQZB060", "01 3F 00 8D 'UnknownQZB060' 02 01"},
                                                       {"UnknownQZB6x", "01 3F 00 8C 'UnknownQZB6x' 02 01"}};
  for (const auto& [name, bytes] : cases) {
    QZContainer object, falseOnly;
    object.SetData(name, true);
    falseOnly.SetData(name, false);
    EXPECT_EQ(Hex(Written(object)), Hex(Bytes(bytes))) << name;
    EXPECT_EQ(Written(falseOnly), "") << "what isn't written can't fail";
  }
}

const std::string handledBox = "00 81 'b' 60 00 90 '!HandledQZBTag:b' 51 ";

// A payload is opened as far as its name; a value without an object is one that was written empty.
TEST(ObjectStream, KeepsWhatNobodyKnows) {
  const std::string full = handledBox + "92 00 83 'Box' 8C 00 81 'b' 01 87 01 3F 00 81 'x' 02 01";
  const std::string empty = handledBox + "89 00 83 'Box' 83 00 81 'b'";
  const std::string bytes = Bytes("01 3F " + full + " 00 81 'm' 02 01 " + empty);
  QZContainer object, unknown;
  object.AddData("b", One(true));
  object.AddData("m", true);
  object.AddData("b", QZContainer());
  EXPECT_EQ(Hex(Written(object, PODHandler())), Hex(bytes));
  EXPECT_EQ(Read(bytes, PODHandler()), "0: b {x bool 1; }; m bool 1; b {}; ");
  EXPECT_EQ(Read(bytes),
            "0: b unknown 'Box' 0 00 83 42 6F 78 8C 00 81 62 01 87 01 3F 00 81 78 02 01; m bool 1; "
            "b unknown 'Box' 0 00 83 42 6F 78 83 00 81 62; ");
  BytesIn in(bytes);
  ASSERT_EQ(QZBReadPOD(in, unknown, bytes.size()), QZBReturn::Success);
  EXPECT_EQ(Hex(Written(unknown)), Hex(bytes));
  EXPECT_EQ(Hex(Written(unknown, PODHandler())), Hex(bytes));
  const auto* first = QZBaseImpl::As<QZUnknownQZBData>(QZIter(unknown.GetDataIter()).Get()->operator->());
  EXPECT_EQ(first->GetData().type, QZGetDataType<QZBase>());
}

TEST(ObjectStream, IsReadLeniently) {
  const std::pair<const char*, const char*> cases[] = {
      {"00 90 '!HandledQZBTag:b' 99 85 3C 81 00 81 'b'", "b unknown '' 60 3C 81 00 81 62; "},  // the second half alone
      {"00 81 'a' 99 00 81 'b' 02 01", "b bool 1; "},                                          // a type nobody knows
      {"00 81 'a' 02 05 00 81 'b' 03 82 07 00 00 81 'c' 50 82 80 00 00 81 'd' 02 00",
       "a bool 1; b bool* 1 0; c vector<bool> 1 0; d bool 0; "},
      {"3C 01 05 00 00 00 7F 02 01 1F 01 06 00 00 00", "UnknownQZB60 int 5; UnknownQZB127 bool 1; QZBase int 6; "}};
  for (const auto& [entries, told] : cases)
    EXPECT_EQ(Read(Bytes(std::string("01 3F ") + entries)), std::string("0: ") + told) << entries;
}

// The writer and the reader of a class of which the parts fail.
class Failing : public QZWriteFxn<QZBaseData> {
 public:
  const char* GetTag() const override { return "Box"; }
  const void* GetType() const override { return QZGetDataType<QZContainer>(); }
  Failing* CreateCopy() const override { return new Failing(*this); }
  bool operator()(qzostream& out, const QZBaseData& value, const QZBinaryIOHandlerBase&) const override {
    out << "trace";
    return static_cast<const QZBaseDataT<QZContainer>&>(value).GetData().HasData("good");
  }
};

TEST(ObjectStream, LeavesNoTraceOfAWriterThatFails) {
  QZBinaryIOHandler handler;
  handler.SetBaseWriteFxn(Failing());
  QZContainer object, good;
  good.SetData("good", true);
  object.SetData("a", 1);
  object.SetData("b", QZContainer());
  object.SetData("c", good);
  Messages messages;
  EXPECT_EQ(Hex(Written(object, handler)),
            Hex(Bytes("01 3F 00 81 'a' 01 01 00 00 00 00 81 'c' 60 00 90 '!HandledQZBTag:c' 51 85 'trace'")));
  EXPECT_EQ(messages.Take(), skipped + "b.  Skipping...\n");
  object.SetData("UnknownQZB200", QZContainer());
  EXPECT_EQ(Written(object, handler).size(), 39U) << "a value that isn't written has no code to refuse";
  object.SetData("UnknownQZB200", good);
  EXPECT_EQ(Written(object, handler), "failed");
}

// No reader gets past it.
TEST(ObjectStream, WritesAnEntryForAnEmptyPayload) {
  class Silent : public Failing {
   public:
    Silent* CreateCopy() const override { return new Silent(*this); }
    bool operator()(qzostream&, const QZBaseData&, const QZBinaryIOHandlerBase&) const override { return true; }
  };
  QZBinaryIOHandler handler;
  handler.SetBaseWriteFxn(Silent());
  QZContainer box, unknown;
  box.SetData("b", QZContainer());
  unknown.SetData("b", QZUnknownQZBData());
  const std::string bytes = Bytes("01 3F " + handledBox + "80");
  EXPECT_EQ(Hex(Written(box, handler)), Hex(bytes));
  EXPECT_EQ(Hex(Written(unknown)), Hex(bytes));
  EXPECT_EQ(Read(bytes), "4: ");
}

TEST(ObjectStream, DropsUnknownItemsOfOthers) {
  QZUnknownQZBData unknown;
  unknown.data = {'a'};
  QZContainer object;
  object.AddData(QZUnknownQZBDataTagName(), unknown);
  object.AddData("QZUnknownQZB", QZUnknownQZBData());
  EXPECT_EQ(Written(object), "");
}

TEST(Items, AreReadByTagAndType) {
  const QZBinaryIOHandler handler = PODHandler();
  const std::string bytes = Bytes("01 87 01 3F 00 81 'n' 02 01 01 87 01 3F 00 81 'm' 02 01");
  BytesIn in(bytes);
  PipeIn pipe(bytes, 3);
  for (qzistream* each : {static_cast<qzistream*>(&in), static_cast<qzistream*>(&pipe)}) {
    QZContainer object;
    EXPECT_EQ(QZBinaryRead(*each, object, handler), QZBReturn::Success);
    EXPECT_EQ(QZBinaryRead(*each, object, handler), QZBReturn::Success);
    EXPECT_EQ(Tell(object), "n bool 1; m bool 1; ");
    EXPECT_EQ(QZBinaryRead(*each, object, handler), QZBReturn::ReadTagFailed);
    EXPECT_TRUE(each->eof());
  }
}

TEST(Items, ThatNobodyReadsAreAttached) {
  const struct {
    const char* bytes;
    unsigned int code;
    const char* told;
  } cases[] = {{"00 81 'n' 82 'ab'", 0, "QZUnknownQZBData unknown 'n' 0 61 62; "},
               {"3C 81 'a' 55", 0, "QZUnknownQZBData unknown '' 60 61; "},
               {"00 81 'n' 83 'ab'", 9, ""},
               {"00 81 'n' 7F 7F 7F 7F 8F", 9, ""},
               {"00 81 'n' 80", 8, ""},
               {"00 81 'n' 80 55", 9, ""},
               {"C8 81 'a'", 6, ""},
               {"00 81 00 81 'a'", 6, ""},
               {"", 6, ""}};
  Messages messages;
  for (const auto& [hex, code, told] : cases) {
    const std::string bytes = Bytes(hex);
    BytesIn in(bytes);
    PipeIn pipe(bytes, 2);
    QZContainer object, piped;
    EXPECT_EQ(QZBinaryRead(in, object, QZBinaryIOHandler()), code) << hex;
    static_cast<void>(QZBinaryRead(pipe, piped, QZBinaryIOHandler()));
    EXPECT_EQ(Tell(object), told) << hex;
    EXPECT_EQ(Tell(piped), told) << hex;
  }
  struct Plain {
  } plain;
  const std::string bytes = Bytes("00 81 'n' 82 'ab' 55");
  BytesIn in(bytes);
  EXPECT_EQ(QZBinaryRead(in, plain, QZBinaryIOHandler()), QZBReturn::Success);
  EXPECT_EQ(in.get(), 0x55);
}

TEST(Items, AreCollectedAndGrouped) {
  class GoodOnly : public WritePOD<QZContainer> {
   public:
    GoodOnly* CreateCopy() const override { return new GoodOnly(*this); }
    bool operator()(qzostream& out, const QZContainer& object, const QZBinaryIOHandlerBase& handler) const override {
      return !object.HasData("bad") && WritePOD::operator()(out, object, handler);
    }
  };
  QZCollectWriteFxn<QZContainer> collect(false, "gz", "Group"), pack(true, "gz", "Group"), wrong(true, "?", "Group");
  for (auto* each : {&collect, &collect, &pack, &wrong}) each->AddWriteFxn(GoodOnly());
  QZBinaryIOHandler handler;
  handler.SetReadFxn(QZGroupReadFxn<QZContainer, QZContainer>("Group"), false);
  handler.SetReadFxn(QZBasePODReadFxn<QZContainer>(), false);
  QZContainer bad, copy;
  bad.SetData("bad", true);
  qzosstream out, packed, nothing;
  EXPECT_TRUE(QZCollectWriteFxn<QZContainer>(collect)(out, One(true), handler)) << "a copy has copies of its writers";
  const std::string bytes = Bytes("00 85 'Group' 92 01 87 01 3F 00 81 'x' 02 01 01 87 01 3F 00 81 'x' 02 01");
  EXPECT_EQ(Hex(out.str()), Hex(bytes));
  BytesIn in(bytes);
  EXPECT_EQ(QZBinaryRead(in, copy, handler), QZBReturn::Success);
  EXPECT_EQ(Tell(copy), "x bool 1; x bool 1; ");
  EXPECT_TRUE(pack(packed, One(true), handler));
  EXPECT_EQ(packed.str().substr(8, 2), "\x1F\x8B");
  EXPECT_TRUE(collect(nothing, QZContainer(), handler));
  EXPECT_FALSE(collect(nothing, bad, handler) || wrong(nothing, One(true), handler));
  EXPECT_EQ(nothing.tell(), 0U);
}

}  // namespace
