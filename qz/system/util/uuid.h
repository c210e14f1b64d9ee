#pragma once

#include <string>

#include "qz/math/rand.h"
#include "qz/platform/lock_impl.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// Draws identifiers that no other process draws: random words as hexadecimal digits, without dashes, version or
/// variant bits.
///
///     const std::string id = QZGetUUID32();  // "9f1e0c..." of 32 digits
///
/// The generator is seeded from the operating system, and anew in the child of a fork. Nothing here is a secret: who
/// has seen some identifiers can compute the others. Safe from any thread.
class QZUUIDGenerator {
 public:
  QZUUIDGenerator(const QZUUIDGenerator&) = delete;
  QZUUIDGenerator& operator=(const QZUUIDGenerator&) = delete;

  /// The next random word as 16 lower-case digits, the most significant first.
  [[nodiscard]] std::string GetUUID16();

 protected:
  QZUUIDGenerator();
  ~QZUUIDGenerator() = default;

 private:
// GCC doesn't know clang's thread-safety attributes.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wattributes"
  ForkSafeMutex mutex;
  QZMath::MtRng<QZMath::Mt64Traits> engine __attribute__((guarded_by(mutex)));
#pragma GCC diagnostic pop
};

/// The generator of the process, made at the first call. It serves to the last static destructor.
QZUUIDGenerator& QZGetUUIDGenerator();

/// 16 digits from the generator of the process.
[[nodiscard]] std::string QZGetUUID16();
/// 32 digits: two draws, between which another thread's may fall.
[[nodiscard]] std::string QZGetUUID32();

}  // namespace QZSystem
