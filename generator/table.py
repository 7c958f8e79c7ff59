"""Reading interception/calls.tbl: the rows of functions and codec commands, and the data rows
of the codec (its enumerants, the value counts by pname, the parameters named by value)."""
import re
import sys

OPCODE_COUNT = 496


def opcode_rows(declaration, cmds, value, empty='nullptr'):
    """A C array by opcode: value(r) at each command's opcode, empty at the others."""
    rows = [empty] * OPCODE_COUNT
    for r in cmds:
        rows[r.opcode] = value(r)
    return '%s = {\n%s};\n' % (declaration, ''.join('    %s,\n' % x for x in rows))

# Shapes of the WGL and GDI wrappers: the real call, bracketed by the session's steps.
WRAPPER_FAMILIES = ('plain', 'swap', 'makecurrent', 'procaddress')

# Types passed in 8 bytes on the i686 stack (stdcall decoration counts them).
WIDE_TYPES = {'GLdouble', 'GLclampd', 'GLlong', 'GLulong', 'double'}

FUNCTION_FAMILIES = ('gl', 'scalar', 'gls', 'glu', 'gdi', 'wgl')


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

    def decl(self):
        return self.ctype + self.name if self.ctype.endswith('*') else '%s %s' % (self.ctype, self.name)

    def stack_size(self, arch):
        if arch == 'x86_64':
            return 8
        return 8 if not self.is_pointer and self.base in WIDE_TYPES else 4


class Row:
    def __init__(self, family, name, ret, params, fields):
        self.family = family
        self.name = name
        self.ret = ret
        self.params = params
        self.fields = fields
        self.vendor = None  # the extension of a vendor-suffixed row
        self.opcode = None
        self.export = None
        self.attr = 0
        self.target = None
        self.hook = None
        self.wrapper_family = None
        self.execute = None
        self.arrays = None  # the vertex-array routine under GLS_CAPTURE_VERTEX_ARRAYS
        self.index = None  # row in its catalogue family

    @property
    def returns(self):
        return self.ret != 'void'

    def decl_params(self):
        return ', '.join(p.decl() for p in self.params) or 'void'

    def arg_names(self):
        return ', '.join(p.name for p in self.params)

    def arg_types(self):
        return ', '.join(p.ctype for p in self.params) or 'void'

    def fn_type(self):
        """The named pointer type of the function: fn_NAME, declared in gen/calls.h."""
        return 'fn_' + self.name

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


def parse_function(words, sig):
    m = re.match(r'^(.*?)\s*\((.*)\)$', sig.strip())
    ret = ' '.join(m.group(1).split())
    ptext = m.group(2).strip()
    params = [] if ptext in ('', 'void') else [Param(t) for t in split_top(ptext)]
    fields = [w for w in words[2:] if '=' not in w]
    keys = dict(w.split('=', 1) for w in words[2:] if '=' in w)
    row = Row(words[0], words[1], ret, params, fields)
    row.vendor = keys.get('vendor')
    row.attr = int(keys.get('attr', 0))
    # hook: the row's own after-call hook, hook_NAME; hook=FUNCTION names a shared one.
    row.hook = keys.get('hook') or ('hook_' + row.name if 'hook' in fields else None)
    row.wrapper_family = keys.get('family')
    row.execute = keys.get('exec')
    row.arrays = keys.get('arrays')
    if row.family == 'gl':
        row.opcode = int(fields[0])
        row.export = fields[1]
    elif row.family == 'gls':
        row.opcode = int(fields[0])
    elif row.family == 'scalar':
        row.target = fields[0]
    return row


class SizeTable:
    """Value counts of the parameters of one family, by pname name."""
    def __init__(self, name, default, counts):
        self.name = name
        self.default = default
        self.counts = counts  # [(pname name, count)]


class Data:
    """The data rows: GLS enumerants, size tables, parameters whose values are named."""
    def __init__(self):
        self.gls_enums = []     # [(name, value)]
        self.gls_dict_only = [] # [(name, value)]: names the dictionary holds beside the pages
        self.size_tables = []   # [SizeTable]
        self.gl_size_tables = []  # [SizeTable]: what GL reads or writes beyond the codec's counts
        self.named = {}         # 'boolean' | 'enum' -> [pname names]
        self.constants = []     # GL names the code uses beyond the codec's own set


