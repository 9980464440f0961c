#include <vxframework.h>
#include <vximage.h>
#include <vxmessages.h>

#include <cstdarg>

namespace {

VxImageErrorHandler errorHandler;

}  // namespace

void vxImageError(int id, ...) {
    va_list arguments;
    va_start(arguments, id);
    const char *text = vxMessageFormat(arguments, VX_MESSAGE_CATALOGUE, id);
    va_end(arguments);
    if (errorHandler != nullptr) {
        errorHandler(const_cast<char *>(text));
    } else {
        vxMessageReport(text, VX_SEVERITY_ERROR, 0);
    }
}

void vxImageSetErrorHandler(VxImageErrorHandler handler) {
    errorHandler = handler;
}
