#include "qz/platform/thread.h"

#include <cassert>

#include "qz/platform/syscalls_impl.h"

namespace QZPlatform {

QZThread::~QZThread() { assert(!started); }

bool QZThread::Start(void* argument) {
  if (started) return false;
  runArgument = argument;
  started = SystemCalls::CreateThread(&thread, nullptr, &Enter, this) == 0;
  return started;
}

void QZThread::Join() {
  if (!started) return;
  pthread_join(thread, nullptr);
  started = false;
}

void* QZThread::Enter(void* object) {
  auto* const self = static_cast<QZThread*>(object);
  return self->Run(self->runArgument);
}

QZCondition::~QZCondition() {
  pthread_cond_destroy(&condition);
  pthread_mutex_destroy(&mutex);
}

void QZCondition::Acquire() { pthread_mutex_lock(&mutex); }

void QZCondition::Release() { pthread_mutex_unlock(&mutex); }

void QZCondition::Wait() { pthread_cond_wait(&condition, &mutex); }

void QZCondition::Broadcast() { pthread_cond_broadcast(&condition); }

}  // namespace QZPlatform
