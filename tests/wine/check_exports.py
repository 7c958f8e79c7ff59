#!/usr/bin/env python3
"""Checks the export and import tables of quondale.dll and of the forwarding opengl32.dll.

quondale.dll must export exactly the GL 1.0 and 1.1 commands of the Khronos registry and the 24
WGL functions of opengl32.dll, undecorated, under the export name OPENGL32.dll, and import only
system DLLs. The forwarder must forward every one of those names to quondale.dll.

usage: check_exports.py GL_XML QUONDALE_DLL OPENGL32_DLL
"""
import struct
import sys
import xml.etree.ElementTree as ElementTree

WGL_NAMES = {
    "wglChoosePixelFormat", "wglCopyContext", "wglCreateContext", "wglCreateLayerContext",
    "wglDeleteContext", "wglDescribeLayerPlane", "wglDescribePixelFormat", "wglGetCurrentContext",
    "wglGetCurrentDC", "wglGetDefaultProcAddress", "wglGetLayerPaletteEntries", "wglGetPixelFormat",
    "wglGetProcAddress", "wglMakeCurrent", "wglRealizeLayerPalette", "wglSetLayerPaletteEntries",
    "wglSetPixelFormat", "wglShareLists", "wglSwapBuffers", "wglSwapLayerBuffers",
    "wglUseFontBitmapsA", "wglUseFontBitmapsW", "wglUseFontOutlinesA", "wglUseFontOutlinesW",
}
GDI_NAMES = {"ChoosePixelFormat", "DescribePixelFormat", "GetPixelFormat", "SetPixelFormat", "SwapBuffers"}
VENDOR_SUFFIXES = ("EXT", "ARB", "KHR", "OES", "SGI", "SGIS", "SGIX", "WIN", "MESA", "NV", "ATI", "AMD",
                   "IBM", "SUN", "HP", "INTEL", "APPLE", "INGR", "PGI", "REND", "3DFX", "OML", "S3")
# What a DLL of this system may import: Windows itself, never a MinGW runtime DLL.
SYSTEM_DLLS = {"kernel32.dll", "msvcrt.dll", "user32.dll", "gdi32.dll", "advapi32.dll", "comdlg32.dll",
               "ntdll.dll", "shell32.dll", "ole32.dll"}


def gl_core_names(gl_xml):
    root = ElementTree.parse(gl_xml).getroot()
    names = set()
    for feature in root.iter("feature"):
        if feature.get("name") in ("GL_VERSION_1_0", "GL_VERSION_1_1"):
            for require in feature.iter("require"):
                names.update(command.get("name") for command in require.iter("command"))
    return names


class Image:
    """Just enough of a PE reader for the export and import directories."""

    def __init__(self, path):
        with open(path, "rb") as file:
            self.data = file.read()
        pe = struct.unpack_from("<I", self.data, 0x3C)[0]
        if self.data[pe:pe + 4] != b"PE\0\0":
            raise ValueError(path + " is not a PE image")
        self.machine, sections, _, _, _, optional_size, _ = struct.unpack_from("<HHIIIHH", self.data, pe + 4)
        optional = pe + 24
        magic = struct.unpack_from("<H", self.data, optional)[0]
        directories = optional + (96 if magic == 0x10B else 112)
        self.export_rva, self.export_size = struct.unpack_from("<II", self.data, directories)
        self.import_rva, _ = struct.unpack_from("<II", self.data, directories + 8)
        self.sections = []
        table = optional + optional_size
        for index in range(sections):
            size, address, raw_size, raw_offset = struct.unpack_from("<IIII", self.data, table + 40 * index + 8)
            self.sections.append((address, max(size, raw_size), raw_offset))

    def offset(self, rva):
        for address, size, raw_offset in self.sections:
            if address <= rva < address + size:
                return rva - address + raw_offset
        raise ValueError("RVA %#x is in no section" % rva)

    def string(self, rva):
        start = self.offset(rva)
        return self.data[start:self.data.index(b"\0", start)].decode("ascii")

    def exports(self):
        """Returns the export directory's name and {name: forwarder text or None}."""
        if self.export_rva == 0:
            return None, {}
        fields = struct.unpack_from("<IIHHIIIIIII", self.data, self.offset(self.export_rva))
        name_rva, _, functions, names, function_table, name_table, ordinal_table = fields[4:]
        result = {}
        for index in range(names):
            name = self.string(struct.unpack_from("<I", self.data, self.offset(name_table) + 4 * index)[0])
            ordinal = struct.unpack_from("<H", self.data, self.offset(ordinal_table) + 2 * index)[0]
            target = struct.unpack_from("<I", self.data, self.offset(function_table) + 4 * ordinal)[0]
            forwarded = self.export_rva <= target < self.export_rva + self.export_size
            result[name] = self.string(target) if forwarded else None
        return self.string(name_rva), result

    def imports(self):
        result = []
        if self.import_rva == 0:
            return result
        descriptor = self.offset(self.import_rva)
        while True:
            fields = struct.unpack_from("<IIIII", self.data, descriptor)
            if not any(fields):
                return result
            result.append(self.string(fields[3]))
            descriptor += 20


