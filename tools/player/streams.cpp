// The streams of a play. The player opens every file itself and hands the codec its bytes through
// the read function: the history is the file the user named, whatever GLS_READ_PREFIX_LIST
// says; a stream it calls is looked up beside the history that calls it; a pipe or FIFO plays,
// since what the first pass read is kept for the second; and a device, a cycle of calls or a
// nesting deeper than the codec's is refused with its name.
#include "tools/player/play_state.h"

#include "gls/gls.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#if defined(_WIN32)
#  include <io.h>
#  include <windows.h>
#else
#  include <sys/stat.h>
#endif

extern player_state *playing;

// What a stream that cannot be read twice may keep of its first pass; a prescan that would read
// more ends there, with the pixel format it has found by then.
static const size_t KEEP_LIMIT = 16u << 20;

// The kind of an open file, and what tells it from every other while it is open.
struct file_facts {
    bool folder;
    bool regular; // a disk file, which can be read again from its start
    uint64_t identity[2];
    int64_t size;
};

static bool facts_of(FILE *file, file_facts *facts)
{
    *facts = file_facts{};
#if defined(_WIN32)
    HANDLE handle = (HANDLE)_get_osfhandle(_fileno(file));
    BY_HANDLE_FILE_INFORMATION info;
    if (handle == INVALID_HANDLE_VALUE)
        return false;
    facts->regular = GetFileType(handle) == FILE_TYPE_DISK;
    if (facts->regular && GetFileInformationByHandle(handle, &info)) {
        facts->folder = (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        facts->identity[0] = info.dwVolumeSerialNumber;
        facts->identity[1] = (uint64_t)info.nFileIndexHigh << 32 | info.nFileIndexLow;
        facts->size = (int64_t)((uint64_t)info.nFileSizeHigh << 32 | info.nFileSizeLow);
    }
#else
    struct stat status;
    if (fstat(fileno(file), &status) != 0)
        return false;
    facts->folder = S_ISDIR(status.st_mode);
    facts->regular = S_ISREG(status.st_mode);
    facts->identity[0] = (uint64_t)status.st_dev;
    facts->identity[1] = (uint64_t)status.st_ino;
    facts->size = facts->regular ? (int64_t)status.st_size : 0;
#endif
    return true;
}

static bool is_separator(char c)
{
#if defined(_WIN32)
    return c == '/' || c == '\\';
#else
    return c == '/';
#endif
}

static bool is_absolute(const char *name)
{
#if defined(_WIN32)
    if (((name[0] | 32) >= 'a' && (name[0] | 32) <= 'z') && name[1] == ':')
        return true;
#endif
    return is_separator(name[0]);
}

// The folder part of a path with its last separator, "" for a bare name.
static char *folder_of(const char *path)
{
    size_t length = 0;
    for (size_t i = 0; path[i]; ++i)
        if (is_separator(path[i]))
            length = i + 1;
    char *folder = (char *)malloc(length + 1);
    if (folder) {
        memcpy(folder, path, length);
        folder[length] = 0;
    }
    return folder;
}

static void close_source(stream_source *source)
{
    if (source->file)
        fclose(source->file);
    free(source->folder);
    free(source->kept);
    *source = stream_source{};
}

bool open_history(player_state *p, const char *path, char *error, size_t error_size)
{
    char shown[256];
    printable(path, shown, sizeof shown);
    FILE *file = fopen(path, "rb");
    if (!file) {
        snprintf(error, error_size, "cannot open %s: %s", shown, strerror(errno));
        return false;
    }
    file_facts facts;
    if (facts_of(file, &facts) && facts.folder) {
        fclose(file);
        snprintf(error, error_size, "%s is a folder, not a GLS stream", shown);
        return false;
    }
    stream_source *source = &p->streams[0];
    *source = stream_source{};
    source->file = file;
    source->folder = folder_of(path);
    source->seekable = facts.regular;
    source->keeping = !facts.regular;
    memcpy(source->identity, facts.identity, sizeof facts.identity);
    p->history_size = facts.size;
    p->stream_count = 1;
    return true;
}

void rewind_history(player_state *p)
{
    stream_source *source = &p->streams[0];
    if (source->seekable) {
        clearerr(source->file);
        fseek(source->file, 0, SEEK_SET);
    }
    source->keeping = false;
    source->replayed = 0;
    source->delivered = 0;
}

void close_streams(player_state *p)
{
    while (p->stream_count > 0)
        close_source(&p->streams[--p->stream_count]);
}

uint64_t history_bytes_read(const player_state *p) { return p->stream_count > 0 ? p->streams[0].delivered : 0; }

size_t read_stream_bytes(size_t count, void *bytes)
{
    player_state *p = playing;
    if (!p || p->stream_count == 0)
        return 0;
    stream_source *source = &p->streams[p->stream_count - 1];
    size_t got;
    if (!source->seekable && !source->keeping && source->replayed < source->kept_size) {
        got = source->kept_size - source->replayed;
        got = got < count ? got : count;
        memcpy(bytes, source->kept + source->replayed, got);
        source->replayed += got;
    } else if (source->keeping) {
        if (source->kept_size + count > KEEP_LIMIT)
            return 0;
        if (source->kept_size + count > source->kept_capacity) {
            size_t capacity = source->kept_capacity ? source->kept_capacity * 2 : 65536;
            while (capacity < source->kept_size + count)
                capacity *= 2;
            uint8_t *grown = (uint8_t *)realloc(source->kept, capacity);
            if (!grown)
                return 0;
            source->kept = grown;
            source->kept_capacity = capacity;
        }
        got = fread(bytes, 1, count, source->file);
        memcpy(source->kept + source->kept_size, bytes, got);
        source->kept_size += got;
    } else {
        got = fread(bytes, 1, count, source->file);
    }
    source->delivered += got;
    return got;
}

// glsCallStream in a stream: the name is looked up beside the calling history, opened by the
// player and read through the read function, as the history itself is.
GLSenum GLS_APIENTRY call_stream(const GLubyte *name_bytes)
{
    player_state *p = playing;
    const char *name = (const char *)name_bytes;
    if (!p || p->prescan || !name)
        return GLS_NONE;
    if (!budget_command(p, OP_glsCallStream, nullptr))
        return GLS_NONE;
    char shown[256], message[MESSAGE_SIZE];
    printable(name, shown, sizeof shown);
    if (!name[0]) {
        report_skip(p, OP_glsCallStream, "it names no stream");
        return GLS_NONE;
    }
    if (p->stream_count >= STREAM_DEPTH || glsGeti(GLS_CALL_NESTING) >= glsGeti(GLS_MAX_CALL_NESTING)) {
        snprintf(message, sizeof message, "glsCallStream(\"%s\") nests streams deeper than %d", shown, STREAM_DEPTH);
        refuse(p, message);
        return GLS_NONE;
    }
    const stream_source *caller = &p->streams[p->stream_count - 1];
    size_t folder_length = is_absolute(name) ? 0 : strlen(caller->folder);
    char *path = (char *)malloc(folder_length + strlen(name) + 1);
    if (!path) {
        refuse(p, "no memory for a stream's name");
        return GLS_NONE;
    }
    memcpy(path, caller->folder, folder_length);
    strcpy(path + folder_length, name);
    char shown_path[256];
    printable(path, shown_path, sizeof shown_path);

    // Only a plain file: a FIFO would wait for a writer on opening, a device or terminal forever.
    FILE *file = nullptr;
    file_facts facts = {};
    const char *problem = nullptr;
#if !defined(_WIN32)
    struct stat status;
    if (stat(path, &status) != 0)
        problem = strerror(errno);
    else if (!S_ISREG(status.st_mode))
        problem = "it is a device, a pipe or a folder, not a file";
#endif
    if (!problem && !(file = fopen(path, "rb")))
        problem = strerror(errno);
    if (file && (!facts_of(file, &facts) || !facts.regular))
        problem = "it is a device, a pipe or a folder, not a file";
    for (int i = 0; file && !problem && i < p->stream_count; ++i)
        if (memcmp(p->streams[i].identity, facts.identity, sizeof facts.identity) == 0)
            problem = "a cycle: it is being read already";
    if (problem) {
        snprintf(message, sizeof message, "glsCallStream(\"%s\") skipped: %s: %s", shown, shown_path, problem);
        note_failure(p, message);
        if (file)
            fclose(file);
        free(path);
        return GLS_NONE;
    }
    stream_source *source = &p->streams[p->stream_count++];
    *source = stream_source{};
    source->file = file;
    source->folder = folder_of(path);
    source->seekable = true;
    memcpy(source->identity, facts.identity, sizeof facts.identity);
    free(path);
    GLSenum type = source->folder ? glsCallStream((const GLubyte *)"") : GLS_NONE;
    if (type == GLS_NONE && !p->refused[0]) {
        snprintf(message, sizeof message, "glsCallStream(\"%s\") skipped: %s is not a GLS stream", shown, shown_path);
        note_failure(p, message);
    }
    close_source(&p->streams[--p->stream_count]);
    return type;
}
