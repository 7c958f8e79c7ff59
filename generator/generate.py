#!/usr/bin/env python3
"""Generates every repetitive layer of quondale from interception/calls.tbl.

    generate.py TABLE OUTDIR GL_XML

GL_XML is the Khronos registry, the source of the GL enumerant names. Writes into OUTDIR:
    catalogue.cpp       the four catalogue name lists, opcode of call, wrapper of opcode rows
    gls_tables.cpp      per-opcode tables: names, attribute bytes, bind list, null functions,
                        table forwarders, capture functions and wrapper forwarders (capture.py)
    exports.cpp         the exported GL entry points (direct, scalar folding, alias), the WGL
                        exports and the GDI wrappers
    wrappers.cpp        the debug wrappers, one per GL catalogue row; hooks.h their after-call hooks
    gls_names.cpp       GL and GLS enumerant pages and the alias table (enums.py)
    command_samples.cpp a call of every command, for the unit tests (capture.py)
    dispatch_calls.h    typed calls through a context's dispatch rows, for native tests
    state_tables.cpp    the state catalogue (state/state_rows.tbl) and the enumerant names (state.py)
    quondale-x86_64.def, quondale-i686.def, opengl32-x86_64.def, opengl32-i686.def
"""
import os
import re
import sys

import capture
import enums
import state

OPCODE_COUNT = 496

# Shapes of the WGL and GDI wrappers: the real call, bracketed by the session's steps.
WRAPPER_FAMILIES = ('plain', 'swap', 'makecurrent')

# Types passed in 8 bytes on the i686 stack (stdcall decoration counts them).
WIDE_TYPES = {'GLdouble', 'GLclampd', 'GLlong', 'GLulong', 'double'}


class Param:
    def __init__(self, text):
        text = ' '.join(text.split())
        # TYPE NAME[@KIND[(ARGS)]]: the stream kind, where the C type does not say it.
        self.kind, self.kind_args = None, []
        if '@' in text:
            text, kind = text.split('@', 1)
            m = re.match(r'^([A-Za-z][A-Za-z0-9]*)(?:\((.*)\))?$', kind.strip())
            if not m:
                raise ValueError('bad stream kind: %r' % kind)
            self.kind = m.group(1)
            self.kind_args = [a.strip() for a in m.group(2).split(',')] if m.group(2) else []
        m = re.match(r'^(.*?)([A-Za-z_][A-Za-z0-9_]*)$', text.strip())
        if not m:
            raise ValueError('bad parameter: %r' % text)
        self.ctype = m.group(1).strip()
        self.name = m.group(2)

    @property
    def is_pointer(self):
        return '*' in self.ctype

    @property
    def base(self):
        return self.ctype.replace('const', '').replace('*', '').strip()

    def stack_size(self, arch):
        if arch == 'x86_64':
            return 8
        return 8 if not self.is_pointer and self.base in WIDE_TYPES else 4


class Row:
    def __init__(self, family, name, ret, params, fields, comment):
        self.family = family
        self.name = name
        self.ret = ret
        self.params = params
        self.fields = fields
        self.comment = comment
        self.opcode = None
        self.export = None
        self.attr = 0
        self.target = None
        self.hook = False
        self.wrapper_family = None
        self.execute = None

    @property
    def returns(self):
        return self.ret != 'void'

    def decl_params(self):
        return ', '.join('%s %s' % (p.ctype, p.name) if not p.ctype.endswith('*')
                         else '%s%s' % (p.ctype, p.name) for p in self.params) or 'void'

    def arg_names(self):
        return ', '.join(p.name for p in self.params)

    def arg_types(self):
        return ', '.join(p.ctype for p in self.params) or 'void'

    def fn_type(self):
        return '%s (GLS_APIENTRY *)(%s)' % (self.ret, self.arg_types())

    def stack_bytes(self, arch):
        return sum(p.stack_size(arch) for p in self.params)


def split_top(text):
    """Splits a parameter list at the commas outside parentheses."""
    parts, depth, start = [], 0, 0
    for i, c in enumerate(text):
        depth += (c == '(') - (c == ')')
        if c == ',' and depth == 0:
            parts.append(text[start:i])
            start = i + 1
    parts.append(text[start:])
    return parts


