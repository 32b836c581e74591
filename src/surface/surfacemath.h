#pragma once

#include <algorithm>
#include <cmath>

// Index arithmetic shared by the parts of the surface.
namespace SurfaceMath {

// value within low..high; an empty range gives low.
inline int clampIndex(int value, int low, int high)
{
    return high < low ? low : std::clamp(value, low, high);
}

inline int truncated(double value)
{
    return int(std::trunc(value));
}

} // namespace SurfaceMath
