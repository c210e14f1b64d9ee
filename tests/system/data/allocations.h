#pragma once

#include <functional>

/// The allocations of a thread, which the global operator new counts; the one with the number `failingAllocation`,
/// counted from 0, fails.
extern thread_local long allocations;
extern thread_local long failingAllocation;

/// Runs `work` with its first allocation failing, then its second and so on, until it gets through.
void FailEachAllocation(const std::function<void()>& work, const std::function<void()>& afterFailure);
