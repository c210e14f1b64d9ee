#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "qz/system/qzb/qzbentrywriter.h"
#include "qz/system/qzb/qzbwalk.h"
#include "tests/system/qzb/objects.h"
#include "tests/system/text/warnings.h"

// Objects made from generated values: what is written, read and written again is the same bytes.

using namespace QZSystem;

namespace {

class Generator {
 public:
  explicit Generator(unsigned int seed) : random(seed) {}

  QZContainer Object(int depth) {
    QZContainer object;
    for (unsigned int left = Below(6); left > 0; --left) AddValue(object, Name().c_str(), depth);
    return object;
  }

  unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(random() % limit); }

 private:
  std::string Name() {
    static const std::string names[] = {"n",
                                        "QZBase",
                                        "zQZMCMolBase",
                                        "UnknownQZB60",
                                        "UnknownQZB",
                                        "UnknownQZB300",
                                        "name with blanks",
                                        "\xC3\xA5",
                                        std::string(127, 'a'),
                                        std::string(128, 'b'),
                                        std::string(1008, 'c'),
                                        "QZUnknownQZ",
                                        "!HandledQZBTag",
                                        "0"};
    return names[Below(std::size(names))];
  }

  template <class T>
  T Value() {
    T value{};
    const unsigned long bits = random();
    if constexpr (std::is_same_v<T, bool>) {
      value = (bits & 1) != 0;
    } else {
      std::memcpy(static_cast<void*>(&value), &bits, sizeof value);
    }
    return value;
  }

  unsigned int Count() { return Below(4) == 0 ? Below(2000) : Below(4); }

  template <class T>
  void AddVector(QZBase& object, const char* name) {
    std::vector<T> elements;
    for (unsigned int left = Count(); left > 0; --left) elements.push_back(Value<T>());
    object.AddData<std::vector<T>>(name, elements);
  }

  // At least one element: none can't be read again.
  template <class T>
  void AddArray(QZBase& object, const char* name) {
    const unsigned int count = Count() + 1;
    const std::unique_ptr<T[]> elements(new T[count]);
    for (unsigned int i = 0; i < count; ++i) elements[i] = Value<T>();
    object.AddData<T*>(name, elements.get(), count);
  }

  void AddValue(QZBase& object, const char* name, int depth) {
    switch (Below(26)) {
      case 0:
        object.AddData(name, Value<int>());
        break;
      case 1:
        object.AddData(name, Value<unsigned int>());
        break;
      case 2:
        object.AddData(name, Value<float>());
        break;
      case 3:
        object.AddData(name, Value<double>());
        break;
      case 4:
        object.AddData(name, true);
        break;
      case 5:
        object.AddData(name, std::string(Count(), static_cast<char>(Value<char>())));
        break;
      case 6:
        AddVector<bool>(object, name);
        break;
      case 7:
        AddVector<char>(object, name);
        break;
      case 8:
        AddVector<unsigned char>(object, name);
        break;
      case 9:
        AddVector<short>(object, name);
        break;
      case 10:
        AddVector<unsigned short>(object, name);
        break;
      case 11:
        AddVector<int>(object, name);
        break;
      case 12:
        AddVector<unsigned int>(object, name);
        break;
      case 13:
        AddVector<float>(object, name);
        break;
      case 14:
        AddVector<double>(object, name);
        break;
      case 15:
        AddVector<QZHalfFloat>(object, name);
        break;
      case 16:
        AddArray<bool>(object, name);
        break;
      case 17:
        AddArray<char>(object, name);
        break;
      case 18:
        AddArray<unsigned char>(object, name);
        break;
      case 19:
        AddArray<int>(object, name);
        break;
      case 20:
        AddArray<unsigned int>(object, name);
        break;
      case 21:
        AddArray<float>(object, name);
        break;
      case 22:
        AddArray<double>(object, name);
        break;
      case 23:
        AddArray<QZHalfFloat>(object, name);
        break;
      default:
        if (depth > 0) object.AddData(name, Object(depth - 1));
    }
  }

  std::mt19937_64 random;
};

// Takes an item apart and puts it together, entry by entry.
std::string Copied(const std::string& body) {
  QZBEntryWriter writer;
  QZBWalk walk(body.data(), body.size());
  for (QZBEntry entry; walk.Next(entry);) {
    const std::string_view name = entry.name;
    switch (entry.type) {
      case QZBType::Int:
        writer.Add(name, entry.Get<int>());
        break;
      case QZBType::Float:
        writer.Add(name, entry.Get<float>());
        break;
      case QZBType::Double:
        writer.Add(name, entry.Get<double>());
        break;
      case QZBType::Bool:
        writer.Add(name, entry.body[0] != 0);
        break;
      case QZBType::String:
        writer.Add(name, entry.body);
        break;
      case QZBType::CharArray:
        writer.AddArray(name, entry.body.data(), entry.body.size());
        break;
      case QZBType::Handled:
        writer.AddHandled(name, entry.body);
        break;
      default:
        return body;  // what needs aligned elements
    }
  }
  EXPECT_EQ(walk.Status(), QZBReturn::Success);
  qzosstream out;
  writer.Write(out, "");
  return out.str();
}

TEST(GeneratedObjects, ComeBackAsTheSameBytes) {
  const QZBinaryIOHandler empty, filled = ContainerHandler();
  for (unsigned int seed = 1; seed <= 400; ++seed) {
    SCOPED_TRACE(seed);
    const QZContainer object = Generator(seed).Object(3);
    const std::string bytes = Written(object, filled);
    if (bytes.empty()) continue;
    ASSERT_EQ(Copied(bytes), bytes);
    for (const QZBinaryIOHandler* reads : {&empty, &filled}) {
      for (const unsigned long step : {0UL, 1UL, 100UL}) {
        BytesIn whole(bytes);
        PipeIn pipe(bytes, step + 1);
        QZContainer read;
        ASSERT_EQ(QZBReadQZBase(step == 0 ? static_cast<qzistream&>(whole) : pipe, read, bytes.size(), *reads), 0U);
        ASSERT_EQ(Written(read, filled), bytes);
        ASSERT_TRUE(reads == &empty || Tell(read) == Tell(object));
      }
    }
  }
}

TEST(LargeObjects, GoThroughInOnePiece) {
  QZContainer object;
  for (int i = 0; i < 10000; ++i) object.AddData(("value " + std::to_string(i)).c_str(), i);
  object.AddData("doubles", std::vector<double>(100000, 1.5));
  const std::string bytes = Written(object);
  BytesIn in(bytes);
  QZContainer read;
  ASSERT_EQ(QZBReadPOD(in, read, bytes.size()), QZBReturn::Success);
  EXPECT_EQ(Written(read), bytes);
  EXPECT_EQ(read.GetData<int>("value 9999"), 9999);
}

}  // namespace
