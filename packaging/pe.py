"""Programs and DLLs for Windows, as far as packaging reads them: the published PE/COFF format, the 64-bit kind."""

import struct


def version_of(path):
    """The version of the fixed part of the version resource, as in "5.15.8.0"; None without one."""
    data = path.read_bytes()
    at = data.find(struct.pack("<II", 0xFEEF04BD, 0x10000)) if data[:2] == b"MZ" else -1
    if at < 0:
        return None
    high, low = struct.unpack_from("<II", data, at + 8)
    return f"{high >> 16}.{high & 0xFFFF}.{low >> 16}.{low & 0xFFFF}"
