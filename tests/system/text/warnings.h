#pragma once

#include <string>

#include "qz/platform/memorystream.h"
#include "qz/platform/standardstream.h"
#include "qz/system/frame/error.h"

namespace QZSystem {

/// Catches what is sent to QZThrow while it stands.
class Warnings {
 public:
  Warnings() { QZThrow.SetOutputStream(stream); }
  ~Warnings() { QZThrow.SetOutputStream(qzerr); }
  Warnings(const Warnings&) = delete;
  Warnings& operator=(const Warnings&) = delete;

  /// The text sent since the last call.
  std::string Take() {
    const std::string fresh = stream.str().substr(taken);
    taken += fresh.size();
    return fresh;
  }

 private:
  qzosstream stream;
  std::size_t taken = 0;
};

}  // namespace QZSystem
