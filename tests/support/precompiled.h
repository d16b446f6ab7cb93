// Headers that most tests include and that change only with the system.
#include <gtest/gtest.h>
#include <hwy/highway.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>
