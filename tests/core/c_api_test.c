/* c_api_test.c: the public header as a C99 program sees it, calling a few functions. */
#include <stdio.h>
#include <string.h>

#include "pm.imgproc.h"

#define CHECK(cond)                                                           \
    do {                                                                      \
        if (!(cond)) {                                                        \
            fprintf(stderr, "%s:%d: %s failed\n", __FILE__, __LINE__, #cond); \
            return 1;                                                         \
        }                                                                     \
    } while (0)

int main(void)
{
    KaipImgInfo info;
    char text[128];
    memset(&info, 0, sizeof info);
    CHECK(KaipInitImgInfo(&info, 5, 3, KaipPixelFormat_BGR8Packed, KaipImgFlag_Align4) == KASTATUS_OK);
    CHECK(info.LineIncrement == 16);
    CHECK(KaipGetImageDataSize(&info) == 48);
    CHECK(KaipAllocateImageData(&info) == KASTATUS_OK);
    CHECK(info.pData != NULL && (info.Flags & KaipImgFlag_DataAllocated));
    memset(info.pData, 0, KaipGetImageDataSize(&info));
    CHECK(KaipDeallocateImageData(&info) == KASTATUS_OK);
    CHECK(KaipInitImgInfo(NULL, 1, 1, KaipPixelFormat_Mono8, 0) == KASTATUS_KAIP_INVALID_POINTER);
    CHECK(strcmp(KaipGetStatusMsg(KASTATUS_KAIP_INVALID_POINTER, text, sizeof text),
                 "Invalid pointer passed to the function.") == 0);
    CHECK(sizeof(KaipImgInfo) == 7 * 4 + 4 + 4 * sizeof(void*));
    puts("C interface ok");
    return 0;
}
