// ini_test.cpp: the ini reader on good, odd and hostile files.
#include "platform/ini.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <string>

namespace {

class IniFile {
public:
    explicit IniFile(const std::string& text)
    {
        std::ofstream(m_path, std::ios::binary) << text;
        m_hIni = KaIniOpen(";");
        m_loaded = KaIniLoad(m_hIni, m_path.c_str());
    }
    ~IniFile()
    {
        KaIniClose(m_hIni);
        unlink(m_path.c_str());
    }
    int Get(const char* section, const char* key, int def = -7)
    {
        return KaIniGetInteger(m_hIni, section, key, def, 1);
    }
    int loaded() const { return m_loaded; }

private:
    std::string m_path = "/tmp/kaip_ini_test_" + std::to_string(getpid());
    KaIniHandle m_hIni;
    int m_loaded;
};

TEST(Ini, ReadsSectionsKeysAndIntegers)
{
    IniFile ini(
        "; the kit's settings\n"
        "[Processing.Options]\n"
        "  SIMD.Level =  4   \n"
        "MP.Level=0x10 ; hexadecimal\r\n"
        "Negative = -12\n"
        "Octal-looking = 010\n"
        "Text = four\n"
        "Empty =\n"
        "Overflow = 99999999999\n"
        "[ Other ]\n"
        "SIMD.Level = 2\n"
        "simd.level = 3\n");
    ASSERT_TRUE(ini.loaded());
    EXPECT_EQ(ini.Get("Processing.Options", "SIMD.Level"), 4);
    EXPECT_EQ(ini.Get("Processing.Options", "MP.Level"), 16);
    EXPECT_EQ(ini.Get("Processing.Options", "Negative"), -12);
    EXPECT_EQ(ini.Get("Processing.Options", "Octal-looking"), 10);
    EXPECT_EQ(ini.Get("Processing.Options", "Text"), -7);
    EXPECT_EQ(ini.Get("Processing.Options", "Empty"), -7);
    EXPECT_EQ(ini.Get("Processing.Options", "Overflow"), -7);
    EXPECT_EQ(ini.Get("Processing.Options", "Missing"), -7);
    EXPECT_EQ(ini.Get("Other", "SIMD.Level"), 3);  // names ignore case; the last one wins
    EXPECT_EQ(ini.Get("Missing", "SIMD.Level", 1), 1);
}

TEST(Ini, HostileFilesLoadWhatTheyCan)
{
    const std::string cases[] = {
        "",
        "[",
        "[unterminated\nkey=1\n",
        "=5\n[Processing.Options]\n=\n==\n",
        std::string("[Processing.Options]\nSIMD.Level=3\0garbage\n", 38),
        std::string(3u << 20, 'x') + "\n[Processing.Options]\nSIMD.Level=3\n",
        "[Processing.Options]\nSIMD.Level=" + std::string(100000, '9') + "\n",
        std::string(200000, '['),
    };
    for (const std::string& text : cases) {
        IniFile ini(text);
        EXPECT_TRUE(ini.loaded());
        const int level = ini.Get("Processing.Options", "SIMD.Level", 1);
        EXPECT_TRUE(level == 1 || level == 3);
    }
}

TEST(Ini, MissingFilesAndNullArguments)
{
    KaIniHandle h = KaIniOpen(";");
    EXPECT_EQ(KaIniLoad(h, "/nonexistent/dir/file.ini"), 0);
    EXPECT_EQ(KaIniLoad(h, nullptr), 0);
    EXPECT_EQ(KaIniGetInteger(h, "a", "b", 5, 1), 5);
    EXPECT_EQ(KaIniGetInteger(nullptr, "a", "b", 6, 1), 6);
    EXPECT_EQ(KaIniGetInteger(h, nullptr, "b", 6, 1), 6);
    KaIniClose(h);
    KaIniClose(nullptr);
    EXPECT_EQ(KaOsGetFileModificationTime("/nonexistent"), 0);
    EXPECT_GT(KaOsGetFileModificationTime("/"), 0);
}

}  // namespace
