#include "qz/platform/bufferpool.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "qz/platform/memorystream.h"

namespace {

using namespace QZPlatform;

TEST(BufferPool, GivesEachBufferOnceAndThenTheHeap) {
  QZBoundedCache<64, 3> pool;
  std::set<unsigned char*> taken;
  for (int n = 0; n != 5; ++n) taken.insert(pool.GetBuffer());
  EXPECT_EQ(taken.size(), 5U);
  for (unsigned char* each : taken) std::fill(each, each + 64, static_cast<unsigned char>(0xAB));
  for (unsigned char* each : taken) pool.ReleaseBuffer(each);
}

TEST(BufferPool, AHeapBufferIsDeletedAndNotKept) {
  QZBoundedCache<64, 2> pool;
  unsigned char* const first = pool.GetBuffer();
  unsigned char* const second = pool.GetBuffer();
  unsigned char* const third = pool.GetBuffer();
  pool.ReleaseBuffer(first);
  pool.ReleaseBuffer(third);
  pool.ReleaseBuffer(nullptr);
  EXPECT_EQ(pool.GetBuffer(), first);  // what came back last of the pool's own
  pool.ReleaseBuffer(first);
  pool.ReleaseBuffer(second);
  EXPECT_EQ(pool.GetBuffer(), second);
  EXPECT_EQ(pool.GetBuffer(), first);
}

TEST(BufferPool, StreamsBeyondThePoolWorkTheSame) {
  std::vector<std::unique_ptr<qzisstream>> streams;
  for (int n = 0; n != 40; ++n) {
    streams.push_back(std::make_unique<qzisstream>());
    streams.back()->set("stream " + std::to_string(n));
  }
  for (int n = 39; n >= 0; --n) {
    std::string text;
    streams[static_cast<size_t>(n)]->read(text);
    EXPECT_EQ(text, "stream " + std::to_string(n));
    streams.pop_back();
  }
}

TEST(BufferPool, ADeadStreamsBufferGoesToTheNextOne) {
  auto& pool = qzstream::GetBufferCache();
  unsigned char* const buffer = pool.GetBuffer();
  qzstream::ReleaseBuffer(buffer);
  {
    qzisstream in;
    unsigned char* const other = pool.GetBuffer();
    EXPECT_NE(other, buffer);
    pool.ReleaseBuffer(other);
  }
  EXPECT_EQ(pool.GetBuffer(), buffer);
  pool.ReleaseBuffer(buffer);
}

TEST(BufferPool, AForkFindsThePoolUnlocked) {
  auto& pool = qzstream::GetBufferCache();
  std::atomic<bool> stop{false};
  std::thread busy([&] {
    while (!stop) pool.ReleaseBuffer(pool.GetBuffer());
  });
  int sound = 0;
  for (int n = 0; n != 50; ++n) {
    const pid_t child = ::fork();
    if (child == 0) {
      ::alarm(20);
      pool.ReleaseBuffer(pool.GetBuffer());
      ::_exit(0);
    }
    int status = -1;
    sound += ::waitpid(child, &status, 0) == child && status == 0;
  }
  stop = true;
  busy.join();
  EXPECT_EQ(sound, 50);
}

}  // namespace
