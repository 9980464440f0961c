/*
 * vxframework.h: the message services of the sibling library libvxframework.
 *
 * A message is a number in a named catalogue. libvxutil reports the messages of vxmessages.h; their
 * catalogue is "vxmsg". The libvxframework that comes with it holds this catalogue in English and
 * writes reports to standard error. A product with a message system of its own replaces that
 * library, or defines functions of the same names that the dynamic linker finds first (not on
 * Windows).
 *
 * The services never return a null text, and callers do not free the texts. All functions may be
 * called from several threads at once.
 */
#ifndef VXFRAMEWORK_H
#define VXFRAMEWORK_H

#include "vxexports.h"

#include <stdarg.h>

VX_BEGIN_C

/*
 * Returns the text of a message as the catalogue has it, without arguments. An unknown catalogue or
 * id gives a text that names both. Valid until the next call on the same thread.
 */
VX_API const char *vxMessageText(const char *catalogue, int messageId);

/*
 * Returns the text of a message with its arguments filled in, as vprintf does. A null text argument
 * prints as "(null)". A text of more than 8191 bytes is cut. Valid until the next call on the same
 * thread.
 */
VX_API const char *vxMessageFormat(va_list arguments, const char *catalogue, int messageId);

/*
 * Takes a report and writes it to standard error, as one line. Two forms:
 *
 *     vxMessageReport(text, severity, 0)                     a finished text
 *     vxMessageReport(catalogue, severity, messageId, ...)   a message and its arguments
 *
 * Severity 5 (VX_SEVERITY_FATAL): the process ends; 6 (VX_SEVERITY_ERROR): an operation failed. The
 * result is 0 if the line was written, else -1.
 */
VX_API int vxMessageReport(const char *textOrCatalogue, int severity, int messageId, ...);

VX_END_C

#endif
