#!/usr/bin/env python3
"""The Debian packages as files: by the rules of Debian and of the desktop, and what they hold."""

import os
import re
import unittest

from shipped import DEB, DEMO_DEB, FULL_VERSION, VERSION, files_of, run, unpack_for

# Command of each package, and where its link leads.
COMMANDS = {DEB: ("velmor-manager", "/opt/velmor/bin/Manager"), DEMO_DEB: ("velmor-demo", "/opt/velmor-demo/velmor-demo")}
DEBS = {DEB: "velmor", DEMO_DEB: "velmor-demo"}
MEBIBYTE = 1 << 20


class Rules(unittest.TestCase):
    def test_lintian_finds_nothing(self):
        for package in COMMANDS:
            # An override that hides nothing is told too.
            self.assertEqual(run("lintian", "--allow-root", "--tag-display-limit", "0", "--display-info", "--pedantic",
                                 "--fail-on", "error,warning,info,pedantic", package), "")

    def test_desktop_entry_is_valid(self):
        for package, (command, target) in COMMANDS.items():
            entry = unpack_for(self, package) / f"opt/{DEBS[package]}/share/applications/{command}.desktop"
            self.assertEqual(run("desktop-file-validate", entry), "")
            text = entry.read_text(encoding="utf-8")
            self.assertIn(f"\nExec={target}\n", text)
            self.assertIn(f"\nIcon={command}\n", text)

    def test_appstream_data_is_valid_and_of_this_version(self):
        tree = unpack_for(self, DEB)
        (data,) = (tree / "usr/share/metainfo").iterdir()
        # Exits with an error at any warning.
        run("appstreamcli", "validate", "--no-net", "--pedantic", data)
        text = data.read_text(encoding="utf-8")
        self.assertRegex(text, f'<release version="{re.escape(VERSION)}" date="20')
        self.assertIn("<launchable type=\"desktop-id\">velmor-manager.desktop</launchable>", text)

    def test_pages_of_the_manual_are_whole(self):
        for package, (command, _) in COMMANDS.items():
            tree = unpack_for(self, package)
            for folder in ["man1", "pl/man1"]:
                page = tree / f"usr/share/man/{folder}/{command}.1.gz"
                told = run("man", "--warnings", "-E", "UTF-8", "-l", page,
                           env={**os.environ, "MANROFFSEQ": "", "MANWIDTH": "100", "LC_ALL": "C.UTF-8"})
                self.assertIn(VERSION, told)
                self.assertIn(command, told)


class Content(unittest.TestCase):
    def test_links_lead_into_the_package(self):
        for package, (command, target) in COMMANDS.items():
            tree = unpack_for(self, package)
            links = {p.relative_to(tree).as_posix(): os.readlink(p) for p in tree.rglob("*") if p.is_symlink()}
            name = DEBS[package]
            self.assertEqual(links, {
                f"usr/bin/{command}": target,
                f"usr/share/applications/{command}.desktop": f"/opt/{name}/share/applications/{command}.desktop"})
            for link in links.values():
                self.assertTrue((tree / link.lstrip("/")).is_file(), link)

    def test_both_can_be_installed_together(self):
        ours, theirs = (set(files_of(unpack_for(self, package))) for package in COMMANDS)
        self.assertEqual(ours & theirs, set())

    def test_product_has_nothing_of_the_stand_ins(self):
        names = files_of(unpack_for(self, DEB))
        self.assertEqual([name for name in names if re.search(r"devkit|pkcs11|velmor[-_](sim|monitor|can|send|panel)", name)],
                         [])

    def test_presets_are_a_conffile_and_set_nothing(self):
        folder = unpack_for(self, DEB)
        self.assertEqual([name for name in files_of(folder) if name.startswith("etc/")], ["etc/xdg/velmor/config.conf"])
        control = run("dpkg-deb", "-I", DEB, "conffiles")
        self.assertEqual(control, "/etc/xdg/velmor/config.conf\n")
        text = (folder / "etc/xdg/velmor/config.conf").read_text(encoding="utf-8")
        self.assertEqual([line for line in text.splitlines() if line and not line.startswith(";")], ["[General]"])

    def test_files_are_roots_and_nobody_else_writes(self):
        for package in COMMANDS:
            for line in run("dpkg-deb", "-c", package).splitlines():
                rights, owner = line.split()[:2]
                self.assertEqual(owner, "root/root", line)
                if rights[0] != "l":
                    self.assertIn(rights[1:], ["rwxr-xr-x", "rw-r--r--"], line)

    def test_no_script_runs_as_root(self):
        for package in COMMANDS:
            told = run("dpkg-deb", "-I", package)
            self.assertNotRegex(told, r"\b(pre|post)(inst|rm)\b")

    def test_version_size_and_dependencies(self):
        self.assertEqual(run("dpkg-deb", "-f", DEB, "Version").strip(), FULL_VERSION)
        self.assertLessEqual(DEB.stat().st_size, 2 * MEBIBYTE)
        needed = re.findall(r"(?:^|, )([\w.+-]+)", run("dpkg-deb", "-f", DEB, "Depends"))
        # Each for something that the program cannot start without; browsers, readers' daemon and viewers are the user's.
        self.assertEqual(sorted(needed), sorted([
            "libc6", "libgcc-s1", "libqt5core5a", "libqt5gui5", "libqt5network5", "libqt5svg5", "libqt5widgets5", "libssl3",
            "libstdc++6", "qttranslations5-l10n"]))


if __name__ == "__main__":
    unittest.main()
