// pipeline.h: the camera pipeline from a raw frame to a picture, stage by stage and timed.
#pragma once

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "image.h"

namespace kaip {

// The Bayer decoders by their command-line names. A decoder this build does not provide has no
// function yet: naming it says so instead of failing to link.
using DecodeFunction = KaipStatus (*)(const KaipImgInfo*, KaipImgInfo*, uint32_t, uint32_t, KaipHLut);
struct Decoder {
    const char* name;
    const char* function;
    DecodeFunction decode;
};
const std::vector<Decoder>& AllDecoders();
const Decoder* FindDecoder(const std::string& name);  // null for an unknown name

struct PipelineSettings {
    const Decoder* decoder = nullptr;
    bool autoWhiteBalance = true;
    uint32_t wb[3] = {1000, 1000, 1000};  // red, green, blue gains in thousandths
    uint32_t gamma = 1000;                // thousandths: 2200 brightens the mid-tones as gamma 2.2
    uint32_t saturation = 100;            // percent; 100 leaves the colours alone
    int32_t sharpen = 0;                  // -100 (smooth) .. 100 (sharpen); 0 does nothing
};

// Stage times: megapixels 0 marks a stage without a per-pixel rate (building a LUT).
struct StageTime {
    std::string stage;
    double seconds;
    double megapixels;
};

class Timings {
public:
    template <class Work>
    auto Run(const std::string& stage, double megapixels, Work&& work)
    {
        auto start = std::chrono::steady_clock::now();
        struct Record {  // records the time also when the work throws
            Timings* timings;
            const std::string& stage;
            double megapixels;
            std::chrono::steady_clock::time_point start;
            ~Record()
            {
                std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
                timings->m_stages.push_back({stage, took.count(), megapixels});
            }
        } record{this, stage, megapixels, start};
        return work();
    }
    void Print(FILE* out) const;

private:
    std::vector<StageTime> m_stages;
};

// A Bayer mosaic of any layout (16-bit, packed, MIPI) as one the decoders take (8, 10 or 12 bits
// in bytes or words): the same samples, unpacked by the library's mono conversions.
Image UnpackBayer(Image mosaic, Timings* timings);

// The whole pipeline: a Bayer mosaic is measured, looked up and demosaiced into BGR8Packed; any
// other format the library converts becomes BGR8Packed (Mono8 for grey) and goes through the same
// LUT. Then the saturation matrix (colour only) and the sharpening kernel.
Image Develop(Image raw, const PipelineSettings& settings, Timings* timings);

}  // namespace kaip
