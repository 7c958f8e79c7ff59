"""Capture functions and sample calls, from the stream kinds of calls.tbl.

Each command's capture function is: entry callback, execute, write, exit callback, by the opcode's
capture flags. The write step is built from the parameters: each one becomes one item for a
writer slot, and the generator keeps the binary form's byte offsets so that it can place the
alignment of doubles (padToDouble before the command, putGLnothing between items).
"""
from table import opcode_rows
from slots import SLOT_FOR

# C base type: (element name of the slots, byte width).
ELEMENTS = {
    'GLbyte': ('byte', 1), 'GLubyte': ('ubyte', 1), 'GLboolean': ('boolean', 1),
    'GLshort': ('short', 2), 'GLushort': ('ushort', 2),
    'GLint': ('int', 4), 'GLsizei': ('int', 4), 'GLuint': ('uint', 4),
    'GLfloat': ('float', 4), 'GLclampf': ('float', 4),
    'GLdouble': ('double', 8), 'GLclampd': ('double', 8), 'GLlong': ('long', 8),
}
class Item:
    """One thing written: code, payload bytes (static and a run-time term), alignment; and for
    the reading side the parameter it carries (None for a filler or the image flags) and how it
    is read back: (argument kind, element, how its text names it, size table, references), the
    references being earlier parameters by name or constants."""
    def __init__(self, code, size=0, dynamic=None, align=4, param=None, pad=0, read=None):
        self.code = code
        self.size = size
        self.dynamic = dynamic
        self.align = align
        self.param = param
        self.pad = pad
        self.read = read


def element(p):
    base = p.base
    if base not in ELEMENTS:
        raise ValueError('%s: no element type for %s' % (p.name, p.ctype))
    return ELEMENTS[base]


def count_expr(rule, prelude, local):
    """A vector's element count: a number, a parameter, or PNAME:TABLE."""
    if rule.isdigit():
        return rule
    if ':' in rule:
        pname, table = rule.split(':')
        table = 'GLS_SIZES_' + ''.join('_' + c if c.isupper() else c.upper() for c in table)
        prelude.append('GLuint %s = gls_pname_count(%s, %s);' % (local, table, pname))
    else:
        prelude.append('GLuint %s = %s > 0 ? (GLuint)%s : 0;' % (local, rule, rule))
    return local


# How a scalar's text names its value, by stream kind or C type (else as a number).
TEXT_NAMES = {'clearMask': 'ATTRIB_MASK', 'attribMask': 'ATTRIB_MASK',
              'clientAttribMask': 'CLIENT_ATTRIB_MASK', 'blendFactor': 'ENUM', 'stencilOp': 'ENUM',
              'drawBuffer': 'ENUM', 'begin': 'ENUM',
              'GLenum': 'ENUM', 'GLSenum': 'GLS_ENUM', 'GLSopcode': 'OPCODE'}


def scalar(p, slot, text_name=None):
    width = ELEMENTS.get(p.base, ('', 4))[1]
    return Item('writer->%s(writer, %s);' % (slot, p.name), width, align=width, param=p,
                read=('SCALAR', p, text_name or TEXT_NAMES.get(p.base, 'NUMBER'), None, []))


# The stream kinds, each once: its write step and how it is read, from (row, parameter, kind
# arguments, the command's prelude, its state).
def kind_plain(r, p, a, prelude, state):
    if p.is_pointer:
        if 'const' in p.ctype:
            raise ValueError('%s: an input pointer needs a stream kind' % p.name)
        index = state['outs']
        state['outs'] += 1
        return Item('writer->putGLoutArg(writer, %d, %s);' % (index, p.name), 8, align=8, param=p,
                    read=('OUT', 'GLS_ELEMENT_LONG', 'NUMBER', None, [index]))
    slot = SLOT_FOR.get(p.base)
    if not slot:
        raise ValueError('%s: %s needs a stream kind' % (p.name, p.ctype))
    return scalar(p, slot)


def kind_named_slot(r, p, a, prelude, state):
    return scalar(p, SLOT_FOR[p.kind], TEXT_NAMES.get(p.kind))


def kind_hex(r, p, a, prelude, state):
    return scalar(p, SLOT_FOR['hex ' + p.base])


def kind_header(r, p, a, prelude, state):
    return Item('writer->putGLintHeader(writer, %s, %s);' % (a[0], p.name), 4, param=p,
                read=('SCALAR', p, TEXT_NAMES.get(p.base, 'NUMBER'), None, []))


