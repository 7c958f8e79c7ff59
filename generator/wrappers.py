"""The debug wrappers, one for each GL row on an opcode the codec has a command for. Each is a
thin thunk: it packs its arguments and hands them with its row to debug_call
(interception/debug_call.cpp), the one control loop of every debugged call. What varies by row
is named once: the call of the capture function, and the after-call hook.
"""


def args_struct(r):
    fields = ''.join('    %s;\n' % p.decl() for p in r.params)
    return 'struct args_%s {\n%s};\n' % (r.name, fields)


def unpacked(r):
    return ', '.join('a->%s' % p.name for p in r.params)


def wrapper(t, r):
    has_args = bool(r.params)
    out = ['// %s\n' % r.name]
    if has_args:
        out.append(args_struct(r))
    # The call through the capture function: the real call, or the text alone while halted.
    out.append('static void call_%s(const void *%s, void *%s)\n{\n' %
               (r.name, 'packed' if has_args else '', 'result' if r.returns else ''))
    if has_args:
        out.append('    const args_%s *a = (const args_%s *)packed;\n' % (r.name, r.name))
    keep = '*(%s *)result = ' % r.ret if r.returns else ''
    out.append('    %s((fn_%s)gls_default_capture[OP_%s])(%s);\n}\n' % (keep, r.name, r.name, unpacked(r)))
    hook = 'nullptr'
    if r.hook:
        hook = 'after_%s' % r.name
        out.append('static void after_%s(thread_record *record, const void *%s)\n{\n' %
                   (r.name, 'packed' if has_args else ''))
        if has_args:
            out.append('    const args_%s *a = (const args_%s *)packed;\n' % (r.name, r.name))
        out.append('    %s(record%s);\n}\n' % (r.hook, ''.join(', a->%s' % p.name for p in r.params)))
    out.append('static const WrapperRow row_%s = {ROW_%s, OP_%s, call_%s, %s};\n' %
               (r.name, r.name, r.name, r.name, hook))
    out.append('static %s GLS_APIENTRY debug_%s(%s)\n{\n' % (r.ret, r.name, r.decl_params()))
    args = '&args'
    if has_args:
        out.append('    const args_%s args = {%s};\n' % (r.name, r.arg_names()))
    else:
        args = 'nullptr'
    if r.returns:
        out.append('    %s result = 0;\n' % r.ret)
        out.append('    return debug_call(&row_%s, %s, &result) ? result : 0;\n' % (r.name, args))
    else:
        out.append('    debug_call(&row_%s, %s, nullptr);\n' % (r.name, args))
    out.append('}\n\n')
    return ''.join(out)


def installed(t, r):
    """A row is installed on its opcode when the codec has a command there: the vendor rows
    without one get no wrapper at all."""
    return r.opcode in t.commands


def gen_wrappers(t, header):
    out = [header, '#include "interception/wrapper.h"\n#include "gen/hooks.h"\n#include "gls/tables.h"\n\n']
    out += [wrapper(t, r) for r in t.gl if installed(t, r)]
    out.append('const GlsFunc debug_wrappers[GL_CALL_COUNT] = {\n')
    out += ['    %s,\n' % ('(GlsFunc)debug_' + r.name if installed(t, r) else 'nullptr') for r in t.gl]
    out.append('};\n')
    return ''.join(out)


def gen_hooks_header(t, header):
    """A hook shared by several rows takes their data pointers as const void *: the rows differ
    in element type, and the hook reads no element through the pointer's type."""
    rows_of = {}
    for r in t.gl:
        if r.hook:
            rows_of.setdefault(r.hook, []).append(r)
    out = [header, '#pragma once\n\n#include "records/records.h"\n#include "gen/calls.h"\n\n',
           '// After-call hooks: the record and the arguments of the call.\n']
    for hook, rows in rows_of.items():
        shared = len(rows) > 1
        params = []
        for p in rows[0].params:
            params.append('const void *%s' % p.name if shared and p.is_pointer else p.decl())
        for r in rows[1:]:
            if [p.ctype for p in r.params if not p.is_pointer] != [p.ctype for p in rows[0].params if not p.is_pointer]:
                raise ValueError('%s shares %s with %s but not its arguments' % (r.name, hook, rows[0].name))
        out.append('void %s(thread_record *record%s);\n' % (hook, ''.join(', ' + p for p in params)))
    return ''.join(out)
