#include "qz/system/qzb/qzbhand.h"

#include <gtest/gtest.h>

#include <memory>

#include "qz/platform/memorystream.h"
#include "qz/system/frame/iterowner.h"
#include "qz/system/qzb/qzb.h"
#include "tests/system/cli/messages.h"
#include "tests/system/qzb/bytes.h"

using namespace QZSystem;

namespace {

struct Cell {};

class Reader : public QZReadFxn<Cell> {
 public:
  explicit Reader(std::string itemTag) : tag(std::move(itemTag)) {}
  const char* GetTag() const override { return tag.c_str(); }
  const void* GetType() const override { return QZGetDataType<Cell>(); }
  Reader* CreateCopy() const override { return new Reader(*this); }
  unsigned int operator()(qzistream&, Cell&, unsigned long, const QZBinaryIOHandlerBase&) const override { return 0; }

  std::string tag;
};

template <class T>
class Writer : public QZWriteFxn<T> {
 public:
  explicit Writer(std::string itemTag) : tag(std::move(itemTag)) {}
  const char* GetTag() const override { return tag.c_str(); }
  const void* GetType() const override { return QZGetDataType<T>(); }
  Writer* CreateCopy() const override { return new Writer(*this); }
  bool operator()(qzostream&, const T&, const QZBinaryIOHandlerBase&) const override { return true; }

