// kaip_tool_test.cpp: the kaip tool end to end: its files against the same steps called directly.
#include <fcntl.h>
#include <pty.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "file/file_test_util.h"

namespace fs = std::filesystem;
using filetest::Loaded;

extern char** environ;

namespace {

struct Outcome {
    int exitCode;
    std::string out;
    std::string err;
};

std::string ReadText(const std::string& path)
{
    const std::vector<uint8_t> bytes = filetest::ReadBytes(path);
    return std::string(bytes.begin(), bytes.end());
}

class KaipTool : public ::testing::Test {
protected:
    std::string Path(const std::string& name) const { return m_dir / name; }

    // The tool's path and the arguments as an argv (pointing into args).
    static std::vector<char*> Argv(std::vector<std::string>& args)
    {
        args.insert(args.begin(), KAIP_TOOL_PATH);
        std::vector<char*> argv;
        for (std::string& arg : args) argv.push_back(arg.data());
        argv.push_back(nullptr);
        return argv;
    }

    // Runs the tool without a shell; standard output and error go to files in the scratch folder.
    Outcome Kaip(std::vector<std::string> args) const
    {
        std::vector<char*> argv = Argv(args);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, Path("stdout").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        posix_spawn_file_actions_addopen(&actions, 2, Path("stderr").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        pid_t pid = 0;
        int status = -1;
        if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0) waitpid(pid, &status, 0);
        posix_spawn_file_actions_destroy(&actions);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadText(Path("stdout")), ReadText(Path("stderr"))};
    }

    // Runs the tool on a terminal (standard output and error both on it) and returns what it showed.
    std::string KaipOnTerminal(std::vector<std::string> args) const
    {
        std::vector<char*> argv = Argv(args);
        int terminal = -1;
        pid_t pid = forkpty(&terminal, nullptr, nullptr, nullptr);
        if (pid == 0) {
            execv(argv[0], argv.data());
            _exit(127);
        }
        std::string shown;
        char buffer[4096];
        for (ssize_t got; (got = read(terminal, buffer, sizeof buffer)) > 0;) shown.append(buffer, size_t(got));
        close(terminal);
        waitpid(pid, nullptr, 0);
        return shown;
    }

    void WriteBytes(const std::string& name, const std::vector<uint8_t>& bytes) const
    {
        filetest::WriteBytes(Path(name), bytes);
    }

    filetest::TempDir m_dir;
};

// Random samples of the given depth as little-endian words (or bytes at 8 bits).
std::vector<uint8_t> RandomSamples(uint32_t count, uint32_t bits, uint32_t seed)
{
    std::mt19937 random(seed);
    std::vector<uint8_t> bytes;
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t value = random() & ((1u << bits) - 1);
        bytes.push_back(uint8_t(value));
        if (bits > 8) bytes.push_back(uint8_t(value >> 8));
    }
    return bytes;
}

// Pairs of 12-bit samples in three bytes: both high bytes around a byte of the two low nibbles.
std::vector<uint8_t> Pack12(const std::vector<uint8_t>& words)
{
    std::vector<uint8_t> packed;
    for (size_t i = 0; i + 3 < words.size(); i += 4) {
        uint32_t p0 = words[i] | words[i + 1] << 8, p1 = words[i + 2] | words[i + 3] << 8;
        packed.insert(packed.end(), {uint8_t(p0 >> 4), uint8_t((p0 & 15) | (p1 & 15) << 4), uint8_t(p1 >> 4)});
    }
    return packed;
}

// The tool's pipeline, called step by step: white balance and gamma in a LUT, the decoder (or a
// conversion for grey and colour sources), the saturation matrix and the sharpening kernel.
struct Steps {
    KaipStatus (*decode)(const KaipImgInfo*, KaipImgInfo*, uint32_t, uint32_t, KaipHLut);
    const uint32_t* wb;  // null: measured
    uint32_t gamma, saturation;
    int32_t sharpen;
};