def parse_table(path):
    rows, data = [], Data()
    for number, line in enumerate(open(path, encoding='utf-8'), 1):
        line = line.split('#', 1)[0].strip()
        if not line:
            continue
        try:
            words = line.split(' : ', 1)[0].split()
            form = words[0]
            if form in FUNCTION_FAMILIES:
                head, sig = line.split(' : ', 1)
                rows.append(parse_function(head.split(), sig))
            elif form == 'glsenum':
                if words[3:] not in ([], ['dict']):
                    raise ValueError('glsenum NAME VALUE [dict]')
                pair = (words[1], int(words[2], 0))
                (data.gls_dict_only if words[3:] else data.gls_enums).append(pair)
            elif form == 'sizes':
                keys = dict(w.split('=', 1) for w in words[2:])
                default = int(keys.pop('default', 0))
                counts = [(k, int(v)) for k, v in keys.items()]
                data.size_tables.append(SizeTable(words[1], default, counts))
            elif form == 'glsizes':
                counts = [(k, int(v)) for k, v in (w.split('=', 1) for w in words[2:])]
                data.gl_size_tables.append(SizeTable(words[1], 0, counts))
            elif form == 'constants':
                data.constants.extend(words[1:])
            elif form == 'named':
                if words[1] not in ('boolean', 'enum'):
                    raise ValueError('named values are boolean or enum, not %s' % words[1])
                data.named.setdefault(words[1], []).extend(words[2:])
            else:
                raise ValueError('unknown row form %s' % form)
        except Exception as error:  # a bad table is a build failure with the line named
            sys.exit('%s:%d: %s' % (path, number, error))
    return rows, data


class Table:
    def __init__(self, rows, data):
        self.data = data
        self.gl = [r for r in rows if r.family == 'gl']
        self.glu = [r for r in rows if r.family == 'glu']
        self.gdi = [r for r in rows if r.family == 'gdi']
        self.wgl = [r for r in rows if r.family == 'wgl']
        self.gls = [r for r in rows if r.family == 'gls']
        self.scalar = [r for r in rows if r.family == 'scalar']
        for family in (self.gl, self.glu, self.gdi, self.wgl):
            for i, r in enumerate(family):
                r.index = i
        self.by_name = {r.name: r for r in self.gl}
        # The command of an opcode is the row that bears the opcode's name: a codec command, or
        # the GL row that is the core spelling of the opcode's rows without vendor suffix.
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
        # (vendor rows name their extension); of a core name and its EXT spelling on one opcode,
        # the core name is the command's.
        by_op = {}
        for r in self.gl:
            if not r.vendor:
                by_op.setdefault(r.opcode, []).append(r)
        names = set()
        for members in by_op.values():
            core = [m for m in members if not m.name.endswith('EXT')]
            names.add((core or members)[0].name)
        return names

    def command_list(self):
        return [self.commands[op] for op in sorted(self.commands)]

    def size_table_names(self):
        return [t.name for t in self.data.size_tables]

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
        for r in self.gl + self.gls:
            if not 0 <= r.opcode < OPCODE_COUNT: problems.append('%s: opcode %d' % (r.name, r.opcode))
        tables = self.size_table_names()
        for s in self.data.gl_size_tables:
            if s.name not in tables:
                problems.append('glsizes %s: no such size table' % s.name)
        for r in self.gl + self.gls:
            for p in r.params:
                for a in p.kind_args:
                    if ':' in a and a.split(':')[1] not in tables:
                        problems.append('%s: no size table %s' % (r.name, a.split(':')[1]))
        if problems:
            sys.exit('calls.tbl: ' + '; '.join(problems))

    def wrapper_order(self):
        first = self.by_name['glGetString']
        return [first] + [r for r in self.gl if r is not first]


def load(path):
    rows, data = parse_table(path)
    return Table(rows, data)
