// A history in GLS text as the user reads it: its commands, each with the line it starts on, and
// its frames, which end at the swap notes as the player ends them.
#pragma once

#include <cstddef>
#include <cstdint>

struct history_command {
    size_t offset;
    uint32_t length;
    uint32_t line;
};

struct history_text {
    char *data;
    size_t size;
    history_command *commands;
    int count;
    int *frame_ends; // the command past each frame's last
    int frames;
};

// False for a file that cannot be read or is no GLS text (a binary stream).
bool read_history_text(const char *path, history_text *text);
void free_history_text(history_text *text);
// The commands of a frame from 1, [*first, *end); false past the last frame.
bool frame_commands(const history_text *text, int frame, int *first, int *end);
// The length of a command's name, up to its first parenthesis.
size_t command_name_length(const char *command, size_t length);