def kind_vector(r, p, a, prelude, state):
    elem, width = element(p)
    if p.kind == 'byEnum' and not p.is_pointer:
        return Item('writer->putGL%sByEnum(writer, %s, %s);' % (elem, a[0], p.name), width, align=width,
                    param=p, read=('SCALAR', p, TEXT_NAMES.get(p.base, 'NUMBER'), None, []))
    count = count_expr(a[0], prelude, 'count_' + p.name)
    if p.kind == 'vec':
        code = 'writer->putGL%sVector(writer, %s, %s);' % (elem, count, p.name)
    else:
        code = 'writer->putGL%sVectorByEnum(writer, %s, %s, %s);' % (elem, a[0].split(':')[0], count, p.name)
    table, refs = (a[0].split(':')[1], [a[0].split(':')[0]]) if ':' in a[0] else (None, [a[0]])
    read = ('VECTOR', p, 'NUMBER', table, refs)
    if count.isdigit():
        return Item(code, width * int(count), align=width, param=p, read=read)
    return Item(code, 0, '%d * (uint64_t)%s' % (width, count), align=width, param=p, read=read)


def kind_matrix(r, p, a, prelude, state):
    elem, width = element(p)
    return Item('writer->putGL%sMatrix(writer, %s);' % (elem, p.name), 16 * width, align=width, param=p,
                read=('MATRIX', p, 'NUMBER', None, []))


def kind_string(r, p, a, prelude, state):
    n = p.name
    prelude.append('GLuint size_%s = gls_string_field_size(ctx, %s);' % (n, n))
    return Item('writer->putString(writer, size_%s, %s);' % (n, n), 0, 'size_' + n, param=p,
                read=('STRING', 'GLS_ELEMENT_UBYTE', 'NUMBER', None, []))


def kind_pointer(r, p, a, prelude, state):
    # The out-argument slot 4 stands for pointers.
    return Item('writer->putGLpointer(writer, %s);' % p.name, 8, align=8, param=p,
                read=('POINTER', 'GLS_ELEMENT_LONG', 'NUMBER', None, [4]))


def kind_bytes(prepare, put, read_kind):
    """Kinds written as counted bytes by a helper of the codec."""
    def kind(r, p, a, prelude, state):
        n = p.name
        prelude.append('uint64_t bytes_%s = %s;' % (n, prepare(n, a)))
        return Item(put(n, a), 0, 'bytes_' + n, 1, param=p,
                    read=(read_kind, 'GLS_ELEMENT_UBYTE', 'NUMBER', None, list(a)))
    return kind


def kind_map(r, p, a, prelude, state):
    elem, width = element(p)
    read = ('MAP1' if p.kind == 'map1' else 'MAP2', p, 'NUMBER', None, list(a))
    return Item('gls_put_map_points(writer, &map, %d, %s);' % (width, p.name), 0, '%d * map.values' % width,
                align=width, param=p, read=read)


def kind_image(r, p, a, prelude, state):
    # The layout is taken before the command begins: the unpack state decides the size.
    if p.kind == 'bitmap':
        fmt, typ, width, height, depth = 'GL_COLOR_INDEX', 'GL_BITMAP', a[0], a[1], None
        refs = list(a)
    else:
        fmt, typ, width, height = a[:4]
        depth = a[4] if len(a) > 4 else None
        refs = list(a) + ['1'] * (5 - len(a))  # a flat image is one deep
    n = p.name
    prelude.append('GlsPixelLayout pixels_%s = gls_pixel_layout(ctx, %s, %s, %s, %s, %s, %s, %s);' %
                   (n, fmt, typ, width, height, depth or '1', 'true' if depth else 'false', n))
    return Item('gls_put_pixel_data(writer, &pixels_%s);' % n, 0, 'pixels_%s.bytes' % n, 1, param=p,
                read=(p.kind.upper(), 'GLS_ELEMENT_UBYTE', 'NUMBER', None, refs))


KINDS = {
    None: kind_plain,
    'hex': kind_hex,
    'header': kind_header,
    'vec': kind_vector,
    'byEnum': kind_vector,
    'matrix': kind_matrix,
    'string': kind_string,
    'pointer': kind_pointer,
    'callLists': kind_bytes(lambda n, a: 'gls_call_lists_bytes(%s, %s)' % (a[1], a[0]),
                            lambda n, a: 'gls_put_call_lists(writer, %s, %s, %s);' % (a[1], a[0], n), 'CALL_LISTS'),
    'indices': kind_bytes(lambda n, a: 'gls_draw_elements_bytes(%s, %s, %s)' % (a[1], a[0], n),
                          lambda n, a: 'gls_put_draw_elements(writer, %s, %s, %s);' % (a[1], a[0], n), 'INDICES'),
    'vertexData': kind_bytes(lambda n, a: 'gls_vertex_data_bytes(%s, %s)' % (a[0], a[1]),
                             lambda n, a: 'writer->putGLvertexData(writer, %s, (GLuint)bytes_%s, %s);' % (a[0], n, n),
                             'VERTEX_DATA'),
    'map1': kind_map,
    'map2': kind_map,
    'image': kind_image,
    'bitmap': kind_image,
}
KINDS.update({k: kind_named_slot for k in SLOT_FOR if k[0].islower() and ' ' not in k})


