#include "qz/platform/bufferpool.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "qz/platform/memorystream.h"

using namespace QZPlatform;

TEST(BufferPool, GivesEachOfItsBuffersOnceAndThenTheHeap) {
  QZBoundedCache<64, 3> pool;
  std::vector<unsigned char*> taken;
  for (int n = 0; n != 5; ++n) taken.push_back(pool.GetBuffer());
  EXPECT_EQ(std::set<unsigned char*>(taken.begin(), taken.end()).size(), 5U);
  for (unsigned char* each : taken) std::memset(each, 0xAB, 64);
  for (unsigned char* each : taken) pool.ReleaseBuffer(each);
  pool.ReleaseBuffer(nullptr);
  for (int n = 2; n >= 0; --n) EXPECT_EQ(pool.GetBuffer(), taken[static_cast<std::size_t>(n)]) << "the last one first";
}

TEST(BufferPool, AStreamGivesItsBufferBack) {
  auto& pool = qzstream::GetBufferCache();
  unsigned char* const buffer = pool.GetBuffer();
  pool.ReleaseBuffer(buffer);
  {
    const qzisstream in;
    unsigned char* const other = pool.GetBuffer();
    EXPECT_NE(other, buffer);
    pool.ReleaseBuffer(other);
  }
  EXPECT_EQ(pool.GetBuffer(), buffer);
  pool.ReleaseBuffer(buffer);
}
