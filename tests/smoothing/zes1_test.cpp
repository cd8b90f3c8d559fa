#include <gtest/gtest.h>

#include "smoothing/zes1.hpp"

TEST(Zes1Placeholder, Builds) { SUCCEED(); }