def parse_table(path):
    rows = []
    for number, line in enumerate(open(path, encoding='utf-8'), 1):
        comment = ''
        if '#' in line:
            line, comment = line.split('#', 1)
            comment = comment.strip()
        line = line.strip()
        if not line:
            continue
        try:
            head, sig = line.split(' : ', 1)
            m = re.match(r'^(.*?)\s*\((.*)\)$', sig.strip())
            ret = ' '.join(m.group(1).split())
            ptext = m.group(2).strip()
            params = [] if ptext in ('', 'void') else [Param(t) for t in split_top(ptext)]
            words = head.split()
            fields = [w for w in words[2:] if '=' not in w]
            keys = dict(w.split('=', 1) for w in words[2:] if '=' in w)
            row = Row(words[0], words[1], ret, params, fields, comment)
            row.attr = int(keys.get('attr', 0))
            row.hook = 'hook' in fields
            row.wrapper_family = keys.get('family')
            row.execute = keys.get('exec')
            if row.family == 'gl':
                row.opcode = int(fields[0])
                row.export = fields[1]
            elif row.family == 'gls':
                row.opcode = int(fields[0])
            elif row.family == 'scalar':
                row.target = fields[0]
            rows.append(row)
        except Exception as error:  # a bad table is a build failure with the line named
            sys.exit('%s:%d: %s' % (path, number, error))
    return rows


class Table:
    def __init__(self, rows):
        self.gl = [r for r in rows if r.family == 'gl']
        self.glu = [r for r in rows if r.family == 'glu']
        self.gdi = [r for r in rows if r.family == 'gdi']
        self.wgl = [r for r in rows if r.family == 'wgl']
        self.gls = [r for r in rows if r.family == 'gls']
        self.scalar = [r for r in rows if r.family == 'scalar']
        self.by_name = {r.name: r for r in self.gl}
        # The command of an opcode is the row that bears the opcode's name: a codec command, or
        # the GL row that carries the attribute byte or is alone on a command opcode.
        self.commands = {}
        for r in self.gls:
            self.commands[r.opcode] = r
        named = self._command_names()
        for r in self.gl:
            if r.name in named:
                self.commands[r.opcode] = r
        self.check()

    def _command_names(self):
        # The codec has a command for every opcode that holds a row without a vendor suffix
        # (vendor rows name their extension in a comment); of a core name and its EXT spelling
        # on one opcode, the core name is the command's.
        by_op = {}
        for r in self.gl:
            if not r.comment:
                by_op.setdefault(r.opcode, []).append(r)
        names = set()
        for members in by_op.values():
            core = [m for m in members if not m.name.endswith('EXT')]
            names.add((core or members)[0].name)
        return names

    def check(self):
        problems = []
        if len(self.gl) != 460: problems.append('GL rows: %d' % len(self.gl))
        if len(self.glu) != 60: problems.append('GLU rows: %d' % len(self.glu))
        if len(self.gdi) != 5: problems.append('GDI rows: %d' % len(self.gdi))
        if len(self.wgl) != 24: problems.append('WGL rows: %d' % len(self.wgl))
        if len(self.gls) != 30: problems.append('codec commands: %d' % len(self.gls))
        names = [r.name for r in self.gl]
        if names != sorted(names, key=str.lower): problems.append('GL rows out of order')
        gl_cmds = [op for op in self.commands if op >= 48]
        if len(gl_cmds) != 305: problems.append('GL commands: %d' % len(gl_cmds))
        exported = [r for r in self.gl if r.export in ('direct', 'alias')] + self.scalar
        if len(exported) != 336: problems.append('exported GL: %d' % len(exported))
        for s in self.scalar:
            if s.target not in self.by_name: problems.append('scalar target %s' % s.target)
        for r in self.gdi + self.wgl:
            if r.wrapper_family not in WRAPPER_FAMILIES:
                problems.append('%s: wrapper family %s' % (r.name, r.wrapper_family))
        if problems:
            sys.exit('calls.tbl: ' + '; '.join(problems))

    def wrapper_order(self):
        first = self.by_name['glGetString']
        return [first] + [r for r in self.gl if r is not first]