void Reference(KaipImgInfo* source, const Steps& steps, Loaded* out)
{
    bool mosaic = steps.decode != nullptr;
    Loaded converted;
    KaipImgInfo* picture = mosaic ? source : &converted.info;
    bool grey = source->PixelFormat == KaipPixelFormat_Mono12;
    if (!mosaic) {
        ASSERT_EQ(KaipConvertToPixelFormat(source, picture, grey ? KaipPixelFormat_Mono8 : KaipPixelFormat_BGR8Packed,
                                           KaipOption_ReallocateDst),
                  KASTATUS_OK);
    }
    uint32_t wb[3] = {1000, 1000, 1000};
    if (steps.wb) std::copy(steps.wb, steps.wb + 3, wb);
    if (!steps.wb && !grey) {
        ASSERT_EQ(KaipCalcWbFactors(picture, &wb[0], &wb[1], &wb[2], 0), KASTATUS_OK);
    }
    uint32_t depth = source->PixelFormat == KaipPixelFormat_BayerRG8 || !mosaic ? KAIP_LUT_8BIT : KAIP_LUT_12BIT;
    KaipHLut lut = KaipAllocateLut(depth | (mosaic ? KAIP_LUT_BAYER | KAIP_LUT_BAYER_16 : 0));
    ASSERT_NE(lut, nullptr);
    KaipAddWbToLut(wb[0], wb[1], wb[2], lut);
    KaipAddGammaToLut(steps.gamma, lut);
    Loaded colour;
    if (mosaic) {
        ASSERT_EQ(steps.decode(source, &colour.info, KaipPixelFormat_BGR8Packed, KaipOption_ReallocateDst, lut),
                  KASTATUS_OK);
    } else {
        ASSERT_EQ(KaipApplyLut(picture, nullptr, lut, 0), KASTATUS_OK);
        std::swap(colour.info, converted.info);
    }
    KaipFreeLut(lut);
    int32_t matrix[9];
    if (steps.saturation != 100 && !grey) {
        KaipSetSaturationMatrix(steps.saturation, matrix);
        ASSERT_EQ(KaipApplyRgbColorCorrection(&colour.info, nullptr, matrix, 0, nullptr), KASTATUS_OK);
    }
    if (steps.sharpen == 0) return std::swap(out->info, colour.info);
    KaipSet3x3MatrixSharpening(steps.sharpen, matrix, 0);
    ASSERT_EQ(KaipConvertToPixelFormat(&colour.info, &out->info, colour.info.PixelFormat, KaipOption_ReallocateDst),
              KASTATUS_OK);
    ASSERT_EQ(KaipApply3x3Convolution(&colour.info, &out->info, matrix, 0, nullptr), KASTATUS_OK);
}

// Loads any of the three image files as the tool writes them, colour as BGR8Packed.
void LoadBack(const std::string& path, uint32_t format, Loaded* picture)
{
    std::string extension = fs::path(path).extension().string();
    if (extension == ".bmp") {
        ASSERT_EQ(KaipLoadFromBmp(path.c_str(), &picture->info, KaipBmpOption_BottomUpFile), KASTATUS_OK);
    } else if (extension == ".tif") {
        picture->info.PixelFormat = KaipPixelFormat_RGB8Packed;
        ASSERT_EQ(KaipLoadFromTiff(path.c_str(), &picture->info), KASTATUS_OK);
        if (picture->info.PixelFormat == format) return;
        Loaded bgr;
        ASSERT_EQ(KaipConvertToPixelFormat(&picture->info, &bgr.info, format, KaipOption_ReallocateDst), KASTATUS_OK);
        std::swap(picture->info, bgr.info);
    } else {
        ASSERT_EQ(KaipLoadFromJpeg(path.c_str(), &picture->info, KaipOption_ReallocateDst | KaipJpegOption_BGR),
                  KASTATUS_OK);
    }
}

void ExpectSamePixels(const KaipImgInfo& expected, const KaipImgInfo& actual)
{
    ASSERT_EQ(actual.Width, expected.Width);
    ASSERT_EQ(actual.Height, expected.Height);
    ASSERT_EQ(actual.PixelFormat, expected.PixelFormat);
    uint32_t lineBytes = expected.Width * expected.PixelIncrement;
    for (uint32_t y = 0; y < expected.Height; ++y)
        ASSERT_EQ(std::memcmp(expected.pData + y * expected.LineIncrement, actual.pData + y * actual.LineIncrement,
                              lineBytes),
                  0)
            << "line " << y;
}

