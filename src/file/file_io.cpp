// file_io.cpp: whole-or-nothing file writing and size-aware reading for the image file formats.
#include "file/file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>

namespace {

std::atomic<unsigned> g_uTempCounter{0};

// The folder part of a path, "." when there is none.
std::string FolderOf(const std::string& path)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace

bool CFileWriter::Open(const char* pszFileName)
{
    Discard();
    m_target = pszFileName;
    // Replace the file a symbolic link points to, not the link.
    struct stat st;
    if (lstat(pszFileName, &st) == 0 && S_ISLNK(st.st_mode)) {
        if (char* pszReal = realpath(pszFileName, nullptr)) {
            m_target = pszReal;
            std::free(pszReal);
        }
    }
    const bool bExists = stat(m_target.c_str(), &st) == 0;
    if (bExists && !S_ISREG(st.st_mode)) {
        m_pFile = std::fopen(m_target.c_str(), "wb");
        return m_pFile != nullptr;
    }
    const std::string folder = FolderOf(m_target);
    for (int attempt = 0; attempt < 100; ++attempt) {
        std::string temp =
            folder + "/.kaip-" + std::to_string(getpid()) + "-" + std::to_string(g_uTempCounter++) + ".tmp";
        const int fd = open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0) {
            if (errno == EEXIST) continue;
            return false;
        }
        if (bExists) {
            // The replacement keeps the permissions (and, where allowed, the owner) of the old file.
            (void)!fchown(fd, st.st_uid, st.st_gid);
            (void)!fchmod(fd, st.st_mode & 07777);
        }
        m_pFile = fdopen(fd, "wb");
        if (!m_pFile) {
            close(fd);
            unlink(temp.c_str());
            return false;
        }
        m_temp = std::move(temp);
        return true;
    }
    return false;
}

bool CFileWriter::Commit()
{
    if (!m_pFile) return false;
    bool bOk = std::fflush(m_pFile) == 0 && !std::ferror(m_pFile);
    bOk = (std::fclose(m_pFile) == 0) && bOk;
    m_pFile = nullptr;
    if (bOk && !m_temp.empty()) bOk = std::rename(m_temp.c_str(), m_target.c_str()) == 0;
    if (!bOk && !m_temp.empty()) unlink(m_temp.c_str());
    m_temp.clear();
    return bOk;
}

void CFileWriter::Discard()
{
    if (m_pFile) std::fclose(m_pFile);
    m_pFile = nullptr;
    if (!m_temp.empty()) unlink(m_temp.c_str());
    m_temp.clear();
}

bool CFileReader::Open(const char* pszFileName)
{
    Close();
    m_pFile = std::fopen(pszFileName, "rb");
    if (!m_pFile) return false;
    struct stat st;
    if (fstat(fileno(m_pFile), &st) != 0 || !S_ISREG(st.st_mode)) {
        Close();
        return false;
    }
    m_size = uint64_t(st.st_size);
    return true;
}

void CFileReader::Close()
{
    if (m_pFile) std::fclose(m_pFile);
    m_pFile = nullptr;
    m_size = 0;
}

bool CFileReader::Seek(uint64_t offset)
{
    return offset <= uint64_t(LLONG_MAX) && fseeko(m_pFile, off_t(offset), SEEK_SET) == 0;
}