def write(path, text):
    # Only touch files whose text changed, so that a rerun does not rebuild everything.
    if os.path.exists(path) and open(path, encoding='utf-8').read() == text:
        return
    with open(path, 'w', encoding='utf-8') as f:
        f.write(text)


HEADER = '// Generated by generator/generate.py from interception/calls.tbl. Do not edit.\n'


def c_string_list(names):
    return ''.join('    "%s",\n' % n for n in names)


def gen_catalogue(t):
    out = [HEADER, '#include "catalogue.h"\n\n']
    for fam, rows, count in (('gl', t.gl, 'GL_CALL_COUNT'), ('glu', t.glu, 'GLU_CALL_COUNT'),
                             ('gdi', t.gdi, 'GDI_CALL_COUNT'), ('wgl', t.wgl, 'WGL_CALL_COUNT')):
        out.append('const char *const %s_call_names[%s] = {\n%s};\n\n' %
                   (fam, count, c_string_list(r.name for r in rows)))
    out.append('const int32_t opcode_of_call[GL_CALL_COUNT] = {\n')
    out += ['    %d, // %d %s\n' % (r.opcode, i, r.name) for i, r in enumerate(t.gl)]
    out.append('};\n\n')
    order = t.wrapper_order()
    out.append('// Row 0 is glGetString, then the other rows in catalogue order.\n')
    out.append('const CallRowOpcode wrapper_of_opcode_rows[GL_CALL_COUNT] = {\n')
    out += ['    {%d, %d}, // %s\n' % (t.gl.index(r), r.opcode, r.name) for r in order]
    out.append('};\n')
    return ''.join(out)


def null_func(r):
    body = '    return 0;\n' if r.returns else ''
    params = ', '.join(p.ctype for p in r.params) or 'void'
    return 'static %s GLS_APIENTRY null_%s(%s)\n{\n%s}\n' % (r.ret, r.name, params, body)


def gen_gls_tables(t):
    cmds = [t.commands[op] for op in sorted(t.commands)]
    gl_cmds = [r for r in cmds if r.family == 'gl']
    out = [HEADER, '#include "gls.h"\n#include "capture.h"\n#include "commands.h"\n#include "tables.h"\n#include "writer.h"\n\n']
    names = ['nullptr'] * OPCODE_COUNT
    attrs = ['0'] * OPCODE_COUNT
    for r in cmds:
        names[r.opcode] = '"%s"' % r.name
        attrs[r.opcode] = str(r.attr)
    out.append('const char *const gls_opcode_names[GLS_OPCODE_COUNT] = {\n')
    out += ['    %s, // %d\n' % (n, i) for i, n in enumerate(names)]
    out.append('};\n\nconst uint8_t gls_attributes[GLS_OPCODE_COUNT] = {\n')
    out += ['    %s, // %d\n' % (a, i) for i, a in enumerate(attrs)]
    out.append('};\n\nconst int32_t gls_bind_list[] = {\n')
    out += ['    %d, // %s\n' % (r.opcode, r.name) for r in gl_cmds]
    out.append('    0,\n};\n\n')

    out.append('// Null functions: what stands in for a command that the real library lacks.\n')
    out += [null_func(r) for r in cmds]
    out.append('\nconst GlsFunc gls_null_funcs[GLS_OPCODE_COUNT] = {\n')
    rows = ['nullptr'] * OPCODE_COUNT
    for r in cmds:
        rows[r.opcode] = '(GlsFunc)null_%s' % r.name
    out += ['    %s,\n' % x for x in rows]
    out.append('};\n\n')

    out.append('// Table forwarders: the rows of defaultDispatch while a capture is open.\n')
    for r in cmds:
        ret = 'return ' if r.returns else ''
        args = r.arg_names()
        out.append('static %s GLS_APIENTRY forward_%s(%s)\n{\n' % (r.ret, r.name, r.decl_params()))
        out.append('    GlsContext *ctx = gls_current();\n')
        if r.family == 'gl':
            out.append('    if (ctx->directCallDepth != 0) {\n')
            out.append('        int token = enterDirectCall(ctx, %d);\n' % r.opcode)
            if r.returns:
                out.append('        %s result = ((%s)gls_default_dispatch[%d])(%s);\n' % (r.ret, r.fn_type(), r.opcode, args))
            else:
                out.append('        ((%s)gls_default_dispatch[%d])(%s);\n' % (r.fn_type(), r.opcode, args))
            out.append('        leaveDirectCall(ctx, %d, token);\n' % r.opcode)
            out.append('        return%s;\n    }\n' % (' result' if r.returns else ''))
        out.append('    %s((%s)ctx->captureFuncs[%d])(%s);\n}\n\n' % (ret, r.fn_type(), r.opcode, args))
    rows = ['nullptr'] * OPCODE_COUNT
    for r in cmds:
        rows[r.opcode] = '(GlsFunc)forward_%s' % r.name
    out.append('const GlsFunc gls_forwarders[GLS_OPCODE_COUNT] = {\n')
    out += ['    %s,\n' % x for x in rows]
    out.append('};\n\n')

    out.append(capture.gen_capture(cmds))

    out.append('// Rows 16 to 45 execute the codec commands; rows 48 and up are bound at start.\n')
    rows = ['nullptr'] * OPCODE_COUNT
    for r in t.gls:
        rows[r.opcode] = '(GlsFunc)execute_%s' % r.name
    out.append('GlsFunc gls_default_dispatch[GLS_OPCODE_COUNT] = {\n')
    out += ['    %s,\n' % x for x in rows]
    out.append('};\n')
    return ''.join(out)