// The demo's stages and files; its raw dump, processed with the demo's settings, gives the demo's picture.
TEST_F(KaipTool, DemoWritesFilesThatLoadBackAndARawDumpThatDevelopsAlike)
{
    Outcome run = Kaip({"demo", "--size", "96x64", "--bits", "8", "--pattern", "GB", "--out", Path("demo")});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    for (const char* stage : {"synthesise chart", "measure white balance", "demosaic bilinear", "saturation 130%",
                              "sharpen 30", "save BMP", "save TIFF", "save JPEG", "MP/s"})
        EXPECT_NE(run.out.find(stage), std::string::npos) << stage << " missing from\n" << run.out;
    for (const char* name : {"demo.bmp", "demo.tif", "demo.jpg"}) {
        Loaded picture;
        LoadBack(Path("demo/") + name, KaipPixelFormat_BGR8Packed, &picture);
        EXPECT_EQ(picture.info.Width, 96u) << name;
        EXPECT_EQ(picture.info.Height, 64u) << name;
        EXPECT_NE(run.out.find(Path("demo/") + name), std::string::npos) << "where " << name << " went";
    }
    EXPECT_EQ(fs::file_size(Path("demo/demo.BayerGB8.96x64.raw")), 96u * 64);
    run = Kaip({"process", Path("demo/demo.BayerGB8.96x64.raw"), "--gamma", "2.2", "--saturation", "130", "--sharpen",
                "30", "--out", Path("again.bmp")});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    Loaded demo, again;
    LoadBack(Path("demo/demo.bmp"), KaipPixelFormat_BGR8Packed, &demo);
    LoadBack(Path("again.bmp"), KaipPixelFormat_BGR8Packed, &again);
    ExpectSamePixels(demo.info, again.info);
}

struct ProcessCase {
    const char* name;
    uint32_t format;  // of the samples the reference decodes
    const char* dumpFormat;
    bool packed;  // the dump holds the samples as 12-bit pairs in three bytes
    std::vector<std::string> options;
    Steps steps;
    const char* output;
};

const uint32_t kFixedWb[3] = {1500, 1000, 1250};

TEST_F(KaipTool, ProcessGivesThePixelsOfTheLibraryCalledDirectly)
{
    // clang-format off
    const std::vector<ProcessCase> cases = {
        {"bilinear, measured wb", KaipPixelFormat_BayerGB12, "BayerGB12", false,
         {"--gamma", "2.2", "--saturation", "140", "--sharpen", "40"},
         {KaipBdBilinearInterpolation, nullptr, 2200, 140, 40}, "out.bmp"},
        {"nearest neighbour, given wb", KaipPixelFormat_BayerRG8, "BayerRG8", false,
         {"--decoder", "nn", "--wb", "1.5,1,1.25", "--saturation", "60"},
         {KaipBdNearestNeighbour, kFixedWb, 1000, 60, 0}, "out.tif"},
        {"packed mosaic", KaipPixelFormat_BayerBG12, "BayerBG12Packed", true,
         {"--sharpen", "-50", "--gamma", "0.8"}, {KaipBdBilinearInterpolation, nullptr, 800, 100, -50}, "out.bmp"},
        {"variable gradients", KaipPixelFormat_BayerGR12, "BayerGR12", false,
         {"--decoder", "vng", "--gamma", "2.2"}, {KaipBdVariableGradients, nullptr, 2200, 100, 0}, "out.bmp"},
        {"pixel grouping", KaipPixelFormat_BayerRG8, "BayerRG8", false,
         {"--decoder", "ppg", "--saturation", "120"}, {KaipBdPixelGrouping, nullptr, 1000, 120, 0}, "out.bmp"},
        {"gradient-corrected bilinear", KaipPixelFormat_BayerBG12, "BayerBG12", false,
         {"--decoder", "hq"}, {KaipBdBilinearColorCorrection, nullptr, 1000, 100, 0}, "out.bmp"},
        {"grey", KaipPixelFormat_Mono12, "Mono12", false,
         {"--gamma", "1.8", "--sharpen", "20"}, {nullptr, nullptr, 1800, 100, 20}, "out.bmp"},
        {"colour", KaipPixelFormat_RGB8Packed, "RGB8Packed", false,
         {"--saturation", "150"}, {nullptr, nullptr, 1000, 150, 0}, "out.bmp"},
    };
    // clang-format on
    const uint32_t width = 38, height = 26;
    uint32_t seed = 1;
    for (const ProcessCase& c : cases) {
        SCOPED_TRACE(std::string(c.name) + ", seed " + std::to_string(seed));
        uint32_t bits = c.format == KaipPixelFormat_BayerRG8 ? 8 : 12;
        uint32_t samples = c.format == KaipPixelFormat_RGB8Packed ? 3 : 1;
        std::vector<uint8_t> bytes = RandomSamples(width * height * samples, samples == 3 ? 8 : bits, seed++);
        WriteBytes("frame.raw", c.packed ? Pack12(bytes) : bytes);
        std::vector<std::string> args = {"process", Path("frame.raw"), "--format", c.dumpFormat,
                                         "--size",  "38x26",           "--out",    Path(c.output)};
        args.insert(args.end(), c.options.begin(), c.options.end());
        Outcome run = Kaip(args);
        ASSERT_EQ(run.exitCode, 0) << run.err;
        KaipImgInfo source{};
        ASSERT_EQ(KaipInitImgInfo(&source, width, height, c.format, 0), KASTATUS_OK);
        source.pData = bytes.data();
        Loaded expected, actual;
        Reference(&source, c.steps, &expected);
        LoadBack(Path(c.output), expected.info.PixelFormat, &actual);
        ExpectSamePixels(expected.info, actual.info);
    }
}

