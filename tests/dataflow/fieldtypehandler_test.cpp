#include "qz/dataflow/fieldtypehandler.h"

#include <gtest/gtest.h>

#include "tests/system/cli/messages.h"

namespace QZDataFlow {
namespace {

/// A handler that adds its mark to a list when it is deleted.
template <class Base>
class Marked : public Base {
 public:
  Marked(std::string typeName, std::string itsMark, std::string& list)
      : name(std::move(typeName)), mark(std::move(itsMark)), deleted(list) {}
  ~Marked() override { deleted += mark; }
  std::string GetName() const override { return name; }

 private:
  std::string name, mark;
  std::string& deleted;
};

// Handlers live to the end of the process, and so must what they mark.
std::string& Deleted() {
  static auto& deleted = *new std::string;
  return deleted;
}

void Register(const char* name, const char* mark, int priority) {
  QZFieldTypeHandlerRegistry::GetInstance().RegisterHandler(new Marked<QZFieldTypeHandler>(name, mark, Deleted()),
                                                            priority);
}

TEST(FieldTypeHandlerRegistry, KeepsTheHandlerOfHighestPriority) {
  const auto& registry = QZFieldTypeHandlerRegistry::GetInstance();
  Deleted().clear();
  Register("Mol", "a", -1);
  EXPECT_EQ(registry.GetHandler("Mol"), nullptr);
  EXPECT_EQ(Deleted(), "a");
  Register("Mol", "b", 0);
  const QZFieldTypeHandler* first = registry.GetHandler("Mol");
  ASSERT_NE(first, nullptr);
  Register("Mol", "c", 0);
  Register("Mol", "d", -5);
  EXPECT_EQ(registry.GetHandler("Mol"), first);
  EXPECT_EQ(Deleted(), "acd");
  Register("Mol", "e", 3);
  EXPECT_EQ(Deleted(), "acdb");
  Register("Mol", "f", 2);
  Register("Grid", "g", 1);
  EXPECT_EQ(Deleted(), "acdbf");
  EXPECT_EQ(registry.GetHandler("Grid")->GetName(), "Grid");
  EXPECT_EQ(registry.GetHandler("grid"), nullptr);
}

TEST(WrappedFieldTypeHandlerRegistry, TheLastOfANameStaysAndUnknownNamesAreTold) {
  Messages messages;
  auto& registry = QZWrappedFieldTypeHandlerRegistry::GetInstance();
  Deleted().clear();
  EXPECT_EQ(registry.GetHandler("x"), nullptr);
  EXPECT_EQ(messages.Take(), "Warning: No wrapped handler for x\nWarning: Here are the handlers I have:\n");
  for (const auto& [name, mark] : {std::pair("b", "1"), std::pair("a%s", "2"), std::pair("b", "3")}) {
    registry.RegisterHandler(new Marked<QZWrappedFieldTypeHandler>(name, mark, Deleted()));
  }
  EXPECT_EQ(Deleted(), "1");
  EXPECT_TRUE(registry.HasHandler("b") && registry.GetHandler("b")->GetName() == "b");
  EXPECT_FALSE(registry.HasHandler("c"));
  EXPECT_EQ(messages.Take(), "");
  EXPECT_EQ(registry.GetHandler("c"), nullptr);
  EXPECT_EQ(messages.Take(),
            "Warning: No wrapped handler for c\nWarning: Here are the handlers I have:\nWarning: a%s\nWarning: b\n");
}

// Stands in the last static destructor, after that of the registries.
class LateCaller {
 public:
  ~LateCaller() {
    const bool gone = QZFieldTypeHandlerRegistry::GetInstance().GetHandler("Late") == nullptr;
    std::_Exit(gone && Deleted() == "z" ? 7 : 8);
  }
};

TEST(FieldTypeHandlerRegistryDeathTest, IsEmptyButSoundAfterItsEnd) {
  EXPECT_EXIT(
      {
        static const LateCaller late;
        Deleted().clear();
        Register("Late", "z", 0);
        std::exit(0);
      },
      testing::ExitedWithCode(7), "");
}

}  // namespace
}  // namespace QZDataFlow
