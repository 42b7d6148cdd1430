// unidef_test.cpp: the SIMD switches and their log lines, each read by a child process at load time.
#include "core/unidef.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "platform/cpu.h"

namespace {

// In a child started by the tests below this "test" reports the checker of that process.
TEST(SSECheckerChild, Report)
{
    const char* out = std::getenv("KAIP_TEST_CHECKER_OUT");
    if (!out) GTEST_SKIP() << "runs only as a child of the SSEChecker tests";
    const SSEChecker& c = g_SSEChecker;
    std::ofstream(out) << c.m_bUseSSE2 << c.m_bUseSSSE3 << c.m_bUseSSE4 << c.m_bUseAVX << c.m_bUseNEON << ' '
                       << c.m_iSIMDLevel << ' ' << c.m_iMPLevel << ' ' << c.m_iEffectiveMPLevel << ' ' << c.m_szIniFile
                       << '\n';
}

struct TChildResult {
    std::string report;
    std::vector<std::string> log;
};

std::string TempPath(const char* stem)
{
    return std::string("/tmp/kaip_") + stem + "_" + std::to_string(getpid());
}

// Runs this executable again with the given ini text (or none) as its configuration.
TChildResult RunChild(const char* iniText)
{
    const std::string ini = TempPath("ini"), report = TempPath("report"), log = TempPath("log");
    if (iniText) std::ofstream(ini) << iniText;
    const pid_t pid = fork();
    if (pid == 0) {
        setenv("KAIP_INI_FILE", iniText ? ini.c_str() : "/nonexistent/kaip.ini", 1);
        setenv("KAIP_TEST_CHECKER_OUT", report.c_str(), 1);
        setenv("KAIP_LOG_LEVEL", "debug", 1);
        setenv("KAIP_LOG_FILE", log.c_str(), 1);
        execl("/proc/self/exe", "child", "--gtest_filter=SSECheckerChild.Report", static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    TChildResult result;
    std::ifstream reportIn(report), logIn(log);
    std::getline(reportIn, result.report);
    for (std::string line; std::getline(logIn, line);)
        if (line.find("SSEChecker") != std::string::npos) result.log.push_back(line.substr(line.find("] ") + 2));
    unlink(ini.c_str());
    unlink(report.c_str());
    unlink(log.c_str());
    return result;
}

std::string Switches(bool sse2, bool ssse3, bool sse4, bool avx)
{
    return std::to_string(sse2) + std::to_string(ssse3) + std::to_string(sse4) + std::to_string(avx) + "0";
}

TEST(SSEChecker, LevelsFromTheIniFile)
{
    const bool sse2 = pmSSE2Supported(), ssse3 = pmSSSE3Supported(), sse4 = pmSSE42Supported(), avx = pmAVXSupported();
    const struct {
        const char* ini;
        std::string switches;
        int simd, mp, effective;
        bool configLine;
    } cases[] = {
        {nullptr, Switches(sse2, false, false, false), 1, 1, 1, false},
        {"[Processing.Options]\nSIMD.Level=0\n", Switches(false, false, false, false), 0, 1, 1, true},
        {"[Processing.Options]\nSIMD.Level = 2\n", Switches(sse2, ssse3, false, false), 2, 1, 1, true},
        {"; comment\n[Processing.Options]\n  SIMD.Level = 3 \n", Switches(sse2, ssse3, sse4, false), 3, 1, 1, true},
        {"[Processing.Options]\nSIMD.Level=4\nMP.Level=9\n", Switches(sse2, ssse3, sse4, avx), 4, 9, 4, true},
        {"[Other]\nSIMD.Level=4\n", Switches(sse2, false, false, false), 1, 1, 1, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.ini ? c.ini : "no ini file");
        const TChildResult child = RunChild(c.ini);
        ASSERT_FALSE(child.report.empty());
        EXPECT_EQ(child.report.substr(0, 5), c.switches);
        EXPECT_EQ(child.report.substr(6, child.report.find(" /") - 6),
                  std::to_string(c.simd) + " " + std::to_string(c.mp) + " " + std::to_string(c.effective));
        std::vector<std::string> expected;
        if (c.configLine)
            expected.push_back("SSEChecker::SSEReadConfiguration: SSEMode=" + std::to_string(c.simd) +
                               " MPMode=" + std::to_string(c.mp));
        const std::string& s = c.switches;
        expected.push_back(std::string("SSEChecker:: SSE2:") + s[0] + " SSSE3:" + s[1] + " SSE4:" + s[2] +
                           " AVX:" + s[3] + " NEON:0 MP:" + std::to_string(c.mp));
        EXPECT_EQ(child.log, expected);
    }
}

}  // namespace
