#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>

#include "tests/system/qzb/objects.h"
#include "tests/system/text/warnings.h"

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
  const struct {
    const char* body;
    const char* told;
  } cases[] = {{"", "4: "},
               {"01", "4: "},
               {"01 3F", "0: "},
               {"01 3F 00", "6: "},
               {"01 3F 00 81", "6: "},
               {"01 3F 00 81 'a'", "6: "},
               {"01 3F 3C", "6: "},
               {"01 3F 80 01 05 00 00 00", "6: "},
               {"01 3F C8 20 84 05 00 00 00", "6: "},
               {"01 3F 00 80 02 01", "6: "},
               {"01 3F 00 81 00 02 01", "6: "},
               {"01 3F 00 81 'a' 01 05 00 00", "4: "},
               {"01 3F 00 81 'b' 02 01 00 81 'a' 08 05 00 00", "4: b bool 1; "},
               {"01 3F 00 81 'a' 20 80 00 81 'b' 02 01", "4: "},
               {"01 3F 00 81 'a' 20", "4: "},
               {"01 3F 00 81 'a' 20 85 01 00 00 00 55 00 81 'b' 02 01", "0: a int* 1; b bool 1; "},
               {"01 3F 00 81 'a' 20 83 01 00 00 00 81 'b' 02 01", "0: a int*; b bool 1; "},
               {"01 3F 00 81 'a' 20 88 01 00 00 00", "4: "},
               {"01 3F 00 81 'a' 58 8C 01 02 03 04 05 06 07 08 09 0A 0B 0C", "4: "},
               {"01 3F 00 81 'a' 58 80 00 81 'b' 02 01", "0: a vector<double>; b bool 1; "},
               {"01 3F 00 81 'a' 58 7F 7F 7F 7F 8F 01", "4: "},
               {"01 3F 00 81 'a' 58 7F 7F 7F 7F 90 01", "4: "},
               {"01 3F 00 81 'a' 10 83 'ab'", "4: "},
               {"01 3F 00 81 'a' 53", "4: "},
               {"01 3F 00 81 'a' 12 01", "4: "},
               {"01 3F 00 81 'a' 60", "6: "},
               {"01 3F 00 81 'a' 60 00 81 'b' 52 81 01", "6: "},
               {"01 3F 00 81 'a' 60 C8 51 81 01", "6: "},
               {"01 3F 00 81 'a' 60 00 81 'b' 51", "4: "},
               {"01 3F 00 81 'a' 60 00 81 'b' 51 80", "4: "},
               {"01 3F 00 81 'a' 60 00 81 'b' 51 80 00 81 'b' 02 01", "6: "},
               {"01 3F 00 81 'a' 60 00 81 'b' 51 89 01 80", "4: "},
               {"01 3F 00 81 'a' 60 00 81 'b' 51 83 C8 81 55", "6: "},
               {"01 3F 00 81 'a' 60 00 81 'b' 51 84 3C 80 00 81", "9: "},
               {"01 3F 00 81 'a' 60 00 81 'b' 51 82 3C 80", "8: "},
               {"01 3F 00 81 'a' 60 00 81 'b' 51 82 3C 81", "11: "},
               {"01 3F 00 81 'a' 60 00 81 'b' 51 85 3C 81 00 82 'n'", "11: "},
               {"01 3F 00 81 'a' 60 00 81 'b' 51 83 3C 81 C8", "6: "},
               {"01 3F 00 81 'a' 60 00 81 'b' 51 83 3C 81 3D", "0: UnknownQZB61 unknown '' 60 3C 81 3D; "}};
  Warnings warnings;
  for (const auto& each : cases) EXPECT_EQ(Read(Bytes(each.body)), each.told) << each.body;
}

