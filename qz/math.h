#pragma once

/// Numerics, namespace QZMath: random numbers that are the same on every machine, superposition of points, and
/// statistics. The system layer comes with it.

#include "qz/math/qcprms.h"
#include "qz/math/ran_num_generators.h"
#include "qz/math/rand.h"
#include "qz/math/random.h"
#include "qz/math/regrotation.h"
#include "qz/math/simplerms.h"
#include "qz/math/stats.h"
#include "qz/system.h"
