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
  explicit Reader(std::string itemTag, int which = 0) : tag(std::move(itemTag)), mark(which) {}
  const char* GetTag() const override { return tag.c_str(); }
  const void* GetType() const override { return QZGetDataType<Cell>(); }
  Reader* CreateCopy() const override { return new Reader(*this); }
  unsigned int operator()(qzistream&, Cell&, unsigned long, const QZBinaryIOHandlerBase&) const override { return 0; }

  std::string tag;
  int mark;
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

// The tags of functions, with the mark of a reader behind it.
template <class Fxn>
std::string Tags(QZIterBase<Fxn>* functions) {
  std::string text;
  for (const Fxn& each : QZIter(functions)) text += (text.empty() ? "" : " ") + std::string(each.GetTag());
  return text;
}

int Mark(const QZBinaryIOHandler& handler, int index) {
  QZIter<QZReadFxnBase> readers(handler.GetReadFxns());
  for (; index > 0; --index) ++readers;
  return static_cast<const Reader&>(*readers).mark;
}

TEST(Handler, IsEmptyAtFirst) {
  const QZBinaryIOHandler handler;
  EXPECT_EQ(Tags(handler.GetReadFxns()) + Tags(handler.GetWriteFxns()) + Tags(handler.GetBaseWriteFxns()), "");
  qzosstream out;
  EXPECT_TRUE(handler.GetDefaultWriteFxn()(out, handler));
  EXPECT_EQ(out.tell(), 0U);
  const std::string bytes = "abcdef";
  for (const unsigned long length : {4UL, 100UL, ~0UL}) {
    BytesIn in(bytes);
    EXPECT_EQ(handler.GetDefaultReadFxn()(in, length, "tag", handler), QZBReturn::Success);
    EXPECT_EQ(in.tell(), std::min(length, 6UL));
  }
  EXPECT_STREQ(handler.GetDefaultReadFxn().GetTag(), "");
  EXPECT_EQ(handler.GetDefaultWriteFxn().GetType(), nullptr);
}

TEST(Handler, KeepsFunctionsInTheOrderOfRegistration) {
  QZBinaryIOHandler handler;
  EXPECT_TRUE(handler.SetReadFxn(Reader("b", 1), false));
  EXPECT_TRUE(handler.SetReadFxn(Reader("a", 2), false));
  EXPECT_TRUE(handler.SetReadFxn(Reader("b", 3), false));
  EXPECT_TRUE(handler.SetWriteFxn(Writer<Cell>("w"), false));
  EXPECT_TRUE(handler.SetBaseWriteFxn(Writer<QZBaseData>("v")));
  EXPECT_EQ(Tags(handler.GetReadFxns()), "b a b");
  EXPECT_EQ(Tags(handler.GetWriteFxns()), "w");
  EXPECT_EQ(Tags(handler.GetBaseWriteFxns()), "v");
  EXPECT_TRUE(handler.HasReadFxn(Reader("a")));
  EXPECT_FALSE(handler.HasReadFxn(Reader("c")));
  EXPECT_TRUE(handler.HasWriteFxn(Writer<Cell>("w")));
  EXPECT_FALSE(handler.HasWriteFxn(Writer<int>("w"))) << "the type counts too";
}

TEST(Handler, ReplacesTheFirstThatFits) {
  QZBinaryIOHandler handler;
  int mark = 0;
  for (const char* tag : {"x", "b", "a", "b"}) handler.SetReadFxn(Reader(tag, ++mark), false);
  EXPECT_TRUE(handler.ReplaceReadFxn(Reader("b", 10), ""));
  EXPECT_TRUE(handler.ReplaceReadFxn(Reader("new", 11), "a"));
  EXPECT_FALSE(handler.ReplaceReadFxn(Reader("a", 12), "")) << "that is gone";
  EXPECT_EQ(Tags(handler.GetReadFxns()), "x b new b");
  EXPECT_EQ(Mark(handler, 1), 10);
  EXPECT_EQ(Mark(handler, 3), 4);
  handler.SetWriteFxn(Writer<Cell>("w"), false);
  EXPECT_FALSE(handler.ReplaceWriteFxn(Writer<int>("w"), ""));
  EXPECT_TRUE(handler.ReplaceWriteFxn(Writer<Cell>("u"), "w"));
  EXPECT_EQ(Tags(handler.GetWriteFxns()), "u");
}

TEST(Handler, TakesOnlyDefaultsAsDefaults) {
  QZBinaryIOHandler handler;
  EXPECT_TRUE(handler.SetReadFxn(OwnDefaultReader(), true));
  EXPECT_FALSE(handler.SetReadFxn(Reader("a"), true));
  EXPECT_FALSE(handler.SetWriteFxn(Writer<Cell>("a"), true));
  EXPECT_EQ(Tags(handler.GetReadFxns()) + Tags(handler.GetWriteFxns()), "");
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
  EXPECT_EQ(Tags(handler.GetReadFxns()), longest);
  EXPECT_EQ(Tags(handler.GetBaseWriteFxns()), "");
}

TEST(Handler, IsAValue) {
  QZBinaryIOHandler handler;
  handler.SetReadFxn(Reader("r"), false);
  handler.SetWriteFxn(Writer<Cell>("w"), false);
  handler.SetBaseWriteFxn(Writer<QZBaseData>("v"));
  handler.SetData("note", 5);
  const std::unique_ptr<QZBinaryIOHandler> copy(handler.CreateCopy());
  const QZBinaryIOHandler fromBase(static_cast<const QZBinaryIOHandlerBase&>(handler));
  QZBinaryIOHandler assigned;
  assigned.SetReadFxn(Reader("old"), false);
  assigned = handler;
  assigned = *&assigned;
  handler.Clear();
  EXPECT_EQ(Tags(handler.GetReadFxns()) + Tags(handler.GetWriteFxns()) + Tags(handler.GetBaseWriteFxns()), "");
  EXPECT_FALSE(handler.HasData("note"));
  for (const QZBinaryIOHandler* each :
       std::initializer_list<const QZBinaryIOHandler*>{copy.get(), &fromBase, &assigned}) {
    EXPECT_EQ(Tags(each->GetReadFxns()) + Tags(each->GetWriteFxns()) + Tags(each->GetBaseWriteFxns()), "rwv");
    EXPECT_EQ(each->GetData<int>("note"), 5);
  }
  EXPECT_TRUE(handler.IsDataType(handler.GetDataType()));
  EXPECT_TRUE(handler.IsDataType(QZGetDataType<QZBase>()));
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
