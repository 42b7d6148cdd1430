/* consumer.c: a program built against the installed library. */
#include <pm.imgproc.h>

int main(void)
{
    KaipImgInfo info = {0};
    if (KaipInitImgInfo(&info, 4, 4, KaipPixelFormat_Mono8, 0) != KASTATUS_OK) return 1;
    if (KaipAllocateImageData(&info) != KASTATUS_OK) return 1;
    return KaipDeallocateImageData(&info) == KASTATUS_OK ? 0 : 1;
}
