#include "tests/faults/faults.h"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "qz/system/frame/error.h"
#include "qz/system/frame/errorimpl.h"

// The global allocation functions. The sanitizers see the blocks of malloc.

thread_local Allocations::Schedule Allocations::schedule;

bool Allocations::Refused() {
  if (!schedule.active) return false;
  ++schedule.count;
  return schedule.nth != 0 && (schedule.count == schedule.nth || (schedule.fromThere && schedule.count > schedule.nth));
}

namespace {

void* allocateOrNull(std::size_t size) { return Allocations::Refused() ? nullptr : std::malloc(size == 0 ? 1 : size); }

void* allocate(std::size_t size) {
  void* const block = allocateOrNull(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) { return allocate(size); }
[[gnu::noinline]] void* operator new[](std::size_t size) { return allocate(size); }
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocateOrNull(size); }
[[gnu::noinline]] void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return allocateOrNull(size);
}
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete[](void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

namespace {

constexpr unsigned long mostPlaces = 100000;

// Forms each message, as one that prints it does, and keeps it back; none ends the process.
class MessageSwallower final : public QZSystem::QZErrorHandlerImplBase {
 public:
  void Msg(unsigned int severity, const std::string&) override { IncrementCount(severity); }
  MessageSwallower* CreateCopy() const override { return new MessageSwallower(*this); }
};

// The first passage that doesn't meet the fault is the last.
template <class Passage>
void goAlong(Passage passage) {
  for (unsigned long nth = 1; nth != mostPlaces; ++nth) {
    SCOPED_TRACE("fault " + std::to_string(nth));
    testing::Test::RecordProperty("faults", std::to_string(nth - 1));
    if (!passage(nth) || testing::Test::HasFailure()) return;
  }
  FAIL() << "the road doesn't end";
}

enum PassageEnd { ended = 0, wentWrong = 1, metFault = 3 };

PassageEnd inAnotherProcess(const Road& road, Fails fault, unsigned long nth) {
  const pid_t child = ::fork();
  if (child == 0) {
    Attempt attempt(fault, nth);
    road.run(attempt);
    std::exit(testing::Test::HasFailure() ? wentWrong : attempt.Met() ? metFault : ended);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
  const int code = WIFEXITED(status) ? WEXITSTATUS(status) : wentWrong;
  EXPECT_THAT(code, testing::AnyOf(ended, metFault));
  return code == metFault ? metFault : ended;
}

}  // namespace

TEST_P(Roads, Survive) {
  QZSystem::QZThrow.SetHandlerImpl(new MessageSwallower, true);
  const auto& [road, fault] = GetParam();
  // Once without a fault, so that what is made at first use is there.
  Attempt undisturbed(fault, 0);
  road.run(undisturbed);
  goAlong([&road = road, fault = fault](unsigned long nth) {
    Attempt attempt(fault, nth);
    road.run(attempt);
    return attempt.Met();
  });
  QZSystem::QZThrow.SetHandlerImpl(nullptr, true);
}

TEST_P(FirstUses, Survive) {
  const auto& [road, fault] = GetParam();
  goAlong([&road = road, fault = fault](unsigned long nth) { return inAnotherProcess(road, fault, nth) == metFault; });
}

std::string NameOfCase(const testing::TestParamInfo<std::tuple<Road, Fails>>& info) {
  static const char* const names[] = {"Allocation", "AllocationsFrom", "Call", "CallsFrom"};
  return std::string(std::get<0>(info.param).name) + "_" + names[static_cast<int>(std::get<1>(info.param))];
}

TemporaryFile::TemporaryFile(const std::string& content) {
  static int count = 0;
  path = testing::TempDir() + "qz_faults_" + std::to_string(::getpid()) + "_" + std::to_string(++count);
  if (!content.empty()) std::ofstream(path, std::ios::binary) << content;
}

TemporaryFile::~TemporaryFile() {
  std::error_code ignored;
  std::filesystem::remove(path, ignored);
}

std::string TemporaryFile::Content() const {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}
