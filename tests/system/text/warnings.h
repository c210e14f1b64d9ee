#pragma once

#include "tests/system/cli/messages.h"

namespace QZSystem {

using Warnings = Messages;

}  // namespace QZSystem
