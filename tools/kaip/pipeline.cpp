// pipeline.cpp: white balance, LUT, demosaicing, saturation and sharpening through the library.
#include "pipeline.h"

#include <algorithm>

#include "formats.h"

namespace kaip {

namespace {

// The decoders by their command-line names; an entry without a function is told as not available
// in this build.
const std::vector<Decoder> g_decoders = {
    {"nn", "KaipBdNearestNeighbour", KaipBdNearestNeighbour},
    {"bilinear", "KaipBdBilinearInterpolation", KaipBdBilinearInterpolation},
    {"vng", "KaipBdVariableGradients", KaipBdVariableGradients},
    {"ppg", "KaipBdPixelGrouping", KaipBdPixelGrouping},
    {"hq", "KaipBdBilinearColorCorrection", KaipBdBilinearColorCorrection},
};

// A LUT object released with its owner.
class Lut {
public:
    explicit Lut(uint32_t type) : m_handle(KaipAllocateLut(type))
    {
        if (!m_handle) throw ToolError("allocating a LUT failed (see the library log)");
    }
    Lut(const Lut&) = delete;
    Lut& operator=(const Lut&) = delete;
    ~Lut() { KaipFreeLut(m_handle); }
    KaipHLut Handle() const { return m_handle; }

private:
    KaipHLut m_handle;
};

std::string AvailableDecoders()
{
    std::string names;
    for (const Decoder& decoder : g_decoders)
        if (decoder.decode) names += std::string(" ") + decoder.name;
    return names;
}

uint32_t LutDepth(uint32_t bits)
{
    return bits == 8 ? KAIP_LUT_8BIT : bits == 10 ? KAIP_LUT_10BIT : KAIP_LUT_12BIT;
}

void BuildLut(const Lut& lut, const uint32_t wb[3], uint32_t gamma)
{
    Check(KaipAddWbToLut(wb[0], wb[1], wb[2], lut.Handle()), "adding the white balance to the LUT");
    Check(KaipAddGammaToLut(gamma, lut.Handle()), "adding the gamma to the LUT");
}

std::string WbText(const uint32_t wb[3])
{
    return std::to_string(wb[0]) + "/" + std::to_string(wb[1]) + "/" + std::to_string(wb[2]);
}

// The factors to use: the settings' own, or measured from the image (mosaic or colour).
void WhiteBalance(const Image& image, const PipelineSettings& settings, uint32_t wb[3], Timings* timings)
{
    std::copy(settings.wb, settings.wb + 3, wb);
    if (!settings.autoWhiteBalance) return;
    timings->Run("measure white balance", image.Megapixels(), [&] {
        Check(KaipCalcWbFactors(image.Info(), &wb[0], &wb[1], &wb[2], 0), "measuring the white balance");
    });
}

Image Demosaic(Image raw, const PipelineSettings& settings, Timings* timings)
{
    const Decoder* decoder = settings.decoder ? settings.decoder : FindDecoder("bilinear");
    if (!decoder->decode)
        throw ToolError(std::string("the ") + decoder->name + " decoder (" + decoder->function +
                        ") is not available in this build; use one of" + AvailableDecoders());
    Image mosaic = UnpackBayer(std::move(raw), timings);
    const FormatInfo* format = FindFormat(mosaic.Format());
    uint32_t wb[3];
    WhiteBalance(mosaic, settings, wb, timings);
    Lut lut(LutDepth(format->bits) | KAIP_LUT_BAYER | KAIP_LUT_BAYER_16);
    timings->Run("build LUT (wb " + WbText(wb) + ")", 0, [&] { BuildLut(lut, wb, settings.gamma); });
    Image colour;
    timings->Run(std::string("demosaic ") + decoder->name, mosaic.Megapixels(), [&] {
        Check(decoder->decode(mosaic.Info(), colour.Info(), KaipPixelFormat_BGR8Packed, KaipOption_ReallocateDst,
                              lut.Handle()),
              std::string("demosaicing with ") + decoder->function);
    });
    return colour;
}

// Formats without a mosaic: to BGR8Packed (grey ones to Mono8), then the 8-bit LUT in place.
Image Display(Image raw, const PipelineSettings& settings, Timings* timings)
{
    const FormatInfo* format = FindFormat(raw.Format());
    bool grey = format && format->kind == Kind::Mono;
    uint32_t target = grey ? KaipPixelFormat_Mono8 : KaipPixelFormat_BGR8Packed;
    Image picture =
        timings->Run("convert to " + FormatName(target), raw.Megapixels(), [&] { return ConvertTo(raw, target); });
    uint32_t wb[3] = {1000, 1000, 1000};
    if (!grey) WhiteBalance(picture, settings, wb, timings);
    Lut lut(KAIP_LUT_8BIT);
    timings->Run("build LUT (wb " + WbText(wb) + ")", 0, [&] { BuildLut(lut, wb, settings.gamma); });
    timings->Run("apply LUT", picture.Megapixels(),
                 [&] { Check(KaipApplyLut(picture.Info(), nullptr, lut.Handle(), 0), "applying the LUT"); });
    return picture;
}

void Saturate(Image* picture, uint32_t saturation, Timings* timings)
{
    int32_t matrix[9];
    Check(KaipSetSaturationMatrix(saturation, matrix), "building the saturation matrix");
    timings->Run("saturation " + std::to_string(saturation) + "%", picture->Megapixels(), [&] {
        Check(KaipApplyRgbColorCorrection(picture->Info(), nullptr, matrix, 0, nullptr),
              "applying the saturation matrix");
    });
}

Image Sharpen(const Image& picture, int32_t sharpness, Timings* timings)
{
    int32_t kernel[9];
    Check(KaipSet3x3MatrixSharpening(sharpness, kernel, 0), "building the sharpening kernel");
    return timings->Run("sharpen " + std::to_string(sharpness), picture.Megapixels(), [&] {
        // The kernel leaves the border lines and columns alone: they keep the unsharpened pixels.
        Image sharp = ConvertTo(picture, picture.Format());  // a copy
        Check(KaipApply3x3Convolution(picture.Info(), sharp.Info(), kernel, 0, nullptr), "sharpening");
        return sharp;
    });
}

}  // namespace

const std::vector<Decoder>& AllDecoders()
{
    return g_decoders;
}

const Decoder* FindDecoder(const std::string& name)
{
    for (const Decoder& decoder : g_decoders)
        if (name == decoder.name) return &decoder;
    return nullptr;
}

Image UnpackBayer(Image mosaic, Timings* timings)
{
    const FormatInfo* format = FindFormat(mosaic.Format());
    if (format->monoTwin == KaipPixelFormat_Mono8 || format->monoTwin == KaipPixelFormat_Mono10 ||
        format->monoTwin == KaipPixelFormat_Mono12)
        return mosaic;
    // 16-bit mosaics keep their top 12 bits; packed and MIPI ones unpack to words of their depth.
    uint32_t bits = format->bits == 16 ? 12 : format->bits;
    uint32_t mono = bits == 10 ? KaipPixelFormat_Mono10 : KaipPixelFormat_Mono12;
    mosaic.Relabel(format->monoTwin);
    Image unpacked = timings->Run(std::string("unpack ") + format->name, mosaic.Megapixels(),
                                  [&] { return ConvertTo(mosaic, mono); });
    unpacked.Relabel(DecodableBayer(format->pattern, bits));
    return unpacked;
}

Image Develop(Image raw, const PipelineSettings& settings, Timings* timings)
{
    const FormatInfo* format = FindFormat(raw.Format());
    bool mosaic = format && format->kind == Kind::Bayer;
    Image picture = mosaic ? Demosaic(std::move(raw), settings, timings) : Display(std::move(raw), settings, timings);
    if (settings.saturation != 100 && picture.Format() == KaipPixelFormat_BGR8Packed)
        Saturate(&picture, settings.saturation, timings);
    if (settings.sharpen != 0) picture = Sharpen(picture, settings.sharpen, timings);
    return picture;
}

void Timings::Print(FILE* out) const
{
    double total = 0;
    std::fprintf(out, "%-34s %10s %10s\n", "stage", "ms", "MP/s");
    for (const StageTime& stage : m_stages) {
        total += stage.seconds;
        if (stage.megapixels > 0 && stage.seconds > 0)
            std::fprintf(out, "%-34s %10.2f %10.1f\n", stage.stage.c_str(), stage.seconds * 1e3,
                         stage.megapixels / stage.seconds);
        else
            std::fprintf(out, "%-34s %10.2f %10s\n", stage.stage.c_str(), stage.seconds * 1e3, "-");
    }
    std::fprintf(out, "%-34s %10.2f\n", "total", total * 1e3);
}

}  // namespace kaip
