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

int main(void) {
    char pattern[VX_PATTERN_SIZE];
    VxImage image = {0};
    vxImageUseBigEndian(&image);
    return vxCompileWildcard("*.sgi", pattern) && vxMatchPattern("wood.sgi", pattern) ? 0 : 1;
}
