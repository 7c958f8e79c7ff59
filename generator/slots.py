"""The writer's slots, once: their order in GlsWriter, their type, the binary writer's and the
text writer's function for each, and what a capture function writes through a scalar slot (a C
type, a stream kind, or "hex TYPE"). gen/writer_slots.h makes the struct's fields and the two
writers' slot settings from this list."""

# (name, slot type without Gls...Slot, binary writer's function, text writer's function, keys)
SLOTS = [
    ('padToDouble', 'Pad', 'pad_to_double<Swap>', 'text_pad', ()),
    ('allocate', 'Allocate', 'external_allocate', 'text_allocate', ()),
    ('beginCommand', 'BeginCommand', 'begin_command<Swap>', 'text_begin_command', ()),
    ('endCommand', 'Void', 'end_command<Swap>', 'text_end_command', ()),
    ('nextList', 'Void', 'next_list', 'text_next_list', ()),
    ('putString', 'String', 'put_string<Swap>', 'text_string', ()),
    ('putGLSenum', 'Int', 'put_scalar<Swap, GLint>', 'text_gls_enum', ('GLSenum',)),
    ('putGLSimageFlags', 'Bitfield', 'put_scalar<Swap, GLbitfield>', 'text_image_flags', ()),
    ('putGLlong', 'Long', 'put_scalar<Swap, GLlong>', 'text_long', ('GLlong',)),
    ('putGLulongHex', 'Ulong', 'put_scalar<Swap, GLulong>', 'text_ulong_hex', ()),
    ('putGLlongVector', 'Vector', 'put_vector<Swap, GLlong>', 'text_long_vector', ()),
    ('putGLSopcode', 'Int', 'put_scalar<Swap, GLint>', 'text_gls_opcode', ('GLSopcode',)),
    ('putGLattribMask', 'Bitfield', 'put_scalar<Swap, GLbitfield>', 'text_attrib_mask', ('attribMask',)),
    ('putGLbitmap', 'Bitmap', 'put_bitmap<Swap>', 'text_bitmap', ()),
    ('putGLblendFactor', 'Enum', 'put_scalar<Swap, GLenum>', 'text_blend_factor', ('blendFactor',)),
    ('putGLboolean', 'Boolean', 'put_scalar<Swap, GLboolean>', 'text_boolean', ('GLboolean',)),
    ('putGLbooleanVector', 'Vector', 'put_vector<Swap, GLboolean>', 'text_boolean_vector', ()),
    ('putGLbooleanImage', 'Image', 'put_image<Swap, GLboolean>', 'text_boolean_image', ()),
    ('putGLbyte', 'Byte', 'put_scalar<Swap, GLbyte>', 'text_byte', ('GLbyte',)),
    ('putGLbyteVector', 'Vector', 'put_vector<Swap, GLbyte>', 'text_byte_vector', ()),
    ('putGLbyteImage', 'Image', 'put_image<Swap, GLbyte>', 'text_byte_image', ()),
    ('putGLclearMask', 'Bitfield', 'put_scalar<Swap, GLbitfield>', 'text_attrib_mask', ('clearMask',)),
    ('putGLclientAttribMask', 'Bitfield', 'put_scalar<Swap, GLbitfield>', 'text_client_attrib_mask', ('clientAttribMask',)),
    ('putGLdouble', 'Double', 'put_scalar<Swap, GLdouble>', 'text_double', ('GLdouble', 'GLclampd')),
    ('putGLdoubleByEnum', 'DoubleByEnum', 'put_by_enum<Swap, GLdouble>', 'text_double_by_enum', ()),
    ('putGLdoubleVectorByEnum', 'VectorByEnum', 'put_vector_by_enum<Swap, GLdouble>', 'text_double_vector_by_enum', ()),
    ('putGLdoubleMatrix', 'Matrix', 'put_matrix<Swap, GLdouble>', 'text_double_matrix', ()),
    ('putGLdoubleVector', 'Vector', 'put_vector<Swap, GLdouble>', 'text_double_vector', ()),
    ('putGLdoubleImage', 'Image', 'put_image<Swap, GLdouble>', 'text_double_image', ()),
    ('putGLdrawBuffer', 'Enum', 'put_scalar<Swap, GLenum>', 'text_draw_buffer', ('drawBuffer',)),
    ('putGLenum', 'Enum', 'put_scalar<Swap, GLenum>', 'text_enum', ('GLenum', 'begin')),
    ('putGLfloat', 'Float', 'put_scalar<Swap, GLfloat>', 'text_float', ('GLfloat', 'GLclampf')),
    ('putGLfloatByEnum', 'FloatByEnum', 'put_by_enum<Swap, GLfloat>', 'text_float_by_enum', ()),
    ('putGLfloatVectorByEnum', 'VectorByEnum', 'put_vector_by_enum<Swap, GLfloat>', 'text_float_vector_by_enum', ()),
    ('putGLfloatMatrix', 'Matrix', 'put_matrix<Swap, GLfloat>', 'text_float_matrix', ()),
    ('putGLfloatVector', 'Vector', 'put_vector<Swap, GLfloat>', 'text_float_vector', ()),
    ('putGLfloatImage', 'Image', 'put_image<Swap, GLfloat>', 'text_float_image', ()),
    ('putGLint', 'Int', 'put_scalar<Swap, GLint>', 'text_int', ('GLint', 'GLsizei')),
    ('putGLintHeader', 'IntByEnum', 'put_by_enum<Swap, GLint>', 'text_int_header', ()),
    ('putGLintByEnum', 'IntByEnum', 'put_by_enum<Swap, GLint>', 'text_int_by_enum', ()),
    ('putGLintVectorByEnum', 'VectorByEnum', 'put_vector_by_enum<Swap, GLint>', 'text_int_vector_by_enum', ()),
    ('putGLintVector', 'Vector', 'put_vector<Swap, GLint>', 'text_int_vector', ()),
    ('putGLintImage', 'Image', 'put_image<Swap, GLint>', 'text_int_image', ()),
    ('putGLoutArg', 'OutArg', 'put_out_arg<Swap>', 'text_out_arg', ()),
    ('putGLshort', 'Short', 'put_scalar<Swap, GLshort>', 'text_short', ('GLshort',)),
    ('putGLshortVector', 'Vector', 'put_vector<Swap, GLshort>', 'text_short_vector', ()),
    ('putGLshortImage', 'Image', 'put_image<Swap, GLshort>', 'text_short_image', ()),
    ('putGLstencilOp', 'Enum', 'put_scalar<Swap, GLenum>', 'text_stencil_op', ('stencilOp',)),
    ('putGLtextureComponents', 'Int', 'put_scalar<Swap, GLint>', 'text_texture_components', ('textureComponents',)),
    ('putGLubyte', 'Ubyte', 'put_scalar<Swap, GLubyte>', 'text_ubyte', ('GLubyte',)),
    ('putGLubyteVector', 'Vector', 'put_vector<Swap, GLubyte>', 'text_ubyte_vector', ()),
    ('putGLubyteImage', 'Image', 'put_image<Swap, GLubyte>', 'text_ubyte_image', ()),
    ('putGLuint', 'Uint', 'put_scalar<Swap, GLuint>', 'text_uint', ('GLuint',)),
    ('putGLuintHex', 'Uint', 'put_scalar<Swap, GLuint>', 'text_uint_hex', ('hex GLuint',)),
    ('putGLuintVector', 'Vector', 'put_vector<Swap, GLuint>', 'text_uint_vector', ()),
    ('putGLuintImage', 'Image', 'put_image<Swap, GLuint>', 'text_uint_image', ()),
    ('putGLushort', 'Ushort', 'put_scalar<Swap, GLushort>', 'text_ushort', ('GLushort',)),
    ('putGLushortHex', 'Ushort', 'put_scalar<Swap, GLushort>', 'text_ushort_hex', ('hex GLushort',)),
    ('putGLushortVector', 'Vector', 'put_vector<Swap, GLushort>', 'text_ushort_vector', ()),
    ('putGLushortImage', 'Image', 'put_image<Swap, GLushort>', 'text_ushort_image', ()),
    ('putGLvertexData', 'VertexData', 'put_vertex_data<Swap>', 'text_vertex_data', ()),
    ('putGLpointer', 'Pointer', 'put_pointer<Swap>', 'text_pointer', ()),
    ('putGLnothing', 'Nothing', 'put_nothing<Swap>', 'text_nothing', ()),
]

# Scalar slot by C type, stream kind or "hex TYPE".
SLOT_FOR = {key: name for name, _, _, _, keys in SLOTS for key in keys}


def gen_slots_header(header):
    out = [header, '#pragma once\n\n// The fields of GlsWriter, in slot order.\n#define GLS_WRITER_SLOT_FIELDS \\\n']
    out += ['    Gls%sSlot %s; \\\n' % (typ, name) for name, typ, _, _, _ in SLOTS]
    out.append('\n// The binary writer\'s slots; Swap is its byte order.\n#define GLS_BINARY_WRITER_SLOTS(w) \\\n')
    out += ['    (w)->%s = %s; \\\n' % (name, binary) for name, _, binary, _, _ in SLOTS]
    out.append('\n// The text writer\'s slots.\n#define GLS_TEXT_WRITER_SLOTS(w) \\\n')
    out += ['    (w)->%s = %s; \\\n' % (name, text) for name, _, _, text, _ in SLOTS]
    out.append('\n')
    return ''.join(out)
