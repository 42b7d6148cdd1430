// log_capture.h: sends the library log to a temporary file at debug level for one test's lifetime.
#pragma once

#include <string>
#include <vector>

class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // The lines written so far, without the service's prefix ("ImgProc [debug] ").
    std::vector<std::string> Lines() const;
    // Full lines, prefix included.
    std::vector<std::string> RawLines() const;

private:
    std::string m_path;
};
