#pragma once

#include <memory>
#include <vector>

#include "qz/system/frame/itervector.h"
#include "qz/system/qzb/qzbfxn.h"

namespace QZSystem {

/// Function objects in the order of registration, owned, in the form that iterators walk. One thread at a time.
template <class Fxn>
class QZFxnList {
 public:
  QZFxnList() = default;
  QZFxnList(const QZFxnList&) = delete;
  QZFxnList& operator=(const QZFxnList&) = delete;
  ~QZFxnList() {
    for (Fxn* each : functions) delete each;
  }

  void Add(std::unique_ptr<Fxn> function) {
    functions.push_back(function.get());
    static_cast<void>(function.release());
  }
  void Replace(unsigned long index, std::unique_ptr<Fxn> function) {
    delete functions[index];
    functions[index] = function.release();
  }
  [[nodiscard]] const std::vector<Fxn*>& All() const { return functions; }

 private:
  std::vector<Fxn*> functions;
};

/// What a handler knows. Const operations may run in parallel; a change needs exclusive access.
class QZBinaryIOImpl {
 public:
  QZFxnList<QZReadFxnBase> readers;
  QZFxnList<QZWriteFxnBase> writers;
  std::unique_ptr<QZDefaultReadFxn> defaultReader = std::make_unique<QZDefaultReader>();
  std::unique_ptr<QZDefaultWriteFxn> defaultWriter = std::make_unique<QZDefaultWriter>();
  QZFxnList<QZWriteFxn<QZBaseData>> baseWriters;
};

}  // namespace QZSystem
