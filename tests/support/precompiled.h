// The headers that most tests include and that change with the machine only.
#include <gtest/gtest.h>
#include <hwy/highway.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>
