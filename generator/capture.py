"""Capture functions, wrapper forwarders and sample calls, from the stream kinds of calls.tbl.

Each command's capture function is: entry callback, execute, write, exit callback, by the opcode's
capture flags. The write step is built from the parameters: each one becomes one item for a
writer slot, and the generator keeps the binary form's byte offsets so that it can place the
alignment of doubles (padToDouble before the command, putGLnothing between items).
"""
from table import opcode_rows

# C base type: (element name of the slots, byte width).
ELEMENTS = {
    'GLbyte': ('byte', 1), 'GLubyte': ('ubyte', 1), 'GLboolean': ('boolean', 1),
    'GLshort': ('short', 2), 'GLushort': ('ushort', 2),
    'GLint': ('int', 4), 'GLsizei': ('int', 4), 'GLuint': ('uint', 4),
    'GLfloat': ('float', 4), 'GLclampf': ('float', 4),
    'GLdouble': ('double', 8), 'GLclampd': ('double', 8), 'GLlong': ('long', 8),
}
# Scalar slots by C type, where no stream kind is given.
SCALAR_SLOTS = {
    'GLenum': 'putGLenum', 'GLSenum': 'putGLSenum', 'GLSopcode': 'putGLSopcode',
    'GLboolean': 'putGLboolean', 'GLbyte': 'putGLbyte', 'GLubyte': 'putGLubyte',
    'GLshort': 'putGLshort', 'GLushort': 'putGLushort', 'GLint': 'putGLint', 'GLsizei': 'putGLint',
    'GLuint': 'putGLuint', 'GLfloat': 'putGLfloat', 'GLclampf': 'putGLfloat',
    'GLdouble': 'putGLdouble', 'GLclampd': 'putGLdouble', 'GLlong': 'putGLlong',
}
# Stream kinds that name their own scalar slot.
NAMED_SLOTS = {
    'clearMask': 'putGLclearMask', 'attribMask': 'putGLattribMask',
    'clientAttribMask': 'putGLclientAttribMask', 'blendFactor': 'putGLblendFactor',
    'stencilOp': 'putGLstencilOp', 'drawBuffer': 'putGLdrawBuffer',
    'textureComponents': 'putGLtextureComponents', 'begin': 'putGLenum',
}


class Item:
    """One thing written: code, payload bytes (static and a run-time term), alignment; and for
    the reading side the parameter it carries (None for a filler or the image flags)."""
    def __init__(self, code, size=0, dynamic=None, align=4, param=None, pad=0):
        self.code = code
        self.size = size
        self.dynamic = dynamic
        self.align = align
        self.param = param
        self.pad = pad


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


