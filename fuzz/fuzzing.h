#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>

#include "qz/system.h"

/// What every fuzz target shares. A target reads outside bytes, writes what it read, reads that again, and compares.

/// Forms every message, as a program that prints them would, and keeps it back; none ends the process.
class MessageSwallower final : public QZSystem::QZErrorHandlerImplBase {
 public:
  void Msg(unsigned int level, const std::string&) override { IncrementCount(level); }
  MessageSwallower* CreateCopy() const override { return new MessageSwallower(*this); }
};

inline void SwallowMessages() {
  static const bool installed = (QZSystem::QZThrow.SetHandlerImpl(new MessageSwallower, true), true);
  static_cast<void>(installed);
}

/// Ends the program, which the fuzzer reports with its input, where a fact doesn't hold.
inline void Require(bool fact) {
  if (!fact) std::abort();
}

inline std::string TextOf(const std::uint8_t* data, std::size_t size) {
  return std::string(reinterpret_cast<const char*>(data), size);
}

/// A stream over the bytes where they stand, so that the sanitizer sees a read behind the last one.
class BytesStream : public QZSystem::qzisstream {
 public:
  BytesStream(const std::uint8_t* data, std::size_t size) { set(data, size, false); }
  explicit BytesStream(const std::string& text) { set(text.data(), text.size(), false); }
};
