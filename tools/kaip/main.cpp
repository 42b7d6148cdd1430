// main.cpp: kaip's command line: the commands, their options and the exit codes.
#include <CLI/CLI.hpp>
#include <cstdio>

#include "commands.h"
#include "formats.h"
#include "image.h"
#include "pipeline.h"

namespace {

using namespace kaip;

const CLI::Validator kSize(
    [](std::string& text) {
        uint32_t width, height;
        return ParseSize(text, &width, &height) ? std::string() : "expected WxH such as 2448x2048, not " + text;
    },
    "WxH");

const CLI::Validator kFormat(
    [](std::string& name) {
        return FindFormat(name) ? std::string() : "unknown pixel format " + name + " (kaip formats lists them)";
    },
    "NAME");

std::vector<std::string> DecoderNames()
{
    std::vector<std::string> names;
    for (const Decoder& decoder : AllDecoders()) names.push_back(decoder.name);
    return names;
}

void AddPipelineOptions(CLI::App* command, PipelineOptions* options)
{
    command->add_option("--decoder", options->decoder, "Bayer decoder")
        ->check(CLI::IsMember(DecoderNames()))
        ->capture_default_str();
    command->add_option("--wb", options->wb, "white balance: auto (measured) or gains R,G,B such as 1.8,1,1.4")
        ->capture_default_str();
    command->add_option("--gamma", options->gamma, "gamma of the LUT (2.2 brightens the mid-tones)")
        ->check(CLI::Range(0.01, 100.0))
        ->capture_default_str();
    command->add_option("--saturation", options->saturation, "colour saturation in percent (100 = unchanged)")
        ->check(CLI::Range(0u, 1000u))
        ->capture_default_str();
    command->add_option("--sharpen", options->sharpen, "sharpening -100 (smooth) .. 100 (sharpen), 0 = off")
        ->check(CLI::Range(-100, 100))
        ->capture_default_str();
}

CLI::App* AddDemo(CLI::App& app, DemoOptions* options)
{
    CLI::App* demo = app.add_subcommand("demo", "Synthesise a raw colour chart and run the camera pipeline on it");
    demo->add_option("--size", options->size, "frame size")->check(kSize)->capture_default_str();
    demo->add_option("--out", options->out, "folder for the raw dump and the BMP, TIFF and JPEG files")
        ->capture_default_str();
    demo->add_option("--bits", options->bits, "bits of the mosaic")
        ->check(CLI::IsMember({8u, 12u}))
        ->capture_default_str();
    demo->add_option("--pattern", options->pattern, "Bayer pattern")
        ->check(CLI::IsMember({"RG", "GR", "GB", "BG"}))
        ->capture_default_str();
    demo->add_option("--quality", options->quality, "JPEG quality")->check(CLI::Range(0u, 100u))->capture_default_str();
    AddPipelineOptions(demo, &options->pipeline);
    return demo;
}

CLI::App* AddProcess(CLI::App& app, ProcessOptions* options)
{
    CLI::App* process = app.add_subcommand(
        "process", "Develop raw frame dumps (Bayer mosaics or any format the library converts) into pictures");
    process->add_option("INPUT", options->inputs, "raw dumps, folders of them or quoted globs")->required();
    process->add_option("--format", options->format, "pixel format of the dumps (else from the file name)")
        ->check(kFormat);
    process->add_option("--size", options->size, "size of the dumps (else from the file name)")->check(kSize);
    process->add_option("--out", options->out, "output file (.bmp, .tif, .jpg) or folder (default: beside the input)");
    process->add_option("--ext", options->ext, "output type when --out is a folder")
        ->check(CLI::IsMember({"bmp", "tif", "jpg"}))
        ->capture_default_str();
    process->add_option("--quality", options->quality, "JPEG quality")
        ->check(CLI::Range(0u, 100u))
        ->capture_default_str();
    process->add_flag("--timings", options->timings, "print each stage's time");
    AddPipelineOptions(process, &options->pipeline);
    return process;
}

CLI::App* AddConvert(CLI::App& app, ConvertOptions* options)
{
    CLI::App* convert = app.add_subcommand("convert", "Convert between BMP, TIFF, JPEG and raw dumps");
    convert->add_option("IN", options->input, "input file (.bmp, .tif, .jpg, anything else is raw)")->required();
    convert->add_option("OUT", options->output, "output file (.bmp, .tif, .jpg, anything else is raw)")->required();
    convert->add_option("--format", options->format, "convert to this pixel format before saving")->check(kFormat);
    convert->add_option("--in-format", options->inFormat, "pixel format of a raw input (else from its name)")
        ->check(kFormat);
    convert->add_option("--size", options->size, "size of a raw input (else from its name)")->check(kSize);
    convert->add_option("--quality", options->quality, "JPEG quality")
        ->check(CLI::Range(0u, 100u))
        ->capture_default_str();
    return convert;
}

CLI::App* AddInfo(CLI::App& app, InfoOptions* options)
{
    CLI::App* info =
        app.add_subcommand("info", "Size, pixel format, per-channel min/max/mean and measured white balance of files");
    info->add_option("FILE", options->files, "images or raw dumps")->required();
    info->add_option("--format", options->format, "pixel format of raw dumps (else from the file name)")
        ->check(kFormat);
    info->add_option("--size", options->size, "size of raw dumps (else from the file name)")->check(kSize);
    return info;
}

CLI::App* AddFormats(CLI::App& app, FormatsOptions* options)
{
    CLI::App* formats = app.add_subcommand("formats", "The pixel formats and the conversions the library supports");
    formats->add_option("NAME", options->names, "only these formats")->check(kFormat);
    return formats;
}

}  // namespace

int main(int argc, char** argv)
{
    CLI::App app{"kaip: raw machine-vision camera frames into pictures and measurements, through libpm.imgproc",
                 "kaip"};
    app.footer(
        "Exit codes: 0 done, 1 the work failed (file or library error), 2 wrong command line.\n"
        "Run kaip COMMAND --help for a command's options.");
    app.require_subcommand(1, 1);
    DemoOptions demo;
    ProcessOptions process;
    ConvertOptions convert;
    InfoOptions info;
    FormatsOptions formats;
    CLI::App* commands[] = {AddDemo(app, &demo), AddProcess(app, &process), AddConvert(app, &convert),
                            AddInfo(app, &info), AddFormats(app, &formats)};
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    try {
        if (*commands[0]) return RunDemo(demo);
        if (*commands[1]) return RunProcess(process);
        if (*commands[2]) return RunConvert(convert);
        if (*commands[3]) return RunInfo(info);
        return RunFormats(formats);
    } catch (const ToolError& error) {
        std::fprintf(stderr, "kaip: %s\n", error.what());
        return error.ExitCode();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kaip: %s\n", error.what());
        return 1;
    }
}
