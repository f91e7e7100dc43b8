#!/usr/bin/env python3
"""The Debian packages as files: by the rules of Debian and of the desktop, and what they hold."""

import hashlib
import os
import re
import shutil
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

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
            "libc6", "libfontconfig1", "libgcc-s1", "libqt5core5a", "libqt5gui5", "libqt5network5", "libqt5svg5", "libqt5widgets5",
            "libssl3", "libstdc++6", "qttranslations5-l10n"]))


class Root:
    """A machine's root on a disk of its own that can be filled and made larger. dpkg alone works in it: it has no other
    package, so what is needed is not asked for."""

    def __init__(self, case):
        self.path = Path(tempfile.mkdtemp())
        case.addCleanup(self.path.rmdir)
        run("mount", "-t", "tmpfs", "-o", "size=64m", "tmpfs", self.path)
        case.addCleanup(run, "umount", self.path)
        admin = self.path / "var/lib/dpkg"
        for folder in ["info", "updates", "triggers"]:
            (admin / folder).mkdir(parents=True)
        for file in ["status", "available"]:
            (admin / file).touch()

    def limit(self, kibibytes):
        """What is free from now on, in room that nothing else takes."""
        used = int(run("df", "--output=used", "-k", self.path).split()[-1])
        run("mount", "-o", f"remount,size={used + kibibytes}k", self.path)

    def dpkg(self, *words):
        return subprocess.run(["dpkg", f"--root={self.path}", "--force-depends", "--log=/dev/null", *map(str, words)],
                              capture_output=True, text=True, env={**os.environ, "LC_ALL": "C.UTF-8"})

    def state(self):
        asked = subprocess.run(["dpkg-query", f"--admindir={self.path}/var/lib/dpkg", "-W", "-f",
                                "${db:Status-Status} ${db:Status-Eflag} ${Version}", "velmor"], capture_output=True, text=True)
        return asked.stdout.strip()

    def files(self):
        """Of all outside of dpkg's own folder."""
        return {file.relative_to(self.path).as_posix():
                os.readlink(file) if file.is_symlink() else hashlib.sha256(file.read_bytes()).hexdigest()
                for file in self.path.rglob("*")
                if (file.is_file() or file.is_symlink()) and not file.is_relative_to(self.path / "var/lib/dpkg")}


@unittest.skipIf(os.geteuid() != 0, "mounts a disk, which root alone may")
class FullDisk(unittest.TestCase):
    INSTALLED = f"installed ok {FULL_VERSION}"

    def test_installation_is_taken_back_and_told(self):
        # From hardly any room to room for nearly all of it.
        needed = sum(path.stat().st_size for path in unpack_for(self, DEB).rglob("*") if path.is_file()) // 1024
        for free in [8, 64, 300, needed // 2, needed * 9 // 10]:
            root = Root(self)
            root.limit(free)
            done = root.dpkg("--install", DEB)
            # With 2 it could not even write down what it was about to do.
            self.assertIn(done.returncode, [1, 2], free)
            self.assertRegex(done.stderr, "No space left on device", f"{free}: {done.stderr}")
            self.assertEqual(root.files(), {}, free)
            self.assertNotIn("installed ok 4", root.state(), free)
            self.assertEqual(list(root.path.rglob("*.dpkg-*")), [], free)

            root.limit(32 * 1024)
            self.assertEqual(root.dpkg("--install", DEB).returncode, 0, free)
            self.assertEqual(root.state(), self.INSTALLED)

    def test_upgrade_is_taken_back_to_the_older_version(self):
        tree = Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, tree)
        run("dpkg-deb", "-R", DEB, tree / "velmor")
        control = tree / "velmor/DEBIAN/control"
        control.write_text(re.sub(r"(?m)^Version: .*$", "Version: 4.0.0.1", control.read_text(encoding="utf-8")),
                           encoding="utf-8")
        (tree / "velmor/opt/velmor/statics/historia_zmian.html").write_text("of the older one", encoding="utf-8")
        older = tree / "older.deb"
        run("dpkg-deb", "--root-owner-group", "-Znone", "--build", tree / "velmor", older)
        root = Root(self)
        self.assertEqual(root.dpkg("--install", older).returncode, 0)
        before = root.files()
        root.limit(700)

        done = root.dpkg("--install", DEB)

        self.assertEqual(done.returncode, 1)
        self.assertIn("No space left on device", done.stderr)
        self.assertEqual(root.state(), "installed ok 4.0.0.1")
        self.assertEqual(root.files(), before)
        root.limit(32 * 1024)
        self.assertEqual(root.dpkg("--install", DEB).returncode, 0)
        self.assertEqual(root.state(), self.INSTALLED)
        self.assertNotEqual(root.files(), before)

    def test_removal_needs_no_room(self):
        root = Root(self)
        self.assertEqual(root.dpkg("--install", DEB).returncode, 0)
        root.limit(64)

        self.assertEqual(root.dpkg("--purge", "velmor").returncode, 0)

        self.assertEqual(root.files(), {})


@unittest.skipIf(os.geteuid() != 0, "becomes an ordinary user, which root alone may")
class OrdinaryUser(unittest.TestCase):
    NOBODY = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]

    def test_cannot_install_and_is_told(self):
        folder = Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, folder)
        folder.chmod(0o755)
        package = Path(shutil.copy(DEB, folder))
        done = subprocess.run([*self.NOBODY, "dpkg", "--install", package], capture_output=True, text=True)
        self.assertEqual(done.returncode, 2)
        self.assertIn("superuser privilege", done.stderr)

    def readable_tree(self):
        tree = unpack_for(self, DEB)
        way = tree
        while way != Path(tempfile.gettempdir()):
            way.chmod(0o755)
            way = way.parent
        return tree

    def own_home(self):
        home = Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, home)
        os.chown(home, 65534, 65534)
        return home

    def test_starts_the_program_that_root_has_installed(self):
        tree, home = self.readable_tree(), self.own_home()
        before = files_of(tree)
        told = run(*self.NOBODY, "env", "-i", f"HOME={home}", f"TMPDIR={home}", "QT_QPA_PLATFORM=offscreen",
                   tree / "opt/velmor/bin/Manager", "-t")
        self.assertIn(f"<Version>{VERSION}</Version>", told)
        self.assertEqual(files_of(tree), before)

    def test_other_programs_of_the_user_cannot_look_into_it(self):
        tree, home = self.readable_tree(), self.own_home()

        def may_look_into(program):
            running = subprocess.Popen([*self.NOBODY, "env", "-i", f"HOME={home}", f"TMPDIR={home}",
                                        "QT_QPA_PLATFORM=offscreen", *program])
            try:
                while subprocess.run(["readlink", f"/proc/{running.pid}/exe"], capture_output=True,
                                     text=True).stdout.strip() != str(program[0]):
                    time.sleep(0.01)
                # The rule is the first thing that it does, but not the first that happens to it.
                time.sleep(1)
                return subprocess.run([*self.NOBODY, "head", "-c", "1", f"/proc/{running.pid}/environ"],
                                      capture_output=True).returncode == 0
            finally:
                running.terminate()
                running.wait()

        self.assertTrue(may_look_into([Path("/usr/bin/sleep").resolve(), "60"]))
        self.assertFalse(may_look_into([tree / "opt/velmor/bin/Manager", "-p", "help"]))


if __name__ == "__main__":
    unittest.main()