// What ends at a tag byte has no length that could be damaged.
TEST(DamagedObjectStream, ThatEndsAtATagByteGivesNoMessage) {
  Warnings warnings;
  EXPECT_EQ(Read(Bytes("01 3F 00")), "6: ");
  EXPECT_EQ(Read(Bytes("01 3F 00 81 'a' 60 00 81 'b' 51 83 3C 81 00")), "11: ");
  EXPECT_EQ(Read(Bytes("01 3F 00 81 'a' 60 00 81 'b' 51 87 00 83 'Box' 81 00"), ContainerHandler()), "0: ");
  EXPECT_EQ(warnings.Take(), "");
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

// Reads and, whatever became of it, writes and reads again. What was read whole is equal to what is read then.
void GoThrough(const std::string& bytes, const QZBinaryIOHandlerBase& handler, bool mayDrop) {
  const std::size_t bound = 16 * bytes.size() + (4 << 20);
  allocated = 0;
  BytesIn in(bytes);
  QZContainer object, again;
  const unsigned int code = QZBReadQZBase(in, object, bytes.size(), handler);
  ASSERT_LT(allocated, bound);
  const std::string written = Written(object, handler);
  if (mayDrop || code != QZBReturn::Success) return;
  BytesIn back(written);
  if (written.empty()) return;
  ASSERT_EQ(QZBReadQZBase(back, again, written.size(), handler), QZBReturn::Success) << Hex(bytes);
  ASSERT_EQ(Tell(again), Tell(object)) << Hex(bytes);
  ASSERT_EQ(Hex(Written(again, handler)), Hex(written)) << Hex(bytes);
}

// Names that can't be written again, values that aren't: each of these has a test of its own.
bool Drops(const QZBase& object) {
  for (const QZBaseData& value : QZIter(object.GetDataIter())) {
    const std::string name = QZGetTag(value.GetTag());
    const bool isFalse =
        value.GetDataType() == QZGetDataType<bool>() && !static_cast<const QZBaseDataT<bool>&>(value).GetData();
    if (isFalse || value.GetSize() == 0 || name.find("QZUnknownQZB") == 0 || name.find("!HandledQZBTag:") == 0)
      return true;
    if (const auto* box = QZBaseImpl::As<QZContainer>(const_cast<QZBaseData*>(&value))) {
      if (Drops(box->GetData())) return true;
    }
  }
  return false;
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
  object.SetData<int*>("a", ints, 2);
  object.SetData(std::string(200, 'l').c_str(), true);
  return Written(object, ContainerHandler());
}

template <class Use>
void ForEachDamage(const std::string& whole, Use use) {
  for (std::size_t size = 0; size < whole.size(); ++size) use(whole.substr(0, size));
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const int change : {0x01, 0x80, 0xFF, 0x7F}) {
      std::string damaged = whole;
      damaged[at] = static_cast<char>(damaged[at] ^ change);
      use(damaged);
    }
  }
}

TEST(DamagedObjectStream, NeitherCrashesNorTakesMuchMemory) {
  Warnings warnings;
  const QZBinaryIOHandler empty, filled = ContainerHandler();
  ForEachDamage(Everything(), [&](const std::string& bytes) {
    for (const QZBinaryIOHandler* handler : {&empty, &filled}) {
      BytesIn in(bytes);
      QZContainer object;
      static_cast<void>(QZBReadQZBase(in, object, bytes.size(), *handler));
      GoThrough(bytes, *handler, Drops(object));
      warnings.Take();
    }
  });
}

// Depth.

// A sanitizer puts red zones into the frames.
#if defined(__SANITIZE_ADDRESS__)
constexpr std::size_t stackSize = 1024 * 1024;
#elif defined(__has_feature)
constexpr std::size_t stackSize = __has_feature(address_sanitizer) ? 1024 * 1024 : 256 * 1024;
#else
constexpr std::size_t stackSize = 256 * 1024;
#endif

void OnASmallStack(const std::function<void()>& work) {
  pthread_attr_t attributes;
  pthread_t thread;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, stackSize);
  const auto run = [](void* function) -> void* {
    (*static_cast<const std::function<void()>*>(function))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&work)), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
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
  OnASmallStack([] {
    const QZBinaryIOHandler handler = ContainerHandler();
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
      Warnings warnings;
      qzosstream out;
      EXPECT_FALSE(QZBWriteQZBase(out, outer, "QZBasePOD", handler));
      EXPECT_EQ(out.tell(), 0U);
      EXPECT_EQ(warnings.Take(), "");
      EXPECT_EQ(Written(object, handler), body) << "the next one isn't touched by that";
    }
  });
}

TEST(NestedObjectStream, CarriesUnknownPayloadsOfAnyDepth) {
  const std::string body = Nested(1000);
  BytesIn in(body);
  QZContainer object;
  EXPECT_EQ(QZBReadPOD(in, object, body.size()), QZBReturn::Success);
  EXPECT_EQ(Written(object, ContainerHandler()), body);
}

TEST(NestedObjectStream, CountsGroupsToo) {
  OnASmallStack([] {
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
