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


def imports_of(path):
    """What the loader has to find before the program runs: the functions by the name of their DLL in small letters."""
    data = path.read_bytes()
    header = struct.unpack_from("<I", data, 0x3C)[0]
    sections, optional_size = struct.unpack_from("<H", data, header + 6)[0], struct.unpack_from("<H", data, header + 20)[0]
    optional = header + 24
    table = [struct.unpack_from("<8x4I", data, optional + optional_size + 40 * i) for i in range(sections)]

    def place_of(address):
        return next(raw + address - start for size, start, raw_size, raw in ((v, a, r, p) for v, a, r, p in table)
                    if start <= address < start + max(size, raw_size))

    def text_at(place):
        return data[place:data.index(b"\0", place)].decode("ascii")

    found = {}
    # The second of the directories: a row for each DLL, up to one of zeros.
    directory = struct.unpack_from("<I", data, optional + 112 + 1 * 8)[0]
    row = place_of(directory) if directory else None
    while row is not None:
        names, _, _, dll, _ = struct.unpack_from("<5I", data, row)
        if not dll:
            break
        functions = found.setdefault(text_at(place_of(dll)).lower(), set())
        at = place_of(names)
        while entry := struct.unpack_from("<Q", data, at)[0]:
            # The highest bit stands for a number instead of a name.
            if not entry >> 63:
                functions.add(text_at(place_of(entry) + 2))
            at += 8
        row += 20
    return found
