#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "qz/platform/stream.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// Reads bytes in place, without a buffer of its own: objects nest, and a buffer for each level would be more than all
/// their bytes. One thread at a time.
class PayloadStream final : public qzistream {
 public:
  PayloadStream() {
    ReleaseBuffer(buffer);
    buffer = nullptr;
    resetBuffer(0, true);
  }

  /// Points the stream at bytes that outlive its use.
  void Set(std::string_view bytes);

  bool _qzseek(long position) override { return position == 0 && start == end; }
};

/// The next bytes of a stream, `length` of them: in place where the stream has them ready in its buffer, else in a
/// block of their own. A length is compared with what the stream still holds before any block is taken.
///
///     Payload payload(in, length);
///     if (!payload.IsWhole()) return QZBReturn::IncorrectSize;
///     return read(payload.Stream());
///
/// The stream stands behind the bytes once this object ends, at its end where there were fewer; in between nobody may
/// read from it. Small enough for a recursive frame. One thread at a time.
class Payload {
 public:
  Payload(qzistream& in, unsigned long length);
  ~Payload();
  Payload(const Payload&) = delete;
  Payload& operator=(const Payload&) = delete;

  [[nodiscard]] bool IsWhole() const { return whole; }
  [[nodiscard]] std::string_view Bytes() const { return bytes; }

  /// A stream over the bytes; the same one at each call.
  [[nodiscard]] qzistream& Stream();

 private:
  qzistream& source;
  bool whole;
  bool isInPlace = false;
  std::string_view bytes;
  std::unique_ptr<std::string> block;
  std::unique_ptr<PayloadStream> stream;
};

/// Collects output in one block that grows, without a buffer of its own. `tell()` is the number of bytes written. One
/// thread at a time.
class BodyStream final : public qzostream {
 public:
  BodyStream() : qzostream(nullptr) { atEnd = false; }

  /// What has been written; good until the next write.
  [[nodiscard]] std::string_view Bytes() const { return {block.get(), tell()}; }

  /// Gives the block away, with all that was written in it.
  [[nodiscard]] std::unique_ptr<char[]> Release() { return std::move(block); }

  unsigned long _qzwrite(const unsigned char* bytes, unsigned long count) override;

 private:
  std::unique_ptr<char[]> block;
};

}  // namespace QZSystem
