"""All memory that a process can write to, as a core file of it would hold it, and what is found there."""

import re

# From one digit to the next: characters of one, two and four bytes, and the records of fields' histories of edits.
STEPS = (1, 2, 4, 8, 12, 16, 20, 24, 32)


def contents(pid):
    with open(f"/proc/{pid}/maps", encoding="utf-8") as maps, open(f"/proc/{pid}/mem", "rb", 0) as memory:
        for line in maps:
            first, last, rights = re.match(r"([0-9a-f]+)-([0-9a-f]+) (\S+)", line).groups()
            if not rights.startswith("rw"):
                continue
            try:
                memory.seek(int(first, 16))
                yield memory.read(int(last, 16) - int(first, 16))
            except OSError:
                pass  # a device, or gone meanwhile


def digits_pattern(digits):
    """The digits one behind the other, at any of the steps, with anything between them but more digits of the kind."""
    ways = []
    for step in STEPS:
        filler = b"\0" * (step - 1) if step in (2, 4) else b".{%d}" % (step - 1)
        ways.append(filler.join(re.escape(digit.encode()) for digit in digits))
    return re.compile(b"|".join(ways), re.DOTALL)


def text_pattern(text):
    """In one byte a character, or UTF-8, and in two; as it stands and in capitals."""
    ways = set()
    for form in (text, text.upper()):
        ways |= {form.encode("utf-8"), form.encode("utf-16-le")}
    return re.compile(b"|".join(re.escape(way) for way in sorted(ways)))


def bytes_pattern(whole, length=24):
    """Any of three parts of a file; it may have been cut or joined since."""
    starts = {len(whole) // 8, len(whole) // 2, len(whole) - length - 1}
    return re.compile(b"|".join(re.escape(whole[start : start + length]) for start in sorted(starts)), re.DOTALL)


def count(pid, patterns):
    """How often each pattern is found; `patterns` by name."""
    found = dict.fromkeys(patterns, 0)
    for block in contents(pid):
        for name, pattern in patterns.items():
            found[name] += len(pattern.findall(block))
    return found


def surroundings(pid, patterns, most=6):
    """What stands around the first finds, for whoever looks for the holder."""
    lines = []
    for block in contents(pid):
        for name, pattern in patterns.items():
            for match in pattern.finditer(block):
                around = block[max(0, match.start() - 48) : match.end() + 48]
                lines.append(f"{name}: {around!r}")
    return "\n".join(lines[:most])
