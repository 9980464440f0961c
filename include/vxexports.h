/*
 * vxexports.h: the surface of libvxutil as a whole.
 *
 * Conventions that hold for every header of the library:
 *
 *  1. Plain functions have C linkage and are named after their family first
 *     (vxSearchPathInsert). Their headers compile as C11 and as C++.
 *  2. Nothing is thrown across the interface. A function says that it failed by its
 *     result: 0, null or -1, as its comment tells.
 *  3. Yes and no are 1 and 0 as results of plain functions; as arguments anything but 0
 *     counts as set. Members of classes use a short for both.
 *  4. Text is a zero-terminated byte string in the multibyte code page of the process (the
 *     character set of its LC_CTYPE locale). Lengths are in bytes and do not count the
 *     terminator unless a comment says so.
 *  5. New text from a function comes from malloc, and the caller releases it with free.
 *  6. Pointers must not be null where a comment does not allow it.
 *  7. Nothing is locked. One object serves one thread at a time, and callers arrange that.
 */
#ifndef VXEXPORTS_H
#define VXEXPORTS_H

#if defined(__GNUC__)
#define VX_API __attribute__((visibility("default")))
#else
#define VX_API
#endif

#ifdef __cplusplus
#define VX_BEGIN_C extern "C" {
#define VX_END_C }
#else
#define VX_BEGIN_C
#define VX_END_C
#endif

/*
 * Members that callers run in loops are defined in the headers and are exports all the same:
 * one source of each family, which defines VX_EMIT_INLINE, asks the compiler to write them out.
 * Of a constructor or destructor clang writes both symbols only if it is weak as well.
 */
#if !defined(VX_EMIT_INLINE)
#define VX_INLINE VX_API inline
#elif defined(__clang__)
#define VX_INLINE VX_API __attribute__((used, weak)) inline
#else
#define VX_INLINE VX_API __attribute__((used)) inline
#endif

VX_BEGIN_C

/*
 * The address of the export with this ordinal, for callers that bind by number: a function,
 * a class member or a virtual table. Ordinals run from 100 to 495. Null for any other
 * number. The address belongs to the library and is good while it stays loaded.
 */
VX_API const void *vxExportAddress(int ordinal);

VX_END_C

#endif
