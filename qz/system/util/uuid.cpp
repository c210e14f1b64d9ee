#include "qz/system/util/uuid.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <exception>
#include <random>

#include "qz/platform/syscalls_impl.h"
#include "qz/system/frame/theonly_impl.h"
#include "qz/system/util/uuid_impl.h"

namespace QZSystem {

namespace {

constexpr const char* RandomFile = "/dev/urandom";

// Set in the child of a fork until its generator is seeded anew.
std::atomic<bool> hasForked{false};

bool ReadRandomBytes(std::array<signed char, 4>& bytes) {
  const int file = SystemCalls::Open(RandomFile, O_RDONLY);
  if (file < 0) return false;
  bool good = true;
  for (signed char& byte : bytes) good = good && SystemCalls::Read(file, &byte, 1) == 1;
  SystemCalls::Close(file);
  return good;
}

// For a system without that file.
unsigned long VaryingSeed() {
  timespec now = {};
  SystemCalls::ReadClock(CLOCK_REALTIME, &now);
  auto seed = static_cast<unsigned long>(now.tv_sec) * 1000000000UL + static_cast<unsigned long>(now.tv_nsec);
  try {
    seed ^= static_cast<unsigned long>(std::random_device()()) << 32;
  } catch (const std::exception&) {
    seed ^= static_cast<unsigned long>(getpid()) << 32;
  }
  return seed;
}

unsigned long FreshSeed() {
  std::array<signed char, 4> bytes{};
  return ReadRandomBytes(bytes) ? SeedOfBytes(bytes) : VaryingSeed();
}

// The number of the process stands above the bits that the system gives, so that a child never has its parent's seed.
unsigned long SeedOfChild() { return FreshSeed() + (static_cast<unsigned long>(getpid()) << 32); }

struct ProcessGenerator : QZUUIDGenerator {};

}  // namespace

unsigned long SeedOfBytes(const std::array<signed char, 4>& bytes) {
  std::int64_t sum = 0;
  std::int64_t weight = 1;
  for (const signed char byte : bytes) {
    sum += byte * weight;
    weight *= 256;
  }
  return static_cast<unsigned long>(sum);
}

std::uint64_t NextWord(QZMath::MtRng<QZMath::Mt64Traits>& engine) {
  const std::uint64_t word = engine.getWord();
  return word ^ (word >> 43);
}

std::string HexOfWord(std::uint64_t word) {
  std::string text(16, '0');
  for (auto digit = text.rbegin(); digit != text.rend(); ++digit, word >>= 4) *digit = "0123456789abcdef"[word & 15];
  return text;
}

QZUUIDGenerator::QZUUIDGenerator() : mutex(LockRank::Platform) {
  engine.Seed(FreshSeed());
  pthread_atfork(nullptr, nullptr, [] { hasForked.store(true); });
}

std::string QZUUIDGenerator::GetUUID16() {
  std::uint64_t word = 0;
  {
    const ForkSafeLock lock(mutex);
    if (hasForked.load(std::memory_order_relaxed)) {
      engine.Seed(SeedOfChild());
      hasForked.store(false);
    }
    word = NextWord(engine);
  }
  return HexOfWord(word);
}

QZUUIDGenerator& QZGetUUIDGenerator() { return TheOnly<ProcessGenerator>(); }

std::string QZGetUUID16() { return QZGetUUIDGenerator().GetUUID16(); }

std::string QZGetUUID32() {
  std::string text = QZGetUUID16();
  text += QZGetUUID16();
  return text;
}

}  // namespace QZSystem
