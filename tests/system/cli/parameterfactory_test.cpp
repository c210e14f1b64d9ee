#include "qz/system/cli/parameterfactory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include "qz/system/cli/interface.h"
#include "qz/system/cli/parameter_concrete.h"
#include "tests/platform/childstatus.h"
#include "tests/system/cli/messages.h"

namespace QZSystem {
namespace {

using Made = std::unique_ptr<QZParameter>;

TEST(ParameterFactory, MakesEveryKindButBit) {
  Messages messages;
  for (const char* word :
       {"file", "param_file", "string", "double", "float", "bool", "int", "unsigned", "const", "stringEx"}) {
    const Made made(QZInterface::Factory().Construct(word));
    ASSERT_TRUE(made) << word;
    EXPECT_EQ(made->ClassID(), word);
  }
  EXPECT_EQ(messages.Take(), "");
  for (const std::string word : {"bit", "Int", "int ", ""}) {
    EXPECT_FALSE(Made(QZInterface::Factory().Construct(word))) << word;
    EXPECT_EQ(messages.Take(), "Warning: QZSimpleFactory.  Unknown classid " + word + "\n");
  }
}

class Uncopied : public QZFactoryWorkerBase<QZParameter> {
 public:
  [[nodiscard]] QZParameter* Construct() const override { return new QZIntParameter; }
  [[nodiscard]] Uncopied* CreateCopy() const override { return nullptr; }
};

TEST(ParameterFactory, KeepsTheFirstWorkerOfAWordAndTellsANullOne) {
  Messages messages;
  QZSimpleFactory<std::string, QZParameter> factory;
  EXPECT_TRUE(factory.Register("n", Uncopied()));
  EXPECT_FALSE(factory.Register("n", QZFactoryWorker<QZParameter, QZBoolParameter>()));
  EXPECT_FALSE(Made(factory.Construct("n")));
  EXPECT_EQ(messages.Take(), "Warning: NULL pointer in Factory Registry\n");
}

TEST(ParameterFactory, ServesAllThreadsAndAForkedChild) {
  QZSimpleFactory<std::string, QZParameter>& factory = QZParameterFactory();
  std::atomic<bool> stop(false);
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&, i] {
      while (!stop) {
        factory.Register("own" + std::to_string(i), QZFactoryWorker<QZParameter, QZIntParameter>());
        EXPECT_TRUE(Made(factory.Construct("double")));
      }
    });
  }
  for (int i = 0; i < 20; ++i) EXPECT_EQ(StatusOfChild([&] { return Made(factory.Construct("int")) ? 0 : 1; }), 0);
  stop = true;
  for (std::thread& thread : threads) thread.join();
}

// Registered before anybody used the factory, so it runs when the workers have gone.
bool askAtExit = false;
const int registered = std::atexit([] {
  if (askAtExit) _exit(QZParameterFactory().Construct("int") == nullptr ? 42 : 1);
});

TEST(ParameterFactoryDeathTest, IsEmptyAndSoundAfterItsEnd) {
  ASSERT_EQ(registered, 0);
  EXPECT_EXIT(
      {
        askAtExit = true;
        const Made made(QZParameterFactory().Construct("int"));
        std::exit(made ? 0 : 1);
      },
      testing::ExitedWithCode(42), "Warning: QZSimpleFactory.  Unknown classid int");
}

}  // namespace
}  // namespace QZSystem
