// chart.h: the built-in test frame of the demo, a colour chart as a camera's raw Bayer mosaic.
#pragma once

#include "formats.h"
#include "image.h"

namespace kaip {

// Renders the chart at any size into a mosaic of 8 or 12 bits with the given pattern: a smooth and
// a stepped grey ramp, saturated primaries and secondaries, the 24 patches of a colour checker, a
// Siemens star, line pairs of one to four pixels and slanted black/white and red/blue edges. The
// sensor's colour cast (red and blue weaker than green, as under daylight without white balance)
// and a little deterministic noise make it look like a real frame.
Image RenderChart(uint32_t width, uint32_t height, uint32_t bits, Pattern pattern);

}  // namespace kaip
