"""Name tables of the codec: GL enumerant pages from the Khronos registry, GLS enumerant pages
from the table's glsenum rows, and the alias table of the names that the pages cannot hold.

GL names come from what OpenGL 1.0 and 1.1, the 1.2 imaging subset, the codec's extension list
and the extensions of the table's vendor rows require. A value v has page v >> 8, row v & 255;
each value keeps one name in the pages (core before extension, then registry order) and every
other name goes to the alias table, as do names of values above the pages. Bitmask names stay
out of the pages: the mask tables name them.
"""
import xml.etree.ElementTree as ET

GL_PAGES = 133
GLS_PAGES = 33
CODEC_EXTENSIONS = [
    'GL_EXT_abgr', 'GL_EXT_blend_color', 'GL_EXT_blend_logic_op', 'GL_EXT_blend_minmax',
    'GL_EXT_blend_subtract', 'GL_EXT_cmyka', 'GL_EXT_convolution', 'GL_EXT_copy_texture',
    'GL_EXT_histogram', 'GL_EXT_packed_pixels', 'GL_EXT_polygon_offset', 'GL_EXT_rescale_normal',
    'GL_EXT_subtexture', 'GL_EXT_texture', 'GL_EXT_texture3D', 'GL_EXT_texture_object',
    'GL_EXT_vertex_array',
]


class Registry:
    """The GL enumerants of gl.xml: every name with its value, and the codec's named set."""
    def __init__(self, xml_path, vendor_extensions):
        self.root = ET.parse(xml_path).getroot()
        self.defined = {}  # name -> (value, bitmask, ranged, position)
        position = 0
        for block in self.root.iter('enums'):
            if block.get('namespace') != 'GL':
                continue
            bitmask = block.get('type') == 'bitmask'
            ranged = block.get('start') is not None
            for e in block.iter('enum'):
                if e.get('api') not in (None, 'gl'):
                    continue
                try:
                    value = int(e.get('value'), 0)
                except ValueError:
                    continue
                position += 1
                self.defined.setdefault(e.get('name'), (value, bitmask, ranged, position))
        self.groups = [['GL_VERSION_1_0', 'GL_VERSION_1_1'], ['GL_ARB_imaging'], CODEC_EXTENSIONS,
                       sorted(vendor_extensions)]

    def value(self, name):
        if name not in self.defined:
            raise ValueError('gl.xml has no enumerant %s' % name)
        return self.defined[name][0]

    def required_names(self):
        """(rank, name) in order of priority: each group is a list of feature or extension names."""
        features = {f.get('name'): f for f in self.root.iter('feature')}
        for ext in self.root.iter('extension'):
            features[ext.get('name')] = ext
        order = []
        for rank, group in enumerate(self.groups):
            for fname in group:
                node = features.get(fname)
                if node is None:
                    raise ValueError('gl.xml has no %s' % fname)
                for req in node.iter('require'):
                    if req.get('api') not in (None, 'gl') or req.get('profile') == 'core':
                        continue
                    order += [(rank, e.get('name')) for e in req.iter('enum')]
        return order

    def codec_names(self):
        """Pages (value -> name), aliases [(name, value)] and every required name with its value."""
        seen, candidates, constants = set(), [], []
        for rank, name in self.required_names():
            if name in seen or name not in self.defined:
                continue
            seen.add(name)
            value, bitmask, ranged, position = self.defined[name]
            if not 0 <= value <= 0xFFFFFFFF:
                continue
            constants.append((name, value))
            if bitmask:
                continue
            candidates.append(((not ranged, rank, position), name, value))
        pages, aliases = {}, []
        for key, name, value in sorted(candidates):
            if 0 <= value < GL_PAGES * 256 and value not in pages:
                pages[value] = name
            else:
                aliases.append((name, value))
        aliases.sort(key=lambda a: (a[1], a[0]))
        return pages, aliases, constants


def page_tables(prefix, names, page_count, page_size, kind):
    out = []
    counts = []
    for page in range(page_count):
        rows = [names.get(page * page_size + i) for i in range(page_size)]
        while rows and rows[-1] is None:
            rows.pop()
        counts.append(len(rows))
        if rows:
            out.append('static const char *const %s_page_%d[%d] = {\n' % (prefix, page, len(rows)))
            out += ['    %s, // 0x%X\n' % ('"%s"' % n if n else 'nullptr', page * page_size + i)
                    for i, n in enumerate(rows)]
            out.append('};\n')
    out.append('\nconst %s %s_page_counts[%d] = {%s};\n' %
               (kind, prefix, page_count, ', '.join(str(c) for c in counts)))
    out.append('const char *const *const %s_pages[%d] = {\n' % (prefix, page_count))
    out += ['    %s,\n' % ('%s_page_%d' % (prefix, p) if counts[p] else 'nullptr') for p in range(page_count)]
    out.append('};\n\n')
    return out


def gen_names(registry, gls_enums, gls_dict_only, header):
    """gls_names.cpp: the value-to-name pages of both APIs and the GL alias table."""
    pages, aliases, constants = registry.codec_names()
    gls_pages = {}
    for name, value in gls_enums:
        gls_pages.setdefault(value, name)
    out = [header, '#include "gls/names.h"\n\n']
    out += page_tables('gls_gl_enum', pages, GL_PAGES, 256, 'uint16_t')
    out += page_tables('gls_gls_enum', gls_pages, GLS_PAGES, 16, 'uint8_t')
    out.append('// Names the pages cannot hold: a value they share, or one above the pages.\n')
    out.append('const GlsNameValue gls_gl_enum_aliases[%d] = {\n' % len(aliases))
    out += ['    {"%s", 0x%X},\n' % (n, v) for n, v in aliases]
    out.append('};\nconst int gls_gl_enum_alias_count = %d;\n\n' % len(aliases))
    out.append('// Names of the codec that share a value with a row of the pages.\n')
    out.append('const GlsNameValue gls_gls_enum_extra[%d] = {\n' % len(gls_dict_only))
    out += ['    {"%s", %d},\n' % (n, v) for n, v in gls_dict_only]
    out.append('};\nconst int gls_gls_enum_extra_count = %d;\n\n' % len(gls_dict_only))
    names = CODEC_EXTENSIONS + registry.groups[3]
    out.append('// The extensions the codec knows: its own list, then the vendor rows\' extensions.\n')
    out.append('const char gls_extension_list[] =\n')
    out += ['    "__%s "\n' % n for n in names]
    out.append('    ;\n')
    return ''.join(out)


def gen_gl_enums_header(registry, extra_names, header):
    """gl_enums.h: a constant for every GL enumerant the codec knows, and the names the table's
    data rows use, so that code says GL_UNSIGNED_BYTE where the registry does."""
    pages, aliases, constants = registry.codec_names()
    known = dict(constants)
    for name in extra_names:
        known.setdefault(name, registry.value(name))
    out = [header, '#pragma once\n\n#include "gls/gls_types.h"\n\n',
           '// The system\'s GL headers never stand beside the library\'s own entry points: these are\n'
           '// the enumerants, from the Khronos registry.\n',
           'enum : GLenum {\n']
    out += ['    %s = 0x%X,\n' % (n, v) for n, v in sorted(known.items(), key=lambda i: (i[1], i[0]))]
    out.append('};\n')
    return ''.join(out)
