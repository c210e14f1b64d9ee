#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "qz/platform/lock_impl.h"
#include "qz/system/cli/parameter.h"
#include "qz/system/frame/error.h"

namespace QZSystem {

/// What makes new objects of one class behind the common base T. Safe from any thread.
template <class T>
class QZFactoryWorkerBase {
 public:
  QZFactoryWorkerBase() = default;
  /// A new object, which the caller deletes.
  [[nodiscard]] virtual T* Construct() const = 0;
  /// A new worker of the same class, which the caller deletes.
  [[nodiscard]] virtual QZFactoryWorkerBase* CreateCopy() const = 0;
  virtual ~QZFactoryWorkerBase() = default;

 protected:
  QZFactoryWorkerBase(const QZFactoryWorkerBase&) = default;
  QZFactoryWorkerBase& operator=(const QZFactoryWorkerBase&) = default;
};

/// The worker for the class K. Safe from any thread.
template <class T, class K>
class QZFactoryWorker : public QZFactoryWorkerBase<T> {
 public:
  [[nodiscard]] T* Construct() const override { return new K; }
  [[nodiscard]] QZFactoryWorker* CreateCopy() const override { return new QZFactoryWorker(*this); }
};

/// Makes objects by the word that names their class.
///
///     class Ratio : public QZDoubleParameter { ... };
///     QZInterface::Factory().Register("ratio", QZFactoryWorker<QZParameter, Ratio>());
///     const std::unique_ptr<QZParameter> made(QZInterface::Factory().Construct("ratio"));
///
/// Safe from any thread.
template <class Key, class T>
class QZSimpleFactory {
 public:
  QZSimpleFactory() = default;
  QZSimpleFactory(const QZSimpleFactory&) = delete;
  QZSimpleFactory& operator=(const QZSimpleFactory&) = delete;
  ~QZSimpleFactory() { Clear(); }

  /// Keeps a copy of the worker under this word. False, with nothing changed, if the word is known already.
  bool Register(const Key& classid, const QZFactoryWorkerBase<T>& worker);

  /// A new object of the class, which the caller deletes. An unknown word, compared exactly, gives null and the Warning
  /// "QZSimpleFactory.  Unknown classid %s"; a worker that could not be copied when it was registered gives null and
  /// the Error "NULL pointer in Factory Registry".
  [[nodiscard]] T* Construct(const Key& classid) const;

  /// Deletes all workers: every word is unknown from then on.
  void Clear();

 private:
  using Worker = std::shared_ptr<const QZFactoryWorkerBase<T>>;

  static constexpr char unknownWord[] = "QZSimpleFactory.  Unknown classid %s";
  static constexpr char nullWorker[] = "NULL pointer in Factory Registry";

// GCC doesn't know clang's thread-safety attributes.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wattributes"
  mutable ForkSafeMutex mutex{LockRank::Service};
  std::map<Key, Worker> workers __attribute__((guarded_by(mutex)));
#pragma GCC diagnostic pop
};

template <class Key, class T>
bool QZSimpleFactory<Key, T>::Register(const Key& classid, const QZFactoryWorkerBase<T>& worker) {
  Worker copy(worker.CreateCopy());
  const ForkSafeLock lock(mutex);
  return workers.emplace(classid, std::move(copy)).second;
}

template <class Key, class T>
T* QZSimpleFactory<Key, T>::Construct(const Key& classid) const {
  Worker worker;
  bool known = false;
  // Nothing but the search stands under the lock: a message may end the process, and the factory with it, and a class
  // may use the factory itself.
  {
    const ForkSafeLock lock(mutex);
    const auto found = workers.find(classid);
    known = found != workers.end();
    if (known) worker = found->second;
  }
  if (!known) {
    QZThrow.Warning(unknownWord, classid.c_str());
    return nullptr;
  }
  if (!worker) {
    QZThrow.Error(nullWorker);
    return nullptr;
  }
  return worker->Construct();
}

template <class Key, class T>
void QZSimpleFactory<Key, T>::Clear() {
  const ForkSafeLock lock(mutex);
  workers.clear();
}

extern template class QZSimpleFactory<std::string, QZParameter>;

/// The factory of all kinds of parameter, one for the process, made and filled at first use: "file", "param_file",
/// "string", "double", "float", "bool", "int", "unsigned", "const" and "stringEx". Its workers are deleted at exit;
/// who asks later finds every word unknown. Safe from any thread, and sound in a process that was forked at any time.
QZSimpleFactory<std::string, QZParameter>& QZParameterFactory();

}  // namespace QZSystem
