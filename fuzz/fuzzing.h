#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>

#include "qz/system.h"

/// What every fuzz target shares. A target reads outside bytes, writes what it read, reads that again, and compares.

/// Keeps the messages of a target back; an Error must not end it.
struct Silence {
  Silence() {
    QZSystem::QZThrow.SetStrict(false);
    QZSystem::QZThrow.SetLevel(QZSystem::QZErrorLevel::Quiet);
  }
};

/// Ends the program, which the fuzzer reports with its input, where a fact doesn't hold.
inline void Require(bool fact) {
  if (!fact) std::abort();
}

inline std::string TextOf(const std::uint8_t* data, std::size_t size) {
  return std::string(reinterpret_cast<const char*>(data), size);
}
