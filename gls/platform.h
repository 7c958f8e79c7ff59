// The codec's thin seam to the platform: one process-wide lock, thread-local words, and the
// opening of the real GL library. Everything else in gls/ is plain C++ and builds anywhere.
#pragma once

#include "gls/gls_types.h"

#if defined(_WIN32)
#  ifndef WIN32_LEAN_AND_MEAN
#    define WIN32_LEAN_AND_MEAN
#  endif
#  include <windows.h>
typedef DWORD GlsTlsIndex;
#  define GLS_TLS_INVALID TLS_OUT_OF_INDEXES
// C++ thread_local is emulated under mingw and too slow for the per-call path, and so is a call
// of TlsGetValue, which also clears the application's last error. The first 64 slots lie in the
// thread's own block, read directly.
// The thread's block, read with one instruction (the header's reader upsets GCC's bounds check).
inline const char *gls_thread_block()
{
    const char *block;
#  if defined(_WIN64)
    __asm__("movq %%gs:0x30, %0" : "=r"(block));
#  else
    __asm__("movl %%fs:0x18, %0" : "=r"(block));
#  endif
    return block;
}
#  if defined(_WIN64)
#    define GLS_TLS_SLOTS_OFFSET 0x1480
#    define GLS_THREAD_ID_OFFSET 0x48
#  else
#    define GLS_TLS_SLOTS_OFFSET 0xE10
#    define GLS_THREAD_ID_OFFSET 0x24
#  endif
inline void *gls_tls_get(GlsTlsIndex index)
{
    if (index < 64)
        return ((void *const *)(gls_thread_block() + GLS_TLS_SLOTS_OFFSET))[index];
    return TlsGetValue(index);
}
// GetCurrentThreadId without the call.
inline uint32_t gls_thread_id() { return (uint32_t)*(const uintptr_t *)(gls_thread_block() + GLS_THREAD_ID_OFFSET); }
inline void gls_tls_set(GlsTlsIndex index, void *value) { TlsSetValue(index, value); }
#else
#  include <pthread.h>
typedef pthread_key_t GlsTlsIndex;
#  define GLS_TLS_INVALID ((pthread_key_t)-1)
inline void *gls_tls_get(GlsTlsIndex index) { return pthread_getspecific(index); }
inline void gls_tls_set(GlsTlsIndex index, void *value) { pthread_setspecific(index, value); }
#endif

bool gls_tls_alloc(GlsTlsIndex *index);
void gls_tls_free(GlsTlsIndex index);

void gls_lock_init();
void gls_lock_enter();
void gls_lock_leave();
void gls_lock_delete();

// Opens the real GL library and binds one name; a module of 0 means the library was not found.
// The module stays loaded for the life of the process.
void *gls_platform_open_gl(char *path_out, size_t path_size);
GlsFunc gls_platform_lookup(void *module, const char *name);
