#include "qz/system/qzb/objectstream.h"

#include <gtest/gtest.h>

#include "tests/system/qzb/objects.h"
#include "tests/system/text/warnings.h"

using namespace QZSystem;

namespace {

const std::string skipped = "Warning: Warning: Failed to write QZBase data for tag ";

TEST(ObjectStream, OfTwoValuesByteByByte) {
  QZContainer object;
  object.SetData("n", 5);
  object.SetData("s", std::string("hi"));
  qzosstream out;
  EXPECT_TRUE(QZBWritePOD(out, object, "QZBasePOD"));
  EXPECT_EQ(out.str(), Bytes("01 91 01 3F 00 81 'n' 01 05 00 00 00 00 81 's' 10 82 'hi'"));
  qzosstream bare;
  EXPECT_TRUE(QZBWritePOD(bare, object, ""));
  EXPECT_EQ(bare.str(), out.str().substr(2));
}

// The bytes behind name and flags, and what they read as. The third column is the same body from a machine of the other
// byte order, where that differs.
struct Form {
  void (*attach)(QZBase&);
  const char* bytes;
  const char* swapped;
  const char* told;
};

template <class T>
void Attach(QZBase& object, std::vector<T> elements) {
  object.AddData<T*>("x", elements.data(), static_cast<unsigned int>(elements.size()));
}

const Form forms[] = {
    {[](QZBase& o) { o.AddData("x", -2); }, "01 FE FF FF FF", "01 FF FF FF FE", "int -2"},
    {[](QZBase& o) { o.AddData("x", 7U); }, "01 07 00 00 00", "01 00 00 00 07", "int 7"},
    {[](QZBase& o) { o.AddData("x", true); }, "02 01", "", "bool 1"},
    {[](QZBase& o) { o.AddData("x", 1.5F); }, "04 00 00 C0 3F", "04 3F C0 00 00", "float 1.5"},
    {[](QZBase& o) { o.AddData("x", -2.5); }, "08 00 00 00 00 00 00 04 C0", "08 C0 04 00 00 00 00 00 00",
     "double -2.5"},
    {[](QZBase& o) { o.AddData("x", std::string("a'b")); }, "10 83 61 27 62", "", "string a'b"},
    {[](QZBase& o) { o.AddData("x", std::string()); }, "10 80", "", "string "},
    {[](QZBase& o) {
       const bool elements[] = {true, false};
       o.AddData<bool*>("x", elements, 2);
     },
     "03 82 01 00", "", "bool* 1 0"},
    {[](QZBase& o) { o.AddData<bool*>("x", nullptr, 0); }, "03 80", "", "bool*"},
    {[](QZBase& o) {
       Attach<char>(o, {'a', '\0'});
     },
     "06 82 61 00", "", "char* 97 0"},
    {[](QZBase& o) { Attach<unsigned char>(o, {200}); }, "07 81 C8", "", "uchar* 200"},
    {[](QZBase& o) {
       Attach<int>(o, {1, -1});
     },
     "20 88 01 00 00 00 FF FF FF FF", "20 88 00 00 00 01 FF FF FF FF", "int* 1 -1"},
    {[](QZBase& o) { Attach<unsigned int>(o, {1}); }, "40 84 01 00 00 00", "40 84 00 00 00 01", "uint* 1"},
    {[](QZBase& o) { Attach<float>(o, {1.5F}); }, "05 84 00 00 C0 3F", "05 84 3F C0 00 00", "float* 1.5"},
    {[](QZBase& o) { Attach<double>(o, {-2.5}); }, "11 88 00 00 00 00 00 00 04 C0", "11 88 C0 04 00 00 00 00 00 00",
     "double* -2.5"},
    {[](QZBase& o) { Attach<QZHalfFloat>(o, {QZHalfFloat{258}}); }, "12 01 82 02 01", "12 02 82 01 02", "half* 258"},
    {[](QZBase& o) {
       o.AddData("x", std::vector<bool>{true, false, true});
     },
     "50 83 01 00 01", "", "vector<bool> 1 0 1"},
    {[](QZBase& o) {
       o.AddData("x", std::vector<char>{'a', -1});
     },
     "51 82 61 FF", "", "vector<char> 97 -1"},
    {[](QZBase& o) { o.AddData("x", std::vector<unsigned char>{255}); }, "52 81 FF", "", "vector<uchar> 255"},
    {[](QZBase& o) { o.AddData("x", std::vector<short>{-2}); }, "53 01 82 FE FF", "53 00 82 FF FE", "vector<short> -2"},
    {[](QZBase& o) { o.AddData("x", std::vector<unsigned short>{258}); }, "54 01 82 02 01", "54 3F 82 01 02",
     "vector<ushort> 258"},
    {[](QZBase& o) { o.AddData("x", std::vector<int>{1}); }, "55 84 01 00 00 00", "55 84 00 00 00 01", "vector<int> 1"},
    {[](QZBase& o) { o.AddData("x", std::vector<unsigned int>{1}); }, "56 84 01 00 00 00", "56 84 00 00 00 01",
     "vector<uint> 1"},
    {[](QZBase& o) { o.AddData("x", std::vector<float>{1.5F}); }, "57 84 00 00 C0 3F", "57 84 3F C0 00 00",
     "vector<float> 1.5"},
    {[](QZBase& o) { o.AddData("x", std::vector<double>{-2.5}); }, "58 88 00 00 00 00 00 00 04 C0",
     "58 88 C0 04 00 00 00 00 00 00", "vector<double> -2.5"},
    {[](QZBase& o) { o.AddData("x", std::vector<double>{}); }, "58 80", "", "vector<double>"},
    {[](QZBase& o) { o.AddData("x", std::vector<QZHalfFloat>{QZHalfFloat{258}}); }, "61 01 82 02 01", "61 FF 82 01 02",
     "vector<half> 258"}};

TEST(ObjectStream, HasAFormForEachType) {
  for (const Form& form : forms) {
    SCOPED_TRACE(form.bytes);
    QZContainer object;
    form.attach(object);
    const std::string told = std::string("0: x ") + form.told + "; ";
    EXPECT_EQ(Hex(Written(object)), Hex(Bytes(std::string("01 3F 00 81 'x' ") + form.bytes)));
    EXPECT_EQ(Read(Written(object)), told);
    const char* const swapped = *form.swapped ? form.swapped : form.bytes;
    EXPECT_EQ(Read(Bytes(std::string("00 00 00 81 'x' ") + swapped)), told);
  }
}

TEST(ObjectStream, EachFlagGovernsItsOwnClass) {
  const std::string entries = "00 81 'i' 01 00 00 00 01 00 81 'f' 04 00 00 C0 3F 00 81 'h' 61 01 82 02 01";
  EXPECT_EQ(Read(Bytes("00 3F " + entries)), "0: i int 1; f float 1.5; h vector<half> 258; ");
  EXPECT_EQ(Read(Bytes("01 02 00 81 'i' 20 84 01 00 00 00 00 81 'f' 57 84 3F C0 00 00")),
            "0: i int* 1; f vector<float> 1.5; ");
}

TEST(ObjectStream, WritesArraysWithoutElementsThatStopTheReader) {
  QZContainer object;
  object.SetData<int*>("a", nullptr, 0);
  EXPECT_EQ(Hex(Written(object)), "01 3F 00 81 61 20 80");
  EXPECT_EQ(Read(Written(object)), "4: ");
}

TEST(ObjectStream, KeepsValuesOfOneNameInOrder) {
  QZContainer object;
  object.AddData("a", 1);
  object.AddData("b", 2);
  object.AddData("a", std::string("x"));
  EXPECT_EQ(Read(Written(object)), "0: a int 1; b int 2; a string x; ");
}

TEST(ObjectStream, AddsToWhatTheObjectHas) {
  const std::string body = Bytes("01 3F 00 81 'n' 01 05 00 00 00 99");
  BytesIn in(body);
  QZContainer object;
  object.SetData("n", std::string("old"));
  EXPECT_EQ(QZBReadPOD(in, object, body.size() - 1), QZBReturn::Success);
  EXPECT_EQ(Tell(object), "n string old; n int 5; ");
  EXPECT_EQ(in.get(), 0x99) << "stands behind the item";
}

TEST(ObjectStream, WritesNothingWhereThereIsNothing) {
  QZContainer empty, cleared, falseOnly, pointer, nameless, classes;
  cleared.SetData("n", 5);
  cleared.Clear();
  falseOnly.SetData("f", false);
  pointer.SetData<const char*>("p", "text");
  nameless.SetData("", 5);
  classes.SetData("c", QZContainer());
  classes.SetData("v", std::vector<std::string>{"a"});
  Warnings warnings;
  for (const QZContainer* each : {&empty, &cleared, &falseOnly, &pointer, &nameless, &classes}) {
    qzosstream out;
    EXPECT_TRUE(QZBWritePOD(out, *each, "QZBasePOD")) << Tell(*each);
    EXPECT_EQ(out.tell(), 0U) << Tell(*each);
  }
  EXPECT_EQ(warnings.Take(), "");
}

TEST(ObjectStream, LeavesOutNamesThatAreTooLong) {
  const std::string longest(1023, 'a'), longer(1024, 'b'), longForClass(1009, 'c'), longestForClass(1008, 'd');
  QZContainer inner, object;
  inner.SetData("n", 1);
  object.SetData(longer.c_str(), 5);
  object.SetData(longest.c_str(), 6);
  object.SetData(longForClass.c_str(), inner);
  object.SetData(longestForClass.c_str(), inner);
  Warnings warnings;
  const std::string bytes = Written(object, ContainerHandler());
  EXPECT_EQ(warnings.Take(), skipped + longer + ".  Skipping...\n" + skipped + longForClass + ".  Skipping...\n");
  EXPECT_EQ(Read(bytes, ContainerHandler()), "0: " + longest + " int 6; " + longestForClass + " {n int 1; }; ");
  qzosstream out;
  EXPECT_FALSE(QZBWritePOD(out, object, longer));
  EXPECT_EQ(out.tell(), 0U);
}

// To a reader such a name is the second tag of a value of a class, whatever stands behind it.
TEST(ObjectStream, WritesNamesThatReadAsHandled) {
  QZContainer plain, payload, object, inner;
  plain.SetData("!HandledQZBTag:x", 5);
  payload.SetData("!HandledQZBTag:x", std::vector<char>{0x3C, '\x81', 0, '\x81', 'b'});
  EXPECT_EQ(Hex(Written(plain)), Hex(Bytes("01 3F 00 90 '!HandledQZBTag:x' 01 05 00 00 00")));
  EXPECT_EQ(Hex(Written(payload)), Hex(Bytes("01 3F 00 90 '!HandledQZBTag:x' 51 85 3C 81 00 81 'b'")));
  EXPECT_EQ(Read(Written(payload)), "0: b unknown '' 60 3C 81 00 81 62; ");
  inner.SetData("n", 1);
  object.SetData("!HandledQZBTag:y", inner);
  object.SetData("z", 6);
  const std::string bytes = Written(object, ContainerHandler());
  EXPECT_EQ(Read(bytes, ContainerHandler()), "0: !HandledQZBTag:y {n int 1; }; z int 6; ");
  QZContainer unknown;
  BytesIn in(bytes);
  EXPECT_EQ(QZBReadPOD(in, unknown, bytes.size()), QZBReturn::Success);
  EXPECT_EQ(Written(unknown), bytes);
}

TEST(ObjectStream, CarriesCodesWithoutAName) {
  const std::string bytes = Bytes("01 3F 3C 01 05 00 00 00 7F 02 01 1F 01 06 00 00 00");
  EXPECT_EQ(Read(bytes), "0: UnknownQZB60 int 5; UnknownQZB127 bool 1; QZBase int 6; ");
  const struct {
    const char* name;
    const char* bytes;
  } cases[] = {{"UnknownQZB60", "01 3F 3C 02 01"},
               {"UnknownQZB1", "01 3F 01 02 01"},
               {"UnknownQZB127", "01 3F 7F 02 01"},
               {"UnknownQZB128", "'failed'"},
               {"UnknownQZB255", "'failed'"},
               {"UnknownQZB256", "01 3F 00 8D 'UnknownQZB256' 02 01"},
               {"UnknownQZB0", "01 3F 00 8B 'UnknownQZB0' 02 01"},
               {"UnknownQZB", "01 3F 00 8A 'UnknownQZB' 02 01"},
               {"UnknownQZB060", "01 3F 00 8D 'UnknownQZB060' 02 01"},
               {"UnknownQZB6x", "01 3F 00 8C 'UnknownQZB6x' 02 01"}};
  for (const auto& each : cases) {
    QZContainer object;
    object.SetData(each.name, true);
    EXPECT_EQ(Hex(Written(object)), Hex(Bytes(each.bytes))) << each.name;
  }
  QZContainer falseOnly;
  falseOnly.SetData("UnknownQZB200", false);
  EXPECT_EQ(Written(falseOnly), "") << "what isn't written can't fail";
}

const char* const handledBox =
    "00 81 'b' 60 00 90 '!HandledQZBTag:b' 51 92 "
    "00 83 'Box' 8C 00 81 'b' 01 87 01 3F 00 81 'n' 02 01";

TEST(ObjectStream, HandlesAClassByteByByte) {
  QZContainer box, object;
  box.SetData("n", true);
  object.SetData("b", box);
  EXPECT_EQ(Hex(Written(object, ContainerHandler())), Hex(Bytes(std::string("01 3F ") + handledBox)));
  EXPECT_EQ(Read(Bytes(std::string("01 3F ") + handledBox), ContainerHandler()), "0: b {n bool 1; }; ");
}

TEST(ObjectStream, KeepsWhatNobodyKnows) {
  const std::string bytes = Bytes(std::string("01 3F ") + handledBox + " 00 81 'm' 02 01 " + handledBox);
  const std::string told = "b unknown 'Box' 0 00 83 42 6F 78 8C 00 81 62 01 87 01 3F 00 81 6E 02 01; ";
  EXPECT_EQ(Read(bytes), "0: " + told + "m bool 1; " + told) << "both of one name survive, in order";
  BytesIn in(bytes);
  QZContainer object;
  ASSERT_EQ(QZBReadPOD(in, object, bytes.size()), QZBReturn::Success);
  EXPECT_EQ(Hex(Written(object)), Hex(bytes));
  EXPECT_EQ(Hex(Written(object, ContainerHandler())), Hex(bytes));
  const auto* unknown = QZBaseImpl::As<QZUnknownQZBData>(QZIter(object.GetDataIter()).Get()->operator->());
  ASSERT_NE(unknown, nullptr);
  EXPECT_EQ(unknown->GetData().type, QZGetDataType<QZBase>());
}

// A payload is opened as far as its name; a value without an object is one that was written empty.
TEST(ObjectStream, KeepsAnObjectThatWasEmpty) {
  QZContainer object;
  object.SetData("b", QZContainer());
  const std::string bytes = Written(object, ContainerHandler());
  EXPECT_EQ(Hex(bytes), Hex(Bytes("01 3F 00 81 'b' 60 00 90 '!HandledQZBTag:b' 51 89 00 83 'Box' 83 00 81 'b'")));
  EXPECT_EQ(Read(bytes, ContainerHandler()), "0: b {}; ");
  BytesIn in(bytes);
  QZContainer unknown;
  ASSERT_EQ(QZBReadPOD(in, unknown, bytes.size()), QZBReturn::Success);
  EXPECT_EQ(Hex(Written(unknown)), Hex(bytes));
}

TEST(ObjectStream, TakesTheSecondHalfOfAHandledValueAlone) {
  EXPECT_EQ(Read(Bytes("01 3F 00 90 '!HandledQZBTag:b' 99 85 3C 81 00 81 'b'")), "0: b unknown '' 60 3C 81 00 81 62; ");
}

TEST(ObjectStream, PassesOverUnknownTypeBytes) {
  EXPECT_EQ(Read(Bytes("01 3F 00 81 'a' 99 00 81 'b' 02 01")), "0: b bool 1; ");
}

TEST(ObjectStream, CountsEveryByteButZeroAsTrue) {
  EXPECT_EQ(Read(Bytes("01 3F 00 81 'a' 02 05 00 81 'b' 03 82 07 00 00 81 'c' 50 82 80 00 00 81 'd' 02 00")),
            "0: a bool 1; b bool* 1 0; c vector<bool> 1 0; d bool 0; ");
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
  Warnings warnings;
  EXPECT_EQ(Hex(Written(object, handler)),
            Hex(Bytes("01 3F 00 81 'a' 01 01 00 00 00 00 81 'c' 60 00 90 '!HandledQZBTag:c' 51 85 'trace'")));
  EXPECT_EQ(warnings.Take(), skipped + "b.  Skipping...\n");
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
  const std::string bytes = Bytes("01 3F 00 81 'b' 60 00 90 '!HandledQZBTag:b' 51 80");
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
  const QZBinaryIOHandler handler = ContainerHandler();
  QZContainer object;
  object.SetData("n", 5);
  qzosstream out;
  EXPECT_TRUE(QZBinaryWrite(out, object, handler));
  EXPECT_TRUE(QZBinaryWrite(out, object, handler));
  const std::string bytes = out.str();
  BytesIn in(bytes);
  PipeIn pipe(bytes, 3);
  for (qzistream* each : {static_cast<qzistream*>(&in), static_cast<qzistream*>(&pipe)}) {
    QZContainer copy;
    EXPECT_EQ(QZBinaryRead(*each, copy, handler), QZBReturn::Success);
    EXPECT_EQ(QZBinaryRead(*each, copy, handler), QZBReturn::Success);
    EXPECT_EQ(Tell(copy), "n int 5; n int 5; ");
    EXPECT_EQ(QZBinaryRead(*each, copy, handler), QZBReturn::ReadTagFailed);
    EXPECT_TRUE(each->eof());
  }
  qzosstream none;
  EXPECT_TRUE(QZBinaryWrite(none, object, QZBinaryIOHandler())) << "the default writer writes nothing";
  EXPECT_EQ(none.tell(), 0U);
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
               {"01", 6, ""},
               {"", 6, ""}};
  Warnings warnings;
  for (const auto& each : cases) {
    const std::string bytes = Bytes(each.bytes);
    BytesIn in(bytes);
    PipeIn pipe(bytes, 2);
    QZContainer object, piped;
    EXPECT_EQ(QZBinaryRead(in, object, QZBinaryIOHandler()), each.code) << each.bytes;
    EXPECT_EQ(Tell(object), each.told) << each.bytes;
    static_cast<void>(QZBinaryRead(pipe, piped, QZBinaryIOHandler()));
    EXPECT_EQ(Tell(piped), each.told) << each.bytes;
  }
  struct Plain {
  } plain;
  const std::string bytes = Bytes("00 81 'n' 82 'ab' 55");
  BytesIn in(bytes);
  EXPECT_EQ(QZBinaryRead(in, plain, QZBinaryIOHandler()), QZBReturn::Success);
  EXPECT_EQ(in.get(), 0x55);
}

