// kalog.h: the kit's log service: levels and destination from the environment, one line per call.
#pragma once

#include <cstdarg>
#include <cstdint>

enum { KALOG_FATAL = 1, KALOG_DEBUG = 16 };

uint32_t kalog_Register(const char* pszName, const char* pszSecond, int iFlags);
int kalog_Enabled(uint64_t hLog, int iLevel);
void kalog_WriteArgList(uint64_t hLog, int iLevel, uint32_t* pdwState, const char* pszFormat, va_list args);
// Test hook: reads KAIP_LOG_LEVEL and KAIP_LOG_FILE again.
void kalog_Reconfigure();