def gen_commands_header(t):
    out = [HEADER, '#pragma once\n\n#include "gls_types.h"\n\n',
           '// Execute functions of the codec commands.\n']
    for r in t.gls:
        out.append('%s GLS_APIENTRY execute_%s(%s);\n' % (r.ret, r.name, r.decl_params()))
    out.append('\n// Execute steps that keep the client-state shadow (rows marked exec=shadow).\n'
               'struct GlsContext;\n')
    for r in sorted(t.commands.values(), key=lambda r: r.opcode):
        if r.execute == 'shadow':
            out.append('%s shadow_%s(GlsContext *ctx, %s);\n' % (r.ret, r.name, r.decl_params()))
    return ''.join(out)


def direct_body(r):
    ret = 'return ' if r.returns else ''
    return ('    GlsContext *ctx = gls_current();\n'
            '    const GlsFunc *table = ctx ? ctx->defaultDispatch : gls_default_dispatch;\n'
            '    %s((%s)table[%d])(%s);\n' % (ret, r.fn_type(), r.opcode, r.arg_names()))


def gen_exports(t):
    out = [HEADER, '#include "exports.h"\n\n']
    out.append('// Direct and alias entries: one thread-local read and one indirect call.\n')
    for r in t.gl:
        if r.export == 'direct':
            out.append('extern "C" %s GLS_APIENTRY %s(%s)\n{\n%s}\n\n' % (r.ret, r.name, r.decl_params(), direct_body(r)))
        elif r.export == 'alias':
            out.append('static %s GLS_APIENTRY entry_%s(%s)\n{\n%s}\n\n' % (r.ret, r.name, r.decl_params(), direct_body(r)))
            ret = 'return ' if r.returns else ''
            out.append('extern "C" %s GLS_APIENTRY %s(%s)\n{\n    %sentry_%s(%s);\n}\n\n' %
                       (r.ret, r.name, r.decl_params(), ret, r.name, r.arg_names()))
    out.append('// Scalar forms fold into their vector form.\n')
    for s in t.scalar:
        target = t.by_name[s.target]
        elem = s.params[0].ctype
        values = ', '.join(p.name for p in s.params)
        if len(target.params) == 2:  # glRect: two corners
            call = '%s(packed, packed + 2)' % target.name
        else:
            call = '%s(packed)' % target.name
        out.append('extern "C" void GLS_APIENTRY %s(%s)\n{\n    const %s packed[%d] = {%s};\n    %s;\n}\n\n' %
                   (s.name, s.decl_params(), elem, len(s.params), values, call))
    out.append('// WGL exports and the internal GDI wrappers, by family.\n')
    for i, r in enumerate(t.wgl):
        out.append(wgl_wrapper(r, 'wgl', i, 'extern "C" %s WINAPI %s' % (r.ret, r.name)))
    for i, r in enumerate(t.gdi):
        out.append(wgl_wrapper(r, 'gdi', i, 'static %s WINAPI wrap_%s' % (r.ret, r.name)))
    out.append('// Not exported and not reached: kept for the catalogue rows they stand for.\n')
    out.append('const GlsFunc gdi_wrappers[GDI_CALL_COUNT] = {\n')
    out += ['    (GlsFunc)wrap_%s,\n' % r.name for r in t.gdi]
    out.append('};\n')
    return ''.join(out)


