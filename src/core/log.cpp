// log.cpp: the "ImgProc" logger, built before every other load-time object, and the refusal helper.
#include "core/log.h"

#include <cstdarg>

#include "platform/kalog.h"

namespace ka {

CLog::CLog(const char* pszName, const char* pszSecond) : m_hLog(kalog_Register(pszName, pszSecond, 1)), m_dwState(0) {}

void CLog::Debug(const char* pszFormat, ...)
{
    va_list args;
    va_start(args, pszFormat);
    DebugArgList(pszFormat, args);
    va_end(args);
}

void CLog::DebugArgList(const char* pszFormat, va_list args)
{
    if (kalog_Enabled(m_hLog, KALOG_DEBUG)) kalog_WriteArgList(m_hLog, KALOG_DEBUG, &m_dwState, pszFormat, args);
}

void CLog::Fatal(const char* pszFormat, ...)
{
    if (!kalog_Enabled(m_hLog, KALOG_FATAL)) return;
    va_list args;
    va_start(args, pszFormat);
    kalog_WriteArgList(m_hLog, KALOG_FATAL, &m_dwState, pszFormat, args);
    va_end(args);
}

}  // namespace ka

// The logger comes first among the load-time objects: the configuration reader logs through it.
ka::CLog Log __attribute__((init_priority(101))) ("ImgProc", nullptr);

thread_local char g_szErrorMessage[2048];

KaipStatus Refuse(KaipStatus status, const char* pszFormat, ...)
{
    va_list args;
    va_start(args, pszFormat);
    Log.DebugArgList(pszFormat, args);
    va_end(args);
    return status;
}
