// Pixel data of the image commands: the unpack state from GL or the shadow, the layout it gives
// the application's memory, and the image in the stream, tight. Every size is worked out in 64
// bits and held under GLS_PIXEL_DATA_LIMIT, so that no pointer step can wrap.
#include "gls/capture.h"

#include "gen/gl_enums.h"
#include "gls/writer.h"

// Elements a pixel and bits an element; false for a format or type GL would refuse.
static bool element_layout(GLenum format, GLenum type, GLuint *groups, GLuint *bits)
{
    *groups = gls_pname_count(GLS_SIZES_PIXEL_GROUPS, format);
    *bits = gls_pname_count(GLS_SIZES_PIXEL_BITS, type);
    if (!*groups || !*bits)
        return false;
    if (type == GL_BITMAP)
        return format == GL_COLOR_INDEX || format == GL_STENCIL_INDEX;
    if (GLuint packed = gls_pname_count(GLS_SIZES_PACKED_PIXEL_GROUPS, type)) {
        if (packed != *groups)
            return false;
        *groups = 1;
    }
    return true;
}

GLuint gls_image_bytes(GLenum format, GLenum type, GLsizei width, GLsizei height, GLsizei depth)
{
    GLuint groups, bits;
    if (width < 0 || height < 0 || depth < 0 || !element_layout(format, type, &groups, &bits))
        return 0;
    uint64_t rowBytes = ((uint64_t)groups * (uint64_t)width * bits + 7) / 8;
    uint64_t bytes = rowBytes * (uint64_t)height * (uint64_t)depth;
    return bytes <= GLS_PIXEL_DATA_LIMIT ? (GLuint)bytes : 0;
}

void gls_unpack_store(GlsContext *ctx, bool volume, GlsPixelStore *store)
{
    if (!gls_have_gl_context(ctx)) {
        *store = ctx->clientState.unpack;
    } else {
        store->alignment = gls_gl_integer(ctx, GL_UNPACK_ALIGNMENT);
        store->lsbFirst = gls_gl_integer(ctx, GL_UNPACK_LSB_FIRST);
        store->rowLength = gls_gl_integer(ctx, GL_UNPACK_ROW_LENGTH);
        store->skipRows = gls_gl_integer(ctx, GL_UNPACK_SKIP_ROWS);
        store->skipPixels = gls_gl_integer(ctx, GL_UNPACK_SKIP_PIXELS);
        store->swapBytes = gls_gl_integer(ctx, GL_UNPACK_SWAP_BYTES);
        bool images = volume && gls_have_texture_3d(ctx);
        store->imageHeight = images ? gls_gl_integer(ctx, GL_UNPACK_IMAGE_HEIGHT_EXT) : 0;
        store->skipImages = images ? gls_gl_integer(ctx, GL_UNPACK_SKIP_IMAGES_EXT) : 0;
    }
    if (!volume)
        store->imageHeight = store->skipImages = 0;
}

// a * b, or just above the limit where it is larger: sums of a few stay far from wrapping.
static uint64_t capped(uint64_t a, uint64_t b)
{
    return a && b > GLS_PIXEL_DATA_LIMIT / a ? (uint64_t)GLS_PIXEL_DATA_LIMIT + 1 : a * b;
}

static bool store_usable(const GlsPixelStore *s)
{
    bool alignment = s->alignment == 1 || s->alignment == 2 || s->alignment == 4 || s->alignment == 8;
    return alignment && s->rowLength >= 0 && s->skipRows >= 0 && s->skipPixels >= 0 &&
           s->imageHeight >= 0 && s->skipImages >= 0;
}