def items_of(r):
    """The prelude lines and the items of a command's write step."""
    prelude, items, overrides = [], [], {}
    state = {'outs': 0}
    if any(p.kind in ('image', 'bitmap') for p in r.params):
        items.append(Item('writer->putGLSimageFlags(writer, GLS_NONE);\nwriter->nextList(writer);', 4,
                          read=('IMAGE_FLAGS', 'GLS_ELEMENT_UINT', 'NUMBER', None, [0])))
    for p in r.params:
        if p.kind == 'map1':
            target, stride, order = p.kind_args
            prelude.append('GlsMapLayout map = gls_map1_layout(%s, %s, %s);' % (target, stride, order))
            overrides[stride] = 'map.ustride'
        elif p.kind == 'map2':
            target, ustride, uorder, vstride, vorder = p.kind_args
            prelude.append('GlsMapLayout map = gls_map2_layout(%s, %s, %s, %s, %s);' % (target, ustride, uorder, vstride, vorder))
            overrides[ustride] = 'map.ustride'
            overrides[vstride] = 'map.vstride'
    for p in r.params:
        if p.name in overrides:
            items.append(Item('writer->putGLint(writer, %s);' % overrides[p.name], 4, param=p,
                              read=('SCALAR', 'GLS_ELEMENT_INT', 'NUMBER', None, [])))
        elif p.kind in KINDS:
            items.append(KINDS[p.kind](r, p, p.kind_args, prelude, state))
        else:
            raise ValueError('%s: unknown stream kind %s' % (p.name, p.kind))
    return prelude, items


def filler(pad):
    return Item('writer->putGLnothing(writer, %d);' % pad, pad, pad=pad,
                read=('PAD', 'GLS_ELEMENT_UBYTE', 'NUMBER', None, [pad]))


def layout(items):
    """Places the binary form's padding: putGLnothing before an item that needs a word or a
    double boundary, and the parity of padToDouble. Returns (items, parity expr, size expr)."""
    placed, static, dynamic, parity, first_double = [], 0, [], None, None
    for it in items:
        if it.align in (2, 4) and static % it.align and not dynamic:
            pad = it.align - static % it.align
            placed.append(filler(pad))
            static += pad
        if it.align == 8:
            if static % 4 and not dynamic:
                pad = 4 - static % 4
                placed.append(filler(pad))
                static += pad
            if first_double is None:
                first_double = static
                terms = [str(static)] + dynamic
                parity = '0' if not dynamic and static % 8 == 0 else \
                    '1' if not dynamic else '((%s) / 4) & 1' % ' + '.join(terms)
            elif not dynamic and (static - first_double) % 8:
                placed.append(filler(4))
                static += 4
        placed.append(it)
        static += it.size
        if it.dynamic:
            dynamic.append(it.dynamic)
    # Sizes are summed in 64 bits: a count near 2^32 must not wrap to a small size.
    size = '(uint64_t)' + ' + '.join([str(static)] + dynamic) if dynamic else str(static)
    return placed, parity, size


def indent(code, depth):
    pad = '    ' * depth
    return ''.join(pad + line + '\n' for line in code.split('\n'))


def write_step(r):
    prelude, items = items_of(r)
    items, parity, size = layout(items)
    body = []
    body += prelude
    if parity is not None:
        body.append('writer->padToDouble(writer, %s);' % parity)
    body.append('if (writer->beginCommand(writer, OP_%s, %s)) {' % (r.name, size))
    for it in items:
        body.append(indent(it.code, 1).rstrip('\n'))
    body.append('    writer->endCommand(writer);')
    body.append('}')
    text = '\n'.join(body)
    begin = [p for p in r.params if p.kind == 'begin']
    if begin:
        # In a context stream a glBegin of a known mode costs one word: opcode mode + 1.
        m = begin[0].name
        text = ('if (writer->contextStream && %s <= 9) {\n'
                '    if (writer->beginCommand(writer, (GLSopcode)%s + 1, 0))\n'
                '        writer->endCommand(writer);\n'
                '} else {\n%s}' % (m, m, indent(text, 1)))
    return text


