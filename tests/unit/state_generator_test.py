#!/usr/bin/env python3
"""Checks of generator/state.py: a state table that breaks the catalogue's layout stops the build
with its line named.

    state_generator_test.py SOURCE_DIR GL_XML
"""
import os
import sys
import tempfile

source_dir, gl_xml = sys.argv[1], sys.argv[2]
sys.path.insert(0, os.path.join(source_dir, 'generator'))
import state  # noqa: E402

table = os.path.join(source_dir, 'state', 'state_rows.tbl')
lines = open(table).read().splitlines()
defined = state.enums.Registry(gl_xml, set()).defined
failures = []
cases = 0


def line_of(text):
    words = text.split()
    return next(i for i, l in enumerate(lines) if l.split()[:len(words)] == words)


def fault_of(changed):
    """The error of reading a changed copy of the table, or None."""
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, 'state_rows.tbl')
        open(path, 'w').write('\n'.join(changed) + '\n')
        try:
            state.read_catalogue(path, defined)
        except ValueError as error:
            return str(error).replace(path, 'TABLE')
    return None


def expect(changed, message):
    global cases
    cases += 1
    fault = fault_of(changed)
    if fault is None or message not in fault:
        failures.append('want %r, got %r' % (message, fault))


cases += 1
if fault_of(lines) is not None:
    failures.append('committed table refused: %s' % fault_of(lines))

# GL_LIGHTING and GL_LIGHT_MODEL_AMBIENT the other way round: out of the list box's order.
swapped = list(lines)
a, b = line_of('glGet GL_LIGHTING'), line_of('glGet GL_LIGHT_MODEL_AMBIENT')
swapped[a], swapped[b] = swapped[b], swapped[a]
expect(swapped, 'TABLE:%d: glGet(GL_LIGHTING) is out of order' % (b + 1))

# A row dropped from the glGet rows moves the clip planes into kind 1's range.
dropped = list(lines)
del dropped[line_of('glGet GL_ZOOM_X')]
expect(dropped, 'row 221 cannot be of kind 2 (glGetClipPlane)')

bad_type = list(lines)
row = line_of('glGet GL_FOG')
bad_type[row] = bad_type[row].replace('real', 'float')
expect(bad_type, 'TABLE:%d: unknown type float' % (row + 1))

# The enumerant table: the rule's first and last names, no mask, and room in master.
names = state.enumerant_table(state.enums.Registry(gl_xml, set()))
cases += 1
if names[0] != ('GL_2D', 0x600) or names[-1] != ('GL_ZOOM_Y', 0xD17) or len(names) != 638:
    failures.append('enumerant table from %s to %s, %d rows' % (names[0], names[-1], len(names)))
cases += 1
if ('GL_COLOR_BUFFER_BIT', 0x4000) in names or ('GL_BGR_EXT', 0x80E0) in names \
        or ('GL_ABGR_EXT', 0x8000) not in names:
    failures.append('enumerant table rule: masks or the wrong extensions')

for failure in failures:
    print('FAIL:', failure)
print('%d passed, %d failed' % (cases - len(failures), len(failures)))
sys.exit(1 if failures else 0)
