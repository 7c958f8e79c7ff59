// The line formatter: turns the codec's text pieces into history file lines and into the text of
// the next call. Plain functions over bytes; the session glue lives in history.cpp.
#pragma once

#include "records/records.h"

#include <cstddef>
#include <cstdio>

enum : int {
    LONG_PIECE = 10240,       // longest piece taken whole; longer pieces also flush the file
    LONG_PIECE_KEPT = 9984,   // characters kept of a longer piece
    SHORTENED_COMMAS = 16,    // commas behind the first brace that a shortened array keeps
    SHORTEN_BUFFER = 1536,    // bytes of the buffer for a shortened piece
    INDENT_PER_DEPTH = 2,     // blanks of indent for each level of call_depth
};

// First index in [from, to) holding c, else -1.
int find_char(char c, int from, int to, const char *text);
// Address of the first c in the count bytes at text, else null.
const char *find_char_ptr(char c, int count, const char *text);
// True if out (SHORTEN_BUFFER bytes) now holds a shortened, zero-terminated copy of the piece.
bool shorten_data(int count, const char *text, char *out);

// What a line end of the history puts into its file. The text's "\r\n" went through a
// text-mode file on Windows, which adds a carriage return of its own: the file is binary there,
// so that each write is a plain copy, and the formatter writes that carriage return itself.
#if defined(_WIN32)
#  define HISTORY_LINE_END "\r\r\n"
#  define HISTORY_FILE_MODE(truncate) ((truncate) ? "wb" : "ab")
#else
#  define HISTORY_LINE_END "\r\n"
#  define HISTORY_FILE_MODE(truncate) ((truncate) ? "w" : "a")
#endif

// Writes one piece to a history file through its sink: optional shortening, the indent of
// call_depth and the line ends the panel's edit controls want.
void history_format(history_sink *sink, int count, const char *text, int call_depth, bool limit_data_dumps);
// The sink's way to its file: begun on an open file; a full buffer passed on (on Windows to the
// sink's writer thread); drained where the file is read or ended, so that it holds every byte
// (the C library's stream itself is not flushed); a piece too long for a buffer written
// through; and a rescue at a crash or the program's end, which neither waits nor changes the
// sink.
void history_sink_start(history_sink *sink, FILE *file);
void history_sink_pass(history_sink *sink);
void history_sink_drain(history_sink *sink);
void history_sink_write_through(history_sink *sink, const char *bytes, int count);
void history_sink_rescue(history_sink *sink);
// Copies one piece, a whole command, into per_proc.last_call_text (LAST_CALL_TEXT_SIZE bytes).
void last_call_format(int count, const char *text, char *field);
