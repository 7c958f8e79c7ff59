"""The reading side's rows, from the same stream kinds as the capture functions.

Each command gets a descriptor: its arguments in stream order as the capture function lays them
out (the binary form's fillers included), each with its element type, how its text is read and
which earlier arguments give its count. One hand-written interpreter (gls/decode.cpp and
gls/text_reader.cpp) walks a descriptor to decode a binary command, to swap one in place, or to
parse a statement; a generated thunk per command then makes the call with the exact signature.
The decode, swap and text rows are one-line functions around the interpreter.
"""
import capture
from table import opcode_rows, OPCODE_COUNT

ELEMENT_NAMES = {
    'GLbyte': 'BYTE', 'GLubyte': 'UBYTE', 'GLboolean': 'BOOLEAN', 'GLshort': 'SHORT',
    'GLushort': 'USHORT', 'GLint': 'INT', 'GLsizei': 'INT', 'GLuint': 'UINT', 'GLfloat': 'FLOAT',
    'GLclampf': 'FLOAT', 'GLdouble': 'DOUBLE', 'GLclampd': 'DOUBLE', 'GLlong': 'LONG',
    'GLenum': 'UINT', 'GLSenum': 'INT', 'GLSopcode': 'INT', 'GLbitfield': 'UINT',
}


def ref(r, text):
    """An earlier argument by its index, or a constant c as -(c + 1)."""
    names = [p.name for p in r.params]
    if text in names:
        return names.index(text)
    return -(int(text) + 1)


def size_table_index(t, name):
    return t.size_table_names().index(name)


def element(p):
    if p.base not in ELEMENT_NAMES:
        raise ValueError('%s: no element type for %s' % (p.name, p.ctype))
    return 'GLS_ELEMENT_' + ELEMENT_NAMES[p.base]


def desc(t, r, item):
    """The initializer of one argument: kind, element, name, table, argument index, refs. The
    item says how it is read (capture.KINDS); a reference by name becomes an argument index."""
    kind, elem, name, table, refs = item.read
    if not isinstance(elem, str):
        elem = element(elem)
    index = r.params.index(item.param) if item.param is not None else -1
    table = size_table_index(t, table) if table else -1
    refs = [x if isinstance(x, int) else ref(r, x) for x in refs] + [0] * (5 - len(refs))
    return '{GLS_ARG_%s, %s, GLS_NAME_%s, %d, %d, {%s}}' % (
        kind, elem, name, table, index, ', '.join(str(x) for x in refs))


def value_of(p, i):
    """The C expression that hands argument i to the call with its exact type."""
    v = 'a[%d]' % i
    if p.is_pointer:
        return '(%s)%s.p' % (p.ctype, v)
    if p.base in ('GLfloat', 'GLclampf'):
        return '%s.f' % v
    if p.base in ('GLdouble', 'GLclampd'):
        return '%s.d' % v
    if p.base == 'GLlong':
        return '%s.i' % v
    if p.base in ('GLuint', 'GLenum', 'GLbitfield', 'GLushort', 'GLubyte', 'GLboolean'):
        return '(%s)%s.u' % (p.ctype, v)
    return '(%s)%s.i' % (p.ctype, v)


def command_items(r):
    prelude, items = capture.items_of(r)
    placed, parity, size = capture.layout(items)
    return placed