// A folder is processed file by file, outputs named after the inputs; the progress bar shows on a
// terminal for several files only, never in a pipe.
TEST_F(KaipTool, ProcessTakesFoldersAndShowsProgressOnATerminal)
{
    fs::create_directory(Path("in"));
    for (const char* name : {"in/a.BayerRG8.16x8.raw", "in/b.BayerRG8.16x8.raw"})
        WriteBytes(name, RandomSamples(16 * 8, 8, 7));
    Outcome run = Kaip({"process", Path("in"), "--out", Path("pictures"), "--ext", "jpg"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(fs::exists(Path("pictures/a.BayerRG8.16x8.jpg")));
    EXPECT_TRUE(fs::exists(Path("pictures/b.BayerRG8.16x8.jpg")));
    EXPECT_NE(KaipOnTerminal({"process", Path("in/a.BayerRG8.16x8.raw"), Path("in/b.BayerRG8.16x8.raw")}).find("] 2/2"),
              std::string::npos);
    EXPECT_EQ(KaipOnTerminal({"process", Path("in/a.BayerRG8.16x8.raw")}).find("] 1/1"), std::string::npos);
}

struct CommandCase {
    std::vector<std::string> args;
    int exitCode;
    std::vector<std::string> lines;  // on standard output for exit code 0, else on standard error; "!": absent
    std::string file = "";           // a file the command writes, with these bytes
    std::vector<uint8_t> bytes = {};
};

// Each command's answer: what it prints and writes, or for a failure the step, the reason and the exit
// code. The conversions run in order: raw grey through TIFF and BMP back to raw, and mosaics unpacked.
TEST_F(KaipTool, CommandsAnswerWithTheirLinesAndExitCodes)
{
    const std::vector<uint8_t> grey = RandomSamples(20 * 10, 8, 3), words = RandomSamples(20 * 10, 12, 5);
    WriteBytes("grey.raw", grey);
    WriteBytes("packed.raw", Pack12(words));
    WriteBytes("deep.raw", words);
    // Mono8 to Mono16 shifts left by 8; a 16-bit mosaic keeps its top 12 bits, of which Mono8 keeps the top 8.
    std::vector<uint8_t> wide, top;
    for (size_t i = 0; i < grey.size(); ++i) wide.insert(wide.end(), {0, grey[i]}), top.push_back(words[2 * i + 1]);
    WriteBytes("short.raw", std::vector<uint8_t>(100));
    WriteBytes("tiny.raw", std::vector<uint8_t>(4));
    WriteBytes("bad.bmp", std::vector<uint8_t>(80, 'x'));
    // Red sites 100, green 200, blue 50: the measured factors are 2000 and 4000.
    std::vector<uint8_t> mosaic(8 * 4);
    for (uint32_t y = 0; y < 4; ++y)
        for (uint32_t x = 0; x < 8; ++x) mosaic[y * 8 + x] = (x & 1) != (y & 1) ? 200 : (y & 1) ? 50 : 100;
    WriteBytes("chart.BayerRG8.8x4.raw", mosaic);
    const std::string shortRaw = Path("short.raw");
    // clang-format off
    std::vector<CommandCase> cases = {
        {{"convert", Path("grey.raw"), Path("grey.tif"), "--in-format", "Mono8", "--size", "20x10"}, 0, {}},
        {{"convert", Path("grey.tif"), Path("grey.bmp")}, 0, {}},
        {{"convert", Path("grey.bmp"), Path("back.raw")}, 0, {"Mono8 20x10"}, "back.raw", grey},
        {{"convert", Path("grey.bmp"), Path("wide.raw"), "--format", "Mono16"}, 0, {}, "wide.raw", wide},
        {{"convert", Path("packed.raw"), Path("words.raw"), "--in-format", "BayerGR12Packed", "--size", "20x10",
          "--format", "BayerGR12"}, 0, {}, "words.raw", words},
        {{"convert", Path("deep.raw"), Path("top.raw"), "--in-format", "BayerGR16", "--size", "20x10", "--format",
          "Mono8"}, 0, {}, "top.raw", top},
        {{"info", Path("chart.BayerRG8.8x4.raw")}, 0,
         {"8 x 4", "BayerRG8 (0x01080009)", "R                 100      100     100.00",
          "G                 200      200     200.00", "B                  50       50      50.00", "R 2000  G 1000  B 4000"}},
        {{"formats", "Mono10Packed"}, 0, {"converts to Mono8 Mono10 Mono12 Mono16 BGR8Packed", "!BayerRG8 "}},
        {{"--help"}, 0, {"Usage"}},
        {{"process", shortRaw, "--format", "BayerRG12", "--size", "8x8"}, 1,
         {"short.raw has 100 bytes, but BayerRG12 at 8x8 takes 128 bytes"}},
        {{"process", shortRaw, "--format", "BayerXY12", "--size", "8x8"}, 2, {"unknown pixel format BayerXY12"}},
        {{"process", shortRaw, "--format", "Mono8", "--size", "10"}, 2, {"expected WxH"}},
        {{"process", shortRaw, "--size", "10x10"}, 2, {"without a pixel format"}},
        {{"process", Path("missing.raw"), "--format", "Mono8", "--size", "10x10"}, 1, {"cannot read", "missing.raw"}},
        {{"process", shortRaw, "--format", "BayerRG8", "--size", "10x10", "--decoder", "ahd"}, 2, {"--decoder"}},
        {{"process", shortRaw, "--format", "BayerRG8", "--size", "10x10", "--wb", "1,x,2"}, 2, {"--wb"}},
        {{"process", Path("tiny.raw"), "--format", "BayerRG8", "--size", "1x4"}, 1,
         {"demosaicing with KaipBdBilinearInterpolation failed: ", "(status 100012)"}},
        {{"convert", Path("bad.bmp"), Path("x.tif")}, 1, {"loading the BMP file", "(status 1000"}},
        {{"convert", shortRaw, Path("x.raw"), "--in-format", "Mono8", "--size", "10x10", "--format", "Mono10Packed"}, 1,
         {"converts nothing from Mono8 to Mono10Packed"}},
        {{"info"}, 2, {"FILE is required"}},
        {{}, 2, {"subcommand"}},
    };
    // clang-format on
    for (const char* command : {"demo", "process", "convert", "info", "formats"})
        cases.push_back({{command, "--help"}, 0, {"Usage"}});
    for (const CommandCase& c : cases) {
        Outcome run = Kaip(c.args);
        const std::string command = c.args.empty() ? "(none)" : c.args[0] + " " + (c.args.size() > 1 ? c.args[1] : "");
        EXPECT_EQ(run.exitCode, c.exitCode) << command << "\n" << run.err;
        const std::string& shown = c.exitCode ? run.err : run.out;
        for (const std::string& line : c.lines) {
            const bool absent = line[0] == '!';
            EXPECT_EQ(shown.find(absent ? line.substr(1) : line) == std::string::npos, absent)
                << command << ": " << line << " in\n"
                << shown;
        }
        EXPECT_EQ(c.file.empty() ? c.bytes : filetest::ReadBytes(Path(c.file)), c.bytes) << command;
    }
}

}  // namespace
