// commands.cpp: demo, process, convert, info and formats.
#include "commands.h"

#include <glob.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <sstream>

#include "chart.h"
#include "files.h"
#include "formats.h"
#include "pipeline.h"
#include "stats.h"

namespace fs = std::filesystem;

namespace kaip {

namespace {

RawLayout LayoutFromOptions(const std::string& format, const std::string& size)
{
    RawLayout raw;
    if (!format.empty()) raw.format = FindFormat(format)->code;  // names are validated while parsing
    if (!size.empty()) ParseSize(size, &raw.width, &raw.height);
    return raw;
}

uint32_t Thousandths(double value)
{
    return uint32_t(std::lround(value * 1000));
}

PipelineSettings ToSettings(const PipelineOptions& options)
{
    PipelineSettings settings;
    settings.decoder = FindDecoder(options.decoder);
    settings.gamma = Thousandths(options.gamma);
    settings.saturation = options.saturation;
    settings.sharpen = options.sharpen;
    settings.autoWhiteBalance = options.wb == "auto";
    if (!settings.autoWhiteBalance) {
        double gains[3];
        char rest;
        if (std::sscanf(options.wb.c_str(), "%lf,%lf,%lf%c", &gains[0], &gains[1], &gains[2], &rest) != 3 ||
            *std::min_element(gains, gains + 3) <= 0 || *std::max_element(gains, gains + 3) > 4000)
            throw ToolError("--wb: expected auto or three positive gains R,G,B such as 1.8,1,1.4, not " + options.wb,
                            2);
        for (int c = 0; c < 3; ++c) settings.wb[c] = Thousandths(gains[c]);
    }
    return settings;
}

void MakeFolder(const std::string& folder)
{
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) throw ToolError("cannot create the folder " + folder + ": " + error.message());
}

// A folder's raw dumps: its regular files, sorted, hidden and image files left out.
std::vector<std::string> DumpsIn(const std::string& folder)
{
    std::vector<std::string> found;
    for (const auto& entry : fs::directory_iterator(folder)) {
        std::string path = entry.path().string();
        if (entry.is_regular_file() && entry.path().filename().string()[0] != '.' && FileTypeOf(path) == FileType::Raw)
            found.push_back(path);
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::vector<std::string> GlobMatches(const std::string& pattern)
{
    std::vector<std::string> found;
    glob_t matches{};
    if (glob(pattern.c_str(), 0, nullptr, &matches) == 0)
        found.assign(matches.gl_pathv, matches.gl_pathv + matches.gl_pathc);
    globfree(&matches);
    return found;
}

// Files as they are, folders by their dumps, quoted globs by their matches.
std::vector<std::string> ExpandInputs(const std::vector<std::string>& inputs)
{
    std::vector<std::string> files;
    for (const std::string& input : inputs) {
        std::vector<std::string> found = fs::is_directory(input) ? DumpsIn(input)
                                         : input.find_first_of("*?[") != std::string::npos
                                             ? GlobMatches(input)
                                             : std::vector<std::string>{input};
        files.insert(files.end(), found.begin(), found.end());
    }
    if (files.empty()) throw ToolError("no input files found in " + inputs.front(), 2);
    return files;
}

// The output of one input: --out as a file, or a file named after the input in --out's folder (or
// in the input's own folder without --out). An input is never overwritten.
std::string OutputFor(const std::string& input, const ProcessOptions& options)
{
    std::string output = options.out;
    if (options.out.empty() || FileTypeOf(options.out) == FileType::Raw) {
        fs::path folder = options.out.empty() ? fs::path(input).parent_path() : fs::path(options.out);
        output = (folder / fs::path(input).stem()).string() + "." + options.ext;
    }
    if (fs::weakly_canonical(output) == fs::weakly_canonical(input))
        throw ToolError(input + ": the output would overwrite the input; give --out", 2);
    return output;
}

class ProgressBar {
public:
    explicit ProgressBar(size_t total) : m_total(total), m_shown(total > 1 && isatty(STDERR_FILENO)) {}
    // Clears the bar's line, so that a message can take it.
    void Clear() const
    {
        if (m_shown) std::fprintf(stderr, "\r%80s\r", "");
    }
    void Show(size_t done, const std::string& name) const
    {
        if (!m_shown) return;
        const int width = 30;
        int filled = int(width * done / m_total);
        std::fprintf(stderr, "\r[%s%s] %zu/%zu %-40.40s", std::string(filled, '#').c_str(),
                     std::string(width - filled, '.').c_str(), done, m_total, name.c_str());
        if (done == m_total) std::fputc('\n', stderr);
        std::fflush(stderr);
    }

private:
    size_t m_total;
    bool m_shown;
};

// Returns the line that tells what was made.
std::string ProcessOne(const std::string& input, const std::string& output, const ProcessOptions& options,
                       const PipelineSettings& settings, Timings* timings)
{
    Image raw = LoadAny(input, LayoutFromOptions(options.format, options.size));
    std::string format = FormatName(raw.Format());
    Image picture = Develop(std::move(raw), settings, timings);
    timings->Run(std::string("save ") + FileTypeName(FileTypeOf(output)), picture.Megapixels(),
                 [&] { SaveAny(output, picture, options.quality); });
    return input + " (" + format + " " + std::to_string(picture.Width()) + "x" + std::to_string(picture.Height()) +
           ") -> " + output;
}

void PrintStats(const Image& image)
{
    std::vector<ChannelStats> stats = MeasureChannels(image);
    if (stats.empty()) return (void)std::printf("  channels     not measured for this layout\n");
    std::printf("  %-12s %8s %8s %10s\n", "channel", "min", "max", "mean");
    for (const ChannelStats& channel : stats)
        std::printf("  %-12c %8u %8u %10.2f\n", channel.channel, channel.minimum, channel.maximum, channel.mean);
}

void PrintWhiteBalance(const Image& image)
{
    const FormatInfo* format = FindFormat(image.Format());
    if (format && format->kind == Kind::Mono) return (void)std::printf("  white balance  none (grey image)\n");
    uint32_t wb[3] = {1000, 1000, 1000};
    KaipStatus status = KaipCalcWbFactors(image.Info(), &wb[0], &wb[1], &wb[2], 0);
    if (status != KASTATUS_OK)
        return (void)std::printf("  white balance  not measured: %s\n", StatusText(status).c_str());
    std::printf("  white balance  R %u  G %u  B %u (thousandths, as --wb %.3f,%.3f,%.3f)\n", wb[0], wb[1], wb[2],
                wb[0] / 1e3, wb[1] / 1e3, wb[2] / 1e3);
}

void InfoOne(const std::string& path, const RawLayout& raw)
{
    FileType type = FileTypeOf(path);
    Image image = LoadAny(path, raw);
    std::printf("%s\n  file         %s, %ju bytes\n", path.c_str(), FileTypeName(type), uintmax_t(fs::file_size(path)));
    std::printf("  size         %u x %u\n", image.Width(), image.Height());
    std::printf("  format       %s (0x%08X)\n", FormatName(image.Format()).c_str(), image.Format());
    uint32_t original = image.Format();
    Image measured;
    try {
        measured = Analysable(std::move(image));
    } catch (const ToolError& error) {
        return (void)std::printf("  channels     not measured: %s\n", error.what());
    }
    if (measured.Format() != original) std::printf("  measured as  %s\n", FormatName(measured.Format()).c_str());
    PrintStats(measured);
    PrintWhiteBalance(measured);
}

// Whether process can develop a format: mosaics of every layout, and what converts for display.
bool Developable(const FormatInfo& format)
{
    if (format.kind == Kind::Bayer) return true;
    uint32_t target = format.kind == Kind::Mono ? KaipPixelFormat_Mono8 : KaipPixelFormat_BGR8Packed;
    return KaipCanConvertToPixelFormat(format.code, target) != 0;
}

void PrintFormat(const FormatInfo& format)
{
    static const char* const kinds[] = {"mono", "bayer", "colour", "yuv", "planar"};
    std::ostringstream targets;
    size_t count = 0, column = 14;
    for (const FormatInfo& target : AllFormats()) {
        if (!KaipCanConvertToPixelFormat(format.code, target.code)) continue;
        size_t length = std::strlen(target.name) + 1;
        if (column + length > 100) targets << "\n             ", column = 14;
        targets << ' ' << target.name;
        column += length, ++count;
    }
    std::printf("%-24s 0x%08X  %-6s %2u bits  raw %2ju bits/pixel  process: %s\n", format.name, format.code,
                kinds[int(format.kind)], format.bits, uintmax_t(RawLineBytes(format.code, 8)),
                Developable(format) ? "yes" : "no");
    std::printf("  converts to%s\n", count ? targets.str().c_str() : " nothing");
}

// The image as convert saves it: a raw copy stays as it is; otherwise mosaics are unpacked first
// (the library converts only 8-, 10- and 12-bit ones), then converted to --format, or without it to
// a layout the image files take.
Image ForSaving(Image image, const ConvertOptions& options)
{
    if (options.format.empty() && FileTypeOf(options.output) == FileType::Raw) return image;
    const FormatInfo* format = FindFormat(image.Format());
    Timings unused;
    if (format && format->kind == Kind::Bayer) image = UnpackBayer(std::move(image), &unused);
    if (options.format.empty()) return Analysable(std::move(image));
    uint32_t target = FindFormat(options.format)->code;
    return target == image.Format() ? std::move(image) : ConvertTo(image, target);
}

}  // namespace

int RunDemo(const DemoOptions& options)
{
    uint32_t width = 0, height = 0;
    ParseSize(options.size, &width, &height);
    PipelineSettings settings = ToSettings(options.pipeline);
    MakeFolder(options.out);
    Pattern pattern = Pattern(FindFormat("Bayer" + options.pattern + "8")->pattern);
    Timings timings;
    double megapixels = double(width) * height / 1e6;
    Image raw =
        timings.Run("synthesise chart", megapixels, [&] { return RenderChart(width, height, options.bits, pattern); });
    std::string stem = (fs::path(options.out) / "demo").string();
    std::string size = std::to_string(width) + "x" + std::to_string(height);
    std::string format = FormatName(raw.Format());
    std::vector<std::string> written = {stem + "." + format + "." + size + ".raw"};
    timings.Run("save raw", megapixels, [&] { SaveAny(written.back(), raw, 0); });
    Image picture = Develop(std::move(raw), settings, &timings);
    for (const char* extension : {".bmp", ".tif", ".jpg"}) {
        written.push_back(stem + extension);
        timings.Run(std::string("save ") + FileTypeName(FileTypeOf(written.back())), megapixels,
                    [&] { SaveAny(written.back(), picture, options.quality); });
    }
    std::printf("kaip demo: a %s %s chart through libpm.imgproc\n\n", size.c_str(), format.c_str());
    timings.Print(stdout);
    std::printf("\nwrote:\n");
    for (const std::string& path : written) std::printf("  %s\n", path.c_str());
    return 0;
}

int RunProcess(const ProcessOptions& options)
{
    PipelineSettings settings = ToSettings(options.pipeline);
    std::vector<std::string> inputs = ExpandInputs(options.inputs);
    if (inputs.size() > 1 && !options.out.empty() && FileTypeOf(options.out) != FileType::Raw)
        throw ToolError("--out " + options.out + " names one file, but there are " + std::to_string(inputs.size()) +
                            " inputs: give a folder",
                        2);
    if (!options.out.empty() && FileTypeOf(options.out) == FileType::Raw) MakeFolder(options.out);
    ProgressBar progress(inputs.size());
    int failures = 0;
    for (size_t i = 0; i < inputs.size(); ++i) {
        progress.Show(i, inputs[i]);
        try {
            Timings timings;
            std::string done = ProcessOne(inputs[i], OutputFor(inputs[i], options), options, settings, &timings);
            progress.Clear();
            std::printf("%s\n", done.c_str());
            if (options.timings) timings.Print(stdout);
            std::fflush(stdout);
        } catch (const ToolError& error) {
            if (inputs.size() == 1) throw;
            std::string message = error.what();
            if (message.compare(0, inputs[i].size(), inputs[i]) != 0) message = inputs[i] + ": " + message;
            progress.Clear();
            std::fprintf(stderr, "kaip: %s\n", message.c_str());
            ++failures;
        }
    }
    progress.Show(inputs.size(), "done");
    if (failures) std::fprintf(stderr, "kaip: %d of %zu files failed\n", failures, inputs.size());
    return failures ? 1 : 0;
}

int RunConvert(const ConvertOptions& options)
{
    Image image = ForSaving(LoadAny(options.input, LayoutFromOptions(options.inFormat, options.size)), options);
    SaveAny(options.output, image, options.quality);
    std::printf("%s -> %s (%s %ux%u)\n", options.input.c_str(), options.output.c_str(),
                FormatName(image.Format()).c_str(), image.Width(), image.Height());
    return 0;
}

int RunInfo(const InfoOptions& options)
{
    RawLayout raw = LayoutFromOptions(options.format, options.size);
    for (const std::string& path : options.files) InfoOne(path, raw);
    return 0;
}

int RunFormats(const FormatsOptions& options)
{
    for (const FormatInfo& format : AllFormats()) {
        bool wanted =
            options.names.empty() || std::any_of(options.names.begin(), options.names.end(),
                                                 [&](const std::string& name) { return FindFormat(name) == &format; });
        if (wanted) PrintFormat(format);
    }
    return 0;
}

}  // namespace kaip
