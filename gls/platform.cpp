#include "gls/platform.h"

#include <cstdio>
#include <cstring>

#if defined(_WIN32)

static CRITICAL_SECTION gls_global_lock;

bool gls_tls_alloc(GlsTlsIndex *index)
{
    *index = TlsAlloc();
    return *index != TLS_OUT_OF_INDEXES;
}

void gls_tls_free(GlsTlsIndex index) { TlsFree(index); }
void gls_lock_init() { InitializeCriticalSection(&gls_global_lock); }
void gls_lock_enter() { EnterCriticalSection(&gls_global_lock); }
void gls_lock_leave() { LeaveCriticalSection(&gls_global_lock); }
void gls_lock_delete() { DeleteCriticalSection(&gls_global_lock); }

void *gls_platform_open_gl(char *path_out, size_t path_size)
{
    char directory[261];
    UINT length = GetSystemDirectoryA(directory, sizeof directory);
    if (length == 0 || length >= sizeof directory)
        directory[0] = 0;
    snprintf(path_out, path_size, "%s\\opengl32.dll", directory);
    return LoadLibraryA(path_out);
}

GlsFunc gls_platform_lookup(void *module, const char *name)
{
    return (GlsFunc)(void *)GetProcAddress((HMODULE)module, name);
}

#else

static pthread_mutex_t gls_global_lock = PTHREAD_MUTEX_INITIALIZER;

bool gls_tls_alloc(GlsTlsIndex *index) { return pthread_key_create(index, nullptr) == 0; }
void gls_tls_free(GlsTlsIndex index) { pthread_key_delete(index); }
void gls_lock_init() {}
void gls_lock_enter() { pthread_mutex_lock(&gls_global_lock); }
void gls_lock_leave() { pthread_mutex_unlock(&gls_global_lock); }
void gls_lock_delete() {}

// Natively there is no real GL library: every command binds to its null function, and tests
// put their own functions into the default dispatch table.
static char gls_native_module;

void *gls_platform_open_gl(char *path_out, size_t path_size)
{
    snprintf(path_out, path_size, "%s", "(native)");
    return &gls_native_module;
}

GlsFunc gls_platform_lookup(void *, const char *) { return nullptr; }

#endif
