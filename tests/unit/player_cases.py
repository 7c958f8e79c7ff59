#!/usr/bin/env python3
"""The player's command line against hostile and odd input: each case's command, what the player
says on the standard error, its exit code and the files it leaves, as one text compared whole with
the expected one. Paths read $DATA (the cases' folder) and $TMP (a fresh folder); bytes outside
printable ASCII read <XX>. With --wine, the player built for Windows runs under WINE_RUN the cases
of files, streams and GL, against the same expected sections, and two of its own.

    player_cases.py [--wine WINE_RUN] PLAYER DATA EXPECTED
"""
import difflib
import os
import shutil
import subprocess
import sys
import tempfile
import threading

arguments = sys.argv[1:]
runner = []
if arguments[0] == '--wine':
    runner, arguments = [os.path.abspath(arguments[1])], arguments[2:]
platform = 'windows' if runner else 'native'
player, data, expected = os.path.abspath(arguments[0]), os.path.abspath(arguments[1]), arguments[2]
temp = tempfile.mkdtemp(prefix='quondale-player-cases-')
out = os.path.join(temp, 'out')


def tree(folder, depth):
    """Streams that each call the next twice, `depth` deep: a few bytes that would play for ages."""
    os.makedirs(folder, exist_ok=True)
    for level in range(depth):
        calls = '' if level == depth - 1 else 'glsCallStream("%d.gls");\n' % (level + 1) * 2
        with open(os.path.join(folder, '%d.gls' % level), 'w') as f:
            f.write('glsBeginGLS(1, 0);\nglClear(GL_COLOR_BUFFER_BIT);\n%sglsEndGLS();\n' % calls)
    return os.path.join(folder, '0.gls')


def feed(path_or_descriptor, source):
    with open(path_or_descriptor, 'wb') as sink, open(source, 'rb') as f:
        sink.write(f.read())


# (title, arguments, how): how may name a file for a pipe on the standard input (or keep that pipe
# open and empty), a file for a FIFO, the folder to run in, the environment's additions, and the
# builds the case is for: 'native' for Unix files and for what only the shared code decides,
# 'windows' for the player built for Windows, both by default.
# A folder name that fits the system but leaves no room for "/frame-0001.png" in 4096 bytes.
long_out = os.path.join(*['d' * 203] * 19 + ['e' * 209])
cases = [
    ('read-backs sized by GL: BGRA, 5_6_5 and one too large', ['play', '$DATA/readbgra.gls'], {}),
    # Without a quarantine the sanitized build unmaps a freed area at once, so that GL's writes
    # into an area it still holds fault.
    ('feedback and selection areas asked for anew in their modes', ['play', '$DATA/feedback.gls'],
     {'env': {'ASAN_OPTIONS': 'detect_leaks=0:quarantine_size_mb=0'}}),
    ('vectors of pnames the codec does not count; the report keeps its frames', ['report', '$DATA/vectors.gls'], {}),
    ('binary images of formats and types the codec does not size', ['play', '$DATA/image_bytes.gls'], {}),
    ('two billion list names', ['play', '$DATA/genlists.gls'], {'on': 'native'}),
    ('eight empty 16384x16384 textures', ['play', '$DATA/textures.gls'], {}),
    ('the memory budget as an option', ['play', '$DATA/textures.gls', '--memory-budget', '100'], {'on': 'native'}),
    ('an evaluator mesh of 10^10 points', ['play', '$DATA/eval.gls'], {'on': 'native'}),
    ('lists calling lists five times, 20 deep', ['play', '$DATA/lists.gls'], {'on': 'native'}),
    ('a tree of streams, against the time budget', ['play', '$TREE', '--time-budget', '1'],
     {'tree': 30, 'on': 'native'}),
    ('a history from a pipe', ['play', '/dev/stdin'], {'stdin': 'frames3.gls', 'on': 'native'}),
    ('a history from a FIFO', ['play', '$TMP/history.fifo'], {'fifo': 'frames3.gls', 'on': 'native'}),
    ('called streams are found beside their caller', ['play', '$DATA/calls_beside.gls'], {'cwd': '$TMP'}),
    ('a cycle of streams', ['play', '$DATA/cycle_a.gls'], {}),
    ('a called stream that is a pipe', ['play', '$DATA/calls_device.gls'], {'stdin': None, 'on': 'native'}),
    ('a called stream that is a device', ['play', '$DATA/calls_nul.gls'], {'on': 'windows'}),
    ('GLS_READ_PREFIX_LIST does not replace the history named', ['play', 'frames3.gls'],
     {'cwd': '$DATA', 'env': {'GLS_READ_PREFIX_LIST': '$DATA/evil/'}}),
    ('names from the stream are escaped', ['play', '$DATA/escape.gls'], {'on': 'native'}),
    ('names from the stream are escaped, and no Windows file name', ['play', '$DATA/escape.gls'], {'on': 'windows'}),
    ('a history that is not there is named alone', ['play', '$DATA/missing.gls'], {}),
    ('an --out folder is made with its parents', ['play', '$DATA/frames3.gls', '--out', '$TMP/out/new/deeper'], {}),
    ('frames from the second to the end', ['play', '$DATA/frames3.gls', '--frames', '2-'], {}),
    ('a range that ends before it starts', ['play', '$DATA/frames3.gls', '--frames', '4-0'], {'on': 'native'}),
    ('frames beyond the end', ['play', '$DATA/frames3.gls', '--frames', '2-9'], {'on': 'native'}),
    ('a folder whose name leaves no room for the files', ['play', '$DATA/frames3.gls', '--out', long_out],
     {'cwd': '$TMP', 'parents': long_out, 'on': 'native'}),
]
cases = [case for case in cases if case[2].get('on', 'both') in ('both', platform)]