def check(gl_xml, quondale_path, forwarder_path):
    problems = []
    expected = gl_core_names(gl_xml)
    if len(expected) != 336:
        problems.append("%s lists %d GL 1.0/1.1 commands, not 336" % (gl_xml, len(expected)))
    expected |= WGL_NAMES

    quondale = Image(quondale_path)
    directory_name, exports = quondale.exports()
    if directory_name != "OPENGL32.dll":
        problems.append("quondale.dll's export directory is named %r, not 'OPENGL32.dll'" % directory_name)
    names = set(exports)
    gl = [name for name in names if name.startswith("gl") and not name.startswith("glu")]
    wgl = [name for name in names if name.startswith("wgl")]
    if len(names) != 360 or len(gl) != 336 or len(wgl) != 24:
        problems.append("quondale.dll exports %d names (%d GL, %d WGL), not 360 (336 GL, 24 WGL)"
                        % (len(names), len(gl), len(wgl)))
    for name in sorted(names - expected):
        if "@" in name or name.startswith("_"):
            problems.append("decorated export %s" % name)
        elif name.endswith(VENDOR_SUFFIXES):
            problems.append("vendor-suffixed export %s" % name)
        elif name.startswith("glu"):
            problems.append("GLU export %s" % name)
        elif name in GDI_NAMES:
            problems.append("GDI export %s" % name)
        else:
            problems.append("unexpected export %s" % name)
    for name in sorted(expected - names):
        problems.append("missing export %s" % name)
    for name, forwarded in sorted(exports.items()):
        if forwarded is not None:
            problems.append("quondale.dll forwards %s to %s instead of defining it" % (name, forwarded))
    for dll in quondale.imports():
        if dll.lower() not in SYSTEM_DLLS:
            problems.append("quondale.dll imports %s, which is not a system DLL" % dll)

    forwarder = Image(forwarder_path)
    if forwarder.machine != quondale.machine:
        problems.append("the forwarder is built for machine %#x, quondale.dll for %#x"
                        % (forwarder.machine, quondale.machine))
    _, forwards = forwarder.exports()
    if set(forwards) != names:
        problems.append("the forwarder exports %d names that differ from quondale.dll's: %s"
                        % (len(forwards), ", ".join(sorted(set(forwards) ^ names)[:10])))
    for name, forwarded in sorted(forwards.items()):
        if forwarded != "quondale." + name:
            problems.append("opengl32.dll!%s goes to %s, not quondale.%s" % (name, forwarded, name))
    for dll in forwarder.imports():
        if dll.lower() not in SYSTEM_DLLS:
            problems.append("the forwarder imports %s, which is not a system DLL" % dll)
    return problems


def main():
    if len(sys.argv) != 4:
        print(__doc__, file=sys.stderr)
        return 2
    problems = check(*sys.argv[1:])
    for problem in problems[:50]:
        print("FAIL exports:", problem)
    if len(problems) > 50:
        print("FAIL exports: ... and %d more" % (len(problems) - 50))
    if not problems:
        print("exports: %s and %s are as opengl32.dll's stand-in must be" % (sys.argv[2], sys.argv[3]))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
