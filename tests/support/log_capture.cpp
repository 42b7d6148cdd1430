// log_capture.cpp: redirects the log service to a temporary file and reads it back.
#include "support/log_capture.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "platform/kalog.h"

LogCapture::LogCapture()
{
    char path[] = "/tmp/kaip_log_XXXXXX";
    const int fd = mkstemp(path);
    if (fd >= 0) close(fd);
    m_path = path;
    setenv("KAIP_LOG_FILE", m_path.c_str(), 1);
    setenv("KAIP_LOG_LEVEL", "debug", 1);
    kalog_Reconfigure();
}

LogCapture::~LogCapture()
{
    unsetenv("KAIP_LOG_FILE");
    setenv("KAIP_LOG_LEVEL", "off", 1);
    kalog_Reconfigure();
    unlink(m_path.c_str());
}

std::vector<std::string> LogCapture::RawLines() const
{
    std::vector<std::string> lines;
    std::ifstream in(m_path);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

std::vector<std::string> LogCapture::Lines() const
{
    std::vector<std::string> lines = RawLines();
    for (std::string& line : lines) {
        const size_t end = line.find("] ");
        if (end != std::string::npos) line.erase(0, end + 2);
    }
    return lines;
}