def expand(text, tree_path=''):
    return text.replace('$DATA', data).replace('$TMP', temp).replace('$TREE', tree_path)


def shown(text):
    text = text.replace(data, '$DATA').replace(temp, '$TMP').replace(long_out, '$LONG')
    return ''.join(c if c == '\n' or ' ' <= c <= '~' else '<%02X>' % ord(c) for c in text)


report = []
for title, arguments, how in cases:
    shutil.rmtree(out, ignore_errors=True)
    tree_path = tree(os.path.join(temp, 'tree'), how['tree']) if 'tree' in how else ''
    command = [expand(a, tree_path) for a in arguments]
    if '--out' not in command:
        command += ['--out', out]
    env = dict(os.environ)
    env.update({k: expand(v) for k, v in how.get('env', {}).items()})
    cwd = expand(how.get('cwd', temp))
    if 'parents' in how:
        os.makedirs(os.path.join(temp, os.path.dirname(how['parents'])), exist_ok=True)
    stdin, pipe_end, feeder = subprocess.DEVNULL, None, None
    if 'stdin' in how:
        stdin, pipe_end = os.pipe()
        if how['stdin']:
            feeder = threading.Thread(target=feed, args=(pipe_end, os.path.join(data, how['stdin'])), daemon=True)
            feeder.start()
            pipe_end = None
    if 'fifo' in how:
        fifo = os.path.join(temp, 'history.fifo')
        if not os.path.exists(fifo):
            os.mkfifo(fifo)
        feeder = threading.Thread(target=feed, args=(fifo, os.path.join(data, how['fifo'])), daemon=True)
        feeder.start()
    env['WINEDEBUG'] = '-all'
    process = subprocess.Popen(runner + [player] + command, stdin=stdin, stdout=subprocess.PIPE, stderr=subprocess.PIPE, cwd=cwd,
                               env=env)
    try:
        _, errors = process.communicate(timeout=60)
        ending = 'exit %d' % process.returncode
    except subprocess.TimeoutExpired:
        process.kill()
        _, errors = process.communicate()
        ending = 'timed out'
    if stdin != subprocess.DEVNULL:
        os.close(stdin)
    if pipe_end is not None:
        os.close(pipe_end)
    if feeder and 'fifo' in how and feeder.is_alive():
        # A FIFO nobody read: read it here, so that the feeder ends.
        with open(os.path.join(temp, 'history.fifo'), 'rb') as fifo:
            fifo.read()
    if feeder:
        feeder.join(5)
    files = sorted(os.listdir(out)) if os.path.isdir(out) else []
    frames = ''
    if 'report.html' in files:
        page = open(os.path.join(out, 'report.html'), encoding='utf-8').read()
        frames = ' (frames %s)' % ' '.join(part.split('"')[0] for part in page.split('<tr id="frame-')[1:])
    report.append('== %s\n$ %s\n%s%s\nfiles: %s%s\n\n' % (
        title, shown(' '.join(arguments)), shown(errors.decode('latin-1').replace('\r\n', '\n')), ending, ' '.join(files) or '(none)', frames))

text = ''.join(report)
# The sections of the cases run here.
sections = open(expected, encoding='utf-8').read().split('== ')[1:]
want = ''.join('== ' + section for section in sections if section.split('\n')[0] in [case[0] for case in cases])
shutil.rmtree(temp, ignore_errors=True)
if text != want:
    sys.stdout.writelines(difflib.unified_diff(want.splitlines(True), text.splitlines(True), 'expected', 'played'))
    sys.exit(1)
print('%d cases as expected' % len(cases))
