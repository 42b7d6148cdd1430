// lut.h: LUT object bodies, the global tables, the lookup of a body from a handle, and the LUT workers.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pm.imgproc.h"

// An 8-bit body: the channel tables, the 32-bit working curves and, with both Bayer flags,
// the replicated Bayer tables (no BayerXxx8 rows: the channel tables are already 8-bit).
struct TKaIpLut8 {
    using TValue = uint8_t;
    static constexpr unsigned Bits = 8;
    static constexpr unsigned N = 256;
    uint8_t Red[256];
    uint8_t Green[256];
    uint8_t Blue[256];
    int32_t Red32[256];
    int32_t Green32[256];
    int32_t Blue32[256];
    uint16_t BayerRed16[256];
    uint16_t BayerBlue16[256];
    uint32_t BayerRed32[256];
    uint32_t BayerGreen32[256];
    uint32_t BayerBlue32[256];
};

// A 10- or 12-bit body. Rows from BayerRed8 on exist only with KAIP_LUT_BAYER, rows from
// BayerRed16 on only with both Bayer flags: an object allocates just the rows its type has.
template <unsigned BITS>
struct TKaIpLutWord {
    using TValue = uint16_t;
    static constexpr unsigned Bits = BITS;
    static constexpr unsigned N = 1u << BITS;
    uint16_t Red[N];
    uint16_t Green[N];
    uint16_t Blue[N];
    int32_t Red32[N];
    int32_t Green32[N];
    int32_t Blue32[N];
    uint8_t BayerRed8[N];
    uint8_t BayerGreen8[N];
    uint8_t BayerBlue8[N];
    uint16_t BayerRed16[N];
    uint16_t BayerBlue16[N];
    uint32_t BayerRed32[N];
    uint32_t BayerGreen32[N];
    uint32_t BayerBlue32[N];
};
using TKaIpLut10 = TKaIpLutWord<10>;
using TKaIpLut12 = TKaIpLutWord<12>;

// The body type of a depth, for code templated on the depth.
template <unsigned Bits>
struct TLutOfDepth {
    using Type = TKaIpLutWord<Bits>;
};
template <>
struct TLutOfDepth<8> {
    using Type = TKaIpLut8;
};

static_assert(offsetof(TKaIpLut8, BayerRed16) == 3840 && sizeof(TKaIpLut8) == 7936, "8-bit body layout");
static_assert(offsetof(TKaIpLut10, BayerRed8) == 18432 && offsetof(TKaIpLut10, BayerRed16) == 21504 &&
                  sizeof(TKaIpLut10) == 37888,
              "10-bit body layout");
static_assert(offsetof(TKaIpLut12, BayerRed8) == 73728 && offsetof(TKaIpLut12, BayerRed16) == 86016 &&
                  sizeof(TKaIpLut12) == 151552,
              "12-bit body layout");

// The LUT type word: depth in the low byte, then the two Bayer flags.
constexpr uint32_t kLutDepthMask = 0xFF;
constexpr uint32_t kLutFullBayer = KAIP_LUT_BAYER | KAIP_LUT_BAYER_16;
constexpr bool HasFullBayerLayout(uint32_t dwType)
{
    return (dwType & kLutFullBayer) == kLutFullBayer;
}
// Null and the value 1 are never dereferenced: both name the global LUT for reset, set, get,
// the builders and ApplyLut (GetLut* refuses null; the Bayer decoders read identity for it).
inline bool IsGlobalLutHandle(KaipHLut hLut)
{
    return reinterpret_cast<uintptr_t>(hLut) < 2;
}

// A universal object (depth byte 0): the type word and three bodies kept in step.
struct TKaIpLutUniversal {
    uint32_t dwType;
    TKaIpLut8* pLut8;
    TKaIpLut10* pLut10;
    TKaIpLut12* pLut12;
};

// The global LUT (handle value 1) and the identity tables, both of the full Bayer layout.
extern TKaIpLut8 g_Lut8;
extern TKaIpLut10 g_Lut10;
extern TKaIpLut12 g_Lut12;
extern TKaIpLut8 g_LutLinear8;
extern TKaIpLut10 g_LutLinear10;
extern TKaIpLut12 g_LutLinear12;

