#include "qz/system.h"
#include "tests/system/qzb/containers.h"
#include "tests/tools/toolrun.h"

using namespace QZSystem;
using namespace QZTools;

namespace {

// A file as a toolkit writes it that has a class of its own.
std::string SomeFile() {
  const float floats[] = {1.5F, -2.0F};
  QZContainer inner, object;
  inner.SetData("n", true);
  object.SetData("n", 5);
  object.SetData("text", std::string("a\"b\n\x01"));
  object.SetData<float*>("f", floats, 2);
  object.SetData("many", std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  object.SetData("half", std::vector<QZHalfFloat>{QZHalfFloat{0x3C00}, QZHalfFloat{0xC500}});
  object.SetData("UnknownQZB60", 2.5);
  object.SetData("box", inner);
  qzosstream out;
  QZBWriteQZBase(out, object, "QZBasePOD", PODHandler());
  QZBWriteItem(out, "own", std::string("payload\0\xFF", 9));
  return out.str();
}

const char* const tree =
    "00000000  QZBasePOD (code 1)  object of 155 bytes\n"
    "00000005    n  int  5\n"
    "0000000d    text  string of 5 bytes  \"a\\\"b\\n\\x01\"\n"
    "0000001a    f  array of float of 8 bytes  1.5 -2\n"
    "00000027    many  vector of int of 40 bytes  1 2 3 4 5 6 7 8 ...\n"
    "00000057    half  vector of half float of 4 bytes  1 -5\n"
    "00000064    UnknownQZB60 (code 60)  double  2.5\n"
    "0000006e    box  handled value of 20 bytes, written by Box\n"
    "00000095      QZBasePOD (code 1)  object of 7 bytes\n"
    "00000099        n  bool  true\n"
    "0000009e  own  payload of 9 bytes\n"
    "000000a4    70 61 79 6c 6f 61 64 00 ff                       payload..\n";

class Dump : public ToolRun {
 protected:
  void SetUp() override { write("a.qzb", SomeFile()); }
};

TEST_F(Dump, ShowsTheTree) {
  const Outcome outcome = run("qzdump a.qzb");
  EXPECT_EQ(outcome.out, tree);
  EXPECT_EQ(outcome.messages, "");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(run("qzdump - < a.qzb").out, tree);
  EXPECT_EQ(run("cat a.qzb | qzdump -").out, tree);
  EXPECT_NE(run("qzdump -full a.qzb").out.find("1 2 3 4 5 6 7 8 9 10\n"), std::string::npos);
}

TEST_F(Dump, WritesADocument) {
  const std::string object("\x01\x8E\x01\x3F\x00\x81n\x01\x05\x00\x00\x00\x00\x81z\x99", 16);
  write("b.qzb", object + std::string("\x00\x81o\x82\x00\xFF\x01", 7));
  const Outcome outcome = run("qzdump -json b.qzb");
  EXPECT_EQ(outcome.out,
            "{\"items\":[{\"offset\":0,\"tag\":\"QZBasePOD\",\"code\":1,\"type\":\"object\",\"length\":14,\"parts\":["
            "{\"offset\":4,\"tag\":\"n\",\"code\":0,\"type\":\"int\",\"length\":4,\"value\":5},"
            "{\"offset\":12,\"tag\":\"z\",\"code\":0,\"type\":\"unknown type 0x99\",\"length\":0}]},\n"
            "{\"offset\":16,\"tag\":\"o\",\"code\":0,\"type\":\"payload\",\"length\":2,\"bytes\":\"00ff\"}],"
            "\"damage\":{\"offset\":22,\"code\":6,\"text\":\"Read Tag Failed\"}}\n");
  EXPECT_EQ(outcome.messages, "Fatal: b.qzb: offset 22: Read Tag Failed\n");
  EXPECT_TRUE(JSONCheckHelper(run("qzdump -json a.qzb").out));
}

TEST_F(Dump, StopsAtTheFirstDamage) {
  std::string bytes = SomeFile();
  const std::string before = std::string(tree).substr(0, std::string(tree).find("0000001a"));
  write("cut.qzb", bytes.substr(0, 0x20));
  bytes[0x1E] = '\x7F';  // the length of the array
  write("bad.qzb", bytes);
  const Outcome cut = run("qzdump cut.qzb"), bad = run("qzdump bad.qzb");
  EXPECT_EQ(cut.out, before + "00000003  damage: Incorrect Size\n");
  EXPECT_EQ(cut.messages, "Fatal: cut.qzb: offset 3: Incorrect Size\n");
  EXPECT_EQ(cut.status, 1);
  EXPECT_EQ(bad.out, before + "0000001a  damage: Incorrect Size\n");
  EXPECT_EQ(bad.messages, "Fatal: bad.qzb: offset 26: Incorrect Size\n");
  EXPECT_EQ(refusal("qzdump none.qzb"), "Fatal: Cannot open none.qzb: No such file or directory\n");
}

// A program that doesn't know the class reads and writes the file, and it is the same.
TEST_F(Dump, ShowsTheSameOnceAnotherProgramHasRewrittenTheFile) {
  const std::string bytes = SomeFile();
  qzisstream in;
  in.set(bytes.data(), bytes.size(), false);
  QZBinaryIOHandler handler;
  handler.SetReadFxn(QZBasePODReadFxn<QZContainer>(), false);
  QZContainer object;
  ASSERT_EQ(QZBinaryRead(in, object, handler), QZBReturn::Success);
  qzosstream out;
  QZBWritePOD(out, object, "QZBasePOD");
  write("again.qzb", out.str());
  EXPECT_EQ(read("again.qzb"), bytes.substr(0, 0x9E));
  EXPECT_EQ(run("qzdump again.qzb").out, std::string(tree).substr(0, std::string(tree).find("0000009e")));
}

}  // namespace
