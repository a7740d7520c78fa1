#pragma once

#include <cstddef>

// The largest |x| of n samples (NaN passed over; 0 for none).
float LargestMagnitude(const float* x, std::size_t n);
