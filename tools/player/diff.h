// Two histories played and compared frame by frame: their calls, with addresses left out, and
// their pictures, into DIR/diff.html and a line for each frame that differs.
#pragma once

struct diff_options {
    const char *a;
    const char *b;
    const char *out; // an existing folder
    int first_frame;
    int last_frame; // 0: to the end
};

// 0 the same, 1 they differ, 2 one cannot be played or read.
int diff_histories(const diff_options *options);
