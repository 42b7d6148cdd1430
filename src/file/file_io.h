// file_io.h: whole-or-nothing file writing, size-aware reading and little-endian fields.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

// The file layouts are written straight from their in-memory structures.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the file structures assume a little-endian machine");

// Writes a file under a temporary name in the target's folder and renames it over the target
// only on Commit, so a failed save leaves an existing file as it was. A target that exists
// but is not a regular file (a device, a pipe) is written in place.
class CFileWriter {
public:
    CFileWriter() = default;
    ~CFileWriter() { Discard(); }
    CFileWriter(const CFileWriter&) = delete;
    CFileWriter& operator=(const CFileWriter&) = delete;

    bool Open(const char* pszFileName);
    // True when all n bytes were written.
    bool Write(const void* p, size_t n) { return n == 0 || std::fwrite(p, 1, n, m_pFile) == n; }
    // Flushes, closes and renames; false (and nothing left behind) when any step fails.
    bool Commit();
    // Closes and removes the temporary; the target is untouched.
    void Discard();
    FILE* Stream() const { return m_pFile; }

private:
    FILE* m_pFile = nullptr;
    std::string m_target;
    std::string m_temp;  // empty when writing in place
};

// Reads a regular file whose size is known up front, so header numbers can be checked
// against it before anything is allocated from them.
class CFileReader {
public:
    CFileReader() = default;
    ~CFileReader() { Close(); }
    CFileReader(const CFileReader&) = delete;
    CFileReader& operator=(const CFileReader&) = delete;

    // False when the file cannot be opened or is not a regular file.
    bool Open(const char* pszFileName);
    void Close();
    uint64_t Size() const { return m_size; }
    // True when all n bytes were read.
    bool Read(void* p, size_t n) { return n == 0 || std::fread(p, 1, n, m_pFile) == n; }
    bool Seek(uint64_t offset);
    FILE* Stream() const { return m_pFile; }

private:
    FILE* m_pFile = nullptr;
    uint64_t m_size = 0;
};

inline uint16_t GetLE16(const uint8_t* p)
{
    uint16_t v;
    std::memcpy(&v, p, 2);
    return v;
}
inline uint32_t GetLE32(const uint8_t* p)
{
    uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}
inline void PutLE16(uint8_t* p, uint16_t v)
{
    std::memcpy(p, &v, 2);
}
inline void PutLE32(uint8_t* p, uint32_t v)
{
    std::memcpy(p, &v, 4);
}