  std::string tag;
};

class OwnDefaultReader : public QZDefaultReader {
 public:
  OwnDefaultReader* CreateCopy() const override { return new OwnDefaultReader(*this); }
  unsigned int operator()(qzistream&, unsigned long, const char*, const QZBinaryIOHandlerBase&) const override {
    return 5;
  }
};

template <class Fxn>
std::string Tags(QZIterBase<Fxn>* functions) {
  std::string text;
  for (const Fxn& each : QZIter(functions)) text += (text.empty() ? "" : " ") + std::string(each.GetTag());
  return text;
}

// All the tags, those of the readers first.
std::string Tags(const QZBinaryIOHandler& handler) {
  return Tags(handler.GetReadFxns()) + "|" + Tags(handler.GetWriteFxns()) + "|" + Tags(handler.GetBaseWriteFxns());
}

QZBinaryIOHandler Filled() {
  QZBinaryIOHandler handler;
  for (const char* tag : {"x", "b", "a", "b"}) EXPECT_TRUE(handler.SetReadFxn(Reader(tag), false));
  EXPECT_TRUE(handler.SetWriteFxn(Writer<Cell>("w"), false));
  EXPECT_TRUE(handler.SetBaseWriteFxn(Writer<QZBaseData>("v")));
  return handler;
}

TEST(Handler, PassesOverItemsAndWritesNoneAtFirst) {
  const QZBinaryIOHandler handler;
  EXPECT_EQ(Tags(handler), "||");
  qzosstream out;
  EXPECT_TRUE(handler.GetDefaultWriteFxn()(out, handler));
  EXPECT_EQ(out.tell(), 0U);
  const std::string bytes = "abcdef";
  for (const unsigned long length : {4UL, 100UL, ~0UL}) {
    BytesIn in(bytes);
    EXPECT_EQ(handler.GetDefaultReadFxn()(in, length, "tag", handler), QZBReturn::Success);
    EXPECT_EQ(in.tell(), std::min(length, 6UL));
  }
}

TEST(Handler, KeepsTheOrderAndReplacesTheFirstThatFits) {
  QZBinaryIOHandler handler = Filled();
  EXPECT_EQ(Tags(handler), "x b a b|w|v");
  EXPECT_TRUE(handler.HasReadFxn(Reader("a")) && handler.HasWriteFxn(Writer<Cell>("w")));
  EXPECT_FALSE(handler.HasReadFxn(Reader("c")));
  EXPECT_FALSE(handler.HasWriteFxn(Writer<int>("w"))) << "the type counts too";
  EXPECT_TRUE(handler.ReplaceReadFxn(Reader("new"), "b"));
  EXPECT_TRUE(handler.ReplaceReadFxn(Reader("b"), ""));
  EXPECT_FALSE(handler.ReplaceReadFxn(Reader("c"), ""));
  EXPECT_FALSE(handler.ReplaceWriteFxn(Writer<int>("w"), ""));
  EXPECT_TRUE(handler.ReplaceWriteFxn(Writer<Cell>("u"), "w"));
  EXPECT_EQ(Tags(handler), "x new a b|u|v");
}

TEST(Handler, TakesOnlyDefaultsAsDefaults) {
  QZBinaryIOHandler handler;
  EXPECT_TRUE(handler.SetReadFxn(OwnDefaultReader(), true));
  EXPECT_FALSE(handler.SetReadFxn(Reader("a"), true));
  EXPECT_FALSE(handler.SetWriteFxn(Writer<Cell>("a"), true));
  EXPECT_EQ(Tags(handler), "||");
  BytesIn in("");
  EXPECT_EQ(handler.GetDefaultReadFxn()(in, 0, "", handler), 5U);
  EXPECT_EQ(QZBinaryIOHandler(handler).GetDefaultReadFxn()(in, 0, "", handler), 5U);
  handler.Clear();
  EXPECT_EQ(handler.GetDefaultReadFxn()(in, 0, "", handler), 0U);
}

TEST(Handler, RefusesTagsThatNoItemCanHave) {
  QZBinaryIOHandler handler;
  Messages messages;
  const std::string longest(1023, 't'), longer(1024, 't');
  EXPECT_TRUE(handler.SetReadFxn(Reader(longest), false));
  EXPECT_TRUE(handler.SetWriteFxn(Writer<Cell>(longest), false));
  EXPECT_EQ(messages.Take(), "");
  EXPECT_FALSE(handler.SetReadFxn(Reader(longer), false));
  EXPECT_EQ(messages.Take(), "Warning: Attempt to register reader function which has a tag length of > 1024 bytes\n");
  EXPECT_FALSE(handler.SetWriteFxn(Writer<Cell>(longer), true));
  EXPECT_FALSE(handler.SetBaseWriteFxn(Writer<QZBaseData>(longer)));
  const std::string warning = "Warning: Attempt to register writer function which has a tag length of > 1024 bytes\n";
  EXPECT_EQ(messages.Take(), warning + warning);
  EXPECT_EQ(Tags(handler), longest + "|" + longest + "|");
}

TEST(Handler, IsAValue) {
  QZBinaryIOHandler handler = Filled(), assigned;
  handler.SetData("note", 5);
  const std::unique_ptr<QZBinaryIOHandler> copy(handler.CreateCopy());
  const QZBinaryIOHandler fromBase(static_cast<const QZBinaryIOHandlerBase&>(handler));
  assigned.SetReadFxn(Reader("old"), false);
  assigned = handler;
  assigned = *&assigned;
  handler.Clear();
  EXPECT_EQ(Tags(handler), "||");
  EXPECT_FALSE(handler.HasData("note"));
  for (const QZBinaryIOHandler& each : {*copy, fromBase, assigned}) {
    EXPECT_EQ(Tags(each), "x b a b|w|v");
    EXPECT_EQ(each.GetData<int>("note"), 5);
  }
  EXPECT_TRUE(handler.IsDataType(handler.GetDataType()) && handler.IsDataType(QZGetDataType<QZBase>()));
  EXPECT_FALSE(handler.IsDataType(QZGetDataType<Reader>()));
}

// What the initialisers do is written down in the name of a value of the handler. The list is the process's own, so one
// test does it all.
std::string Calls(const QZBinaryIOHandlerBase& handler) { return handler.GetData<std::string>("calls"); }

bool Note(QZBinaryIOHandlerBase& handler, char letter, bool result) {
  handler.SetData("calls", Calls(handler) + letter);
  return result;
}

bool NeedsC(QZBinaryIOHandlerBase& handler) {
  return Note(handler, 'a', Calls(handler).find('c') != std::string::npos);
}
bool Fails(QZBinaryIOHandlerBase& handler) { return Note(handler, 'b', false); }
bool Succeeds(QZBinaryIOHandlerBase& handler) { return Note(handler, 'c', true); }
bool Counts(QZBinaryIOHandlerBase& handler) {
  handler.SetData("count", handler.GetData<int>("count") + 1);
  return true;
}

TEST(Initializers, AreCalledInOrderAndOnceMoreIfTheyFail) {
  const unsigned int before = QZGetQZBInitializerCount();
  for (const QZBInitializer each : {NeedsC, Fails, Succeeds}) EXPECT_TRUE(QZRegisterQZBInitializer(each));
  EXPECT_EQ(QZGetQZBInitializerCount(), before + 3);
  Messages messages;
  QZBinaryIOHandler handler;
  QZInitializeHandler(handler);
  EXPECT_EQ(Calls(handler), "abcab");
  EXPECT_EQ(messages.Take(), "Warning: Default Initializer failed during setup.\n");
  for (int i = 0; i < 1025; ++i) EXPECT_TRUE(QZRegisterQZBInitializer(Counts));
  QZBinaryIOHandler later;
  QZInitializeHandler(later);
  EXPECT_EQ(later.GetData<int>("count"), 1025);
}

}  // namespace