def items_of(r):
    """The prelude lines and the items of a command's write step."""
    prelude, items, overrides = [], [], {}
    out_index = 0
    if any(p.kind in ('image', 'bitmap') for p in r.params):
        items.append(Item('writer->putGLSimageFlags(writer, GLS_NONE);\nwriter->nextList(writer);', 4))
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
        k, a, n = p.kind, p.kind_args, p.name
        if n in overrides:
            items.append(Item('writer->putGLint(writer, %s);' % overrides[n], 4, param=p))
        elif k is None and p.is_pointer:
            if 'const' in p.ctype:
                raise ValueError('%s: an input pointer needs a stream kind' % n)
            items.append(Item('writer->putGLoutArg(writer, %d, %s);' % (out_index, n), 8, align=8, param=p))
            out_index += 1
        elif k is None or k in NAMED_SLOTS:
            slot = NAMED_SLOTS.get(k) or SCALAR_SLOTS.get(p.base)
            if not slot:
                raise ValueError('%s: %s needs a stream kind' % (n, p.ctype))
            width = ELEMENTS.get(p.base, ('', 4))[1]
            items.append(Item('writer->%s(writer, %s);' % (slot, n), width, align=width, param=p))
        elif k == 'hex':
            slot = {'GLuint': 'putGLuintHex', 'GLushort': 'putGLushortHex'}[p.base]
            width = ELEMENTS[p.base][1]
            items.append(Item('writer->%s(writer, %s);' % (slot, n), width, align=width, param=p))
        elif k == 'byEnum' and not p.is_pointer:
            elem, width = element(p)
            items.append(Item('writer->putGL%sByEnum(writer, %s, %s);' % (elem, a[0], n), width, align=width, param=p))
        elif k in ('vec', 'byEnum'):
            elem, width = element(p)
            count = count_expr(a[0], prelude, 'count_' + n)
            if k == 'vec':
                code = 'writer->putGL%sVector(writer, %s, %s);' % (elem, count, n)
            else:
                code = 'writer->putGL%sVectorByEnum(writer, %s, %s, %s);' % (elem, a[0].split(':')[0], count, n)
            if count.isdigit():
                items.append(Item(code, width * int(count), align=width, param=p))
            else:
                items.append(Item(code, 0, '%d * (uint64_t)%s' % (width, count), align=width, param=p))
        elif k == 'matrix':
            elem, width = element(p)
            items.append(Item('writer->putGL%sMatrix(writer, %s);' % (elem, n), 16 * width, align=width, param=p))
        elif k == 'string':
            prelude.append('GLuint size_%s = gls_string_field_size(ctx, %s);' % (n, n))
            items.append(Item('writer->putString(writer, size_%s, %s);' % (n, n), 0, 'size_' + n, param=p))
        elif k == 'pointer':
            items.append(Item('writer->putGLpointer(writer, %s);' % n, 8, align=8, param=p))
        elif k == 'header':
            items.append(Item('writer->putGLintHeader(writer, %s, %s);' % (a[0], n), 4, param=p))
        elif k == 'callLists':
            prelude.append('uint64_t bytes_%s = gls_call_lists_bytes(%s, %s);' % (n, a[1], a[0]))
            items.append(Item('gls_put_call_lists(writer, %s, %s, %s);' % (a[1], a[0], n), 0, 'bytes_' + n, 1, param=p))
        elif k == 'indices':
            prelude.append('uint64_t bytes_%s = gls_draw_elements_bytes(%s, %s, %s);' % (n, a[1], a[0], n))
            items.append(Item('gls_put_draw_elements(writer, %s, %s, %s);' % (a[1], a[0], n), 0, 'bytes_' + n, 1, param=p))
        elif k in ('map1', 'map2'):
            elem, width = element(p)
            items.append(Item('gls_put_map_points(writer, &map, %d, %s);' % (width, n), 0, '%d * map.values' % width, align=width, param=p))
        elif k == 'vertexData':
            prelude.append('uint64_t bytes_%s = gls_vertex_data_bytes(%s, %s);' % (n, a[0], a[1]))
            items.append(Item('writer->putGLvertexData(writer, %s, (GLuint)bytes_%s, %s);' % (a[0], n, n), 0, 'bytes_' + n, 1, param=p))
        elif k in ('image', 'bitmap'):
            # The layout is taken before the command begins: the unpack state decides the size.
            if k == 'bitmap':
                fmt, typ, width, height, depth = 'GL_COLOR_INDEX', 'GL_BITMAP', a[0], a[1], None
            else:
                fmt, typ, width, height = a[:4]
                depth = a[4] if len(a) > 4 else None
            prelude.append('GlsPixelLayout pixels_%s = gls_pixel_layout(ctx, %s, %s, %s, %s, %s, %s, %s);' %
                           (n, fmt, typ, width, height, depth or '1', 'true' if depth else 'false', n))
            items.append(Item('gls_put_pixel_data(writer, &pixels_%s);' % n, 0, 'pixels_%s.bytes' % n, 1, param=p))
        else:
            raise ValueError('%s: unknown stream kind %s' % (n, k))
    return prelude, items


def layout(items):
    """Places the binary form's padding: putGLnothing before an item that needs a word or a
    double boundary, and the parity of padToDouble. Returns (items, parity expr, size expr)."""
    placed, static, dynamic, parity, first_double = [], 0, [], None, None
    for it in items:
        if it.align in (2, 4) and static % it.align and not dynamic:
            pad = it.align - static % it.align
            placed.append(Item('writer->putGLnothing(writer, %d);' % pad, pad, pad=pad))
            static += pad
        if it.align == 8:
            if static % 4 and not dynamic:
                pad = 4 - static % 4
                placed.append(Item('writer->putGLnothing(writer, %d);' % pad, pad, pad=pad))
                static += pad
            if first_double is None:
                first_double = static
                terms = [str(static)] + dynamic
                parity = '0' if not dynamic and static % 8 == 0 else \
                    '1' if not dynamic else '((%s) / 4) & 1' % ' + '.join(terms)
            elif not dynamic and (static - first_double) % 8:
                placed.append(Item('writer->putGLnothing(writer, 4);', 4, pad=4))
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


def wrapper_forwarder(r):
    ret = 'return ' if r.returns else ''
    nothing = '        return 0;\n' if r.returns else '        return;\n'
    # With no capture open it does nothing: the wrappers call it on every call.
    return ('static %s GLS_APIENTRY wrap_%s(%s)\n{\n'
            '    GlsContext *ctx = gls_current();\n'
            '    if (!ctx || ctx->captureNesting <= 0)\n%s'
            '    %scapture_%s(%s);\n}\n\n' % (r.ret, r.name, r.decl_params(), nothing, ret, r.name, r.arg_names()))


def table(name, cmds, prefix):
    return opcode_rows('const GlsFunc %s[GLS_OPCODE_COUNT]' % name, cmds, lambda r: '(GlsFunc)%s%s' % (prefix, r.name)) + '\n'


def gen_capture(cmds):
    out = ['// Capture functions: callbacks, execute and write by the opcode\'s capture flags.\n']
    out += [capture_function(r) for r in cmds]
    out.append(table('gls_default_capture', cmds, 'capture_'))
    out.append('// Wrapper forwarders: the debug wrappers\' way to the capture functions, past the\n'
               '// captureFuncs rows in which they are installed themselves.\n')
    out += [wrapper_forwarder(r) for r in cmds]
    out.append(table('gls_wrapper_forwarders', cmds, 'wrap_'))
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