TEST(Items, AreCollectedAndGrouped) {
  class Two : public QZWriteFxn<QZContainer> {
   public:
    const char* GetTag() const override { return "Two"; }
    const void* GetType() const override { return QZGetDataType<QZContainer>(); }
    Two* CreateCopy() const override { return new Two(*this); }
    bool operator()(qzostream& out, const QZContainer& object, const QZBinaryIOHandlerBase& handler) const override {
      return !object.HasData("bad") && QZBWriteQZBase(out, object, "QZBasePOD", handler);
    }
  };
  QZCollectWriteFxn<QZContainer> collect(false, "gz", "Group"), compress(true, "gz", "Group"),
      wrong(true, "?", "Group");
  for (auto* each : {&collect, &compress, &wrong}) {
    each->AddWriteFxn(Two());
    each->AddWriteFxn(Two());
  }
  QZBinaryIOHandler handler;
  handler.SetReadFxn(QZGroupReadFxn<QZContainer, QZContainer>("Group"), false);
  handler.SetReadFxn(QZBasePODReadFxn<QZContainer>(), false);
  QZContainer object, empty, bad, copy;
  object.SetData("n", true);
  bad.SetData("bad", true);
  qzosstream out, packed, nothing;
  EXPECT_TRUE(QZCollectWriteFxn<QZContainer>(collect)(out, object, handler)) << "a copy has copies of its writers";
  EXPECT_EQ(out.str(), Bytes("00 85 'Group' 92 01 87 01 3F 00 81 'n' 02 01 01 87 01 3F 00 81 'n' 02 01"));
  const std::string bytes = out.str();
  BytesIn in(bytes);
  EXPECT_EQ(QZBinaryRead(in, copy, handler), QZBReturn::Success);
  EXPECT_EQ(Tell(copy), "n bool 1; n bool 1; ");
  EXPECT_TRUE(compress(packed, object, handler));
  EXPECT_EQ(packed.str().substr(8, 2), "\x1F\x8B");
  EXPECT_TRUE(collect(nothing, empty, handler));
  EXPECT_FALSE(collect(nothing, bad, handler));
  EXPECT_FALSE(wrong(nothing, object, handler));
  EXPECT_EQ(nothing.tell(), 0U);
}

}  // namespace
