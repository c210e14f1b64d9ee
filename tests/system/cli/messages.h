#pragma once

#include <string>

#include "qz/platform/memorystream.h"
#include "qz/platform/standardstream.h"
#include "qz/system/frame/error.h"

namespace QZSystem {

/// Catches what is sent to QZThrow while it stands; an Error doesn't end the process then, and comes as a warning.
class Messages {
 public:
  Messages() : strict(QZThrow.GetStrict()) {
    QZThrow.SetOutputStream(stream);
    QZThrow.SetStrict(false);
  }
  ~Messages() {
    QZThrow.SetOutputStream(qzerr);
    QZThrow.SetStrict(strict);
  }
  Messages(const Messages&) = delete;
  Messages& operator=(const Messages&) = delete;

  /// The text sent since the last call.
  std::string Take() {
    const std::string all = stream.str();
    std::string fresh = all.substr(taken);
    taken = all.size();
    return fresh;
  }

 private:
  qzosstream stream;
  bool strict;
  std::size_t taken = 0;
};

}  // namespace QZSystem
