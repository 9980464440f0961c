/*
 * vxexports.h: what all headers of libvxutil share.
 *
 * Conventions of every header of the library:
 *
 *  1. Plain functions have C linkage. Their names begin with their family
 *     (vxSearchPathInsert). Their headers compile as C11 and as C++.
 *  2. No exception crosses the interface. The result reports a failure: 0, null or -1, as
 *     documented for each function.
 *  3. Plain functions return 1 for yes and 0 for no. As an argument, anything except 0 means
 *     yes. Members of classes use a short for both.
 *  4. Text is a zero-terminated byte string in the multibyte code page of the process (the
 *     character set of its LC_CTYPE locale; on Windows, the page of _setmbcp). Lengths are in
 *     bytes, without the terminator unless a comment includes it.
 *  5. If a function returns new text, the caller owns it and calls free: it is from malloc.
 *  6. Pointers must not be null unless a comment allows it.
 *  7. A long has 32 bits on Windows. Other differences are noted where they occur.
 *  8. There are no locks. Callers must not use one object on two threads at the same time.
 */
#ifndef VXEXPORTS_H
#define VXEXPORTS_H

#if defined(_WIN32)
/* A list gives the exports to the linker, so the sources of the library need no mark for them. */
#ifdef VX_IS_LINKED_IN
#define VX_API
#else
#define VX_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
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
 * Members that callers run in loops are defined in the headers, and yet they are exports: one
 * source of each family defines VX_EMIT_INLINE, which makes the compiler emit them. For a
 * constructor or destructor, clang emits both symbols only if it is weak too.
 */
#if !defined(VX_EMIT_INLINE) && defined(_WIN32)
#define VX_INLINE inline
#elif !defined(VX_EMIT_INLINE)
#define VX_INLINE VX_API inline
#elif defined(__clang__)
#define VX_INLINE VX_API __attribute__((used, weak)) inline
#else
#define VX_INLINE VX_API __attribute__((used)) inline
#endif

VX_BEGIN_C

/*
 * Returns the address of the export with this ordinal, for callers that bind by number: a
 * function, a class member or a virtual table. Ordinals are 100 to 495; any other number
 * gives null. The address belongs to the library and is valid while the library is loaded.
 */
VX_API const void *vxExportAddress(int ordinal);

VX_END_C

#endif