def gen_decode(t, header):
    cmds = t.command_list()
    out = [header, '#include "gls/decode.h"\n\n#include "gen/commands.h"\n#include "gls/tables.h"\n\n']
    out.append('// Arguments of each command in stream order, as its capture function writes them.\n')
    for r in cmds:
        rows = [desc(t, r, it) for it in command_items(r)]
        if rows:
            out.append('static const GlsArgDesc args_%s[%d] = {\n' % (r.name, len(rows)))
            out += ['    %s,\n' % x for x in rows]
            out.append('};\n')
    out.append('\n// The calls, each with its command\'s exact signature.\n')
    for r in cmds:
        args = ', '.join(value_of(p, i) for i, p in enumerate(r.params))
        used = 'a' if r.params else ''
        out.append('static void call_%s(GlsFunc f, const GlsArgValue *%s)\n{\n    ((fn_%s)f)(%s);\n}\n' %
                   (r.name, used, r.name, args))
    out.append('\nconst GlsCommandDesc gls_command_descs[GLS_OPCODE_COUNT] = {\n')
    rows = ['{nullptr, 0, 0, nullptr}'] * OPCODE_COUNT
    for r in cmds:
        n = len(command_items(r))
        rows[r.opcode] = '{%s, %d, %d, call_%s}' % ('args_' + r.name if n else 'nullptr', n, len(r.params), r.name)
    out += ['    %s, // %d\n' % (x, i) for i, x in enumerate(rows)]
    out.append('};\n\n')
    out.append('// Decode rows take the stored arguments, swap rows swap them in place first, text rows\n'
               '// parse a statement; each hands its opcode to the one interpreter.\n')
    for r in cmds:
        out.append('static void decode_%s(uint8_t *args, uint32_t size) { gls_decode_command(OP_%s, args, size); }\n' % (r.name, r.name))
        if r.params:
            out.append('static void swap_%s(uint8_t *args, uint32_t size) { gls_swap_command(OP_%s, args, size); }\n' % (r.name, r.name))
        out.append('static void text_%s(GlsReader *reader) { gls_text_command(reader, OP_%s); }\n' % (r.name, r.name))
    for table, prefix in (('gls_decode_table', 'decode_'), ('gls_swap_table', 'swap_'), ('gls_text_table', 'text_')):
        # A command without arguments has nothing to swap: its swap row is its decode row.
        row = lambda r: '(GlsFunc)%s%s' % (prefix if r.params or prefix != 'swap_' else 'decode_', r.name)
        out.append('\n' + opcode_rows('const GlsFunc %s[GLS_OPCODE_COUNT]' % table, cmds, row))
    return ''.join(out)


def gen_recorders(cmds):
    """Test stubs of the default dispatch: each writes its call to the recording context's
    capture, so that what a read executes can be compared as text."""
    out = ['\n// Recording stubs: the call goes to gls_recording_context\'s capture.\n',
           '#include "gls/gls.h"\n#include <cstring>\n\n',
           'GlsContext *gls_recording_context;\n\n',
           'static GlsContext *record_enter()\n{\n'
           '    GlsContext *reading = gls_current();\n'
           '    GlsContext *recording = gls_recording_context;\n'
           '    // Output pointers of a read stand as the numbers the stream gave.\n'
           '    recording->callNesting = reading ? reading->callNesting : 0;\n'
           '    if (reading)\n'
           '        memcpy(recording->outArgPointers, reading->outArgPointers, sizeof recording->outArgPointers);\n'
           '    gls_tls_set(gls_tls_context, recording);\n'
           '    return reading;\n}\n\n']
    for r in cmds:
        ret = 'return 0;\n' if r.returns else ''
        # A question the recording context's own capture asks GL (the unpack state of an image)
        # is answered by nobody: it is not a call of the stream.
        out.append('static %s GLS_APIENTRY record_%s(%s)\n{\n'
                   '    if (gls_recording_context->directCallDepth != 0)\n        return%s;\n'
                   '    GlsContext *reading = record_enter();\n'
                   '    ((fn_%s)gls_forwarders[OP_%s])(%s);\n    gls_tls_set(gls_tls_context, reading);\n    %s}\n\n' %
                   (r.ret, r.name, r.decl_params(), ' 0' if r.returns else '', r.name, r.name, r.arg_names(), ret))
    out.append('extern const GlsFunc gls_recorders[GLS_OPCODE_COUNT];\n' +
               opcode_rows('const GlsFunc gls_recorders[GLS_OPCODE_COUNT]', cmds, lambda r: '(GlsFunc)record_%s' % r.name))
    return ''.join(out)