GlsPixelLayout gls_pixel_layout(GlsContext *ctx, GLenum format, GLenum type, GLsizei width, GLsizei height,
                                GLsizei depth, bool volume, const void *pixels)
{
    GlsPixelLayout layout = {};
    GLuint groups, bits;
    GLsizei images = volume ? depth : 1;
    if (!pixels || width <= 0 || height <= 0 || images <= 0 || !element_layout(format, type, &groups, &bits))
        return layout;
    if (type == GL_BITMAP && images > 1)
        return layout; // bitmaps are planes: the bitmap slot has no images
    GLuint bytes = gls_image_bytes(format, type, width, height, images);
    if (!bytes)
        return layout;
    GlsPixelStore *s = &layout.store;
    gls_unpack_store(ctx, volume, s);
    if (!store_usable(s))
        return layout;

    uint64_t elementsPerRow = (uint64_t)groups * (uint64_t)width;
    uint64_t rowBytes = (elementsPerRow * bits + 7) / 8;
    uint64_t rowStride = s->rowLength ? ((uint64_t)groups * (uint64_t)s->rowLength * bits + 7) / 8 : rowBytes;
    uint64_t alignment = (uint64_t)s->alignment;
    uint64_t padded = (rowStride + alignment - 1) / alignment * alignment;
    // Rows that overlap (a row length below the width) have no tight form with gaps; the stride
    // in bits must fit the bitmap slot's 32-bit count.
    if (rowStride < rowBytes || padded > GLS_PIXEL_DATA_LIMIT / 8)
        return layout;

    uint64_t imageHeight = (uint64_t)height, skipRows = (uint64_t)s->skipRows, imageGap = 0;
    if (volume) {
        if (s->imageHeight)
            imageHeight = (uint64_t)s->imageHeight;
        if (imageHeight < (uint64_t)height)
            return layout;
        skipRows += imageHeight * (uint64_t)s->skipImages;
        imageGap = capped(padded, imageHeight - (uint64_t)height);
    }
    uint64_t skipBits = (uint64_t)s->skipPixels * groups * bits;
    uint64_t offset = skipBits / 8 + capped(skipRows, padded);
    // The last byte read: a shifted bitmap row may reach one byte past its own bytes.
    uint64_t extent = offset + capped((uint64_t)images - 1, capped(imageHeight, padded)) +
                      capped((uint64_t)height - 1, padded) + rowBytes + 1;
    if (extent > GLS_PIXEL_DATA_LIMIT)
        return layout;

    layout.type = type;
    layout.info.bitsPerElement = bits;
    layout.info.elementsPerGroup = groups;
    layout.info.rowPad = (GLuint)(padded - rowStride);
    layout.info.rowBytes = (GLuint)rowBytes;
    layout.info.elementsPerRow = (GLuint)elementsPerRow;
    layout.info.rowStride = (GLuint)padded;
    layout.rows = (GLuint)height;
    layout.images = (GLuint)images;
    layout.imageGap = (GLuint)imageGap;
    layout.firstBit = (GLuint)(skipBits & 7);
    layout.first = (const GLubyte *)pixels + offset;
    layout.bytes = bytes;
    return layout;
}

void gls_put_pixel_data(GlsWriter *w, const GlsPixelLayout *layout)
{
    const GlsPixelInfo *info = &layout->info;
    GLboolean swap = layout->store.swapBytes != 0;
    GLuint perRow = info->elementsPerRow, rowGap = info->rowStride - info->rowBytes;
    GLuint rows = layout->rows, imageGap = layout->imageGap, images = layout->images;
    const GLubyte *first = layout->first;
    switch (layout->type) {
    case GL_BITMAP:
        w->putGLbitmap(w, layout->store.lsbFirst != 0, layout->firstBit, perRow, info->rowStride * 8 - perRow,
                       rows, first);
        break;
    case GL_BYTE:
        w->putGLbyteImage(w, swap, perRow, rowGap, rows, imageGap, images, 0, 1, first);
        break;
    case GL_UNSIGNED_BYTE:
    case GL_UNSIGNED_BYTE_3_3_2_EXT:
        w->putGLubyteImage(w, swap, perRow, rowGap, rows, imageGap, images, 0, 1, first);
        break;
    case GL_SHORT:
        w->putGLshortImage(w, swap, perRow, rowGap, rows, imageGap, images, 0, 1, first);
        break;
    case GL_UNSIGNED_SHORT:
    case GL_UNSIGNED_SHORT_4_4_4_4_EXT:
    case GL_UNSIGNED_SHORT_5_5_5_1_EXT:
        w->putGLushortImage(w, swap, perRow, rowGap, rows, imageGap, images, 0, 1, first);
        break;
    case GL_INT:
        w->putGLintImage(w, swap, perRow, rowGap, rows, imageGap, images, 0, 1, first);
        break;
    case GL_UNSIGNED_INT:
    case GL_UNSIGNED_INT_8_8_8_8_EXT:
    case GL_UNSIGNED_INT_10_10_10_2_EXT:
        w->putGLuintImage(w, swap, perRow, rowGap, rows, imageGap, images, 0, 1, first);
        break;
    case GL_FLOAT:
        w->putGLfloatImage(w, swap, perRow, rowGap, rows, imageGap, images, 0, 1, first);
        break;
    default:
        w->putGLubyteVector(w, 0, nullptr);
        break;
    }
}
