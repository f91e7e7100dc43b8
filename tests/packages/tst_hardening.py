#!/usr/bin/env python3
"""What makes an error in memory harder to use, read from every binary that is shipped."""

import re
import sys
import unittest

from shipped import DEB, DEMO_DEB, DEMO_ZIP, MSI, SOURCE, files_of, run, unpack_for

sys.path.insert(0, str(SOURCE / "packaging"))
from pe import protections_of  # noqa: E402

# Programs in which the compiler finds no call of a function that has a checked form; the others have some.
NOTHING_TO_FORTIFY = {"velmor_send"}


class Linux(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.binaries = []
        for package in [DEB, DEMO_DEB]:
            tree = unpack_for(cls, package)
            cls.binaries += [tree / name for name in files_of(tree) if (tree / name).read_bytes()[:4] == b"\x7fELF"]
        assert {path.name for path in cls.binaries} >= {"Manager", "velmor-sim", "velmor-pkcs11-64.so", "velmor_monitor"}

    def test_memory_is_laid_out_anew_at_each_start_and_has_no_code_in_data(self):
        for path in self.binaries:
            self.assertRegex(run("readelf", "-hW", path), r"Type:\s+DYN", path)
            dynamic = run("readelf", "-dW", path)
            if path.suffix != ".so":
                self.assertRegex(dynamic, r"FLAGS_1.*\bPIE\b", path)
            segments = run("readelf", "-lW", path)
            self.assertRegex(segments, r"GNU_STACK(?:\s+0x\w+){5}\s+RW\s", path)
            self.assertNotRegex(segments, r"LOAD(?:\s+0x\w+){5}\s+RWE", path)

    def test_tables_of_the_linker_are_read_only_before_the_program_runs(self):
        for path in self.binaries:
            self.assertIn("GNU_RELRO", run("readelf", "-lW", path), path)
            self.assertRegex(run("readelf", "-dW", path), r"FLAGS_1.*\bNOW\b", path)

    def test_libraries_are_looked_for_in_the_systems_folders_only(self):
        for path in self.binaries:
            self.assertNotRegex(run("readelf", "-dW", path), r"RPATH|RUNPATH", path)

    def test_stack_is_guarded_and_functions_check_their_buffers(self):
        for path in self.binaries:
            symbols = run("readelf", "-W", "--dyn-syms", path)
            self.assertIn("__stack_chk_fail", symbols, path)
            if path.name not in NOTHING_TO_FORTIFY:
                self.assertRegex(symbols, r"__(?!stack)\w+_chk", path)

    def test_nothing_is_left_of_symbols_and_of_the_build_machine(self):
        for path in self.binaries:
            self.assertNotIn(".symtab", run("readelf", "-SW", path), path)
            self.assertNotIn(str(SOURCE).encode(), path.read_bytes(), path)


class Windows(unittest.TestCase):
    def test_every_program_and_dll_asks_the_loader_for_protection(self):
        for package, at_least in [(MSI, 17), (DEMO_ZIP, 22)]:
            tree = unpack_for(self, package)
            binaries = [name for name in files_of(tree) if re.search(r"\.(exe|dll)$", name)]
            self.assertGreaterEqual(len(binaries), at_least)
            for name in binaries:
                self.assertEqual(protections_of(tree / name),
                                 {"DYNAMIC_BASE", "HIGH_ENTROPY_VA", "NX_COMPAT", "relocations"}, name)


if __name__ == "__main__":
    unittest.main()
