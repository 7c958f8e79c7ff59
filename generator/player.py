"""The history player's taps: one thunk per GL command, with the command's exact signature. It
packs its arguments and hands them with its opcode to player_tap (tools/player), which counts the
call, tells whether it can run and may point it at areas of its own; then the real function runs
with the arguments as player_tap left them. Beside them, the after-call hook of each opcode's
installed debug wrapper by name, so that the player reuses the debugger's counting hooks without
naming opcodes itself. And GL's own value counts by pname: the codec's size tables with the
glsizes rows of the table added, what the real function reads or writes for each pname.
"""
import decode
from table import opcode_rows


def packed(p, i):
    """The assignment that puts argument i into its GlsArgValue slot."""
    if p.is_pointer:
        return 'a[%d].p = (const void *)%s;' % (i, p.name)
    if p.base in ('GLfloat', 'GLclampf'):
        return 'a[%d].f = %s;' % (i, p.name)
    if p.base in ('GLdouble', 'GLclampd'):
        return 'a[%d].d = %s;' % (i, p.name)
    if p.base in ('GLuint', 'GLenum', 'GLbitfield', 'GLushort', 'GLubyte', 'GLboolean'):
        return 'a[%d].u = %s;' % (i, p.name)
    return 'a[%d].i = %s;' % (i, p.name)


def tap(r):
    out = ['static %s GLS_APIENTRY tap_%s(%s)\n{\n' % (r.ret, r.name, r.decl_params())]
    if r.params:
        out.append('    GlsArgValue a[%d];\n' % len(r.params))
        out += ['    %s\n' % packed(p, i) for i, p in enumerate(r.params)]
    args = 'a' if r.params else 'nullptr'
    real = '((fn_%s)gls_default_dispatch[OP_%s])(%s)' % (r.name, r.name,
                                                          ', '.join(decode.value_of(p, i) for i, p in enumerate(r.params)))
    if r.returns:
        out.append('    return player_tap(OP_%s, %s) ? %s : 0;\n' % (r.name, args, real))
    else:
        out.append('    if (player_tap(OP_%s, %s))\n        %s;\n' % (r.name, args, real))
    out.append('}\n\n')
    return ''.join(out)


def gl_sizes(t, value):
    """GL's counts by pname for each size table: the glsizes rows first, then the codec's rows of
    pnames that those do not name."""
    out = ['\n// What GL reads or writes by pname, per size table: the codec\'s counts and the glsizes rows.\n']
    extra = {}
    for s in t.data.gl_size_tables:
        extra.setdefault(s.name, []).extend(s.counts)
    for s in t.data.size_tables:
        rows, seen = [], set()
        for name, count in extra.get(s.name, []) + s.counts:
            if value(name) not in seen:
                seen.add(value(name))
                rows.append('    {0x%04X, %d, "%s"},\n' % (value(name), count, name))
        out.append('static const gl_pname_row gl_sizes_%s[] = {\n%s    {0, 0, nullptr},\n};\n' % (s.name, ''.join(rows)))
    out.append('const gl_pname_row *const gl_size_tables[GLS_SIZE_TABLE_COUNT] = {\n%s};\n' %
               ''.join('    gl_sizes_%s,\n' % s.name for s in t.data.size_tables))
    return ''.join(out)


def gen_player_taps(t, header, value):
    commands = [r for r in t.command_list() if r.family == 'gl']
    out = [header, '#include "gls/decode.h"\n#include "gls/tables.h"\n#include "tools/player/gl_rules.h"\n\n',
           '// The player\'s judgement of a call: counted, whether it can run, and with which areas.\n'
           'bool player_tap(int opcode, GlsArgValue *args);\n\n']
    out += [tap(r) for r in commands]
    out.append('extern const GlsFunc player_taps[GLS_OPCODE_COUNT];\n' +
               opcode_rows('const GlsFunc player_taps[GLS_OPCODE_COUNT]', commands, lambda r: '(GlsFunc)tap_%s' % r.name) +
               '\n')
    # The wrapper installed last for an opcode is the one whose hook runs.
    out.append('extern const char *const player_hook_names[GLS_OPCODE_COUNT];\n' +
               opcode_rows('const char *const player_hook_names[GLS_OPCODE_COUNT]', t.wrapper_order(),
                           lambda r: '"%s"' % r.hook if r.hook else 'nullptr'))
    out.append(gl_sizes(t, value))
    return ''.join(out)
