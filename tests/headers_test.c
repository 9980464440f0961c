/* The headers of the plain functions compile as C11, and a C program can use them. */

#include <vxbyteorder.h>
#include <vxexports.h>
#include <vxframework.h>
#include <vximage.h>
#include <vxmessages.h>
#include <vxpattern.h>
#include <vxpool.h>
#include <vxsampling.h>
#include <vxsearchpath.h>
#include <vxtext.h>

#include <stdlib.h>
#include <string.h>

int main(void) {
    VxImage image = {0};
    char *joined = vxPathJoin("C:/a", "b", NULL);
    int good = joined != NULL && strcmp(joined, "C:/a/b") == 0;
    free(joined);
    vxImageUseBigEndian(&image);
    vxImageSetName(&image, vxMessageText(VX_MESSAGE_CATALOGUE, VX_MESSAGE_IMAGE_DEFAULT_NAME));
    good = good && strlen(image.name) != 0 && vxExportAddress(99) == NULL;
    char pattern[VX_PATTERN_SIZE];
    good = good && vxCompileWildcard("*.sgi", pattern) && vxMatchPattern("wood.sgi", pattern);
    good = good && strcmp(vxFileExtension("wood.sgi"), "sgi") == 0;
    return good ? 0 : 1;
}
