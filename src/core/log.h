// log.h: the library's one logger "ImgProc", the refusal helper and the JPEG error text.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "pm.imgproc.h"

namespace ka {

// Writes lines to the kit's log service under one registered name.
class CLog {
public:
    CLog(const char* pszName, const char* pszSecond);
    ~CLog() {}
    void Debug(const char* pszFormat, ...) __attribute__((format(printf, 2, 3)));
    void Fatal(const char* pszFormat, ...) __attribute__((format(printf, 2, 3)));
    // Debug with the caller's argument list handed on untouched.
    void DebugArgList(const char* pszFormat, va_list args);

private:
    uint64_t m_hLog;
    uint32_t m_dwState;
};

}  // namespace ka

extern ka::CLog Log;

// Last message of the JPEG library, left by its error handler; one per thread, so that calls on
// several threads at once neither race for it nor read each other's message.
extern thread_local char g_szErrorMessage[2048];

// Logs one refusal at debug level and returns its status unchanged:
//   return Refuse(KASTATUS_KAIP_INVALID_POINTER, "%s: pImgInfo is NULL!", pszFunc);
KaipStatus Refuse(KaipStatus status, const char* pszFormat, ...) __attribute__((format(printf, 2, 3)));