def wgl_wrapper(r, family, row, head):
    # plain: note, count, real call. swap: halt point first, then the real call, note, count
    # and the flush of the session's files. makecurrent: plain, then the context attach.
    real = '((%s (WINAPI *)(%s))record->library_table->%s[%d])(%s)' % (
        r.ret, r.arg_types(), family, row, r.arg_names())
    name = '%s_call_names[%d]' % (family, row)
    note = ('    if (record->per_proc->History == 1)\n'
            '        history_note(%s);\n' % name)
    count = '    record->per_proc->%s_call_count[%d] += 1;\n' % (family, row)
    out = ['%s(%s)\n{\n' % (head, r.decl_params()),
           '    thread_record *record = thread_entry();\n']
    if r.wrapper_family == 'swap':
        out.append('    swap_halt_point(record, %s);\n' % name)
        out.append('    %s result = %s;\n' % (r.ret, real))
        out += [note, count]
        out.append('    flush_session_files(record);\n')
        out.append('    return result;\n')
    else:
        out += [note, count]
        if r.wrapper_family == 'makecurrent':
            out.append('    %s result = %s;\n' % (r.ret, real))
            out.append('    context_made_current(record, result, %s);\n' % r.params[-1].name)
            out.append('    return result;\n')
        else:
            out.append('    return %s;\n' % real)
    out.append('}\n\n')
    return ''.join(out)


def gen_wrappers(t):
    """The 460 debug wrappers: one template, varying by row, opcode and arguments."""
    out = [HEADER, '#include "wrapper.h"\n#include "hooks.h"\n#include "tables.h"\n\n']
    for row, r in enumerate(t.gl):
        op = r.opcode
        args = r.arg_names()
        has_command = op in t.commands
        if has_command:
            capture = '((%s)gls_wrapper_forwarders[%d])(%s)' % (r.fn_type(), op, args)
        else:
            capture = '0' if r.returns else ''  # no command: the wrapper is never installed
        keep = 'result = ' if r.returns and capture else ''
        out.append('// %d %s\n' % (row, r.name))
        out.append('static %s GLS_APIENTRY debug_%s(%s)\n{\n' % (r.ret, r.name, r.decl_params()))
        out.append('    WrapperCall call;\n')
        if r.returns:
            out.append('    %s result = 0;\n' % r.ret)
        out.append('    thread_record *record = wrapper_begin(&call, %d);\n' % row)
        out.append('    for (;;) {\n')
        out.append('        while (wrapper_poll(record, &call)) {\n')
        out.append('            if (!call.text_captured) {\n')
        out.append('                wrapper_text_begin(&call, %d);\n' % op)
        if capture:
            out.append('                %s%s;\n' % (keep, capture))
        out.append('                wrapper_text_end(&call, %d);\n' % op)
        out.append('            }\n')
        out.append('            if (!wrapper_wait(record, &call))\n                break;\n')
        out.append('        }\n')
        out.append('        if (call.skip_call) {\n            wrapper_exit(record);\n')
        out.append('            return%s;\n        }\n' % (' 0' if r.returns else ''))
        out.append('        if (call.call_made)\n            break;\n')
        if capture:
            out.append('        %s%s;\n' % (keep, capture))
        out.append('        wrapper_after_call(record, %d);\n' % row)
        if r.hook:
            out.append('        hook_%s(record%s);\n' % (r.name, ', ' + args if args else ''))
        out.append('        call.call_made = 1;\n')
        out.append('        if (!wrapper_check(record, &call))\n            break;\n')
        out.append('    }\n    wrapper_exit(record);\n')
        if r.returns:
            out.append('    return result;\n')
        out.append('}\n\n')
    out.append('const GlsFunc debug_wrappers[GL_CALL_COUNT] = {\n')
    out += ['    (GlsFunc)debug_%s,\n' % r.name for r in t.gl]
    out.append('};\n')
    return ''.join(out)


