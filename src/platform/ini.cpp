// ini.cpp: a small, defensive reader of the kit's ini file (sections, keys, comments, integers).
#include "platform/ini.h"

#include <sys/stat.h>

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>

namespace {

// Files are read up to this size; a larger one is taken as far as it goes.
constexpr size_t kMaxIniBytes = 1u << 20;

struct TIni {
    std::string comments;
    std::map<std::pair<std::string, std::string>, std::string> values;  // (section, key) in lower case
};

std::string Lower(std::string s)
{
    for (char& c : s) c = char(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

std::string Trim(const std::string& s)
{
    size_t b = 0, e = s.size();
    while (b < e && std::isspace(static_cast<unsigned char>(s[b]))) ++b;
    while (e > b && std::isspace(static_cast<unsigned char>(s[e - 1]))) --e;
    return s.substr(b, e - b);
}

// A value ends at a comment character that follows white space.
std::string StripComment(const std::string& value, const std::string& comments)
{
    for (size_t i = 1; i < value.size(); ++i)
        if (comments.find(value[i]) != std::string::npos && std::isspace(static_cast<unsigned char>(value[i - 1])))
            return value.substr(0, i);
    return value;
}

void ParseLine(TIni& ini, std::string& section, const std::string& raw)
{
    const std::string line = Trim(raw);
    if (line.empty() || ini.comments.find(line[0]) != std::string::npos) return;
    if (line[0] == '[') {
        const size_t close = line.find(']');
        if (close != std::string::npos) section = Lower(Trim(line.substr(1, close - 1)));
        return;
    }
    const size_t eq = line.find('=');
    if (eq == std::string::npos || eq == 0) return;
    const std::string key = Lower(Trim(line.substr(0, eq)));
    if (key.empty()) return;
    ini.values[{section, key}] = Trim(StripComment(line.substr(eq + 1), ini.comments));
}

// Decimal, or hexadecimal after 0x; anything else (or out of range) is not an integer.
bool ParseInteger(const std::string& text, int& out)
{
    if (text.empty()) return false;
    size_t i = 0;
    bool negative = false;
    if (text[i] == '+' || text[i] == '-') negative = text[i++] == '-';
    int base = 10;
    if (text.size() > i + 1 && text[i] == '0' && (text[i + 1] == 'x' || text[i + 1] == 'X')) {
        base = 16;
        i += 2;
    }
    if (i >= text.size()) return false;
    long long value = 0;
    for (; i < text.size(); ++i) {
        const char c = char(std::tolower(static_cast<unsigned char>(text[i])));
        int digit;
        if (c >= '0' && c <= '9')
            digit = c - '0';
        else if (base == 16 && c >= 'a' && c <= 'f')
            digit = c - 'a' + 10;
        else
            return false;
        value = value * base + digit;
        if (value > (long long)INT_MAX + 1) return false;
    }
    if (negative) value = -value;
    if (value > INT_MAX || value < INT_MIN) return false;
    out = int(value);
    return true;
}

}  // namespace

const char* KaOsGetTesseraIniFile()
{
    const char* path = std::getenv("KAIP_INI_FILE");
    return (path && *path) ? path : "/etc/pm/tessera.ini";
}

int64_t KaOsGetFileModificationTime(const char* pszPath)
{
    struct stat st;
    if (!pszPath || stat(pszPath, &st) != 0) return 0;
    return int64_t(st.st_mtime);
}

KaIniHandle KaIniOpen(const char* pszCommentChars)
{
    TIni* ini = new (std::nothrow) TIni;
    if (ini) ini->comments = pszCommentChars ? pszCommentChars : ";";
    return ini;
}

int KaIniLoad(KaIniHandle hIni, const char* pszPath)
{
    TIni* ini = static_cast<TIni*>(hIni);
    if (!ini || !pszPath) return 0;
    FILE* f = std::fopen(pszPath, "rb");
    if (!f) return 0;
    std::string text(kMaxIniBytes, '\0');
    text.resize(std::fread(&text[0], 1, kMaxIniBytes, f));
    std::fclose(f);
    std::string section;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find_first_of("\r\n", start);
        if (end == std::string::npos) end = text.size();
        ParseLine(*ini, section, text.substr(start, end - start));
        start = end + 1;
    }
    return 1;
}

int KaIniGetInteger(KaIniHandle hIni, const char* pszSection, const char* pszKey, int iDefault, int /*iFlags*/)
{
    const TIni* ini = static_cast<const TIni*>(hIni);
    if (!ini || !pszSection || !pszKey) return iDefault;
    const auto it = ini->values.find({Lower(pszSection), Lower(pszKey)});
    int value;
    return (it != ini->values.end() && ParseInteger(it->second, value)) ? value : iDefault;
}

void KaIniClose(KaIniHandle hIni)
{
    delete static_cast<TIni*>(hIni);
}
