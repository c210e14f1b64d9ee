#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace QZSystem {

/// What is written to standard error while `work` runs.
inline std::string Printed(const std::function<void()>& work) {
  testing::internal::CaptureStderr();
  work();
  return testing::internal::GetCapturedStderr();
}

}  // namespace QZSystem
