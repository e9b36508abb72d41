#!/usr/bin/env python3
"""Finishes a Windows program as the linker of mingw-w64 leaves it. The load configuration, its section ".ldcfg", is
entered in the header; the folders that Qt was built for and in, which are the builder's machine's, become the
program's own; the header's checksum is brought up to date. Source: "PE Format" of the Windows documentation.
"""
import re
import struct
import sys

LOAD_CONFIGURATION = 10  # the place in the header's table
CHECKSUM = 64            # offsets in the optional header
DIRECTORIES = 112
QT_FOLDER = b"qt_prfxpath="  # with room behind it, made to be changed in a finished program

# Messages of Qt's own name their source file, below the folder that tools/windows.sh makes for the build.
QT_SOURCES = re.compile(rb"(?:/[\w.+~-]+)+\.building\.\w{6}/")


def checksum(image, at):
    """The sum of all 16-bit words but the checksum itself, folded, and the size."""
    image = image[:at] + bytes(4) + image[at + 4:]
    words = image + bytes(len(image) % 2)
    total = sum(struct.unpack(f"<{len(words) // 2}H", words))
    while total > 0xFFFF:
        total = (total & 0xFFFF) + (total >> 16)
    return total + len(image)


def own_folder(length):
    """"." as "././.": the compiler may have counted the letters."""
    return (b"./" * length)[:length]


def set_qt_folders(image):
    begin = image.index(QT_FOLDER) + len(QT_FOLDER)
    length = image.index(b"\0", begin) - begin
    image[begin:begin + length] = own_folder(length)
    image[:] = QT_SOURCES.sub(lambda found: own_folder(len(found[0])), image)


def enter_load_configuration(image, options, sections):
    for name, _, address, _, content in sections:
        if name.rstrip(b"\0") == b".ldcfg":
            size = struct.unpack_from("<I", image, content)[0]
            struct.pack_into("<II", image, options + DIRECTORIES + 8 * LOAD_CONFIGURATION, address, size)
            return
    raise ValueError("there is no section .ldcfg")


def finish(image):
    header = struct.unpack_from("<I", image, 0x3C)[0]
    count, options_size = struct.unpack_from("<H12xH", image, header + 6)
    options = header + 24
    if image[header:header + 4] != b"PE\0\0" or struct.unpack_from("<H", image, options)[0] != 0x20B:
        raise ValueError("no 64-bit program")
    table = options + options_size
    enter_load_configuration(image, options,
                             [struct.unpack_from("<8sIIII", image, table + 40 * i) for i in range(count)])
    set_qt_folders(image)
    struct.pack_into("<I", image, options + CHECKSUM, checksum(bytes(image), options + CHECKSUM))


with open(sys.argv[1], "r+b") as program:
    content = bytearray(program.read())
    finish(content)
    program.seek(0)
    program.write(content)
