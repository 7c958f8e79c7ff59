#include "tools/player/history_text.h"

#include "tools/player/text_buffer.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

static const char SWAP_NOTE[] = "glsString(\"Info\", \"wglSwapBuffers\");";

size_t command_name_length(const char *command, size_t length)
{
    const char *paren = (const char *)memchr(command, '(', length);
    return paren ? (size_t)(paren - command) : length;
}

// Commands end at a semicolon outside a string; a line that starts with '#' is a comment.
static bool split(history_text *text)
{
    int capacity = 0, frame_capacity = 0;
    uint32_t line = 1;
    const char *data = text->data;
    bool calls_since_swap = false;
    for (size_t at = 0; at < text->size;) {
        char c = data[at];
        if (c == '\n' || c == ' ' || c == '\t' || c == '\r') {
            line += c == '\n';
            ++at;
            continue;
        }
        if (c == '#') {
            while (at < text->size && data[at] != '\n')
                ++at;
            continue;
        }
        history_command command = {at, 0, line};
        bool quoted = false;
        for (; at < text->size && (quoted || data[at] != ';'); ++at) {
            if (data[at] == '\n')
                ++line;
            else if (data[at] == '\\' && quoted)
                ++at;
            else if (data[at] == '"')
                quoted = !quoted;
        }
        at += at < text->size;
        command.length = (uint32_t)(at - command.offset);
        if (!grow_items(&text->commands, text->count, &capacity))
            return false;
        text->commands[text->count++] = command;
        bool swap = command.length == sizeof SWAP_NOTE - 1 && memcmp(data + command.offset, SWAP_NOTE, command.length) == 0;
        calls_since_swap |= strncmp(data + command.offset, "gls", 3) != 0;
        if (swap || (at >= text->size && calls_since_swap)) {
            if (!grow_items(&text->frame_ends, text->frames, &frame_capacity))
                return false;
            text->frame_ends[text->frames++] = text->count;
            calls_since_swap = false;
        }
    }
    return true;
}

bool read_history_text(const char *path, history_text *text)
{
    *text = history_text{};
    FILE *file = fopen(path, "rb");
    if (!file)
        return false;
    size_t capacity = 0;
    for (;;) {
        if (text->size == capacity) {
            capacity = capacity ? capacity * 2 : 1 << 20;
            char *grown = (char *)realloc(text->data, capacity);
            if (!grown)
                break;
            text->data = grown;
        }
        size_t got = fread(text->data + text->size, 1, capacity - text->size, file);
        if (got == 0)
            break;
        text->size += got;
    }
    bool read = !ferror(file) && text->data;
    fclose(file);
    // A text stream starts with a command's name; a binary one with its bytes.
    bool is_text = read && text->size > 3 && memcmp(text->data, "gls", 3) == 0 && !memchr(text->data, 0, text->size);
    if (!is_text || !split(text)) {
        free_history_text(text);
        return false;
    }
    return true;
}

void free_history_text(history_text *text)
{
    free(text->data);
    free(text->commands);
    free(text->frame_ends);
    *text = history_text{};
}

bool frame_commands(const history_text *text, int frame, int *first, int *end)
{
    if (frame < 1 || frame > text->frames)
        return false;
    *first = frame > 1 ? text->frame_ends[frame - 2] : 0;
    *end = text->frame_ends[frame - 1];
    return true;
}
