// Objects made from generated values: what is written, read and written again is the same bytes.

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "qz/system/qzb/qzbentrywriter.h"
#include "qz/system/qzb/qzbwalk.h"
#include "tests/system/qzb/objects.h"

using namespace QZSystem;

namespace {

class Generator {
 public:
  explicit Generator(unsigned int seed) : random(seed) {}

  QZContainer Object(int depth) {
    using Add = void (Generator::*)(QZBase&, const char*);
    static const Add adds[] = {
        &Generator::One<int>,       &Generator::One<unsigned int>,
        &Generator::One<float>,     &Generator::One<double>,
        &Generator::True,           &Generator::Text,
        &Generator::Vector<bool>,   &Generator::Vector<char>,
        &Generator::Vector<short>,  &Generator::Vector<unsigned char>,
        &Generator::Vector<int>,    &Generator::Vector<unsigned short>,
        &Generator::Vector<float>,  &Generator::Vector<unsigned int>,
        &Generator::Vector<double>, &Generator::Vector<QZHalfFloat>,
        &Generator::Array<bool>,    &Generator::Array<char>,
        &Generator::Array<int>,     &Generator::Array<unsigned char>,
        &Generator::Array<float>,   &Generator::Array<unsigned int>,
        &Generator::Array<double>,  &Generator::Array<QZHalfFloat>,
    };
    QZContainer object;
    for (unsigned int left = Below(6); left > 0; --left) {
      const std::string name = Name();
      const unsigned int kind = Below(std::size(adds) + 2);
      if (kind < std::size(adds)) {
        (this->*adds[kind])(object, name.c_str());
      } else if (depth > 0) {
        object.AddData(name.c_str(), Object(depth - 1));
      }
    }
    return object;
  }

 private:
  unsigned int Below(std::size_t limit) { return static_cast<unsigned int>(random() % limit); }
  unsigned int Count() { return Below(4) == 0 ? Below(2000) : Below(4); }

  std::string Name() {
    static const char* const names[] = {"n",
                                        "QZBase",
                                        "zQZMCMolBase",
                                        "UnknownQZB60",
                                        "UnknownQZB",
                                        "UnknownQZB300",
                                        "name with blanks",
                                        "\xC3\xA5",
                                        "QZUnknownQZ",
                                        "!HandledQZBTag",
                                        "0"};
    static const std::size_t lengths[] = {127, 128, 1008};
    if (Below(5) == 0) return std::string(lengths[Below(std::size(lengths))], 'c');
    return names[Below(std::size(names))];
  }

  template <class T>
  T Value() {
    const unsigned long bits = random();
    if constexpr (std::is_same_v<T, bool>) return (bits & 1) != 0;
    T value{};
    std::memcpy(static_cast<void*>(&value), &bits, sizeof value);
    return value;
  }

  template <class T>
  void One(QZBase& object, const char* name) {
    object.AddData(name, Value<T>());
  }
  void True(QZBase& object, const char* name) { object.AddData(name, true); }
  void Text(QZBase& object, const char* name) { object.AddData(name, std::string(Count(), Value<char>())); }

  template <class T>
  void Vector(QZBase& object, const char* name) {
    std::vector<T> elements;
    for (unsigned int left = Count(); left > 0; --left) elements.push_back(Value<T>());
    object.AddData(name, elements);
  }

  // At least one element: none can't be read again.
  template <class T>
  void Array(QZBase& object, const char* name) {
    const unsigned int count = Count() + 1;
    const std::unique_ptr<T[]> elements(new T[count]);
    for (unsigned int i = 0; i < count; ++i) elements[i] = Value<T>();
    object.AddData<T*>(name, elements.get(), count);
  }

  std::mt19937_64 random;
};

// Takes an item apart and puts it together, entry by entry.
std::string Copied(const std::string& body) {
  QZBEntryWriter writer;
  QZBWalk walk(body.data(), body.size());
  for (QZBEntry entry; walk.Next(entry);) {
    if (entry.type == QZBType::Int) {
      writer.Add(entry.name, entry.Get<int>());
    } else if (entry.type == QZBType::Float) {
      writer.Add(entry.name, entry.Get<float>());
    } else if (entry.type == QZBType::Double) {
      writer.Add(entry.name, entry.Get<double>());
    } else if (entry.type == QZBType::Bool) {
      writer.Add(entry.name, entry.body[0] != 0);
    } else if (entry.type == QZBType::String) {
      writer.Add(entry.name, entry.body);
    } else if (entry.type == QZBType::CharArray) {
      writer.AddArray(entry.name, entry.body.data(), entry.body.size());
    } else if (entry.type == QZBType::Handled) {
      writer.AddHandled(entry.name, entry.body);
    } else {
      return body;  // what needs aligned elements
    }
  }
  EXPECT_EQ(walk.Status(), QZBReturn::Success);
  qzosstream out;
  writer.Write(out, "");
  return out.str();
}

TEST(GeneratedObjects, ComeBackAsTheSameBytes) {
  const QZBinaryIOHandler empty, filled = PODHandler();
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

}  // namespace
