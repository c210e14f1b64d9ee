// W11: the messages of the peers' program through QZThrow: time and level in front, to /dev/null, each message flushed.
// The stream implementation prints no time; the class here puts it in front, as a program's own log would. One lock and
// one write for each message; the text is formed outside the lock.
// disabled: a Debug below the threshold, to the same implementation.
#include <time.h>

#include <string>
#include <thread>
#include <vector>

#include "bench.h"
#include "inputs.h"
#include "qz/platform/filestream.h"
#include "qz/system/frame/error.h"
#include "qz/system/frame/errorimpl.h"

using namespace QZSystem;

namespace {

constexpr int Messages = 100000;
const char* const Name = "a short name";

// "[2026-11-22 20:59:00.123] [bench] [info] text": the time to the second is kept, as the loggers keep it.
class StampedImpl : public QZErrorHandlerStreamImpl {
 public:
  StampedImpl(const QZErrorHandlerImplBase& former, qzostream& stream) : QZErrorHandlerStreamImpl(former, stream) {
    DropBelowLevel();
  }

  void Msg(unsigned int at, const std::string& text) override {
    if (at < GetLevel()) return;
    thread_local std::string line;
    Stamp(line);
    line += at == QZErrorLevel::Info ? "] [bench] [info] " : "] [bench] [other] ";
    line += text;
    QZErrorHandlerStreamImpl::Msg(at, line);
  }

 private:
  static void Stamp(std::string& line) {
    thread_local time_t last = -1;
    thread_local char text[32];
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    if (now.tv_sec != last) {
      tm local;
      localtime_r(&now.tv_sec, &local);
      strftime(text, sizeof text, "[%Y-%m-%d %H:%M:%S.", &local);
      last = now.tv_sec;
    }
    const long milliseconds = now.tv_nsec / 1000000;
    line = text;
    line += static_cast<char>('0' + milliseconds / 100);
    line += static_cast<char>('0' + milliseconds / 10 % 10);
    line += static_cast<char>('0' + milliseconds % 10);
  }
};

template <class Work>
void OnThreads(int threads, Work work) {
  std::vector<std::thread> others;
  for (int each = 1; each < threads; ++each) others.emplace_back(work);
  work();
  for (std::thread& other : others) other.join();
}

// A loop of two branches takes twice as long where it lies across two cache lines, so it begins one.
[[gnu::noinline, gnu::aligned(64)]] void SendDisabled() {
  for (int each = 0; each < 100 * Messages; ++each) {
    QZThrow.Debug("step %d energy %.6f name %s", each, each * 0.37, Name);
  }
}

void Register(int threads) {
  const std::string suffix = std::to_string(threads) + "-threads/ours";
  add("W11/message-" + suffix, [threads](benchmark::State& state) {
    QZThrow.Clear();
    int rounds = 0;
    for (auto _ : state) {
      OnThreads(threads, [] {
        for (int each = 0; each < Messages; ++each) {
          QZThrow.Info("step %d energy %.6f name %s", each, each * 0.37, Name);
        }
      });
      ++rounds;
    }
    const auto expected = static_cast<unsigned int>(Messages) * static_cast<unsigned int>(threads * rounds);
    if (QZThrow.Count(QZErrorLevel::Info) != expected) state.SkipWithError("messages are missing");
    ops(state, Messages);
  });
  add("W11/disabled-" + suffix, [threads](benchmark::State& state) {
    for (auto _ : state) {
      OnThreads(threads, &SendDisabled);
    }
    if (QZThrow.Count(QZErrorLevel::Debug) != 0) state.SkipWithError("a message passed");
    ops(state, 100 * Messages);
  });
}

}  // namespace

int main(int argc, char** argv) {
  qzofstream null;
  null.open("/dev/null");
  QZThrow.SetHandlerImpl(new StampedImpl(*QZThrow.GetHandlerImpl(), null), true);
  for (const int threads : {1, 2}) Register(threads);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  QZThrow.SetHandlerImpl(nullptr, true);
}
