#include "SamplePeak.h"

#include <algorithm>
#include <cmath>

float LargestMagnitude(const float* x, std::size_t n)
{
    // Eight independent lanes that the compiler keeps in vector registers
    // (one running maximum is a chain of dependent steps); the largest of a
    // set is the same in any order.
    constexpr std::size_t kLanes = 8;
    float lanes[kLanes] = {};
    std::size_t i = 0;
    for (; i + kLanes <= n; i += kLanes) {
        for (std::size_t k = 0; k < kLanes; ++k)
            lanes[k] = std::max(lanes[k], std::fabs(x[i + k]));
    }
    for (; i < n; ++i)
        lanes[0] = std::max(lanes[0], std::fabs(x[i]));
    return *std::max_element(lanes, lanes + kLanes);
}
