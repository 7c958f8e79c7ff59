#!/usr/bin/env python3
"""Checks of generator/generate.py: its outputs say what the table says, and a broken table
stops the build with the line named.

    generator_test.py GENERATOR TABLE GL_XML SNIPPETS
"""
import os
import re
import subprocess
import sys
import tempfile

generator, table, gl_xml, snippets = sys.argv[1:5]
failures = []


def check(condition, message):
    if not condition:
        failures.append(message)


def run(table_path, outdir):
    return subprocess.run([sys.executable, generator, table_path, outdir, gl_xml], capture_output=True, text=True)


with tempfile.TemporaryDirectory() as out:
    result = run(table, out)
    check(result.returncode == 0, 'generator failed: ' + result.stderr)

    def lines(name):
        return open(os.path.join(out, name)).read().splitlines()

    # The GLU wrappers: one shape, with the GL calls beneath the real call indented by one level
    # and the count behind it; none of them exported.
    exports = open(os.path.join(out, 'exports.cpp')).read()
    glu = re.findall(r'GLS_APIENTRY idle_(glu\w+)\(', exports)
    check(len(glu) == 60, '%d GLU wrappers' % len(glu))
    perspective = re.search(r'idle_gluPerspective\(.*?\n\}\n', exports, re.S).group(0)
    steps = ['history_note(glu_call_names[ROW_gluPerspective])', 'call_depth += 1',
             'glu[ROW_gluPerspective])(fovy, aspect, zNear, zFar)', 'call_depth -= 1',
             'glu_call_count[ROW_gluPerspective] += 1']
    at = [perspective.find(step) for step in steps]
    check(-1 not in at and at == sorted(at), 'gluPerspective steps out of order: %s' % at)
    check('return result;' in re.search(r'idle_gluNewTess\(.*?\n\}\n', exports, re.S).group(0),
          'gluNewTess gives its result back')

    x64 = [l.strip() for l in lines('quondale-x86_64.def')[3:] if l.strip()]
    x86 = [l.strip() for l in lines('quondale-i686.def')[3:] if l.strip()]
    check(lines('quondale-x86_64.def')[1] == 'LIBRARY OPENGL32.dll', 'export name')
    check(len(x64) == 360 and len(x86) == 360, 'export count %d/%d' % (len(x64), len(x86)))
    check(not [n for n in x64 if n.endswith('EXT') or n.startswith('glu') or n[0].isupper()],
          'EXT, GLU or GDI name exported')
    check(len([n for n in x64 if n.startswith('wgl')]) == 24, 'WGL exports')
    forwards = [l.strip() for l in lines('opengl32.def')[3:] if l.strip()]
    check(len(forwards) == 360 and all(re.match(r'^(\w+) = quondale\.\1$', l) for l in forwards),
          'forwarding .def')

    # Texts the outputs hold (or, behind "!", must not): stdcall decoration counting doubles as 8
    # bytes, folded and aliased entries, image kinds and the vertex-array column as calls of the
    # routines the table names, the names' extra rows, wrappers and taps.
    for line in open(snippets).read().splitlines():
        name, text = line.split(': ', 1)
        present = not text.startswith('!')
        text = text.lstrip('!').replace('\\n', '\n')
        found = text in open(os.path.join(out, name)).read()
        check(found == present, '%s %s %r' % (name, 'lacks' if present else 'has', text))
    tables = open(os.path.join(out, 'gls_tables.cpp')).read()
    check(tables.count('ctx->captureVertexArrays') == 3, 'vertex-array rows')
    # The reading side lays out each command's arguments as its capture function writes them.
    decode = open(os.path.join(out, 'gls_decode.cpp')).read()
    def args_of(name):
        m = re.search(r'args_%s\[\d+\] = \{\n(.*?)\n\};' % name, decode, re.S)
        return [re.match(r'\s*\{GLS_ARG_(\w+)', l).group(1) for l in m.group(1).splitlines()] if m else None
    check(args_of('glMapGrid2d') == ['SCALAR', 'SCALAR', 'SCALAR', 'SCALAR', 'PAD', 'SCALAR', 'SCALAR'],
          'glMapGrid2d keeps its doubles aligned: %s' % args_of('glMapGrid2d'))
    check(args_of('glDrawPixels') == ['IMAGE_FLAGS', 'SCALAR', 'SCALAR', 'SCALAR', 'SCALAR', 'IMAGE'],
          'glDrawPixels has its image flags first')
    check(args_of('glGetIntegerv') == ['SCALAR', 'OUT'], 'glGetIntegerv writes an output pointer')
    check(len(re.findall(r'^static void decode_gl[A-Z]', decode, re.M)) == 305, 'a decode row for every GL command')
    check('(GlsFunc)decode_glsEndGLS,' in decode.split('gls_swap_table')[1], 'a command without arguments has nothing to swap')
    # The player's taps hand GL the arguments as player_tap left them; GL's counts by pname are the
    # glsizes rows and then the codec's.
    taps = open(os.path.join(out, 'player_taps.cpp')).read()
    aniso = (re.search(r'gl_sizes_texParameter\[\] = \{\n(.*?)\n\};', taps, re.S) or re.match('()', '')).group(1)
    check('{0x84FE, 1, "GL_TEXTURE_MAX_ANISOTROPY_EXT"},\n' in aniso and aniso.endswith('{0, 0, nullptr},') and
          aniso.index('ANISOTROPY') < aniso.index('"GL_TEXTURE_BORDER_COLOR"'), 'GL\'s counts of glTexParameter')

# A table out of catalogue order, or with a bad line, stops generation and names the line.
source = open(table).read().splitlines()
with tempfile.TemporaryDirectory() as out:
    swapped = list(source)
    first = next(i for i, l in enumerate(swapped) if l.startswith('gl glAccum '))
    swapped[first], swapped[first + 1] = swapped[first + 1], swapped[first]
    path = os.path.join(out, 'swapped.tbl')
    open(path, 'w').write('\n'.join(swapped) + '\n')
    result = run(path, out)
    check(result.returncode != 0 and 'out of order' in result.stderr, 'misordered table accepted')

    broken = list(source)
    broken[first] = 'gl glAccum 191 direct void (GLenum op, GLfloat value)'
    path = os.path.join(out, 'broken.tbl')
    open(path, 'w').write('\n'.join(broken) + '\n')
    result = run(path, out)
    check(result.returncode != 0 and 'broken.tbl:%d' % (first + 1) in result.stderr, 'bad line not named: ' + result.stderr)

for failure in failures:
    print('FAIL:', failure)
print('%d passed, %d failed' % (0 if failures else 1, len(failures)))
sys.exit(1 if failures else 0)