// Fills the six global bodies when the library is loaded.
class CGlobalLutInitializer {
public:
    CGlobalLutInitializer();
};
extern CGlobalLutInitializer g_GlobalLutInitializer;

// Resolve a handle to the body of one depth; pLut is set to null first. Null handles give
// KASTATUS_KAIP_INVALID_LUT_HANDLE, the value 1 the global body, a single-depth object of
// another depth KASTATUS_KAIP_INVALID_LUT_TYPE.
KaipStatus GetLut8(KaipHLut hLut, TKaIpLut8*& pLut);
KaipStatus GetLut10(KaipHLut hLut, TKaIpLut10*& pLut);
KaipStatus GetLut12(KaipHLut hLut, TKaIpLut12*& pLut);
// The same lookups chosen by the body type, for code templated on the depth.
inline KaipStatus GetLut(KaipHLut hLut, TKaIpLut8*& pLut)
{
    return GetLut8(hLut, pLut);
}
inline KaipStatus GetLut(KaipHLut hLut, TKaIpLut10*& pLut)
{
    return GetLut10(hLut, pLut);
}
inline KaipStatus GetLut(KaipHLut hLut, TKaIpLut12*& pLut)
{
    return GetLut12(hLut, pLut);
}

// Objects: allocation (reset to identity), release, reset (null or 1: the global LUT).
KaipHLut AllocateLut(uint32_t dwType);
KaipStatus FreeLut(KaipHLut hLut);
KaipStatus ResetLut(KaipHLut hLut);

// Depth conversion of one channel table: upward interpolates, downward samples.
void Lut8toLut10(const uint8_t* pSrc, uint16_t* pDst);
void Lut8toLut12(const uint8_t* pSrc, uint16_t* pDst);
void Lut10toLut8(const uint16_t* pSrc, uint8_t* pDst);
void Lut10toLut12(const uint16_t* pSrc, uint16_t* pDst);
void Lut12toLut8(const uint16_t* pSrc, uint8_t* pDst);
void Lut12toLut10(const uint16_t* pSrc, uint16_t* pDst);

// Clamps to +-2147483647, then truncates toward zero.
int32_t DoubleTo32Bit(double dValue);

// Contents: whole channel tables and single entries (null or 1: the global LUT).
KaipStatus Set8BitLut(KaipHLut hLut, const uint8_t* pRed, const uint8_t* pGreen, const uint8_t* pBlue);
KaipStatus Set10BitLut(KaipHLut hLut, const uint16_t* pRed, const uint16_t* pGreen, const uint16_t* pBlue);
KaipStatus Set12BitLut(KaipHLut hLut, const uint16_t* pRed, const uint16_t* pGreen, const uint16_t* pBlue);
KaipStatus Get8BitLut(KaipHLut hLut, uint8_t* pRed, uint8_t* pGreen, uint8_t* pBlue);
KaipStatus Get10BitLut(KaipHLut hLut, uint16_t* pRed, uint16_t* pGreen, uint16_t* pBlue);
KaipStatus Get12BitLut(KaipHLut hLut, uint16_t* pRed, uint16_t* pGreen, uint16_t* pBlue);
KaipStatus Set8BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint32_t dwValue);
KaipStatus Set10BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint32_t dwValue);
KaipStatus Set12BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint32_t dwValue);
KaipStatus Get8BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint8_t* pValue);
KaipStatus Get10BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint16_t* pValue);
KaipStatus Get12BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint16_t* pValue);

// Builders: compose a curve onto the 32-bit tables of every body reached, then clip.
KaipStatus AddGammaToLut(uint32_t dwGamma, KaipHLut hLut);
KaipStatus AddWbToLut(uint32_t dwRedFactor, uint32_t dwGreenFactor, uint32_t dwBlueFactor, KaipHLut hLut);
KaipStatus AddOffsetAndGainToLut(int32_t iOffset, int32_t iGain, KaipHLut hLut);
KaipStatus AddBrightnessAndContrastToLut(int32_t iBrightness, int32_t iContrast, KaipHLut hLut);

// Runs every sample of an unpacked mono or RGB image through a LUT, in place when
// pDstImgInfo is null; null and 1 mean the global LUT.
KaipStatus ApplyLut(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, KaipHLut hLut, uint32_t dwOptions);
