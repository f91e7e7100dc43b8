#!/usr/bin/env python3
"""What makes an error in memory harder to use, read from every binary that is shipped."""

import re
import sys
import unittest

from shipped import DEB, DEMO_DEB, DEMO_ZIP, MSI, SOURCE, files_of, run, unpack_for

sys.path.insert(0, str(SOURCE / "packaging"))
from pe import imports_of, protections_of  # noqa: E402

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


class LoadedDlls(unittest.TestCase):
    """Whose DLLs get into a process. The linker of this compiler cannot write a rule into the header (DependentLoadFlags), so
    it stands on two legs: what the system's loader looks for before main lies beside the program, which is the first place
    that it looks in, or is the system's own; and main begins with the rule for all that follows."""

    # Of Windows itself, as they are imported by anything that is shipped.
    SYSTEM = {"advapi32", "crypt32", "d3d11", "dnsapi", "dwmapi", "dxgi", "gdi32", "imm32", "iphlpapi", "kernel32", "mpr",
              "msvcrt", "netapi32", "ole32", "oleaut32", "setupapi", "shell32", "user32", "userenv", "uxtheme", "version",
              "winmm", "ws2_32", "wtsapi32"}
    MAINS = ["Manager/main.cpp", "devkit/panel/main.cpp", "devkit/siblings/sibling.cpp",
             "devkit/siblings/send_main.cpp"]

    @classmethod
    def setUpClass(cls):
        cls.trees = {package: unpack_for(cls, package) for package in [MSI, DEMO_ZIP]}

    def programs(self):
        for tree in self.trees.values():
            yield from sorted(tree.rglob("*.exe"))

    def test_what_is_loaded_at_the_start_lies_beside_the_program_or_is_the_systems(self):
        for tree in self.trees.values():
            for path in [*tree.rglob("*.exe"), *tree.rglob("*.dll")]:
                # Plugins are loaded into the program, which lies in the folder above theirs.
                beside = {file.name.lower() for file in (tree / "64").iterdir() if file.suffix == ".dll"}
                if path.suffix == ".exe":
                    beside = {file.name.lower() for file in path.parent.iterdir()}
                foreign = {dll for dll in imports_of(path)
                           if dll not in beside and dll.removesuffix(".dll") not in self.SYSTEM}
                self.assertEqual(foreign, set(), path.name)

    def test_every_program_with_dlls_of_its_own_sets_the_rule_for_what_it_loads_later(self):
        ruled = set()
        for path in self.programs():
            imports = imports_of(path)
            if not any((path.parent / dll).exists() or dll.startswith("qt5") for dll in imports):
                continue
            ruled.add(path.name)
            # Asked for by name, since Windows 7 has it by an update only; else the older rule.
            self.assertIn(b"SetDefaultDllDirectories\0", path.read_bytes(), path.name)
            self.assertLessEqual({"GetProcAddress", "SetDllDirectoryW"}, imports["kernel32.dll"], path.name)
        self.assertEqual(ruled, {"Manager.exe", "velmor-panel.exe", "velmor_can.exe", "velmor_monitor.exe", "velmor_send.exe"})

    def test_programs_outside_of_the_folder_of_dlls_need_the_systems_alone(self):
        tree = self.trees[DEMO_ZIP]
        for name in ["velmor-demo.exe", "devkit/velmor-sim.exe"]:
            self.assertLessEqual({dll.removesuffix(".dll") for dll in imports_of(tree / name)}, self.SYSTEM, name)

    def test_the_rule_is_the_first_thing_that_is_done(self):
        for name in self.MAINS:
            text = (SOURCE / name).read_text(encoding="utf-8")
            self.assertRegex(text, r"\n(?:int main\(|void Sibling::setUp\()[^{]*\)\n\{\n    Platform::distrustCurrentFolder\(\);\n",
                             name)


if __name__ == "__main__":
    unittest.main()
