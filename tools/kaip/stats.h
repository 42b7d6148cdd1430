// stats.h: per-channel minimum, maximum and mean of an image, for kaip info.
#pragma once

#include <string>
#include <vector>

#include "image.h"

namespace kaip {

struct ChannelStats {
    char channel;  // 'R', 'G', 'B', or 'Y' for grey
    uint32_t minimum;
    uint32_t maximum;
    double mean;
};

// The image in a layout the statistics and the white-balance measurement read: mosaics unpacked,
// packed grey as words, other colour layouts as BGR8Packed. Others stay as they are.
Image Analysable(Image image);

// Channels in the order R, G, B (or Y alone), in the image's own sample values; a Bayer mosaic
// by the colour of its sites. Empty for layouts it does not read.
std::vector<ChannelStats> MeasureChannels(const Image& image);

}  // namespace kaip
