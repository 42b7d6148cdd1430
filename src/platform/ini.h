// ini.h: the kit's ini file: where it is, when it changed, and reading integers from it.
#pragma once

#include <cstdint>

typedef void* KaIniHandle;

// The path named by KAIP_INI_FILE, else /etc/pm/tessera.ini.
const char* KaOsGetTesseraIniFile();
// Modification time in seconds since the epoch, 0 when the file cannot be read.
int64_t KaOsGetFileModificationTime(const char* pszPath);

// A new, empty ini object whose comment lines start with one of pszCommentChars.
KaIniHandle KaIniOpen(const char* pszCommentChars);
// Loads a file into the object: non-zero on success, 0 when it cannot be read.
int KaIniLoad(KaIniHandle hIni, const char* pszPath);
// The integer of key in section (decimal or 0x hex), or iDefault when missing or malformed.
// iFlags is accepted for compatibility and not used.
int KaIniGetInteger(KaIniHandle hIni, const char* pszSection, const char* pszKey, int iDefault, int iFlags);
void KaIniClose(KaIniHandle hIni);
