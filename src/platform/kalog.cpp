// kalog.cpp: the log service: one whole line per call, to standard error or an appended file.
#include "platform/kalog.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

namespace {

struct TLogService {
    std::mutex mutex;
    std::atomic<int> iLevel{KALOG_FATAL};  // highest level written; 0 writes nothing
    int fd = STDERR_FILENO;
    std::vector<std::string> names;  // handle h names names[h - 1]

    TLogService() { Configure(); }

    void Configure()
    {
        iLevel = ParseLevel(std::getenv("KAIP_LOG_LEVEL"));
        if (fd != STDERR_FILENO) close(fd);
        fd = STDERR_FILENO;
        const char* path = std::getenv("KAIP_LOG_FILE");
        if (path && *path) {
            const int file = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
            if (file >= 0) fd = file;
        }
    }

    static int ParseLevel(const char* text)
    {
        if (!text) return KALOG_FATAL;
        if (!std::strcmp(text, "off") || !std::strcmp(text, "0")) return 0;
        if (!std::strcmp(text, "debug") || !std::strcmp(text, "16")) return KALOG_DEBUG;
        return KALOG_FATAL;
    }
};

TLogService& Service()
{
    static TLogService* s_pService = new TLogService;  // lives until the process ends
    return *s_pService;
}

const char* LevelName(int iLevel)
{
    return iLevel == KALOG_FATAL ? "fatal" : "debug";
}

}  // namespace

uint32_t kalog_Register(const char* pszName, const char* /*pszSecond*/, int /*iFlags*/)
{
    TLogService& service = Service();
    std::lock_guard<std::mutex> lock(service.mutex);
    service.names.emplace_back(pszName ? pszName : "");
    return uint32_t(service.names.size());
}

int kalog_Enabled(uint64_t /*hLog*/, int iLevel)
{
    const TLogService& service = Service();
    const int configured = service.iLevel.load(std::memory_order_relaxed);
    return iLevel > 0 && configured > 0 && iLevel <= configured;
}

void kalog_WriteArgList(uint64_t hLog, int iLevel, uint32_t* /*pdwState*/, const char* pszFormat, va_list args)
{
    if (!pszFormat || !kalog_Enabled(hLog, iLevel)) return;
    TLogService& service = Service();
    va_list copy;
    va_copy(copy, args);
    const int length = std::vsnprintf(nullptr, 0, pszFormat, copy);
    va_end(copy);
    if (length < 0) return;
    std::string message(size_t(length) + 1, '\0');
    std::vsnprintf(&message[0], message.size(), pszFormat, args);
    message.resize(size_t(length));
    while (!message.empty() && message.back() == '\n') message.pop_back();

    std::lock_guard<std::mutex> lock(service.mutex);
    const std::string name = (hLog >= 1 && hLog <= service.names.size()) ? service.names[hLog - 1] : "";
    const std::string line = name + " [" + LevelName(iLevel) + "] " + message + "\n";
    for (size_t done = 0; done < line.size();) {
        const ssize_t n = write(service.fd, line.data() + done, line.size() - done);
        if (n <= 0) break;
        done += size_t(n);
    }
}

void kalog_Reconfigure()
{
    TLogService& service = Service();
    std::lock_guard<std::mutex> lock(service.mutex);
    service.Configure();
}
