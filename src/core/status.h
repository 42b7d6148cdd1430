// status.h: status messages.
#pragma once

#include <cstdint>

#include "pm.imgproc.h"

char* GetStatusMsg(KaipStatus status, char* pszBuffer, uint64_t dwBufferSize);