def capture_function(r):
    op = 'OP_' + r.name
    args = r.arg_names()
    out = ['static %s GLS_APIENTRY capture_%s(%s)\n{\n' % (r.ret, r.name, r.decl_params()),
           '    GlsContext *ctx = gls_current();\n']
    if r.arrays:
        # The arrays' content stands for the call, whatever the call's own flags say.
        out.append('    if (ctx->captureVertexArrays && %s(ctx, %s))\n        return;\n' % (r.arrays, args))
    out.append('    unsigned flags = ctx->captureFlags[%s];\n' % op)
    if r.returns:
        out.append('    %s result = 0;\n' % r.ret)
    out.append('    if ((flags & GLS_CAPTURE_CALLBACK_BIT) && ctx->captureEntryFunc) {\n'
               '        ctx->captureEntryFunc(%s);\n        flags = ctx->captureFlags[%s];\n    }\n' % (op, op))
    out.append('    if (flags & GLS_CAPTURE_EXECUTE_BIT) {\n')
    assign = 'result = ' if r.returns else ''
    if r.execute == 'shadow':
        out.append('        %sshadow_%s(ctx%s);\n' % (assign, r.name, ', ' + args if args else ''))
    elif r.family == 'gl':
        out.append('        int token = enterDirectCall(ctx, %s);\n' % op)
        out.append('        %s((%s)gls_default_dispatch[%s])(%s);\n' % (assign, r.fn_type(), op, args))
        out.append('        leaveDirectCall(ctx, %s, token);\n' % op)
    else:
        out.append('        %sexecute_%s(%s);\n' % (assign, r.name, args))
    out.append('    }\n')
    out.append('    GlsWriter *writer = ctx->currentWriter;\n')
    out.append('    if ((flags & GLS_CAPTURE_WRITE_BIT) && writer) {\n')
    out.append(indent(write_step(r), 2))
    out.append('    }\n')
    out.append('    if ((flags & GLS_CAPTURE_CALLBACK_BIT) && ctx->captureExitFunc)\n')
    out.append('        ctx->captureExitFunc(%s);\n' % op)
    if r.returns:
        out.append('    return result;\n')
    out.append('}\n\n')
    return ''.join(out)


def table(name, cmds, prefix):
    return opcode_rows('const GlsFunc %s[GLS_OPCODE_COUNT]' % name, cmds, lambda r: '(GlsFunc)%s%s' % (prefix, r.name)) + '\n'


def gen_capture(cmds):
    out = ['// Capture functions: callbacks, execute and write by the opcode\'s capture flags.\n']
    out += [capture_function(r) for r in cmds]
    out.append(table('gls_default_capture', cmds, 'capture_'))
    return ''.join(out)


SAMPLE_VALUES = {'GLfloat': '0.5f', 'GLclampf': '0.5f', 'GLdouble': '0.25', 'GLclampd': '0.25'}


def sample_arg(p):
    if p.kind == 'string':
        return '(const GLubyte *)"tag"'
    if p.is_pointer:
        return '(%s)sample_data' % p.ctype
    return SAMPLE_VALUES.get(p.base, '(%s)2' % p.ctype)


def gen_samples(cmds, header):
    """A call of every command with plain arguments, through the table forwarders: what the
    unit tests use to see that each command writes a statement of its own name."""
    out = [header, '#include "gls/tables.h"\n\n',
           'alignas(16) static unsigned char sample_data[4096];\n\n',
           'void gls_call_sample(int opcode)\n{\n    switch (opcode) {\n']
    for r in cmds:
        out.append('    case OP_%s:\n        ((fn_%s)gls_forwarders[OP_%s])(%s);\n        break;\n' %
                   (r.name, r.name, r.name, ', '.join(sample_arg(p) for p in r.params)))
    out.append('    default:\n        break;\n    }\n}\n')
    return ''.join(out)


def gen_dispatch_calls(cmds, header):
    """Typed calls through the current context's defaultDispatch rows, as the exported entry
    points make them: what native tests call in place of the GL entry points."""
    out = [header, '#pragma once\n\n#include "gls/gls_context.h"\n#include "gls/tables.h"\n\n']
    for r in cmds:
        ret = 'return ' if r.returns else ''
        out.append('inline %s dispatch_%s(%s)\n{\n    %s((fn_%s)gls_current()->defaultDispatch[OP_%s])(%s);\n}\n\n' %
                   (r.ret, r.name, r.decl_params(), ret, r.name, r.name, r.arg_names()))
    return ''.join(out)
