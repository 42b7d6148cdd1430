// lut_tables.cpp: the LUT tables that the matrix filters run their results through.
#include "core/log.h"
#include "general/lut.h"
#include "matrix/matrix.h"

namespace {

template <typename TBody>
KaipStatus Fetch(KaipStatus (*pfnGetLut)(KaipHLut, TBody*&), KaipHLut hLut, TLutTables& tables)
{
    TBody* pBody = nullptr;
    const KaipStatus status = pfnGetLut(hLut, pBody);
    if (status == KASTATUS_OK) tables = {pBody->Red, pBody->Green, pBody->Blue};
    return status;
}

}  // namespace

KaipStatus GetLutTables(const char* pszFunc, KaipHLut hLut, unsigned uDepth, TLutTables& tables)
{
    tables = {};
    if (hLut == nullptr) return KASTATUS_OK;
    KaipStatus status = KASTATUS_KAIP_INVALID_LUT_TYPE;
    if (uDepth == 8) status = Fetch(GetLut8, hLut, tables);
    if (uDepth == 10) status = Fetch(GetLut10, hLut, tables);
    if (uDepth == 12) status = Fetch(GetLut12, hLut, tables);
    if (status != KASTATUS_OK)
        return Refuse(KASTATUS_KAIP_INVALID_LUT_TYPE, "%s: KASTATUS_KAIP_INVALID_LUT_TYPE", pszFunc);
    return KASTATUS_OK;
}
