// The call catalogue: four fixed name lists, and the tables that tie a GL row to its opcode.
#pragma once

#include <cstdint>

enum : int {
    GL_CALL_COUNT = 460,
    GLU_CALL_COUNT = 60,
    GDI_CALL_COUNT = 5,
    WGL_CALL_COUNT = 24,
    CALL_NAME_SIZE = 256,
};

// Catalogue rows that other parts name.
enum : int {
    GL_ROW_glBegin = 8,
    GL_ROW_glEnd = 110,
    GL_ROW_glEndList = 111,
    GL_ROW_glFlush = 123,
    GL_ROW_glGetString = 209,
    GL_ROW_glNewList = 296,
    GL_ROW_glViewport = 459,
    GDI_ROW_SwapBuffers = 4,
    GLU_ROW_gluErrorString = 20,
};

extern const char *const gl_call_names[GL_CALL_COUNT];
extern const char *const glu_call_names[GLU_CALL_COUNT];
extern const char *const gdi_call_names[GDI_CALL_COUNT];
extern const char *const wgl_call_names[WGL_CALL_COUNT];

extern const int32_t opcode_of_call[GL_CALL_COUNT];

// The install order of the debug wrappers: catalogue row and its opcode.
struct CallRowOpcode {
    int32_t row;
    int32_t opcode;
};
extern const CallRowOpcode wrapper_of_opcode_rows[GL_CALL_COUNT];
