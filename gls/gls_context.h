// The codec's per-thread record and the records it is made of. Field order follows the
// documented layout; all records start zero-filled.
#pragma once

#include "gen/calls.h"
#include "gls/gls_types.h"
#include "gls/platform.h"

#include <cstdio>

// A growing UTF-8 string with 64 bytes inside the record; head is null while the inline
// storage serves.
struct GlsString {
    char *head;
    uint32_t length;
    uint32_t capacity;
    char storage[64];
};

// A list node: the links, followed by the payload.
struct GlsBox {
    GlsBox *next;
    GlsBox *prev;
};

// A counted ring of boxes.
struct GlsList {
    GlsBox *head;
    int count;
    GlsBox *cursor;
    int cursorIndex;
};

struct GlsGlInfo {
    int decimalPoint;
    int haveGlContext;
    int extTexture3D;
    int extTexture4D;
    int glVersionMajor;
    int glVersionMinor;
    int spare;
    int packParametersSet;
    int unpackParametersSet;
};

struct GlsHeader {
    GlsString author;
    GlsString title;
    GlsString version;
    GLfloat aspect;
    GLfloat contrast;
    GLfloat gamma[4];
    GLfloat redPoint[2];
    GLfloat greenPoint[2];
    GLfloat bluePoint[2];
    GLfloat whitePoint[2];
    GLint accumRedBits;
    GLint accumGreenBits;
    GLint accumBlueBits;
    GLint accumAlphaBits;
    GLint auxBuffers;
    GLint colorRedBits;
    GLint colorGreenBits;
    GLint colorBlueBits;
    GLint colorAlphaBits;
    GLint depthBits;
    GLint stencilBits;
    GLint height;
    GLint indexBits;
    GLint doubleBuffer;
    GLint stereo;
    GLint tileable;
    GLint rgbaMode;
    GLint createTime[6];
};

struct GlsPixelStore {
    GLint alignment;
    GLint lsbFirst;
    GLint rowLength;
    GLint skipRows;
    GLint skipPixels;
    GLint swapBytes;
    GLint imageHeight;
    GLint skipImages;
};

enum : int { GLS_TEXTURE_UNITS = 4 };

struct GlsClientArray {
    GLint enabled;
    GLint size;
    GLenum type;
    GLsizei stride;
    const GLvoid *pointer;
    GLsizei count; // the EXT form's count
};

// Shadow of client state, answering when no GL context is current.
struct GlsClientState {
    GLsizei feedbackBufferSize;
    GLenum feedbackBufferType;
    GLfloat *feedbackBuffer;
    GLsizei selectBufferSize;
    GLuint *selectBuffer;
    GlsPixelStore unpack;
    GlsPixelStore pack;
    GLint activeTexture;
    GlsClientArray vertexArray;
    GlsClientArray normalArray;
    GlsClientArray colorArray;
    GlsClientArray indexArray;
    GlsClientArray texCoordArray[GLS_TEXTURE_UNITS];
    GlsClientArray edgeFlagArray;
    GLint words[4];
    // The codec's own blocks: a packed draw's data, a read's output area, and the feedback and
    // selection buffers that a read hands GL, which GL keeps writing after the call.
    void *scratch[4];
    size_t scratchSize[4];
};

struct GlsWriter;
struct GlsPrefix;

// Recent float texts of a context by bit pattern: programs send the same few values over and
// over, and a float's text is the dearest part of a call's. Length 0 marks an empty entry. Two
// entries share a hash, the more recent first: two values that meet there often keep both.
struct GlsFloatText {
    uint32_t bits;
    uint32_t length;
    char text[16];
};
enum : int { GLS_FLOAT_TEXT_BITS = 10, GLS_FLOAT_TEXT_COUNT = 2 << GLS_FLOAT_TEXT_BITS };

struct GlsContext {
    GlsContext *listNext;
    GlsContext *listPrev;
    int32_t abortCall;
    GLSenum blockType;
    GlsGlInfo glInfo;
    GlsFunc callFuncs[GLS_OPCODE_COUNT];
    int callNesting;
    GlsCaptureFunc captureEntryFunc;
    int directCallDepth;
    GlsCaptureFunc captureExitFunc;
    uint8_t captureFlags[GLS_OPCODE_COUNT];
    int captureNesting;
    int32_t captureVertexArrays;
    size_t readConsumed;
    const uint8_t *readStart;
    const uint8_t **readCursor;
    // 1 while the glsError row hears of a command refused for an empty list where its count asks
    // for elements: what a writer makes of a null pointer, which a client may treat as a skip.
    int32_t readEmptyItem;
    struct GlsDict *contextStreamDict;
    GlsList contextStreamList;
    int32_t inUse;
    void *dataPointer;
    FILE *defaultReadChannel;
    FILE *defaultWriteChannel;
    int32_t deletePending;
    GlsFunc defaultDispatch[GLS_OPCODE_COUNT];
    GlsFunc callDispatch[GLS_OPCODE_COUNT];
    GlsFunc captureFuncs[GLS_OPCODE_COUNT];
    GlsFunc decodeDispatch[GLS_OPCODE_COUNT];
    GlsClientState clientState;
    GlsHeader header;
    GLuint id;
    int outArgCount;
    int outArgSizes[GLS_MAX_OUT_ARGS];
    uint64_t outArgPointers[GLS_MAX_OUT_ARGS];
    GlsReadFunc readFunc;
    GlsList readPrefixList;
    GlsString returnString;
    GLSenum stringType;
    GlsWriter *currentWriter;
    GlsWriter *writerStack[GLS_CAPTURE_NESTING_LIMIT];
    GlsWriteFunc writeFunc;
    GlsPrefix *writePrefix;
    GlsFloatText floatTexts[GLS_FLOAT_TEXT_COUNT];
};

// The codec's thread-local words; the indices are allocated at process attach.
extern GlsTlsIndex gls_tls_context;
extern GlsTlsIndex gls_tls_error;

inline GlsContext *gls_current() { return (GlsContext *)gls_tls_get(gls_tls_context); }
