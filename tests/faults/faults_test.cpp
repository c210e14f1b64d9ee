#include "tests/faults/faults.h"

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include <cerrno>
#include <cstdlib>
#include <new>

#include "qz/platform/syscalls_impl.h"
#include "qz/system/frame/error.h"
#include "qz/system/frame/errorimpl.h"

namespace {

// The allocations of this thread, as the functions below count and refuse them.
struct Schedule {
  bool active = false;
  unsigned long nth = 0;  // from 1; 0 refuses none
  bool fromThere = false;
  unsigned long count = 0;
};
thread_local Schedule schedule;

bool refused() {
  if (!schedule.active) return false;
  ++schedule.count;
  return schedule.nth != 0 && (schedule.count == schedule.nth || (schedule.fromThere && schedule.count > schedule.nth));
}

// The sanitizers see the blocks of malloc.
void* allocateOrNull(std::size_t size) { return refused() ? nullptr : std::malloc(size == 0 ? 1 : size); }

void* allocate(std::size_t size) {
  void* const block = allocateOrNull(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

voidpf allocateForZlib(voidpf, uInt items, uInt size) { return allocateOrNull(std::size_t{items} * size); }
void freeForZlib(voidpf, voidpf block) { std::free(block); }

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

// Stands before the one of zlib, so that its allocations are counted too.
extern "C" int deflateInit2_(z_streamp stream, int level, int method, int windowBits, int memLevel, int strategy,
                             const char* version, int size) {
  static const auto real = reinterpret_cast<decltype(&deflateInit2_)>(::dlsym(RTLD_NEXT, "deflateInit2_"));
  stream->zalloc = allocateForZlib;
  stream->zfree = freeForZlib;
  return real(stream, level, method, windowBits, memLevel, strategy, version, size);
}

bool Attempt::WithoutMemory(const std::function<bool()>& part) {
  bool done = false;
  schedule = {true, nth, IsForGood(), count};
  try {
    done = part();
  } catch (const std::bad_alloc&) {
  }
  schedule.active = false;
  count = schedule.count;
  return done;
}

bool Attempt::WithoutSystem(const std::function<bool()>& part) {
  namespace System = QZPlatform::SystemCalls;
  const unsigned long left = nth > count ? nth - count : IsForGood() && nth != 0 ? 1 : 0;
  System::ScheduledFault scheduled(System::Call::Any, left, System::Fault::Fail(EIO), IsForGood());
  const bool done = part();
  count += scheduled.Count();
  return done;
}

bool Attempt::operator()(const std::function<bool()>& part) {
  const bool ofMemory = fault == Fails::Allocation || fault == Fails::AllocationsFrom;
  const bool done = ofMemory ? WithoutMemory(part) : WithoutSystem(part);
  EXPECT_TRUE(done || Met()) << "failed without a fault";
  return done;
}

namespace {

// Forms each message, as one that prints it does, and keeps it back; none ends the process.
class MessageSwallower final : public QZSystem::QZErrorHandlerImplBase {
 public:
  void Msg(unsigned int severity, const std::string&) override { IncrementCount(severity); }
  MessageSwallower* CreateCopy() const override { return new MessageSwallower(*this); }
};

// A passage, and whether it met the fault.
using Passage = std::function<bool(unsigned long nth)>;

class RoadTest : public testing::Test {
 public:
  explicit RoadTest(Passage gone) : passage(std::move(gone)) {}

  void TestBody() override {
    constexpr unsigned long mostPlaces = 100000;
    for (unsigned long nth = 1; nth != mostPlaces; ++nth) {
      SCOPED_TRACE("fault " + std::to_string(nth));
      if (!passage(nth) || HasFailure()) return;
    }
    FAIL() << "the road doesn't end";
  }

 private:
  Passage passage;
};

void addTest(const std::string& name, const Passage& passage) {
  testing::RegisterTest("Roads", name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                        [passage] { return new RoadTest(passage); });
}

}  // namespace

Road::Road(const char* name, unsigned testedFor, const std::function<void(Attempt& attempt)>& run) {
  const auto add = [=](const char* kind, Fails fault) {
    addTest(name + std::string(kind), [=](unsigned long nth) {
      QZSystem::QZThrow.SetHandlerImpl(new MessageSwallower, true);
      Attempt undisturbed(fault, 0), attempt(fault, nth);
      if (nth == 1) run(undisturbed);  // what is made at first use is there from now on
      run(attempt);
      QZSystem::QZThrow.SetHandlerImpl(nullptr, true);
      return attempt.Met();
    });
  };
  if (testedFor & allocations) {
    add("WithoutAnAllocation", Fails::Allocation);
    add("WithoutMemory", Fails::AllocationsFrom);
  }
  if (testedFor & calls) {
    add("WithoutACall", Fails::Call);
    add("WithoutTheSystem", Fails::CallsFrom);
  }
  if (!(testedFor & firstUse)) return;
  addTest(name + std::string("AtFirstUse"), [=](unsigned long nth) {
    constexpr int ended = 0, wentWrong = 1, metFault = 3;
    const pid_t child = ::fork();
    if (child == 0) {
      Attempt attempt(Fails::Allocation, nth);
      run(attempt);
      std::exit(testing::Test::HasFailure() ? wentWrong : attempt.Met() ? metFault : ended);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
    EXPECT_TRUE(WEXITSTATUS(status) == ended || WEXITSTATUS(status) == metFault) << WEXITSTATUS(status);
    return WEXITSTATUS(status) == metFault;
  });
}

Road::Road(const char* name, unsigned testedFor, std::string (*make)())
    : Road(name, testedFor, [make](Attempt& attempt) {
        const std::string expected = make();
        std::string made;
        EXPECT_TRUE(!attempt([&] { return made = make(), true; }) || made == expected);
      }) {}
