// cpu.h: which instruction sets the processor and the operating system offer.
#pragma once

int pmSSE2Supported();
int pmSSSE3Supported();
int pmSSE42Supported();
int pmAVXSupported();   // AVX, with the operating system saving the wide registers
int pmAVX2Supported();  // AVX2 on top of pmAVXSupported
int pmNEONSupported();
