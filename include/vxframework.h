/*
 * vxframework.h: the message services of the sibling library libvxframework.
 *
 * A message is a number in a named catalogue; libvxutil uses the catalogue "vxmsg". The
 * library that comes with libvxutil holds that catalogue in plain English and writes
 * reports to standard error. A product that has a message system of its own replaces the
 * library, or puts functions of the same names in front of it: libvxutil reaches all three
 * through the dynamic linker.
 *
 * Texts that come back are never null and never freed by the caller. All functions may be
 * called from several threads at once.
 */
#ifndef VXFRAMEWORK_H
#define VXFRAMEWORK_H

#include "vxexports.h"

#include <stdarg.h>

VX_BEGIN_C

/*
 * The text of a message as it stands in the catalogue, without arguments. An unknown
 * catalogue or id gives a text that names both. Good until the next call on the same thread.
 */
VX_API const char *vxMessageText(const char *catalogue, int messageId);

/*
 * The text of a message with its arguments filled in, in the way of vprintf; the header of
 * each family tells what arguments a message has. A null text argument prints as "(null)".
 * A text of more than 8191 bytes is cut. Good until the next call on the same thread.
 */
VX_API const char *vxMessageFormat(va_list arguments, const char *catalogue, int messageId);

/*
 * Takes a report and writes it to standard error, as one line. Two forms:
 *
 *     vxMessageReport(text, severity, 0)                     a finished text
 *     vxMessageReport(catalogue, severity, messageId, ...)   a message and its arguments
 *
 * Severity 5 marks what ends the process, 6 what an operation failed on. The result is 0
 * when the line was written, else -1.
 */
VX_API int vxMessageReport(const char *textOrCatalogue, int severity, int messageId, ...);

VX_END_C

#endif
