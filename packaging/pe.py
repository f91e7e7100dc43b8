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


def protections_of(path):
    """What the header asks the loader for, by the names of the format: an address that cannot be guessed, with 64 bits of
    it, and no code in data. "relocations": the table without which the address could not be moved."""
    data = path.read_bytes()
    optional = struct.unpack_from("<I", data, 0x3C)[0] + 24
    bits = struct.unpack_from("<H", data, optional + 70)[0]
    names = {0x20: "HIGH_ENTROPY_VA", 0x40: "DYNAMIC_BASE", 0x100: "NX_COMPAT"}
    found = {name for bit, name in names.items() if bits & bit}
    # The sixth of the directories, each an address and a size.
    if struct.unpack_from("<I", data, optional + 112 + 5 * 8 + 4)[0]:
        found.add("relocations")
    return found
