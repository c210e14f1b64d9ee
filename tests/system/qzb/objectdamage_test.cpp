#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "tests/system/cli/messages.h"
#include "tests/system/qzb/objects.h"
#include "tests/system/qzb/smallstack.h"

namespace {

std::atomic<std::size_t> allocated{0};

void* Allocate(std::size_t size) {
  allocated += size;
  void* const block = std::malloc(size);
  if (!block) throw std::bad_alloc();
  return block;
}

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) { return Allocate(size); }
[[gnu::noinline]] void* operator new[](std::size_t size) { return Allocate(size); }
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete[](void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

namespace {

using namespace QZSystem;

TEST(DamagedObjectStream, StopsWithTheCodeOfThePlace) {
  const std::pair<const char*, const char*> cases[] = {
      {"", "4: "},
      {"01", "4: "},
      {"01 3F", "0: "},
      {"01 3F 00", "6: "},
      {"01 3F 00 81 'a'", "6: "},
      {"01 3F 80 01 05 00 00 00", "6: "},
      {"01 3F C8 20 84 05 00 00 00", "6: "},
      {"01 3F 00 80 02 01", "6: "},
      {"01 3F 00 81 'a' 01 05 00 00", "4: "},
      {"01 3F 00 81 'b' 02 01 00 81 'a' 08 05 00 00", "4: b bool 1; "},
      {"01 3F 00 81 'a' 20 80 00 81 'b' 02 01", "4: "},
      {"01 3F 00 81 'a' 20 85 01 00 00 00 55 00 81 'b' 02 01", "0: a int* 1; b bool 1; "},
      {"01 3F 00 81 'a' 20 83 01 00 00 00 81 'b' 02 01", "0: a int*; b bool 1; "},
      {"01 3F 00 81 'a' 20 88 01 00 00 00", "4: "},
      {"01 3F 00 81 'a' 58 8C 01 02 03 04 05 06 07 08 09 0A 0B 0C", "4: "},
      {"01 3F 00 81 'a' 58 80 00 81 'b' 02 01", "0: a vector<double>; b bool 1; "},
      {"01 3F 00 81 'a' 58 7F 7F 7F 7F 8F 01", "4: "},
      {"01 3F 00 81 'a' 10 83 'ab'", "4: "},
      {"01 3F 00 81 'a' 12 01", "4: "},
      {"01 3F 00 81 'a' 60 00 81 'b' 52 81 01", "6: "},
      {"01 3F 00 81 'a' 60 C8 51 81 01", "6: "},
      {"01 3F 00 81 'a' 60 00 81 'b' 51 80 00 81 'b' 02 01", "6: "},
      {"01 3F 00 81 'a' 60 00 81 'b' 51 89 01 80", "4: "},
      {"01 3F 00 81 'a' 60 00 81 'b' 51 83 C8 81 55", "6: "},
      {"01 3F 00 81 'a' 60 00 81 'b' 51 84 3C 80 00 81", "9: "},
      {"01 3F 00 81 'a' 60 00 81 'b' 51 82 3C 80", "8: "},
      {"01 3F 00 81 'a' 60 00 81 'b' 51 82 3C 81", "11: "},
      {"01 3F 00 81 'a' 60 00 81 'b' 51 85 3C 81 00 82 'n'", "11: "},
      {"01 3F 00 81 'a' 60 00 81 'b' 51 83 3C 81 C8", "6: "},
      {"01 3F 00 81 'a' 60 00 81 'b' 51 83 3C 81 3D", "0: UnknownQZB61 unknown '' 60 3C 81 3D; "}};
  Messages messages;
  for (const auto& [body, told] : cases) EXPECT_EQ(Read(Bytes(body)), told) << body;
  messages.Take();
  // What ends at a tag byte has no length that could be damaged.
  EXPECT_EQ(Read(Bytes("01 3F 00")), "6: ");
  EXPECT_EQ(Read(Bytes("01 3F 00 81 'a' 60 00 81 'b' 51 83 3C 81 00")), "11: ");
  EXPECT_EQ(Read(Bytes("01 3F 00 81 'a' 60 00 81 'b' 51 87 00 83 'Box' 81 00"), PODHandler()), "0: ");
  EXPECT_EQ(messages.Take(), "");
}

TEST(DamagedObjectStream, IsCheckedAgainstWhatTheStreamHolds) {
  const std::string whole = Bytes("01 3F 00 81 'n' 02 01");
  for (const unsigned long length : {8UL, 1UL << 32, ~0UL >> 1, ~0UL}) {
    BytesIn in(whole);
    PipeIn pipe(whole, 2);
    for (qzistream* each : {static_cast<qzistream*>(&in), static_cast<qzistream*>(&pipe)}) {
      allocated = 0;
      QZContainer object;
      EXPECT_EQ(QZBReadPOD(*each, object, length), QZBReturn::IncorrectSize) << length;
      EXPECT_TRUE(each->eof());
      EXPECT_FALSE(object.HasData("n"));
      EXPECT_LT(allocated, 1U << 20);
    }
  }
  PipeIn pipe(whole, 2);
  QZContainer object;
  EXPECT_EQ(QZBReadPOD(pipe, object, whole.size()), QZBReturn::Success);
}

// An object with a value of each form, and one in the other.
std::string Everything() {
  QZContainer inner, object;
  const int ints[] = {1, 2};
  inner.SetData<int*>("i", ints, 2);
  inner.SetData("s", std::string("text"));
  object.SetData("n", 5);
  object.SetData("UnknownQZB60", 2.5);
  object.SetData("QZBase", std::string("named by a code"));
  object.SetData("v", std::vector<double>{1, 2, 3});
  object.SetData("h", std::vector<QZHalfFloat>(3));
  object.SetData("b", std::vector<bool>(5, true));
  object.SetData("box", inner);
  object.SetData(std::string(200, 'l').c_str(), true);
  return Written(object, PODHandler());
}

// What a damaged object comes back as is the fuzzer's to compare: here it is read, and what was read is written.
void ReadAndWrite(const std::string& bytes) {
  for (const QZBinaryIOHandler& handler : {QZBinaryIOHandler(), PODHandler()}) {
    allocated = 0;
    BytesIn in(bytes);
    QZContainer object;
    static_cast<void>(QZBReadQZBase(in, object, bytes.size(), handler));
    ASSERT_LT(allocated, 16 * bytes.size() + (4 << 20)) << Hex(bytes);
    static_cast<void>(Written(object, handler));
  }
}

TEST(DamagedObjectStream, NeitherCrashesNorTakesMuchMemory) {
  Messages messages;
  const std::string whole = Everything();
  for (std::size_t at = 0; at < whole.size(); ++at) {
    ReadAndWrite(whole.substr(0, at));
    for (const int change : {0x01, 0x80, 0xFF, 0x7F}) {
      std::string damaged = whole;
      damaged[at] = static_cast<char>(damaged[at] ^ change);
      ReadAndWrite(damaged);
    }
    messages.Take();
  }
}

// The body of an object that stands that deep, made from the innermost one, which no writer refuses.
std::string Nested(int depth) {
  std::string body = Bytes("01 3F 00 81 'n' 02 01");
  const auto length = [](std::size_t size) {
    qzosstream out;
    QZBWriteDataLength(out, size);
    return out.str();
  };
  for (int i = 1; i < depth; ++i) {
    const std::string item = Bytes("00 81 'b' 01") + length(body.size()) + body;
    const std::string payload = Bytes("00 83 'Box'") + length(item.size()) + item;
    body = Bytes("01 3F 00 81 'b' 60 00 90 '!HandledQZBTag:b' 51") + length(payload.size()) + payload;
  }
  return body;
}

TEST(NestedObjectStream, Is256Deep) {
  OnSmallStack([] {
    const QZBinaryIOHandler handler = PODHandler();
    for (const int depth : {256, 257, 5000}) {
      const std::string body = Nested(depth);
      allocated = 0;
      BytesIn in(body);
      QZContainer object;
      EXPECT_EQ(QZBReadQZBase(in, object, body.size(), handler),
                depth > 256 ? QZBReturn::CheckFailed : QZBReturn::Success);
      EXPECT_LT(allocated, 16 * body.size() + (4 << 20));
      if (depth > 256) continue;
      EXPECT_EQ(Written(object, handler), body);
      QZContainer outer;
      outer.SetData("b", object);
      outer.SetData("c", true);
      Messages messages;
      qzosstream out;
      EXPECT_FALSE(QZBWriteQZBase(out, outer, "QZBasePOD", handler));
      EXPECT_EQ(out.tell(), 0U);
      EXPECT_EQ(messages.Take(), "");
      EXPECT_EQ(Written(object, handler), body) << "the next one isn't touched by that";
    }
  });
}

TEST(NestedObjectStream, CarriesUnknownPayloadsOfAnyDepth) {
  const std::string body = Nested(1000);
  BytesIn in(body);
  QZContainer object;
  EXPECT_EQ(QZBReadPOD(in, object, body.size()), QZBReturn::Success);
  EXPECT_EQ(Written(object, PODHandler()), body);
}

TEST(NestedObjectStream, CountsGroupsToo) {
  OnSmallStack([] {
    QZBinaryIOHandler handler;
    handler.SetReadFxn(QZGroupReadFxn<QZContainer, QZContainer>("Group"), false);
    handler.SetReadFxn(QZBasePODReadFxn<QZContainer>(), false);
    for (const int depth : {256, 257, 3000}) {
      std::string items = Bytes("01 87 01 3F 00 81 'n' 02 01");
      for (int i = 0; i < depth; ++i) {
        qzosstream group;
        QZBWriteItem(group, "Group", items);
        items = group.str();
      }
      BytesIn in(items);
      QZContainer object;
      EXPECT_EQ(QZBinaryRead(in, object, handler), depth > 256 ? QZBReturn::CheckFailed : QZBReturn::Success);
      EXPECT_EQ(object.HasData("n"), depth == 256);
    }
  });
}

}  // namespace
