// commands.h: the options and the entry points of kaip's commands.
#pragma once

#include <string>
#include <vector>

namespace kaip {

// Pipeline settings as typed: gamma and white-balance gains as plain numbers (2.2; 1.8,1,1.4).
struct PipelineOptions {
    std::string decoder = "bilinear";
    std::string wb = "auto";
    double gamma = 1.0;
    unsigned saturation = 100;
    int sharpen = 0;
};

struct DemoOptions {
    std::string size = "2448x2048";
    std::string out = "out/demo";
    unsigned bits = 12;
    std::string pattern = "RG";
    unsigned quality = 90;
    PipelineOptions pipeline{"bilinear", "auto", 2.2, 130, 30};
};

struct ProcessOptions {
    std::vector<std::string> inputs;
    std::string format;
    std::string size;
    std::string out;
    std::string ext = "bmp";
    unsigned quality = 90;
    bool timings = false;
    PipelineOptions pipeline;
};

struct ConvertOptions {
    std::string input;
    std::string output;
    std::string format;    // pixel format of the output
    std::string inFormat;  // a raw input's pixel format
    std::string size;      // a raw input's size
    unsigned quality = 90;
};

struct InfoOptions {
    std::vector<std::string> files;
    std::string format;
    std::string size;
};

struct FormatsOptions {
    std::vector<std::string> names;
};

// Each returns the exit code; failures are thrown as ToolError.
int RunDemo(const DemoOptions& options);
int RunProcess(const ProcessOptions& options);
int RunConvert(const ConvertOptions& options);
int RunInfo(const InfoOptions& options);
int RunFormats(const FormatsOptions& options);

}  // namespace kaip
