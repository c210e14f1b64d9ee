#pragma once

#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

/// The exit status of a child process that runs `work` and ends with its result; 128 and more if a signal ended it, as
/// it does with one that hangs.
///
///     EXPECT_EQ(StatusOfChild([&] { return Works() ? 0 : 1; }), 0);
///
/// The child ends without a look at the threads that the fork left behind, which a thread sanitizer would report.
template <class Work>
int StatusOfChild(Work work) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(60);
    syscall(SYS_exit_group, work());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
