// kalog_test.cpp: log levels, the file destination, verbatim lines, and whole lines from many threads.
#include "platform/kalog.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "core/log.h"
#include "support/log_capture.h"

namespace {

TEST(Kalog, LevelsDecideWhatIsWritten)
{
    const struct {
        const char* level;
        bool fatal, debug;
    } cases[] = {{"off", false, false}, {"0", false, false}, {"fatal", true, false}, {"1", true, false},
                 {"debug", true, true}, {"16", true, true},  {"bogus", true, false}};
    for (const auto& c : cases) {
        LogCapture log;
        setenv("KAIP_LOG_LEVEL", c.level, 1);
        kalog_Reconfigure();
        Log.Debug("%s: debug %d", "F", 1);
        Log.Fatal("%s: fatal %d", "F", 2);
        std::vector<std::string> expected;
        if (c.debug) expected.push_back("F: debug 1");
        if (c.fatal) expected.push_back("F: fatal 2");
        EXPECT_EQ(log.Lines(), expected) << c.level;
    }
}

TEST(Kalog, LinesHoldTheMessageVerbatim)
{
    LogCapture log;
    Log.Debug("SSEChecker:: SSE2:%1d MP:%d\n", 1, 9);
    EXPECT_EQ(Refuse(100001, "%s: pImgInfo is NULL!", "KaipInitImgInfo"), 100001);
    const auto raw = log.RawLines();
    ASSERT_EQ(raw.size(), 2u);
    EXPECT_EQ(raw[0], "ImgProc [debug] SSEChecker:: SSE2:1 MP:9");
    EXPECT_EQ(raw[1], "ImgProc [debug] KaipInitImgInfo: pImgInfo is NULL!");
}

TEST(Kalog, ConcurrentLinesNeverInterleave)
{
    LogCapture log;
    constexpr int kThreads = 8, kLines = 200;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([t] {
            const std::string text(100 + t * 37, char('a' + t));
            for (int i = 0; i < kLines; ++i) Log.Debug("%d:%s", t, text.c_str());
        });
    for (auto& thread : threads) thread.join();
    const auto lines = log.Lines();
    ASSERT_EQ(lines.size(), size_t(kThreads * kLines));
    for (const std::string& line : lines) {
        const int t = line[0] - '0';
        EXPECT_EQ(line, std::to_string(t) + ":" + std::string(100 + t * 37, char('a' + t)));
    }
}

}  // namespace
