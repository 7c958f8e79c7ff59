"""The history player's taps: one thunk per GL command, with the command's exact signature. It
packs its arguments and hands them with its opcode to player_tap (tools/player), which counts the
call and tells whether it can run; then the real function runs. Beside them, the after-call hook
of each opcode's installed debug wrapper by name, so that the player reuses the debugger's
counting hooks without naming opcodes itself.
"""
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
    real = '((fn_%s)gls_default_dispatch[OP_%s])(%s)' % (r.name, r.name, r.arg_names())
    if r.returns:
        out.append('    return player_tap(OP_%s, %s) ? %s : 0;\n' % (r.name, args, real))
    else:
        out.append('    if (player_tap(OP_%s, %s))\n        %s;\n' % (r.name, args, real))
    out.append('}\n\n')
    return ''.join(out)


def gen_player_taps(t, header):
    commands = [r for r in t.command_list() if r.family == 'gl']
    out = [header, '#include "gls/decode.h"\n#include "gls/tables.h"\n\n',
           '// The player\'s judgement of a call: counted, and whether it can run.\n'
           'bool player_tap(int opcode, const GlsArgValue *args);\n\n']
    out += [tap(r) for r in commands]
    out.append('extern const GlsFunc player_taps[GLS_OPCODE_COUNT];\n' +
               opcode_rows('const GlsFunc player_taps[GLS_OPCODE_COUNT]', commands, lambda r: '(GlsFunc)tap_%s' % r.name) +
               '\n')
    # The wrapper installed last for an opcode is the one whose hook runs.
    out.append('extern const char *const player_hook_names[GLS_OPCODE_COUNT];\n' +
               opcode_rows('const char *const player_hook_names[GLS_OPCODE_COUNT]', t.wrapper_order(),
                           lambda r: '"%s"' % r.hook if r.hook else 'nullptr'))
    return ''.join(out)