def gen_hooks_header(t):
    out = [HEADER, '#pragma once\n\n#include "records.h"\n#include "gls_types.h"\n\n',
           '// After-call hooks: the record and the arguments of the call.\n']
    for r in t.gl:
        if r.hook:
            params = ''.join(', %s' % ('%s %s' % (p.ctype, p.name) if not p.ctype.endswith('*') else p.ctype + p.name)
                             for p in r.params)
            out.append('void hook_%s(thread_record *record%s);\n' % (r.name, params))
    return ''.join(out)


def exported(t):
    return ([r for r in t.gl if r.export in ('direct', 'alias')] + t.scalar, t.wgl)


def gen_def(t, arch):
    gl, wgl = exported(t)
    out = ['; ' + HEADER[3:], 'LIBRARY OPENGL32.dll\nEXPORTS\n']
    for r in sorted(gl + wgl, key=lambda r: r.name):
        if arch == 'i686':
            out.append('    %s = %s@%d\n' % (r.name, r.name, r.stack_bytes(arch)))
        else:
            out.append('    %s\n' % r.name)
    return ''.join(out)


def gen_forwarding_def(t):
    gl, wgl = exported(t)
    out = ['; ' + HEADER[3:], 'LIBRARY opengl32.dll\nEXPORTS\n']
    for r in sorted(gl + wgl, key=lambda r: r.name):
        out.append('    %s = quondale.%s\n' % (r.name, r.name))
    return ''.join(out)


def vendor_extensions(t):
    return {r.comment.split()[0] for r in t.gl if r.comment.startswith('GL_')}


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    table = Table(parse_table(sys.argv[1]))
    outdir = sys.argv[2]
    types_path = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'gls', 'gls_types.h')
    try:
        names = enums.gen_enums(sys.argv[3], types_path, vendor_extensions(table), HEADER)
    except (OSError, ValueError) as error:
        sys.exit('gl.xml: %s' % error)
    commands = [table.commands[op] for op in sorted(table.commands)]
    os.makedirs(outdir, exist_ok=True)
    write(os.path.join(outdir, 'catalogue.cpp'), gen_catalogue(table))
    write(os.path.join(outdir, 'commands.h'), gen_commands_header(table))
    write(os.path.join(outdir, 'gls_tables.cpp'), gen_gls_tables(table))
    write(os.path.join(outdir, 'exports.cpp'), gen_exports(table))
    write(os.path.join(outdir, 'wrappers.cpp'), gen_wrappers(table))
    write(os.path.join(outdir, 'hooks.h'), gen_hooks_header(table))
    write(os.path.join(outdir, 'gls_names.cpp'), names)
    write(os.path.join(outdir, 'command_samples.cpp'), capture.gen_samples(commands))
    write(os.path.join(outdir, 'dispatch_calls.h'), capture.gen_dispatch_calls(commands))
    for arch in ('x86_64', 'i686'):
        write(os.path.join(outdir, 'quondale-%s.def' % arch), gen_def(table, arch))
    write(os.path.join(outdir, 'opengl32.def'), gen_forwarding_def(table))
    write(os.path.join(outdir, 'state_tables.cpp'), state.gen_state_tables(sys.argv[3]))


if __name__ == '__main__':
    main()
